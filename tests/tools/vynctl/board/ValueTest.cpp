// SPDX-License-Identifier: MIT
// Values: states, digits, identifiers, and how people read them.
#include "board/Value.h"

#include <gtest/gtest.h>

#include <limits>

#include "view/BoardText.h"

namespace vynctl {
namespace {

TEST(Measured, KeepsTheDigitsThatAFloatCarries) {
  EXPECT_EQ(Data(1.6), Measured({}, 1.6f).data);
  EXPECT_EQ(Data(-9.5), Measured({}, -9.5f).data);
}

TEST(Measured, TurnsWhatIsNotFiniteIntoAFault) {
  for (float reading : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                        -std::numeric_limits<float>::infinity()}) {
    const Value value = Measured({}, reading);
    EXPECT_EQ(State::kFault, value.state);
    EXPECT_EQ(Data(), value.data);
    EXPECT_NE("", value.words);
  }
}

TEST(Failed, TakesStateAndWordsFromTheCode) {
  const Value missing = Failed({}, 0x305), broken = Failed({}, 0x301);
  EXPECT_EQ(State::kUnavailable, missing.state);
  EXPECT_EQ(State::kFault, broken.state);
  EXPECT_EQ("voltage: the sensor read 0, which counts as no reading", broken.words);
}

TEST(ShownData, UsesTheDecimalsOfTheQuantity) {
  EXPECT_EQ("12.000", ShownData({.quantity = "voltage", .data = 12.0}));
  EXPECT_EQ("45.0", ShownData({.quantity = "temperature", .data = 45.0}));
  EXPECT_EQ("1.845e+19", ShownData({.quantity = "temperature", .data = 18446744073709551616.0}));
}

TEST(ShownData, ShowsListsFlagsAndFailures) {
  EXPECT_EQ("0 2", ShownData({.data = std::vector<uint8_t>{0, 2}}));
  EXPECT_EQ("yes", ShownData({.data = true}));
  EXPECT_EQ("fault", ShownData(Failed({}, 0x301)));
}

TEST(MakeIdsUnique, NumbersTheRepetitions) {
  std::vector<Value> values = {
      {.id = "a", .name = "A"}, {.id = "b"}, {.id = "a", .name = "A"}, {.id = "a", .name = "A"}};
  MakeIdsUnique(values);
  EXPECT_EQ("a", values[0].id);
  EXPECT_EQ("a#2", values[2].id);
  EXPECT_EQ("a#3", values[3].id);
  EXPECT_EQ("A#3", DistinctName(values[3]));
}

TEST(ShortData, EndsInNoZero) {
  const auto shortened = [](double volts) { return ShortData({.quantity = "voltage", .data = volts}); };
  EXPECT_EQ("12", shortened(12));
  EXPECT_EQ("11.986", shortened(11.9855995));
  EXPECT_EQ("1.5", shortened(1.5));
  EXPECT_EQ("100", shortened(100));
  EXPECT_EQ("0", shortened(-0.0001));
  EXPECT_EQ("1.500e+10", shortened(1.5e10));
  EXPECT_EQ("1200", ShortData({.quantity = "fan-speed", .data = int64_t{1200}}));
}

}  // namespace
}  // namespace vynctl
