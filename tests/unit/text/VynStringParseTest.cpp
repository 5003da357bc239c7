// SPDX-License-Identifier: MIT
// Strings as numbers, and numbers as strings.
#include <climits>
#include <cmath>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "text/VynString.h"

namespace {
const char* const kNull = nullptr;
}

TEST(VynStringTrim, RemovesSpacesAtTheEndsItIsToldTo) {
  const VynString text("  a b  ");
  EXPECT_STREQ(text.TrimLeft().c_str(), "a b  ");
  EXPECT_STREQ(text.TrimRight().c_str(), "  a b");
  EXPECT_STREQ(text.Trim().c_str(), "a b");
  EXPECT_EQ(text.Trim().Length(), 3);
  EXPECT_STREQ(VynString("    ").Trim().c_str(), "");
}

TEST(VynStringTrim, StopsAtTabsAndLineEnds) {
  EXPECT_STREQ(VynString("\t  a").Trim().c_str(), "\t  a");
  EXPECT_STREQ(VynString("a  \t").Trim().c_str(), "a  \t");
  EXPECT_STREQ(VynString(" \r\na\n ").Trim().c_str(), "\r\na\n");
}

TEST(VynStringAfterDelimiter, ReturnsWhatFollowsTheDelimiter) {
  EXPECT_STREQ(VynString("a=b").AfterDelimiter('=').c_str(), "b");
  EXPECT_STREQ(VynString("a=b=c").AfterDelimiter("=").c_str(), "b=c");
  EXPECT_STREQ(VynString::AfterDelimiter("a=b", '=').c_str(), "b");
  EXPECT_STREQ(VynString::AfterDelimiter("a=b", "=").c_str(), "b");
  EXPECT_STREQ(VynString("a=b").AfterDelimiter(VynString("=")).c_str(), "b");
}

TEST(VynStringAfterDelimiter, IsEmptyWithoutADelimiterOrAText) {
  EXPECT_STREQ(VynString("ab").AfterDelimiter('=').c_str(), "");
  EXPECT_STREQ(VynString("ab").AfterDelimiter("").c_str(), "");
  EXPECT_STREQ(VynString::AfterDelimiter(kNull, "=").c_str(), "");
  EXPECT_STREQ(VynString::AfterDelimiter(kNull, '=').c_str(), "");
  EXPECT_STREQ(VynString::AfterDelimiter("a=b", kNull).c_str(), "");
}

TEST(VynStringAfterDelimiter, SkipsAsManyCharactersAsThereAreDelimitersFromTheFirstMatch) {
  EXPECT_STREQ(VynString("x,;y").AfterDelimiter(",;").c_str(), "y");
  EXPECT_STREQ(VynString("x;,y").AfterDelimiter(",;").c_str(), "y");
  EXPECT_STREQ(VynString("x;yz").AfterDelimiter(",;").c_str(), "z");
}

TEST(VynStringAfterDelimiter, SkipsNoFurtherThanTheEnd) {
  EXPECT_STREQ(VynString("ab;").AfterDelimiter(",;:.").c_str(), "");
}

TEST(VynStringBeforeDelimiter, ReturnsWhatPrecedesTheWholeDelimiter) {
  EXPECT_STREQ(VynString("a=b=c").BeforeDelimiter('=').c_str(), "a");
  EXPECT_STREQ(VynString::BeforeDelimiter("a=b", '=').c_str(), "a");
  EXPECT_STREQ(VynString::BeforeDelimiter("a=b", "=").c_str(), "a");
  EXPECT_STREQ(VynString("x;y,;z").BeforeDelimiter(",;").c_str(), "x;y");
  EXPECT_STREQ(VynString("x,;z").BeforeDelimiter(VynString(",;")).c_str(), "x");
}

