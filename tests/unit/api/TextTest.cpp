// SPDX-License-Identifier: MIT
// Parts of texts, found and taken out.
#include "api/Text.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

using api::FanNameMatches;
using api::IsSubStrInStr;

namespace {

/// The 20 bytes that are left of a name without "Mode".
std::string WithoutMode(const std::string& name) {
  char buffer[21] = {};
  std::memcpy(buffer, name.data(), std::min<size_t>(name.size(), 20));
  buffer[20] = '!';
  api::RemoveSubStr(20, buffer, "Mode");
  EXPECT_EQ(buffer[20], '!');
  return std::string(buffer, 20);
}

std::string Padded(std::string text) {
  text.resize(20, '\0');
  return text;
}

}  // namespace

TEST(IsSubStrInStr, FindsAPatternAnywhere) {
  EXPECT_NE(IsSubStrInStr("CPU Fan", "CPU"), 0);
  EXPECT_NE(IsSubStrInStr("CPU Fan", "Fan"), 0);
  EXPECT_NE(IsSubStrInStr("CPU Fan", "CPU Fan"), 0);
  EXPECT_EQ(IsSubStrInStr("CPU Fan", "fan"), 0);
  EXPECT_EQ(IsSubStrInStr("CPU", "CPU Fan"), 0);
}

TEST(IsSubStrInStr, FindsNothingInAnEmptyText) {
  EXPECT_EQ(IsSubStrInStr("", ""), 0);
  EXPECT_EQ(IsSubStrInStr("", "a"), 0);
}

TEST(RemoveSubStr, RemovesTheFirstOccurrenceAndClosesTheGap) {
  EXPECT_EQ(WithoutMode("CPU Fan Mode"), Padded("CPU Fan "));
  EXPECT_EQ(WithoutMode("ModeCPU"), Padded("CPU"));
  EXPECT_EQ(WithoutMode("a Mode Mode b"), Padded("a  Mode b"));
}

TEST(RemoveSubStr, LeavesATextWithoutThePatternAlone) {
  EXPECT_EQ(WithoutMode("CPU Fan mode"), Padded("CPU Fan mode"));
  EXPECT_EQ(WithoutMode(""), Padded(""));
}

TEST(RemoveSubStr, HandlesATextThatFillsItsBuffer) {
  EXPECT_EQ(WithoutMode("System Fan Aux1 Mode"), Padded("System Fan Aux1 "));
  EXPECT_EQ(WithoutMode("Mode234567890abcdefg"), Padded("234567890abcdefg"));
  EXPECT_EQ(WithoutMode("12345678901234567890"), "12345678901234567890");
}

TEST(RemoveSubStr, LeavesNothingOfThePatternAlone) { EXPECT_EQ(WithoutMode("Mode"), Padded("")); }

TEST(FanNameMatches, FindsAWholeText) {
  EXPECT_TRUE(FanNameMatches("CPU Fan Mode", "CPU Fan"));
  EXPECT_TRUE(FanNameMatches("CPU Fan Mode", "Fan"));
  EXPECT_TRUE(FanNameMatches("CPU Fan Mode", "CPU Fan Mode"));
  EXPECT_FALSE(FanNameMatches("CPU Fan Mode", "SYS Fan"));
}

TEST(FanNameMatches, AddsUpPartialMatchesAtSeveralPositions) {
  // 'a' and 'b' of "abx" and 'a' of "axx": 2 + 1 equal characters come to the 3 of "abc".
  EXPECT_TRUE(FanNameMatches("abxaxx", "abc"));
  // "Ix" and "Iy" give one each for "Id".
  EXPECT_TRUE(FanNameMatches("IxIy", "Id"));
}

TEST(FanNameMatches, FailsWhenTheSumJumpsOverTheLength) {
  // 1 for "a--", then 3 for "abc": 4 is never 3.
  EXPECT_FALSE(FanNameMatches("a--abc", "abc"));
}

TEST(FanNameMatches, PassesOverPositionsThatLeaveNoRoom) {
  // The last 'a' leaves no room for "ab".
  EXPECT_FALSE(FanNameMatches("axa", "ab"));
  EXPECT_FALSE(FanNameMatches("ab", "abc"));
}

TEST(FanNameMatches, MatchesNothingWithAnEmptyText) {
  EXPECT_FALSE(FanNameMatches("CPU", ""));
  EXPECT_FALSE(FanNameMatches("", ""));
  EXPECT_FALSE(FanNameMatches("", "CPU"));
}
