// SPDX-License-Identifier: MIT
// Numbers of any size from bytes at any address.
#include "layout/LittleEndian.h"

#include <gtest/gtest.h>

using namespace layout;

namespace {
const uint8_t kBytes[] = {0xEE, 0x01, 0x02, 0x03, 0x84, 0x05, 0x06, 0x07, 0x88};
}

TEST(LittleEndian, LoadsTheFirstByteAsTheLowestFromAnyAddress) {
  EXPECT_EQ(Load16(kBytes + 1), 0x0201);
  EXPECT_EQ(Load32(kBytes + 1), 0x84030201u);
  EXPECT_EQ(Load64(kBytes + 1), 0x8807060584030201u);
}

TEST(LittleEndian, StoresTheLowestByteFirst) {
  uint8_t bytes[6] = {0xEE, 0, 0, 0, 0, 0xEE};
  Store32(bytes + 1, 0x84030201);
  const uint8_t expected[6] = {0xEE, 0x01, 0x02, 0x03, 0x84, 0xEE};
  for (unsigned i = 0; i < 6; ++i) EXPECT_EQ(bytes[i], expected[i]);
}

TEST(LittleEndian, TakesBytesBeyondTheEndAsZero) {
  const View bytes(kBytes, 3);
  EXPECT_EQ(Load(bytes, 1, 2), 0x0201u);
  EXPECT_EQ(Load(bytes, 1, 8), 0x0201u);
  EXPECT_EQ(Load(bytes, 3, 4), 0u);
  EXPECT_EQ(Load(bytes, 0, 0), 0u);
}
