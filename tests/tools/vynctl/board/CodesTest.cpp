// SPDX-License-Identifier: MIT
// Codes in words.
#include "board/Codes.h"

#include <gtest/gtest.h>

#include <initializer_list>

#include "board/Features.h"

namespace vynctl {
namespace {

TEST(WordsFor, NamesFamilyAndReason) {
  EXPECT_EQ("Wi-Fi: the board does not offer it", WordsFor(0xE00));
  EXPECT_EQ("LVDS panel state: the hardware is in none of the listed states", WordsFor(0x601));
  EXPECT_EQ("backlight: the commands of the entry failed", WordsFor(0x1901));
  EXPECT_EQ("JGPIO power: no entry of the board has this value", WordsFor(0x1C03));
}

TEST(WordsFor, HasWordsForEveryGlobalCode) {
  for (uint64_t code : std::initializer_list<uint64_t>{0, 1, 12, 13, 16, 17, 18, 19, 20, 21}) {
    EXPECT_EQ(std::string::npos, WordsFor(code).find("unknown code")) << code;
  }
}

TEST(WordsFor, HasWordsForEveryCodeOfTheSensorsTheWatchdogAndTheFans) {
  for (uint64_t code : std::initializer_list<uint64_t>{
           0x300,  0x301,  0x302,  0x304,  0x305,  0x306,  0x400,  0x404,  0x405,  0x407,  0x500,  0x501,
           0x505,  0x506,  0x1A00, 0x1A03, 0x1A04, 0x1A05, 0x1700, 0x1701, 0x1702, 0x1703, 0x1704, 0x1705,
           0x1706, 0x1707, 0x1708, 0x1709, 0x170A, 0x1800, 0x1801, 0x1802, 0x1803, 0x1804, 0x1805, 0x1806}) {
    EXPECT_EQ(std::string::npos, WordsFor(code).find("unknown")) << std::hex << code;
  }
}

TEST(WordsFor, HasWordsForEveryFeature) {
  for (const Feature& feature : Features()) {
    ASSERT_NE(nullptr, FamilyName(feature.family)) << feature.name;
    const bool fails = feature.setter != nullptr && feature.getter != nullptr;
    for (uint64_t code : std::initializer_list<uint64_t>{0x00, 0x01, fails ? 0x02u : 0x00u}) {
      EXPECT_EQ(std::string::npos, WordsFor((uint64_t{feature.family} << 8) | code).find("unknown")) << feature.name;
    }
  }
}

TEST(WordsFor, AdmitsThatItDoesNotKnow) {
  EXPECT_EQ("unknown code 0x7F42", WordsFor(0x7F42));
  EXPECT_EQ("unknown code 0x1000", WordsFor(0x1000));
  EXPECT_EQ("Wi-Fi: unknown reason", WordsFor(0xE99));
  EXPECT_EQ("unknown code 0x10E00", WordsFor(0x10E00));
}

TEST(MeansUnavailable, TellsMissingFromBroken) {
  for (uint64_t code :
       std::initializer_list<uint64_t>{0x300, 0xE00, 0x305, 0x405, 0x506, 0x1A05, 0x1707, 0x1806, 0x10}) {
    EXPECT_TRUE(MeansUnavailable(code)) << std::hex << code;
  }
  for (uint64_t code : std::initializer_list<uint64_t>{0x301, 0x601, 0x204, 0x1702, 0x15, 0x01})
    EXPECT_FALSE(MeansUnavailable(code)) << std::hex << code;
}

TEST(Features, HaveDistinctNamesAndFunctions) {
  for (const Feature& a : Features()) {
    EXPECT_TRUE(a.getter != nullptr || a.setter != nullptr) << a.name;
    for (const Feature& b : Features()) {
      if (&a == &b) continue;
      EXPECT_STRNE(a.name, b.name);
      EXPECT_NE(a.family, b.family) << a.name;
    }
  }
}

TEST(Features, CoverAllFortyThreeFunctions) {
  int functions = 0;
  for (const Feature& feature : Features()) functions += (feature.getter != nullptr) + (feature.setter != nullptr);
  EXPECT_EQ(43, functions);
}

}  // namespace
}  // namespace vynctl
