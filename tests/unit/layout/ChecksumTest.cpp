// SPDX-License-Identifier: MIT
// The byte sum of firmware structures.
#include "layout/Checksum.h"

#include <gtest/gtest.h>

TEST(ByteSum, IsTakenModulo256) {
  const uint8_t bytes[] = {0xFF, 0x02, 0x80};
  EXPECT_EQ(layout::ByteSum(bytes, 3), 0x81);
  EXPECT_EQ(layout::ByteSum(bytes, 1), 0xFF);
  EXPECT_EQ(layout::ByteSum(bytes, 0), 0);
}
