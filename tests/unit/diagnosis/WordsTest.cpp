// SPDX-License-Identifier: MIT
// Records and commands in words.
#include "diagnosis/Words.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "firmware/IadtBuilder.h"

using namespace layout;

namespace {

using namespace diagnosis;
using firmware::Command;

constexpr CommandContext kEntry{.sensor = false, .arguments = 1};
constexpr CommandContext kSensor{.sensor = true, .arguments = 1};
constexpr CommandContext kFan{.sensor = false, .arguments = 3, .asked = true};

std::vector<std::string> WordsOf(const Command& command, const CommandContext& context) {
  const firmware::Bytes& bytes = command.Build();
  return Words({0, bytes, FindLayout(bytes[0])}, context);
}

struct WordsCase {
  Command command;
  std::vector<std::string> words;
};

void Expect(const std::vector<WordsCase>& cases, const CommandContext& context) {
  for (const WordsCase& c : cases) EXPECT_EQ(WordsOf(c.command, context), c.words);
}

TEST(CommandWords, SayTargetAndBothDirections) {
  const std::vector<WordsCase> cases = {
      {Command::Memory(0xFED81000).Width(4).Get(0x10000, 0x10000),
       {"memory 0xfed81000, 4 bytes", "Get: reads AND 0x10000, must be 0x10000", "Set: nothing"}},
      {Command::Port(0x443).Set(0xFE, 0x01),
       {"port 0x443, 1 byte", "Get: nothing", "Set: writes the old value AND 0xfe OR 0x1"}},
      {Command::IndexData(0x2E, 0x2F, 0xF6).Get().Set().Argument(0),
       {"register 0xf6 behind ports 0x2e/0x2f, 1 byte", "Get: reads, into argument 0",
        "Set: writes argument 0, which becomes the OR mask"}},
      {Command::Smbus(0x5A, 0x20).Width(2).Get(),
       {"SMBus device 0x5a register 0x20, 2 bytes", "Get: reads, must be 0x0", "Set: nothing"}},
      {Command::Pci(0, 0x1F, 3, 0x40).Get(1, 0).Set(0, 7),
       {"PCI 00:1f.3 register 0x40, 4 bytes", "Get: reads, takes 0 AND 0x0, must be 0x0",
        "Set: writes 0 AND 0x0 OR 0x7"}},
      {Command::Msr(0x19C).Get(),
       {"model-specific register 0x19c", "Get: reads, must be 0x0 in the low 4 bytes, then the call ends with code 21",
        "Set: nothing, then the call ends with code 21"}},
      {Command::Delay(kMilliseconds, 20).Set(), {"wait 20 ms", "Get: nothing", "Set: waits"}},
      {Command::Delay(kSeconds, 1).Get(), {"wait 1 s", "Get: waits, then fails", "Set: nothing"}},
  };
  Expect(cases, kEntry);
}

TEST(CommandWords, SayNothingOfAComparisonInSensors) {
  Expect({{Command::Smbus(0x5A, 0x20).Width(2).Get(0x3FF, 7),
           {"SMBus device 0x5a register 0x20, 2 bytes", "Get: reads AND 0x3ff"}},
          {Command::Msr(0x19C).Get(), {"model-specific register 0x19c", "Get: reads"}},
          {Command::Port(0x80).Get().Argument(0), {"port 0x80, 1 byte", "Get: reads"}},
          {Command::Delay(kSeconds, 1).Get(), {"wait 1 s", "Get: waits"}}},
         kSensor);
}

TEST(CommandWords, TakeTheIndexOfADelayInArgumentModeForItsTime) {
  Expect({{Command::Delay(kMilliseconds, 500).Set().Argument(0), {"wait 0 ms", "Get: nothing", "Set: waits"}},
          {Command::Delay(kMilliseconds, 500).Set().Argument(1), {"wait 500 ms", "Get: nothing", "Set: waits"}},
          {Command::Delay(DelayUnit{0}, 500).Set(),
           {"no wait: there is no unit 0", "Get: nothing", "Set: does not wait"}}},
         kEntry);
  Expect({{Command::Delay(kMilliseconds, 500).Set().Argument(1), {"wait 1 ms", "Get: nothing", "Set: waits"}},
          {Command::Delay(kMilliseconds, 500).Get().Argument(9),
           {"wait 500 ms, or 9 where the caller offers that argument", "Get: waits, then fails", "Set: nothing"}}},
         kFan);
}

TEST(CommandWords, MaskAnArgumentWrittenThroughAPairAlone) {
  const auto pair = [] { return Command::IndexData(0x2E, 0x2F, 0xF6).Argument(0).And(0x0F).Or(0x80); };
  const auto set = [&](uint16_t control) {
    return WordsOf(pair().AddControl(static_cast<uint16_t>(kSetWrites | control)), kEntry)[2];
  };
  EXPECT_EQ(set(0), "Set: writes argument 0, which becomes the OR mask");
  EXPECT_EQ(set(kSetAnd), "Set: writes argument 0 AND 0xf, which becomes the OR mask");
  EXPECT_EQ(set(kSetOr), "Set: writes argument 0, which becomes the OR mask");
  EXPECT_EQ(set(kSetAnd | kSetOr), "Set: writes argument 0, which becomes the OR mask");
  EXPECT_EQ(WordsOf(Command::Port(0x80).Set(0x0F, 0x80).Argument(0), kEntry)[2], "Set: writes argument 0");
}

TEST(CommandWords, FallBackToTheMasksWhereTheIndexNamesNoArgument) {
  EXPECT_EQ(WordsOf(Command::Port(0x80).Set(0x0F, 0x80).Argument(1), kEntry)[2],
            "Set: writes the old value AND 0xf OR 0x80");
  EXPECT_EQ(WordsOf(Command::Port(0x80).Get().Argument(1), kEntry)[1],
            "Get: reads, into argument 0: its index names none");
  // A fan's mode is asked for with 255 slots, whatever the entry names.
  EXPECT_EQ(WordsOf(Command::Port(0x80).Get().Argument(7), kFan)[1],
            "Get: reads, into argument 7 where the caller offers it, else into argument 0");
  EXPECT_EQ(WordsOf(Command::Port(0x80).Set(0x0F, 0x80).Argument(7), kFan)[2],
            "Set: writes the old value AND 0xf OR 0x80");
}

TEST(CommandWords, SayWhereSmbusMovesNothing) {
  for (const unsigned width : {4u, 8u}) {
    const std::vector<std::string> words = WordsOf(Command::Smbus(0x5A, 0).Width(width).Get(1, 0).Set(0, 1), kEntry);
    EXPECT_EQ(words[1], "Get: reads nothing, takes 0 AND 0x0, must be 0x0");
    EXPECT_EQ(words[2], "Set: writes nothing, no SMBus access has " + std::to_string(width) + " bytes");
  }
}

TEST(CommandWords, NameThePlaceThatIsReached) {
  EXPECT_EQ(WordsOf(Command::Smbus(0x5B, 0).Set(0, 1), kEntry)[0], "SMBus device 0x5a register 0x00, 1 byte");
  EXPECT_EQ(WordsOf(Command::Pci(0, 31, 9, 0x1040).Set(0, 1), kEntry)[0], "PCI 01:00.1 register 0x40, 4 bytes");
}

/// The last words of an entry whose commands are these bytes.
std::string LastWords(const firmware::Bytes& bytes) {
  const firmware::Bytes table = firmware::IadtBuilder().Feature("BTState", 1, {Command::Raw(bytes)}).Build();
  const RecordView record = RecordCursor(table).Current();
  return Words(Commands(record).back(), ContextOf(record)).back();
}

TEST(CommandWords, TellWhereTheWalkEnds) {
  EXPECT_EQ(LastWords({0x18}), "1 byte is left over that holds no command: the call ends with code 21");
  EXPECT_EQ(LastWords({0, 0}), "2 bytes are left over that hold no command: the call ends with code 21");
  EXPECT_EQ(LastWords({0x18, 0, 0}), "unknown access kind 0x18: the call ends with code 21");
  EXPECT_EQ(LastWords({0x18, kGetReads, 0}),
            "unknown access kind 0x18: when reading, the entry fails; when setting, the call ends with code 21");
  EXPECT_EQ(LastWords({0x05, 0}),
            "a command of 28 bytes does not fit into the 2 that are left: the call ends with "
            "code 21");
  firmware::Bytes misfit = Command::Port(0x80).Opcode(0x07).Build();
  EXPECT_EQ(LastWords(misfit), "addressing form 3 does not fit its kind: the command is run for ever");
  misfit[1] = kGetReads | kSetWrites;
  EXPECT_EQ(LastWords(misfit),
            "addressing form 3 does not fit its kind: when reading, the entry fails; when setting, the command is run "
            "for ever");
  misfit.pop_back();
  EXPECT_EQ(LastWords(misfit), "27 bytes are left over that hold no command: the call ends with code 21");
}

TEST(CommandWords, TellThatAFansCommandsAreCountedFirst) {
  firmware::Bytes misfit = Command::Port(0x80).Opcode(0x07).Build();
  EXPECT_EQ(Words({0, misfit, nullptr}, kFan).back(),
            "addressing form 3 does not fit its kind: the call ends with code 21");
  EXPECT_EQ(WordsOf(Command::Msr(0x19C).Get(), kFan).back(), "the call ends with code 21 before anything is run");
}

TEST(CommandWords, TellThatASensorRunsWhateverStandsAtItsPlace) {
  EXPECT_EQ(Words({0, firmware::Bytes(21, 0), nullptr}, kSensor),
            std::vector<std::string>{"no command: nothing is accessed"});
  firmware::Bytes place = Command::Port(0x80).Get().Build();
  place.resize(21);
  EXPECT_EQ(Words({0, place, nullptr}, kSensor),
            std::vector<std::string>{
                "a command of 28 bytes in a place of 21: the bytes behind the place are taken as its rest"});
}

TEST(RecordTitle, NamesTypeAndInstanceOrSensor) {
  const auto title = [](const firmware::Record& record) {
    return Title(RecordCursor(firmware::IadtBuilder().Add(record).Build()).Current());
  };
  EXPECT_EQ(title(firmware::Record::Feature("LVDSState").Index(2).Value(1)), "LVDSState index 2 value 1");
  EXPECT_EQ(title(firmware::Record::Sensor("voltage", 1).Name("+12V")), "voltage 2.1 \"+12V\"");
  EXPECT_EQ(title(firmware::Record::Type(36).Value(3).Name("A")), "type 36 index 0 value 3 \"A\"");
}

}  // namespace
