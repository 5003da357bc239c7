// SPDX-License-Identifier: MIT
// The table of I/O chips.
#include "layout/IoChips.h"

#include <gtest/gtest.h>

#include <set>

using namespace layout;

TEST(IoChips, StandOnceEachAndAreFound) {
  std::set<int> identifiers;
  for (const IoChip& chip : kIoChips) {
    EXPECT_TRUE(identifiers.insert(chip.identifier).second) << chip.identifier;
    EXPECT_EQ(FindIoChip(chip.identifier), &chip);
  }
  EXPECT_EQ(identifiers.size(), 11u);
  EXPECT_EQ(FindIoChip(0), nullptr);
  EXPECT_EQ(FindIoChip(0x94D2)->number, 5);
}
