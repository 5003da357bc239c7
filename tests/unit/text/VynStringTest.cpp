// SPDX-License-Identifier: MIT
// The string, operation by operation.
#include "text/VynString.h"

#include <algorithm>
#include <climits>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

namespace {

/// Every byte from `from` to the end of the buffer is 0.
bool ZeroFrom(const VynString& text, int from) {
  return std::all_of(text.Buffer() + from, text.Buffer() + text.Capacity(), [](char byte) { return byte == 0; });
}

VynString WithoutBuffer() {
  VynString text("gone");
  text.Terminated();
  return text;
}

}  // namespace

TEST(VynStringLayout, HoldsSpareBufferCapacityLengthBehindTheVirtualTable) {
  EXPECT_TRUE(std::is_polymorphic_v<VynString>);
  EXPECT_EQ(sizeof(VynString), 32u);
  const VynString text("abc");
  const auto* bytes = reinterpret_cast<const char*>(&text);
  EXPECT_EQ(&text.spare_ - bytes, 8);
  EXPECT_EQ(reinterpret_cast<const char*>(&text.buffer_) - bytes, 16);
  EXPECT_EQ(reinterpret_cast<const char*>(&text.capacity_) - bytes, 24);
  EXPECT_EQ(reinterpret_cast<const char*>(&text.length_) - bytes, 28);
}

TEST(VynStringCreation, ADefaultStringHas32ZeroedBytes) {
  const VynString text;
  EXPECT_EQ(text.Capacity(), 32);
  EXPECT_EQ(text.Length(), 0);
  EXPECT_TRUE(text.IsEmpty());
  EXPECT_TRUE(ZeroFrom(text, 0));
}

TEST(VynStringCreation, ACapacityIsTakenExactly) {
  const VynString text(17);
  EXPECT_EQ(text.Capacity(), 17);
  EXPECT_EQ(text.Length(), 0);
  EXPECT_TRUE(ZeroFrom(text, 0));
}

TEST(VynStringCreation, ACapacityOfNothingStillEndsInATerminator) {
  for (int capacity : {0, -1, INT_MIN}) {
    VynString text(capacity);
    EXPECT_EQ(text.Capacity(), 0);
    EXPECT_STREQ(text.c_str(), "");
    text = "grown";
    EXPECT_STREQ(text.c_str(), "grown");
  }
}

TEST(VynStringCreation, ACopysCapacityIsTheMultipleOf32StrictlyAboveLengthPlusOne) {
  const struct {
    size_t length;
    int capacity;
  } cases[] = {{0, 32}, {30, 32}, {31, 64}, {32, 64}, {62, 64}, {63, 96}};
  for (const auto& [length, capacity] : cases) {
    const std::string text(length, 'x');
    const VynString source(text.c_str());
    const VynString copy(source);
    EXPECT_EQ(copy.Capacity(), capacity) << length;
    EXPECT_EQ(copy.Length(), static_cast<int>(length));
    EXPECT_STREQ(copy.c_str(), text.c_str());
  }
}

TEST(VynStringCreation, ACopyOfAStringWithoutABufferHasNoneEither) {
  const VynString source = WithoutBuffer();
  const VynString copy(source);
  EXPECT_EQ(copy.Buffer(), nullptr);
  EXPECT_EQ(copy.Capacity(), 0);
  EXPECT_EQ(copy.Length(), 0);
}

TEST(VynStringCreation, ANullTextGivesAnEmptyString) {
  const VynString text(static_cast<const char*>(nullptr));
  EXPECT_EQ(text.Capacity(), 32);
  EXPECT_STREQ(text.c_str(), "");
}

TEST(VynStringCreation, ACountTakesTheFirstCharacters) {
  const VynString text("abcdef", 4);
  EXPECT_STREQ(text.c_str(), "abcd");
  EXPECT_EQ(text.Length(), 4);
}