TEST(VynStringBeforeDelimiter, IsTheWholeTextWithoutADelimiter) {
  EXPECT_STREQ(VynString("ab").BeforeDelimiter('=').c_str(), "ab");
  EXPECT_STREQ(VynString("ab").BeforeDelimiter(kNull).c_str(), "ab");
  EXPECT_STREQ(VynString("ab").BeforeDelimiter("abc").c_str(), "ab");
  EXPECT_STREQ(VynString::BeforeDelimiter(kNull, "=").c_str(), "");
  EXPECT_STREQ(VynString::BeforeDelimiter(kNull, '=').c_str(), "");
}

TEST(VynStringMarks, ReturnTheTextBetweenThem) {
  EXPECT_STREQ(VynString("a(b)c").GetStringInsideBrackets().c_str(), "b");
  EXPECT_STREQ(VynString::GetStringInsideBrackets("a(b)c").c_str(), "b");
  EXPECT_STREQ(VynString("a<<b>>c").GetStringInsideMarks("<<", ">>").c_str(), "b");
  EXPECT_STREQ(VynString("a<b>c").GetStringInsideMarks('<', '>').c_str(), "b");
  EXPECT_STREQ(VynString("a<b>c").GetStringInsideMarks(VynString("<"), VynString(">")).c_str(), "b");
  EXPECT_STREQ(VynString::GetStringInsideMarks("a<b>c", "<", ">").c_str(), "b");
  EXPECT_STREQ(VynString::GetStringInsideMarks("a<b>c", '<', '>').c_str(), "b");
}

TEST(VynStringMarks, EqualMarksFindNothingBetweenThem) {
  EXPECT_STREQ(VynString("say \"hi\" now").GetStringInsideQutotes().c_str(), "");
  EXPECT_STREQ(VynString::GetStringInsideQutotes("\"hi\"").c_str(), "");
  EXPECT_STREQ(VynString("|a|").GetStringInsideMarks("|", "|").c_str(), "");
}

TEST(VynStringMarks, TheCloseMarkIsSearchedFromTheStart) {
  EXPECT_STREQ(VynString("a)b(c)").GetStringInsideBrackets().c_str(), "");
}

TEST(VynStringMarks, AnAbsentOpenMarkCountsAsPositionZero) {
  // From position 0 + 1 up to the close mark at 4: three characters.
  EXPECT_STREQ(VynString("abc)d").GetStringInsideBrackets().c_str(), "abc");
}

TEST(VynStringMarks, AreEmptyWithoutACloseMarkOrWithNull) {
  EXPECT_STREQ(VynString("a(bc").GetStringInsideBrackets().c_str(), "");
  EXPECT_STREQ(VynString("a(b)").GetStringInsideMarks(kNull, ")").c_str(), "");
  EXPECT_STREQ(VynString("a(b)").GetStringInsideMarks("(", kNull).c_str(), "");
  EXPECT_STREQ(VynString::GetStringInsideMarks(kNull, "(", ")").c_str(), "");
  EXPECT_STREQ(VynString::GetStringInsideBrackets(kNull).c_str(), "");
}

TEST(VynStringPos, IsTheOneBasedFirstPosition) {
  const VynString text("abcabc");
  EXPECT_EQ(text.Pos("a"), 1);
  EXPECT_EQ(text.Pos("ca"), 3);
  EXPECT_EQ(text.Pos(VynString("abcabc")), 1);
  EXPECT_EQ(text.Pos(""), 1);
  EXPECT_EQ(VynString("").Pos(""), 1);
}

TEST(VynStringPos, IsZeroWhenThereIsNone) {
  const VynString text("abc");
  EXPECT_EQ(text.Pos("x"), 0);
  EXPECT_EQ(text.Pos("abcd"), 0);
  EXPECT_EQ(text.Pos(kNull), 0);
}

TEST(VynStringSubString, TakesPiecesInsideTheText) {
  const VynString text("abcd");
  const struct {
    int start, count;
    const char* piece;
  } cases[] = {{1, 2, "ab"},   {3, 2, "cd"},  {0, 2, "ab"},      {-7, 2, "ab"},        {2, 0, ""},
               {2, -1, ""},    {4, 1, "d"},   {4, 99, "d"},      {5, 1, ""},           {INT_MAX, 1, ""},
               {1, 4, "abcd"}, {2, 9, "bcd"}, {INT_MIN, 1, "a"}, {1, INT_MAX, "abcd"}, {1, INT_MIN, ""}};
  for (const auto& [start, count, piece] : cases) {
    const VynString found = text.SubString(start, count);
    EXPECT_STREQ(found.c_str(), piece) << start << ", " << count;
    EXPECT_EQ(found.Length(), static_cast<int>(std::string(piece).size()));
  }
}

