// SPDX-License-Identifier: MIT
// Case, blanks at the ends, and tolerant numbers.
#include "text/StringUtils.h"

#include <climits>

#include <gtest/gtest.h>

TEST(StringUtilsWhitespace, IsSpaceNewlineReturnTab) { EXPECT_EQ(StringUtils::WHITESPACE, " \n\r\t"); }

TEST(StringUtilsCase, ConvertsEveryCharacter) {
  EXPECT_EQ(StringUtils::UpperCase("aB1-\xE4"), "AB1-\xE4");
  EXPECT_EQ(StringUtils::LowerCase("Ab1-"), "ab1-");
  EXPECT_EQ(StringUtils::UpperCase(""), "");
}

TEST(StringUtilsTrim, RemovesAllFourWhitespaceCharacters) {
  const std::string text = " \r\n\ta b\t\n\r ";
  EXPECT_EQ(StringUtils::TrimLeft(text), "a b\t\n\r ");
  EXPECT_EQ(StringUtils::TrimRight(text), " \r\n\ta b");
  EXPECT_EQ(StringUtils::Trim(text), "a b");
}

TEST(StringUtilsTrim, LeavesNothingOfNothing) {
  for (const char* text : {"", " ", " \n\r\t"}) {
    EXPECT_EQ(StringUtils::TrimLeft(text), "");
    EXPECT_EQ(StringUtils::TrimRight(text), "");
    EXPECT_EQ(StringUtils::Trim(text), "");
  }
}

TEST(StringUtilsHex2Dec, ConvertsWithOrWithoutAPrefix) {
  const struct {
    const char* text;
    unsigned long value;
  } cases[] = {{" 0x1f ", 31},
               {"1F", 31},
               {"0X1f", 31},
               {"19", 25},
               {"0x9", 9},
               {"", 0},
               {" \t", 0},
               {"0x", 0},
               {"zz0x10", 16},
               {"\r\nff\n", 255},
               {"100000000", 0x100000000},
               {"FFFFFFFFFFFFF", 0xFFFFFFFFFFFFF}};
  for (const auto& [text, value] : cases) EXPECT_EQ(StringUtils::Hex2Dec(text, 7), value) << text;
}

TEST(StringUtilsHex2Dec, GivesTheDefaultForAnythingElse) {
  for (const char* text : {"0xG1", "1F h", "-1", "0x0x1", "0x 1", "1.5", "\xFF"})
    EXPECT_EQ(StringUtils::Hex2Dec(text, 7), 7u) << text;
}

TEST(StringUtilsHex2Dec, SaturatesBeyond64Bits) {
  EXPECT_EQ(StringUtils::Hex2Dec("FFFFFFFFFFFFFFFF", 7), ULONG_MAX);
  EXPECT_EQ(StringUtils::Hex2Dec("10000000000000000", 7), ULONG_MAX);
  EXPECT_EQ(StringUtils::Hex2Dec(std::string(100000, 'F'), 7), ULONG_MAX);
  EXPECT_EQ(StringUtils::Hex2Dec(std::string(100000, '0') + "12", 7), 0x12u);
}

TEST(StringUtilsStr2Dec, ConvertsDecimalDigits) {
  const struct {
    const char* text;
    unsigned long value;
  } cases[] = {{"12", 12}, {" 12\n", 12}, {"", 0}, {"0", 0}, {"4294967296", 4294967296}, {"0009", 9}};
  for (const auto& [text, value] : cases) EXPECT_EQ(StringUtils::Str2Dec(text, 7), value) << text;
}

TEST(StringUtilsStr2Dec, GivesTheDefaultForAnythingElse) {
  for (const char* text : {"-1", "+1", "1.5", "0x10", "A", "1 2"}) EXPECT_EQ(StringUtils::Str2Dec(text, 7), 7u) << text;
}

TEST(StringUtilsStr2Dec, SaturatesBeyond64Bits) {
  EXPECT_EQ(StringUtils::Str2Dec("18446744073709551616", 7), ULONG_MAX);
  EXPECT_EQ(StringUtils::Str2Dec(std::string(1000, '9'), 7), ULONG_MAX);
}