TEST(VynStringCopyBuffer, ACountLimitsTheTextButNotTheBuffer) {
  VynString text;
  const std::string longText(40, 'x');
  EXPECT_EQ(text.CopyBuffer(longText.c_str(), 3), 1);
  EXPECT_STREQ(text.c_str(), "xxx");
  EXPECT_EQ(text.Length(), 3);
  EXPECT_EQ(text.Capacity(), 64);
}

TEST(VynStringCopyBuffer, ACountBeyondTheTextCountsZerosBehindIt) {
  VynString text;
  EXPECT_EQ(text.CopyBuffer("abc", 1000), 1);
  EXPECT_STREQ(text.c_str(), "abc");
  EXPECT_EQ(text.Length(), 1000);
  EXPECT_TRUE(ZeroFrom(text, 3));
}

TEST(VynStringCopyBuffer, ANegativeCountTakesNothing) {
  VynString text("abc");
  EXPECT_EQ(text.CopyBuffer("abc", -1), 1);
  EXPECT_STREQ(text.c_str(), "");
  EXPECT_EQ(text.Length(), 0);
}

TEST(VynStringCopyBuffer, ANullTextChangesNothing) {
  VynString text("kept");
  EXPECT_EQ(text.CopyBuffer(nullptr), 0);
  EXPECT_EQ(text.CopyBuffer(nullptr, 3), 0);
  EXPECT_STREQ(text.c_str(), "kept");
}

TEST(VynStringCopyBuffer, AShorterTextKeepsTheBufferAndClearsItsRest) {
  VynString text("a longer text");
  const char* before = text.Buffer();
  text.CopyBuffer("short");
  EXPECT_EQ(text.Buffer(), before);
  EXPECT_STREQ(text.c_str(), "short");
  EXPECT_TRUE(ZeroFrom(text, 5));
}

TEST(VynStringCopyBuffer, ReallocatesWhenTheTerminatorWouldNotFit) {
  VynString text(4);
  text.CopyBuffer("abc");
  EXPECT_EQ(text.Capacity(), 4);
  text.CopyBuffer("abcd");
  EXPECT_EQ(text.Capacity(), 32);
  EXPECT_STREQ(text.c_str(), "abcd");
}

TEST(VynStringCopyBuffer, TakesATextOutOfItsOwnBuffer) {
  VynString text("abcdef");
  text.CopyBuffer(text.Buffer() + 2);
  EXPECT_STREQ(text.c_str(), "cdef");
  text = static_cast<const VynString&>(text);
  EXPECT_STREQ(text.c_str(), "cdef");
}

TEST(VynStringCopyBuffer, TheStaticFormCopiesTheSmallerOfCountAndSize) {
  char bytes[4] = {'-', '-', '-', '-'};
  char* destination = bytes;
  EXPECT_EQ(VynString::CopyBuffer("abcdef", 6, destination, 3), 1);
  EXPECT_EQ(std::string(bytes, 4), "abc-");
  EXPECT_EQ(VynString::CopyBuffer("xy", 1, destination, 3), 1);
  EXPECT_EQ(std::string(bytes, 4), "xbc-");
}

TEST(VynStringCopyBuffer, TheStaticFormRefusesNullAndCountsBelowOne) {
  char bytes[2] = {'-', '-'};
  char* destination = bytes;
  EXPECT_EQ(VynString::CopyBuffer(nullptr, 1, destination, 2), 0);
  EXPECT_EQ(VynString::CopyBuffer("a", 0, destination, 2), 0);
  EXPECT_EQ(VynString::CopyBuffer("a", -1, destination, 2), 0);
  EXPECT_EQ(bytes[0], '-');
}

TEST(VynStringInitialize, AllocatesAfreshAndKeepsTheEarlierBufferAllocated) {
  VynString text("kept");
  const char* earlier = text.Buffer();
  text.Initialize(48);
  EXPECT_EQ(text.Capacity(), 48);
  EXPECT_EQ(text.Length(), 0);
  EXPECT_STREQ(earlier, "kept");
  delete[] earlier;
}