TEST(VynStringSubString, WithoutACountGoesToTheEnd) {
  const VynString text("abcd");
  EXPECT_STREQ(text.SubString(2).c_str(), "bcd");
  EXPECT_STREQ(text.SubString(0).c_str(), "abcd");
  EXPECT_STREQ(text.SubString(5).c_str(), "");
}

TEST(VynStringDelete, MovesTheTailToTheBeginning) {
  const struct {
    int index, count;
    const char* left;
  } cases[] = {
      {1, 2, "cdef"},    // the ordinary deletion
      {0, 2, "cdef"},    // below 1 counts as 1
      {3, 2, "efcd"},    // not "abef": the tail "ef" overwrites "ab"
      {2, 1, "cdefe"},   // tail "cdef" over "abcd", then one byte behind it and the byte before the gap is cleared
      {3, 3, "abc"},     // one character behind the gap: the first three stay
      {3, 99, "abc"},    // the gap reaches the end
      {1, 5, ""},        // one character behind the gap, index 1: nothing stays
      {1, INT_MAX, ""},  //
      {7, 1, "abcdef"},  // behind the text
      {1, 0, "abcdef"},  // an empty gap at the beginning
      {1, -4, "abcdef"}, {3, 0, "cdefef"},  // an empty gap moves the tail all the same
  };
  for (const auto& [index, count, left] : cases) {
    VynString text("abcdef");
    EXPECT_STREQ(text.Delete(index, count).c_str(), left) << index << ", " << count;
    EXPECT_STREQ(text.c_str(), left);
    EXPECT_EQ(text.Length(), static_cast<int>(std::string(left).size()));
  }
}

TEST(VynStringDelete, WithoutACountKeepsTheFirstIndexCharacters) {
  const struct {
    int index;
    const char* left;
  } cases[] = {{3, "abc"}, {2, "ab"}, {1, ""}, {0, ""}, {-5, ""}, {6, "abcdef"}, {INT_MAX, "abcdef"}};
  for (const auto& [index, left] : cases) {
    VynString deleted("abcdef");
    VynString shortened("abcdef");
    EXPECT_STREQ(deleted.Delete(index).c_str(), left) << index;
    EXPECT_STREQ(shortened.SetLength(index).c_str(), left) << index;
    EXPECT_STREQ(deleted.c_str(), left);
    EXPECT_STREQ(shortened.c_str(), left);
    EXPECT_EQ(shortened.Length(), static_cast<int>(std::string(left).size()));
  }
}

TEST(VynStringHex, TakesPrefixAndDigitsButNoNine) {
  const struct {
    const char* text;
    int accepted;
    unsigned long value;
  } cases[] = {{"0x1A", 1, 26},
               {"0X1a", 1, 26},
               {"0xF", 1, 15},
               {"0x8", 1, 8},
               {"0x00000010", 1, 16},
               {"0xFFFFFFFFFFFFFFFF", 1, 0xFFFFFFFFFFFFFFFF},
               {"0x10000000000000001", 1, 1},  // modulo 2^64
               {"0x19", 0, 0},
               {"0x9", 0, 0},
               {"0x", 0, 0},
               {"1A", 0, 0},
               {"1Ah", 0, 0},
               {"", 0, 0},
               {"0xG", 0, 0},
               {"x1A", 0, 0},
               {"0x1 ", 0, 0},
               {"-0x1", 0, 0}};
  for (const auto& [text, accepted, expected] : cases) {
    unsigned long value = 77;
    EXPECT_EQ(VynString(text).CheckHexString(&value), accepted) << text;
    EXPECT_EQ(value, accepted ? expected : 77) << text;
    EXPECT_EQ(VynString(text).IsHex(), accepted == 1) << text;
  }
}

