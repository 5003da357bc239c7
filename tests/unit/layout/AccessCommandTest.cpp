// SPDX-License-Identifier: MIT
// Every row of the command layouts against what all of them must hold.
#include "layout/AccessCommand.h"

#include <gtest/gtest.h>

#include <set>

using namespace layout;

TEST(CommandLayouts, EveryKindAndFormStandsOnce) {
  std::set<std::pair<int, int>> seen;
  for (const CommandLayout& row : kCommandLayouts) EXPECT_TRUE(seen.insert({row.kind, row.form}).second);
  EXPECT_EQ(seen, (std::set<std::pair<int, int>>{
                      {0x00, 1}, {0x04, 1}, {0x04, 2}, {0x08, 1}, {0x0C, 1}, {0x10, 1}, {0x14, 0}}));
}

TEST(CommandLayouts, EveryFieldLiesInsideTheRecordBehindTheControlWord) {
  for (const CommandLayout& row : kCommandLayouts) {
    SCOPED_TRACE(int{row.kind});
    for (const CommandField& field : {row.address, row.second, row.third, row.reg, row.andMask, row.orMask,
                                      row.expected, row.argument, row.unit, row.count}) {
      if (field.bytes == 0) continue;
      EXPECT_GE(field.offset, 3);
      EXPECT_LE(field.offset + field.bytes, row.length);
    }
  }
}

TEST(CommandLayouts, NoTwoFieldsOfARecordOverlap) {
  for (const CommandLayout& row : kCommandLayouts) {
    std::set<int> taken;
    for (const CommandField& field : {row.address, row.second, row.third, row.reg, row.andMask, row.orMask,
                                      row.expected, row.argument, row.unit, row.count})
      for (int i = 0; i < field.bytes; ++i) EXPECT_TRUE(taken.insert(field.offset + i).second) << int{row.kind};
  }
}

TEST(FindLayout, GivesTheLengthOfEveryOpcodeThatHasOne) {
  struct Case {
    int opcode, length;
  };
  for (const Case& each : {Case{0x01, 28}, Case{0x05, 28}, Case{0x06, 36}, Case{0x09, 35}, Case{0x0D, 21},
                           Case{0x11, 29}, Case{0x14, 15}, Case{0x15, 15}, Case{0x16, 15}, Case{0x17, 15}})
    for (int width = 0; width < 4; ++width) {
      const CommandLayout* layout = FindLayout(static_cast<uint8_t>(each.opcode | width << 6));
      ASSERT_NE(layout, nullptr) << each.opcode;
      EXPECT_EQ(layout->length, each.length) << each.opcode;
    }
}

TEST(FindLayout, KnowsNoOtherOpcode) {
  int known = 0;
  for (int opcode = 0; opcode < 256; ++opcode) known += FindLayout(static_cast<uint8_t>(opcode)) != nullptr ? 1 : 0;
  EXPECT_EQ(known, 10 * 4);
}

TEST(FindKind, GivesTheShortestRecordOfTheKind) {
  EXPECT_EQ(FindKind(0x00)->length, 28);
  EXPECT_EQ(FindKind(0x07)->length, 28);
  EXPECT_EQ(FindKind(0x0A)->length, 35);
  EXPECT_EQ(FindKind(0x0C)->length, 21);
  EXPECT_EQ(FindKind(0x13)->length, 29);
  EXPECT_EQ(FindKind(0x17)->length, 15);
}

TEST(FindKind, KnowsNoKindFrom0x18On) {
  for (int kind = 0x18; kind <= 0x3C; kind += 4) EXPECT_EQ(FindKind(static_cast<uint8_t>(kind | 1)), nullptr) << kind;
}