TEST(VynStringTerminated, FreesTheBuffer) {
  const VynString text = WithoutBuffer();
  EXPECT_EQ(text.Buffer(), nullptr);
  EXPECT_EQ(text.Capacity(), 0);
  EXPECT_TRUE(text.IsEmpty());
}

TEST(VynStringTerminated, LeavesAStringThatEveryOperationTakes) {
  VynString text = WithoutBuffer();
  EXPECT_EQ(text[0], 0);
  EXPECT_EQ(text.Truncate(), 0);
  EXPECT_EQ(text.Pos("a"), 0);
  EXPECT_STREQ(text.SubString(1, 1).c_str(), "");
  EXPECT_STREQ(text.Trim().c_str(), "");
  EXPECT_STREQ(text.UpperCase().c_str(), "");
  EXPECT_STREQ(text.AfterDelimiter(',').c_str(), "");
  EXPECT_STREQ(text.BeforeDelimiter(',').c_str(), "");
  EXPECT_STREQ(text.GetStringInsideBrackets().c_str(), "");
  EXPECT_FALSE(text.IsNumeric());
  EXPECT_EQ(text.ToInt(7), 7);
  EXPECT_EQ(text.ToDouble(1.5), 1.5);
  EXPECT_TRUE(text.ToBool(true));
  EXPECT_EQ(text.Delete(1).Buffer(), nullptr);
  EXPECT_EQ(text.Delete(1, 1).Buffer(), nullptr);
  EXPECT_STREQ((text + "a").c_str(), "a");
  text = WithoutBuffer();
  EXPECT_EQ(text.Buffer(), nullptr);
  text += "again";
  EXPECT_STREQ(text.c_str(), "again");
  EXPECT_EQ(text.Length(), 5);
}

TEST(VynStringAppend, InPlaceLeavesTheStoredLength) {
  VynString text("abcd");
  text += "xyz";
  EXPECT_EQ(text.Capacity(), 32);
  EXPECT_EQ(text.Length(), 4);
  EXPECT_STREQ(text.c_str(), "abcdxyz");
}

TEST(VynStringAppend, InPlaceWritesBehindTheStoredLengthAgain) {
  VynString text("abcd");
  text += "xyz";
  text += "q";
  EXPECT_STREQ(text.c_str(), "abcdq");
  EXPECT_TRUE(ZeroFrom(text, 5));
}

TEST(VynStringAppend, IntoANewBufferUpdatesTheLength) {
  VynString text(std::string(20, 'a').c_str());
  text.AppendBuffer(std::string(12, 'b').c_str());
  EXPECT_EQ(text.Length(), 32);
  EXPECT_EQ(text.Capacity(), 64);
  EXPECT_EQ(text.c_str(), std::string(20, 'a') + std::string(12, 'b'));
  EXPECT_TRUE(ZeroFrom(text, 32));
}

TEST(VynStringAppend, A31CharacterSumStillFits32Bytes) {
  VynString text(std::string(20, 'a').c_str());
  text.AppendBuffer(std::string(11, 'b').c_str());
  EXPECT_EQ(text.Capacity(), 32);
  EXPECT_EQ(text.Length(), 20);
  EXPECT_EQ(text.c_str(), std::string(20, 'a') + std::string(11, 'b'));
}

TEST(VynStringAppend, ANullTextChangesNothing) {
  VynString text("kept");
  text.AppendBuffer(nullptr);
  text += WithoutBuffer();
  EXPECT_STREQ(text.c_str(), "kept");
}

TEST(VynStringAppend, TakesItself) {
  VynString shortText("ab");
  shortText += shortText;
  EXPECT_STREQ(shortText.c_str(), "abab");
  VynString longText(std::string(20, 'a').c_str());
  longText += longText.Buffer() + 5;
  EXPECT_EQ(longText.c_str(), std::string(35, 'a'));
}

