// SPDX-License-Identifier: MIT
// Members and layout of the set.
#include "hw/Set.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace {
using ByteSet = Set<unsigned char, 0, 255>;
using WordSet = Set<unsigned short, 0, 255>;
}  // namespace

TEST(SetLayout, Is32BytesAndNothingElse) {
  EXPECT_EQ(sizeof(ByteSet), 32u);
  EXPECT_EQ(sizeof(WordSet), 32u);
  EXPECT_TRUE(std::is_trivially_copyable_v<ByteSet>);
  EXPECT_TRUE(std::is_trivially_copyable_v<WordSet>);
}

TEST(SetLayout, MemberNIsBitNMod8OfByteNDiv8) {
  WordSet set;
  set.Add(0);
  set.Add(11);
  set.Add(255);
  for (unsigned i = 0; i < 32; ++i) {
    const unsigned expected = i == 0 ? 0x01 : i == 1 ? 0x08 : i == 31 ? 0x80 : 0x00;
    EXPECT_EQ(set.Bits[i], expected) << "byte " << i;
  }
}

TEST(SetContains, NothingAtFirst) {
  const ByteSet set;
  for (unsigned member = 0; member < 256; ++member) EXPECT_FALSE(set.Contains(static_cast<unsigned char>(member)));
}

TEST(SetContains, WhatWasAddedAndNotItsNeighbours) {
  ByteSet set;
  set.Add(8);
  EXPECT_TRUE(set.Contains(8));
  EXPECT_FALSE(set.Contains(7));
  EXPECT_FALSE(set.Contains(9));
  EXPECT_FALSE(set.Contains(0));
}

TEST(SetRemove, TakesOneMemberOut) {
  ByteSet set;
  set.Add(16);
  set.Add(17);
  set.Remove(16);
  EXPECT_FALSE(set.Contains(16));
  EXPECT_TRUE(set.Contains(17));
}

TEST(SetOfWords, KnowsNoNumberAbove255) {
  WordSet set;
  for (unsigned member = 0; member < 256; ++member) set.Add(static_cast<unsigned short>(member));
  set.Remove(256);
  EXPECT_TRUE(set.Contains(0));
  EXPECT_FALSE(set.Contains(256));
  EXPECT_FALSE(set.Contains(0xFFFF));
  set = {};
  set.Add(256 + 8);
  EXPECT_FALSE(set.Contains(8));
}