TEST(VynStringNumeric, IsWhatStrtodReadsToTheEnd) {
  for (const char* text : {"12", "-1.5e3", "0x19", "", " 7", "inf", "nan", "0x1A"})
    EXPECT_TRUE(VynString(text).IsNumeric()) << text;
  for (const char* text : {"abc", "12x", "7 ", "0x", "20H", " ", "1 2"})
    EXPECT_FALSE(VynString(text).IsNumeric()) << text;
}

TEST(VynStringNumeric, CheckStoresTheValueOnSuccessOnly) {
  double value = 7;
  EXPECT_EQ(VynString("2.5").CheckNumericString(&value), 1);
  EXPECT_EQ(value, 2.5);
  EXPECT_EQ(VynString("2.5x").CheckNumericString(&value), 0);
  EXPECT_EQ(value, 2.5);
  EXPECT_EQ(VynString("2.5").CheckNumericString(nullptr), 1);
}

TEST(VynStringToInt, ConvertsDecimalAndHexadecimalElseTheDefault) {
  const struct {
    const char* text;
    long value;
  } cases[] = {{"12", 12}, {"0x10", 16}, {"0XFFFF", 65535}, {"0x19", 25},  {"19", 19},
               {"-3", -3}, {"2.9", 2},   {"-2.9", -2},      {"1e3", 1000}, {"abc", 7},
               {"20H", 7}, {"12 ", 7},   {"0x", 7},         {"", 0}};  // strtod consumes an empty text
  for (const auto& [text, value] : cases) {
    EXPECT_EQ(VynString(text).ToInt(7), value) << text;
    EXPECT_EQ(VynString(text).ToIntDef(7), value) << text;
    EXPECT_EQ(VynString::ToInt(text, 7), value) << text;
    EXPECT_EQ(VynString::ToIntDef(text, 7), value) << text;
  }
  EXPECT_EQ(VynString::ToInt(nullptr, 7), 7);
}

TEST(VynStringToInt, GivesDefinedValuesOutsideTheRange) {
  const struct {
    const char* text;
    long value;
  } cases[] = {{"9223372036854775808", LONG_MIN},  // 2^63: its bits as a signed number
               {"0xFFFFFFFFFFFFF800", -2048},      // the largest double below 2^64
               {"18446744073709551616", -1},       // 2^64
               {"1e300", -1},
               {"inf", -1},
               {"-9223372036854775808", LONG_MIN},
               {"-1e300", LONG_MIN},
               {"-inf", LONG_MIN},
               {"nan", 0}};
  for (const auto& [text, value] : cases) EXPECT_EQ(VynString(text).ToInt(7), value) << text;
}

TEST(VynStringToDouble, ConvertsElseTheDefault) {
  EXPECT_EQ(VynString("2.5").ToDouble(7), 2.5);
  EXPECT_EQ(VynString("0x1A").ToDouble(7), 26);
  EXPECT_EQ(VynString("").ToDouble(7), 0);
  EXPECT_EQ(VynString("abc").ToDouble(7.5), 7.5);
  EXPECT_TRUE(std::isinf(VynString("inf").ToDouble(7)));
  EXPECT_EQ(VynString::ToDouble("-1", 7), -1);
  EXPECT_EQ(VynString::ToDouble(nullptr, 7.5), 7.5);
}

TEST(VynStringToBool, KnowsFourTextsInAnyCase) {
  for (bool otherwise : {false, true}) {
    for (const char* text : {"1", "true", "TRUE", "True"}) EXPECT_TRUE(VynString(text).ToBool(otherwise)) << text;
    for (const char* text : {"0", "false", "FALSE"}) EXPECT_FALSE(VynString(text).ToBool(otherwise)) << text;
    for (const char* text : {"yes", "2", "", "10", " 1", "truely"})
      EXPECT_EQ(VynString(text).ToBool(otherwise), otherwise) << text;
  }
}
