// SPDX-License-Identifier: MIT
// Names, numbers, durations and widths.
#include "view/Text.h"

#include <gtest/gtest.h>

namespace vynctl {
namespace {

TEST(Printable, KeepsPrintableAscii) { EXPECT_EQ("+12V (A) ~", Printable("+12V (A) ~")); }

TEST(Printable, EscapesControlAndHighBytesAndTheBackslash) {
  EXPECT_EQ("a\\x1B[2J\\xFC\\x5C\\x00", Printable(std::string_view("a\x1b[2J\xfc\\\0", 8)));
}

TEST(IdPart, KeepsSignsAndReplacesTheRest) { EXPECT_EQ("+12V_CPU-0.9_", IdPart("+12V CPU-0.9#")); }

TEST(IdPart, NamesWhatHasNoName) { EXPECT_EQ("unnamed", IdPart("")); }

TEST(ParseByte, TakesDecimalAndHexadecimal) {
  EXPECT_EQ(0, ParseByte("0"));
  EXPECT_EQ(255, ParseByte("255"));
  EXPECT_EQ(255, ParseByte("0xFf"));
  EXPECT_EQ(10, ParseByte("010"));
}

TEST(ParseByte, RefusesEverythingElse) {
  for (const char* text : {"", "256", "-1", "+1", "1 ", " 1", "0x", "0x100", "x1", "1.0", "99999999999999999999"}) {
    EXPECT_EQ(std::nullopt, ParseByte(text)) << text;
  }
}

TEST(ParseNumber, TakesSignsFractionsAndExponents) {
  EXPECT_EQ(-1.5, ParseNumber("-1.5"));
  EXPECT_EQ(80, ParseNumber("+80"));
  EXPECT_EQ(1000, ParseNumber("1e3"));
}

TEST(ParseNumber, RefusesWhatIsNotFinite) {
  for (const char* text : {"", "nan", "inf", "1e999", "1,5", "5V", "--1"}) {
    EXPECT_EQ(std::nullopt, ParseNumber(text)) << text;
  }
}

TEST(Closest, FindsAMistypedWord) { EXPECT_EQ("wifi", Closest("wify", {"usb-power", "wifi", "tpm"})); }

TEST(Closest, FindsTheBeginningOfAWord) { EXPECT_EQ("bluetooth", Closest("blue", {"wifi", "bluetooth"})); }

TEST(Closest, OffersNothingFarAway) { EXPECT_EQ("", Closest("zzzzzz", {"wifi", "bluetooth"})); }

TEST(DurationWords, CountsMinutesAndSeconds) {
  EXPECT_EQ("1 second", DurationWords(1));
  EXPECT_EQ("59 seconds", DurationWords(59));
  EXPECT_EQ("1 minute", DurationWords(60));
  EXPECT_EQ("1 minute 1 second", DurationWords(61));
  EXPECT_EQ("4 minutes 15 seconds", DurationWords(255));
}

TEST(Trim, TakesWhiteSpaceFromBothEnds) {
  EXPECT_EQ("a b", Trim(" \ta b\r\n"));
  EXPECT_EQ("", Trim(" \t"));
}

TEST(Columns, CountsCharactersOfUtf8) { EXPECT_EQ(2u, Columns("\u00B0C")); }

TEST(Clip, CutsColumnsButKeepsColours) {
  EXPECT_EQ("\x1b[1mab\x1b[0m", Clip("\x1b[1mabcd\x1b[0m", 2));
  EXPECT_EQ("\u00B0", Clip("\u00B0C", 1));
}

TEST(Clip, EndsAtAnUnfinishedSequence) { EXPECT_EQ("a\x1b[3", Clip("a\x1b[3", 5)); }

}  // namespace
}  // namespace vynctl