TEST(VynStringTruncate, ShrinksToWhatTheLengthNeeds) {
  VynString text(200);
  text = "abc";
  EXPECT_EQ(text.Truncate(), 32);
  EXPECT_EQ(text.Capacity(), 32);
  EXPECT_STREQ(text.c_str(), "abc");
  EXPECT_EQ(text.Length(), 3);
}

TEST(VynStringTruncate, LeavesBuffersBelow32BytesAlone) {
  VynString text(31);
  const char* before = text.Buffer();
  EXPECT_EQ(text.Truncate(), 31);
  EXPECT_EQ(text.Buffer(), before);
}

TEST(VynStringTruncate, CutsAnInPlaceAppendixThatNoLongerFits) {
  VynString text(128);
  text = "abcd";
  text += std::string(60, 'x').c_str();
  EXPECT_EQ(text.Truncate(), 32);
  EXPECT_EQ(text.c_str(), "abcd" + std::string(27, 'x'));
}

TEST(VynStringIndex, RefersToCharactersAndTheTerminator) {
  VynString text("abc");
  EXPECT_EQ(text[0], 'a');
  EXPECT_EQ(text[2], 'c');
  EXPECT_EQ(&text[3], text.Buffer() + 3);
  text[1] = 'X';
  EXPECT_STREQ(text.c_str(), "aXc");
}

TEST(VynStringIndex, OutsideTheTextIsTheSpareCharacterSetToZero) {
  VynString text("abc");
  for (int index : {-1, 4, INT_MAX, INT_MIN}) {
    text[index] = 'X';
    EXPECT_EQ(text[index], 0);
    EXPECT_EQ(&text[index], &text.spare_);
  }
  EXPECT_STREQ(text.c_str(), "abc");
}

TEST(VynStringIndex, AnOverwrittenTerminatorStillLeavesAnEnd) {
  VynString text(4);
  text = "abc";
  text[3] = 'd';
  EXPECT_STREQ(text.c_str(), "abcd");
}

TEST(VynStringAssignment, TakesTextsOfEveryKind) {
  VynString text;
  text = "pointer";
  EXPECT_STREQ(text.c_str(), "pointer");
  text = std::string("standard");
  EXPECT_STREQ(text.c_str(), "standard");
  text = VynString("own");
  EXPECT_STREQ(text.c_str(), "own");
  text = static_cast<const char*>(nullptr);
  EXPECT_STREQ(text.c_str(), "own");
}

TEST(VynStringConcatenation, GivesANewStringWithItsWholeLength) {
  const VynString text("abcd");
  const VynString joined = text + "xyz";
  EXPECT_STREQ(joined.c_str(), "abcdxyz");
  EXPECT_EQ(joined.Length(), 7);
  EXPECT_STREQ(text.c_str(), "abcd");
  EXPECT_STREQ((text + VynString("!")).c_str(), "abcd!");
  EXPECT_STREQ(("<" + text).c_str(), "<abcd");
  EXPECT_EQ((text + "1" + "2" + "3").Length(), 7);
}

TEST(VynStringConcatenation, NullTextsAddNothing) {
  const char* null = nullptr;
  EXPECT_STREQ((VynString("a") + null).c_str(), "a");
  EXPECT_STREQ((null + VynString("a")).c_str(), "a");
  EXPECT_STREQ((WithoutBuffer() + WithoutBuffer()).c_str(), "");
}

TEST(VynStringComparison, OrdersByLengthBeforeBytes) {
  EXPECT_TRUE(VynString("b") < "aa");
  EXPECT_TRUE(VynString("b") < VynString("aa"));
  EXPECT_FALSE(VynString("b") > "aa");
  EXPECT_TRUE(VynString("aa") > VynString("b"));
  EXPECT_TRUE(VynString("ab") < "ac");
  EXPECT_TRUE(VynString("ac") > "ab");
  EXPECT_FALSE(VynString("ab") < VynString("ab"));
  EXPECT_FALSE(VynString("ab") > VynString("ab"));
}

