// SPDX-License-Identifier: MIT
// Every rule with a mistake that breaks it, and with what would be right in its place.
#include "diagnosis/Rules.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "diagnosis/Check.h"
#include "firmware/IadtBuilder.h"

using namespace layout;

namespace {

using namespace diagnosis;
using firmware::Command;
using firmware::IadtBuilder;
using firmware::Record;
using testing::Contains;
using testing::Not;

std::set<std::string> RulesBroken(const IadtBuilder& builder) {
  std::set<std::string> ids;
  for (const Finding& finding : CheckImage({Kind::kIadt, "x", builder.Build()})) ids.emplace(finding.rule->id);
  return ids;
}

struct RuleCase {
  const char* rule;
  IadtBuilder wrong, right;
};

void Expect(const std::vector<RuleCase>& cases) {
  for (const RuleCase& c : cases) {
    SCOPED_TRACE(c.rule);
    EXPECT_THAT(RulesBroken(c.wrong), Contains(c.rule));
    EXPECT_THAT(RulesBroken(c.right), Not(Contains(c.rule)));
  }
}

TEST(Rules, HaveIdentifiersOfTheirOwnAndAllThatHelps) {
  std::set<std::string_view> ids;
  for (const RuleRow& row : kRules) {
    EXPECT_TRUE(ids.insert(row.id).second) << row.id;
    EXPECT_TRUE(row.reason.ends_with('.') && row.cure.ends_with('.')) << row.id;
  }
}

// --- sensors ---

Record Voltage() { return Record::Sensor("voltage", 3).Name("A").Parameter("step", 16); }
Record Temperature() {
  return Record::Sensor("temperature", 1)
      .Name("A")
      .Parameter("divisor", 1)
      .Parameter("fraction_divisor", 1)
      .Commands({Command::Port(0x80).Get()});
}
Record Difference() {
  return Record::Sensor("temperature", 3)
      .Name("A")
      .Parameter("width", 7)
      .Parameter("subtrahend_width", 7)
      .Commands({Command::Msr(0x1A2).Get(), Command::Msr(0x19C).Get()});
}
IadtBuilder Table(const Record& record) { return IadtBuilder().Add(record); }

TEST(Rules, OfSensors) {
  const Record silent = Voltage(), read = Voltage().Commands({Command::Smbus(0x5A, 1).Get()});
  const Command writes = Command::Smbus(0x5A, 1).Width(1).Control(kGetWrites), sets = Command::Smbus(0x5A, 1).Set();
  const auto fan = [](std::vector<Command> commands) {
    return Table(Record::Sensor("fan", 2).Name("F").Commands(commands));
  };
  const Command port = Command::Port(0x80).Get();
  Expect({
      {"sensor-silent", Table(silent), Table(read)},
      {"sensor-silent", Table(Voltage().Commands({writes})), Table(read)},
      {"sensor-silent", Table(Voltage().Commands({sets})), Table(read)},
      {"sensor-write-only", Table(Voltage().Commands({sets})), Table(read)},
      {"sensor-half", fan({port}), fan({port, port})},
      {"sensor-half", fan({port}), Table(Temperature())},
      {"sensor-half", Table(Record::Sensor("temperature", 3).Parameter("subtrahend_width", 1).Commands({port})),
       Table(Record::Sensor("temperature", 3).Commands({port}))},
      {"sensor-divisor", Table(Temperature().Parameter("divisor", 0)), Table(Temperature())},
      {"sensor-divisor", Table(Temperature().Parameter("fraction_divisor", 0)), Table(Temperature())},
      {"sensor-divider", Table(Record(read).Parameter("r1", 10)),
       Table(Record(read).Parameter("r1", 10).Parameter("r2", 1))},
      {"sensor-step", Table(Record(read).Parameter("step", 0)), Table(read)},
      {"sensor-width", Table(Difference().Parameter("width", 0)), Table(Difference())},
      {"sensor-shift", Table(Difference().Parameter("shift", 64)), Table(Difference().Parameter("shift", 63))},
      {"sensor-shift", Table(Temperature().Parameter("shift", 8)), Table(Temperature().Parameter("shift", 7))},
      {"sensor-twice", IadtBuilder().Add(read).Add(read), IadtBuilder().Add(read).Add(Record(read).Name("B"))},
      {"name-unterminated", Table(Record(read).Name("ABCDEFGHIJKLMNOPQRST")),
       Table(Record(read).Name("ABCDEFGHIJKLMNOPQRS"))},
  });
}

// --- fans ---

Record Mode(const char* name, uint8_t mode, std::vector<uint32_t> arguments = {}) {
  std::vector<Command> commands = {Command::Port(0x80).Get(3, mode).Set(0xFC, mode)};
  for (const uint32_t argument : arguments) commands.push_back(Command::Port(0x81).Get().Set().Argument(argument));
  return Record::Feature("FanConfig").Name(name).Value(mode).Commands(commands);
}
IadtBuilder Fans(std::initializer_list<Record> records) {
  IadtBuilder builder;
  for (const Record& record : records) builder.Add(record);
  return builder;
}

TEST(Rules, OfFans) {
  Expect({
      {"fan-id-name", Fans({Mode("CPU II FanMode", 0)}), Fans({Mode("CPU I FanMode", 0)})},
      {"fan-id-missing", Fans({Mode("CPU Fan", 240)}), Fans({Mode("CPU FanId", 240)})},
      {"fan-prefix", Fans({Mode("CPU Fan2Mode", 0), Mode("CPU FanMode", 0)}),
       Fans({Mode("CPU FanMode", 0), Mode("CPU Fan2Mode", 0)})},
      {"fan-prefix", Fans({Mode("CPU FanId", 240), Mode("CPU FanMode", 0)}),
       Fans({Mode("CPU FanMode", 0), Mode("CPU FanId", 240)})},
      {"fan-confused", Fans({Mode("CPU FanMode", 0), Mode("CPU Fan2Mode", 0)}),
       Fans({Mode("CPU FanMode", 0), Mode("SYS FanMode", 0)})},
      {"fan-argument-0", Fans({Mode("FanMode", 1, {0, 1})}), Fans({Mode("FanMode", 1, {1, 2})})},
      {"fan-argument-gap", Fans({Mode("FanMode", 1, {1, 3})}), Fans({Mode("FanMode", 1, {2, 1})})},
      {"fan-count", Fans({Mode("FanMode", 1, {1}), Mode("FanMode", 1, {1, 2})}),
       Fans({Mode("FanMode", 1, {1}), Mode("FanMode", 2, {1, 2})})},
      {"fan-mode", Fans({Mode("FanMode", 3)}), Fans({Mode("FanMode", 2)})},
      {"fan-word", Fans({Mode("Fan", 0)}), Fans({Mode("FanMode", 0)})},
  });
}

// --- watchdog ---

std::vector<Command> CountMode(uint8_t bit) {
  return {Command::Port(0x90).Get(1, bit), Command::Port(0x90).Set(0xFE, bit)};
}

/// A sound watchdog with another entry for its interval.
IadtBuilder Watchdog(const Command& interval, bool bothModes = true) {
  IadtBuilder builder;
  for (const uint8_t value : std::initializer_list<uint8_t>{1, 2, 4, 5}) builder.Feature("Watchdog", value, {});
  builder.Feature("Watchdog", 3, {interval}).Feature("Watchdog", 6, CountMode(0));
  if (bothModes) builder.Feature("Watchdog", 7, CountMode(1));
  return builder;
}

TEST(Rules, OfTheWatchdog) {
  const IadtBuilder sound = Watchdog(Command::Port(0x91).Get().Set().Argument(0));
  EXPECT_THAT(RulesBroken(sound), testing::IsEmpty());
  Expect({
      {"watchdog-interval", Watchdog(Command::Port(0x91).Get().Argument(0).AddControl(kSetReads)), sound},
      {"watchdog-interval", Watchdog(Command::Port(0x91).Get().Set(0, 60)), sound},
      {"watchdog-unread", Watchdog(Command::Port(0x91).Set().Argument(0)), sound},
      {"watchdog-wide", Watchdog(Command::Port(0x91).Width(2).Get().Set().Argument(0)), sound},
      {"watchdog-mode", Watchdog(Command::Port(0x91).Get().Set().Argument(0), false), sound},
      {"watchdog-operation", IadtBuilder().Feature("Watchdog", 8, {}), sound},
  });
}

// --- harm ---

IadtBuilder One(const Command& command) { return IadtBuilder().Feature("BTState", 1, {command}); }
IadtBuilder Waits(std::vector<Command> commands) { return IadtBuilder().Feature("BTState", 1, commands); }

TEST(Rules, OfHarm) {
  const auto pair = [](uint16_t index, uint16_t data, uint8_t number) {
    return Command::IndexData(index, data, number);
  };
  Expect({
      {"harm-interrupts", One(Command::Port(0x21).Set(0, 1)), One(Command::Port(0x22).Set(0, 1))},
      {"harm-interrupts", One(Command::Port(0x1E).Width(4).Set(0, 1)), One(Command::Port(0x1E).Width(2).Set(0, 1))},
      {"harm-interrupts", One(Command::Memory(0xFEC00010).Set(0, 1)), One(Command::Memory(0xFEC00010).Get(1, 1))},
      {"harm-reset", One(Command::Port(0xCF9).Set(0, 6)), One(Command::Port(0xCF9).Get(1, 1))},
      {"harm-reset", One(Command::Port(0xCF8).Width(4).Set(0, 6)), One(Command::Port(0xCFA).Set(0, 6))},
      {"harm-pci-ports", One(Command::Port(0xCFC).Width(4).Get(1, 1)), One(Command::Port(0xD00).Get(1, 1))},
      {"harm-clock", One(pair(0x70, 0x71, 0x0B).Set(0, 1)), One(pair(0x70, 0x71, 0x0E).Set(0, 1))},
      {"harm-clock", One(pair(0x70, 0x71, 0x8B).Set(0, 1)), One(pair(0x70, 0x71, 0x0B).Get(1, 1))},
      {"harm-timer", One(Command::Port(0x43).Set(0, 1)), One(Command::Port(0x44).Set(0, 1))},
      {"harm-index", One(Command::Port(0x2E).Set(0, 0x87)),
       Waits({Command::Port(0x2E).Set(0, 0x87), pair(0x2E, 0x2F, 7).Set(0, 8)})},
      {"pair-same", One(pair(0x2E, 0x2E, 7).Set(0, 8)), One(pair(0x2E, 0x2F, 7).Set(0, 8))},
      {"pci-overwrite", One(Command::Pci(0, 31, 0, 4).Set(0xFE, 1)), One(Command::Pci(0, 31, 0, 4).Set(0, 1))},
      {"pci-place", One(Command::Pci(0, 32, 0, 4).Set(0, 1)), One(Command::Pci(0, 31, 7, 0xFFC).Set(0, 1))},
      {"pci-place", One(Command::Pci(0, 0, 8, 4).Set(0, 1)), One(Command::Pci(0, 0, 7, 4).Set(0, 1))},
      {"pci-place", One(Command::Pci(0, 0, 0, 5).Set(0, 1)), One(Command::Pci(0, 0, 0, 4).Set(0, 1))},
      {"pci-place", One(Command::Pci(0, 0, 0, 0x1000).Set(0, 1)), One(Command::Pci(0, 0, 0, 0x100).Set(0, 1))},
      {"mask-wide", One(Command::Port(0x80).Set(0, 0x100)), One(Command::Port(0x80).Width(2).Set(0, 0x100))},
      {"mask-wide", One(Command::Port(0x80).Set(0x1FE, 1)), One(Command::Port(0x80).Set(0xFFFFFFFE, 1))},
      {"smbus-reserved", One(Command::Smbus(0, 6).Set(0, 1)), One(Command::Smbus(0x10, 6).Set(0, 1))},
      {"smbus-reserved", One(Command::Smbus(0xF0, 6).Set(0, 1)), One(Command::Smbus(0xEE, 6).Set(0, 1))},
      {"smbus-odd", One(Command::Smbus(0x5B, 6).Set(0, 1)), One(Command::Smbus(0x5A, 6).Set(0, 1))},
      {"delay-long", One(Command::Delay(kMilliseconds, 1001).Set()), One(Command::Delay(kMilliseconds, 1000).Set())},
      {"delay-long", Waits({Command::Delay(kMilliseconds, 600).Set(), Command::Delay(kMilliseconds, 600).Set()}),
       Waits({Command::Delay(kMilliseconds, 600).Set(), Command::Delay(kMilliseconds, 600).Control(kGetWrites)})},
      // Entries of one instance run one after the other, those of two do not.
      {"delay-long",
       IadtBuilder()
           .Feature("ComType", 1, 0, {Command::Delay(kMilliseconds, 600).Control(kGetWrites)})
           .Feature("ComType", 1, 1, {Command::Delay(kMilliseconds, 600).Control(kGetWrites)}),
       IadtBuilder()
           .Feature("ComType", 1, 0, {Command::Delay(kMilliseconds, 600).Control(kGetWrites)})
           .Feature("ComType", 2, 1, {Command::Delay(kMilliseconds, 600).Control(kGetWrites)})},
  });
}

// --- comparisons ---

TEST(Rules, OfComparisonsInBothDirections) {
  const auto set = [](uint64_t mask, uint32_t expected) {
    return One(Command::Port(0x80).AddControl(kSetReads | kSetAnd).And(mask).Expected(expected));
  };
  Expect({
      {"never-equal", One(Command::Port(0x80).Get(0x0F, 0x10)), One(Command::Port(0x80).Get(0x1F, 0x10))},
      {"never-equal", set(0x0F, 0x10), set(0x1F, 0x10)},
      {"never-equal", One(Command::Smbus(0x5A, 0).Width(4).Get(1, 1)), One(Command::Smbus(0x5A, 0).Width(2).Get(1, 1))},
      {"always-equal", One(Command::Port(0x80).Get(0, 0)), One(Command::Port(0x80).Get(1, 0))},
      {"always-equal", set(0x100, 0), set(1, 0)},
      {"always-equal", One(Command::Port(0x80).Get(0xFF, 0xFF).AddControl(kGetOr).Or(0xFF)),
       One(Command::Port(0x80).Get(0xFF, 0xFF).AddControl(kGetOr).Or(0x7F))},
  });
}

// --- states ---

Command Tests(uint64_t mask, uint32_t expected) { return Command::Port(0x80).Get(mask, expected); }
Command Sets(uint64_t keep, uint64_t bits) { return Command::Port(0x80).Set(keep, bits); }

IadtBuilder States(std::initializer_list<std::vector<Command>> states) {
  IadtBuilder builder;
  uint8_t value = 0;
  for (const std::vector<Command>& commands : states) builder.Feature("BTState", value++, commands);
  return builder;
}

TEST(Rules, OfStates) {
  const IadtBuilder sound = States({{Tests(1, 0), Sets(0xFE, 0)}, {Tests(1, 1), Sets(0xFE, 1)}});
  EXPECT_THAT(RulesBroken(sound), testing::IsEmpty());
  Expect({
      {"state-hidden", States({{Tests(1, 1)}, {Tests(3, 3)}}), States({{Tests(3, 3)}, {Tests(1, 1)}})},
      // Two entries together leave nothing for the third.
      {"state-hidden", States({{Tests(1, 0)}, {Tests(1, 1)}, {Tests(2, 2)}}),
       States({{Tests(1, 0)}, {Tests(3, 1)}, {Tests(2, 2)}})},
      {"state-twice", IadtBuilder().Feature("BTState", 1, {Tests(1, 1)}).Feature("BTState", 1, {Tests(1, 1)}),
       IadtBuilder().Feature("BTState", 1, {Tests(1, 1)}).Feature("BTState", 1, {Tests(1, 0)})},
      {"state-never", States({{Tests(1, 0), Tests(3, 3)}}), States({{Tests(1, 1), Tests(3, 3)}})},
      {"state-other", States({{Tests(1, 0), Sets(0xFE, 0)}, {Tests(1, 1), Sets(0xFE, 0)}}), sound},
      // Of two bits that are tested only one is written.
      {"state-other", States({{Tests(1, 0), Sets(0xFE, 0)}, {Tests(3, 3), Sets(0xFE, 1)}}),
       States({{Tests(1, 0), Sets(0xFE, 0)}, {Tests(3, 3), Sets(0xFC, 3)}})},
      {"state-unread", States({{Tests(3, 0), Sets(0xFC, 2)}, {Tests(3, 1), Sets(0xFC, 1)}}),
       States({{Tests(3, 0), Sets(0xFC, 0)}, {Tests(3, 1), Sets(0xFC, 1)}})},
      {"state-unset", States({{Tests(1, 0)}, {Tests(1, 1), Sets(0xFE, 1)}}), sound},
      // What is set is read behind another logical device.
      {"state-unknown",
       States({{Command::IndexData(0x2E, 0x2F, 7).Control(kGetWrites | kGetAnd | kGetOr | kSetWrites | kSetAnd).Or(8),
                Command::IndexData(0x2E, 0x2F, 0xF0).Get(1, 1), Command::IndexData(0x2E, 0x2F, 0xF0).Set(0xFE, 1)}}),
       States({{Command::IndexData(0x2E, 0x2F, 7)
                    .Control(kGetWrites | kGetAnd | kGetOr | kSetWrites | kSetAnd | kSetOr)
                    .Or(8),
                Command::IndexData(0x2E, 0x2F, 0xF0).Get(1, 1), Command::IndexData(0x2E, 0x2F, 0xF0).Set(0xFE, 1)}})},
      // A register that is tested is written between two readings.
      {"state-unknown", States({{Tests(1, 1), Command::Port(0x80).Control(kGetWrites), Tests(2, 2)}}),
       States({{Tests(1, 1), Command::Port(0x81).Control(kGetWrites), Tests(2, 2)}})},
  });
}

TEST(Rules, OfStatesKeepInstancesApart) {
  const auto type = [](uint8_t first, uint8_t second) {
    return IadtBuilder().Feature("ComType", first, 0, {Tests(1, 1)}).Feature("ComType", second, 1, {Tests(3, 3)});
  };
  Expect({{"state-hidden", type(1, 1), type(1, 2)}});
  // The functions of this one do not look at the index.
  const IadtBuilder plain =
      IadtBuilder().Feature("BTState", 1, 0, {Tests(1, 1)}).Feature("BTState", 2, 1, {Tests(3, 3)});
  EXPECT_THAT(RulesBroken(plain), Contains("state-hidden"));
}

}  // namespace
