// SPDX-License-Identifier: MIT
// Which readings are doubted, by the commands of their records.
#include "board/Sensors.h"

#include <gtest/gtest.h>

#include "firmware/IadtBuilder.h"

namespace vynctl {
namespace {

using firmware::Command;
using firmware::IadtBuilder;
using firmware::Record;

Value Reading(const char* quantity, const char* name, double number) {
  return {.name = name, .quantity = quantity, .data = number};
}

/// The words of the doubt about one reading; empty when it stays ok.
std::string Doubt(const IadtBuilder& table, bool msrOpens, Value reading) {
  std::vector<Value> values = {std::move(reading)};
  Doubts(table.Build(), [msrOpens] { return msrOpens; }).Mark(values);
  EXPECT_EQ(values[0].words.empty() ? State::kOk : State::kDoubtful, values[0].state);
  return values[0].words;
}

IadtBuilder TableOf(const char* quantity, uint8_t kind, const Command& command) {
  return IadtBuilder().Add(Record::Sensor(quantity, kind).Name("X").Commands({command}));
}

const IadtBuilder kMsr = TableOf("temperature", 3, Command::Msr(0x19C).Get());
const IadtBuilder kSmbus = TableOf("fan", 3, Command::Smbus(0x5A, 0x30).Get());
constexpr char kNoDevice[] = "read from a processor register, but /dev/cpu/0/msr does not open";

TEST(Doubts, AreAboutEveryReadingOfAMissingDevice) {
  EXPECT_EQ(kNoDevice, Doubt(kMsr, false, Reading("temperature", "X", 0)));
  EXPECT_EQ(kNoDevice, Doubt(kMsr, false, Reading("temperature", "X", 48)));
}

TEST(Doubts, AreAboutExactZerosOfRegisterDevices) {
  EXPECT_EQ("exactly 0, read from a processor register, is also what a failed read gives",
            Doubt(kMsr, true, Reading("temperature", "X", 0)));
  EXPECT_EQ("exactly 0, read from the SMBus, is also what a failed read gives",
            Doubt(kSmbus, true, Reading("fan-speed", "X", 0)));
  EXPECT_EQ("", Doubt(kMsr, true, Reading("temperature", "X", 0.5)));
  EXPECT_EQ("", Doubt(kSmbus, true, Reading("fan-speed", "X", 1)));
}

TEST(Doubts, AreNotAboutOtherSensors) {
  EXPECT_EQ("", Doubt(kMsr, false, Reading("temperature", "Y", 0)));
  EXPECT_EQ("", Doubt(kMsr, false, Reading("voltage", "X", 0)));
  EXPECT_EQ("", Doubt(TableOf("temperature", 2, Command::IndexData(0x70, 0x71, 1).Get()), false,
                      Reading("temperature", "X", 0)));
}

TEST(Doubts, PassCommandsOverThatReadNothing) {
  EXPECT_EQ("", Doubt(TableOf("temperature", 3, Command::Msr(0x19C).Set()), false, Reading("temperature", "X", 0)));
}

TEST(Doubts, LeaveFailuresAlone) {
  std::vector<Value> values = {Failed({.name = "X", .quantity = "fan-speed"}, 0x501)};
  Doubts(kSmbus.Build(), [] { return true; }).Mark(values);
  EXPECT_EQ(State::kFault, values[0].state);
}

TEST(Doubts, NeedATable) {
  EXPECT_FALSE(Doubts({}, [] { return false; }).Any());
  EXPECT_TRUE(Doubts(kMsr.Build(), [] { return false; }).Any());
}

}  // namespace
}  // namespace vynctl