TEST(VynStringComparison, CompareBufferGivesMinusOneOneOrTheBytesOrder) {
  EXPECT_EQ(VynString("zz").CompareBuffer("aaa"), -1);
  EXPECT_EQ(VynString("aaa").CompareBuffer("zz"), 1);
  EXPECT_EQ(VynString("same").CompareBuffer("same"), 0);
  EXPECT_LT(VynString("aa").CompareBuffer("ab"), 0);
  EXPECT_GT(VynString("\xFF").CompareBuffer("a"), 0);
}

TEST(VynStringComparison, EqualityNeedsLengthAndBytes) {
  EXPECT_TRUE(VynString("ab") == "ab");
  EXPECT_TRUE(VynString("ab") == VynString("ab"));
  EXPECT_TRUE(VynString("ab") != "AB");
  EXPECT_TRUE(VynString("ab") != VynString("abc"));
  EXPECT_FALSE(VynString("ab") != VynString("ab"));
}

TEST(VynStringComparison, TwoNullBuffersAreEqual) {
  EXPECT_TRUE(WithoutBuffer() == WithoutBuffer());
  EXPECT_FALSE(WithoutBuffer() != WithoutBuffer());
  EXPECT_EQ(WithoutBuffer().CompareBuffer(nullptr), 0);
  EXPECT_TRUE(WithoutBuffer() < VynString("a"));
}

TEST(VynStringSprintf, FormatsNumbersAndTexts) {
  EXPECT_STREQ(VynString::sprintf("%s=%d 0x%02X %5.2f", "a", -3, 10, 1.5).c_str(), "a=-3 0x0A  1.50");
}

TEST(VynStringSprintf, GivesEveryCharacterOfALongResult) {
  for (size_t length : {4095u, 4096u, 5000u, 32767u, 32768u, 100000u}) {
    const std::string text(length, 'x');
    const VynString result = VynString::sprintf("%s", text.c_str());
    EXPECT_EQ(result.Length(), static_cast<int>(length));
    EXPECT_EQ(result.c_str(), text);
  }
}

TEST(VynStringSprintf, ANullFormatGivesAnEmptyString) {
  const char* null = nullptr;
  EXPECT_STREQ(VynString::sprintf(null, 0).c_str(), "");
}

TEST(VynStringIntToStr, GivesDecimalText) {
  EXPECT_STREQ(VynString::IntToStr(0).c_str(), "0");
  EXPECT_STREQ(VynString::IntToStr(-42).c_str(), "-42");
  EXPECT_STREQ(VynString::IntToStr(LONG_MIN).c_str(), "-9223372036854775808");
}

TEST(IntToStr, GivesDecimalTextWithoutPadding) {
  VynString text;
  text = IntToStr(7u);
  EXPECT_STREQ(text.c_str(), "7");
  EXPECT_STREQ(IntToStr(0u).c_str(), "0");
  EXPECT_STREQ(IntToStr(12345678u).c_str(), "12345678");
  EXPECT_STREQ(IntToStr(4294967295u).c_str(), "4294967295");
}

TEST(VynStringCase, ChangesACopy) {
  const VynString text("aB1-z");
  EXPECT_STREQ(text.UpperCase().c_str(), "AB1-Z");
  EXPECT_STREQ(text.LowerCase().c_str(), "ab1-z");
  EXPECT_STREQ(text.c_str(), "aB1-z");
}

TEST(VynStringCase, TakesPlainTextsAndNull) {
  EXPECT_STREQ(VynString::UpperCase("abc").c_str(), "ABC");
  EXPECT_STREQ(VynString::LowerCase("ABC").c_str(), "abc");
  EXPECT_STREQ(VynString::UpperCase(nullptr).c_str(), "");
  EXPECT_STREQ(VynString::LowerCase(nullptr).c_str(), "");
}
