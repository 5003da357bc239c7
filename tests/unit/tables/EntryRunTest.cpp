// SPDX-License-Identifier: MIT
// Running the commands of entries and of sensor records.
#include "tables/EntryRun.h"

#include <unistd.h>

#include <csignal>

#include "firmware/IadtBuilder.h"
#include "tests/unit/tables/Machine.h"

using namespace layout;
using firmware::Command;
using firmware::Record;
using tables::Ran;

namespace {

/// Succeeds in reading when the port holds `value`; does nothing in setting.
Command PortIs(uint16_t port, uint8_t value) { return Command::Port(port).Get(0xFF, value); }

class EntryRun : public testing::Test, protected tabletest::Machine {
 protected:
  /// The first entry of the list, which holds the record alone.
  static IadtEntry Filed(unsigned list, const Record& record) {
    const firmware::Bytes table = firmware::IadtBuilder().Add(record).Build();
    TIADTable::FreeInstance();
    TIADTable::GetInstance()->Fill(table.data(), static_cast<uint32_t>(table.size()));
    return *TIADTable::GetInstance()->List(list).begin();
  }
  static IadtEntry EntryOf(const std::vector<Command>& commands) {
    return Filed(13, Record::Feature("LVDSState").Value(1).Commands(commands));
  }
  Ran Run(const IadtEntry& entry, unsigned long long accumulator = 0) {
    const TIAxTCommon& executor = *TIAxTCommon::GetInstance();
    board.Log().clear();
    return tables::RunEntry(executor, entry, tables::kGet, {&accumulator, 1});
  }
  static unsigned long long RunSensor(const IadtEntry& entry, uint8_t offset, unsigned long long value = 0) {
    tables::RunSensorCommand(*TIAxTCommon::GetInstance(), entry, offset, &value);
    return value;
  }
};

class Advance : public EntryRun {};
class Fits : public EntryRun {};
class RunEntry : public EntryRun {};
class RunSensorCommand : public EntryRun {};

}  // namespace

TEST_F(Advance, MovesByTheLengthOfTheKindAndForm) {
  struct Case {
    uint8_t opcode;
    int length;
  };
  for (const Case& each :
       {Case{0x01, 28}, Case{0x05, 28}, Case{0x06, 36}, Case{0x0D, 21}, Case{0x11, 29}, Case{0x14, 15}, Case{0x15, 15},
        Case{0x16, 15}, Case{0x17, 15}, Case{0xC1, 28}, Case{0x46, 36}}) {
    const IadtEntry entry = EntryOf({Command::Raw(firmware::Bytes(40, 0)).Byte(0, each.opcode)});
    IadtCommands cursor = entry.Commands();
    const unsigned char* before = cursor.Command();
    EXPECT_TRUE(cursor.Fits());
    EXPECT_EQ(cursor.Advance(), IadtCommands::Step::kMoved);
    EXPECT_EQ(cursor.Command() - before, each.length) << int{each.opcode};
  }
}

TEST_F(Advance, StaysAtAFormThatTheKindDoesNotHave) {
  const IadtEntry entry = EntryOf({Command::Raw(firmware::Bytes(40, 0))});
  for (const int opcode : {0x00, 0x02, 0x03, 0x04, 0x07, 0x0C, 0x0E, 0x0F, 0x10, 0x12, 0x13, 0xC2}) {
    IadtCommands cursor = entry.Commands();
    unsigned char* before = cursor.Command();
    *before = static_cast<unsigned char>(opcode);
    EXPECT_TRUE(cursor.Fits());
    EXPECT_EQ(cursor.Advance(), IadtCommands::Step::kStays) << opcode;
    EXPECT_EQ(cursor.Command(), before);
  }
}

TEST_F(Advance, IsImpossibleForAnMsrOfAnyFormAndForUnknownKinds) {
  const IadtEntry entry = EntryOf({Command::Raw(firmware::Bytes(40, 0))});
  std::vector<int> opcodes = {0x08, 0x09, 0x0A, 0x0B, 0x49};
  for (int opcode = 0x18; opcode <= 0x3F; ++opcode) opcodes.push_back(opcode);
  for (const int opcode : opcodes) {
    IadtCommands cursor = entry.Commands();
    *cursor.Command() = static_cast<unsigned char>(opcode);
    EXPECT_TRUE(cursor.Fits());
    EXPECT_EQ(cursor.Advance(), IadtCommands::Step::kImpossible) << opcode;
  }
}

TEST_F(Fits, WhenAllBytesOfTheCommandBelongToTheEntry) {
  struct Case {
    uint8_t opcode;
    size_t bytes;
  };
  for (const Case& each : {Case{0x01, 28}, Case{0x05, 28}, Case{0x06, 36}, Case{0x09, 35}, Case{0x0D, 21},
                           Case{0x11, 29}, Case{0x14, 15}, Case{0x19, 3}, Case{0x02, 28}}) {
    for (const bool whole : {false, true}) {
      const size_t bytes = whole ? each.bytes : each.bytes - 1;
      const IadtEntry entry = EntryOf({Command::Raw(firmware::Bytes(bytes, 0)).Byte(0, each.opcode)});
      EXPECT_EQ(entry.Commands().Fits(), whole) << int{each.opcode};
    }
  }
}

TEST_F(RunEntry, IsDoneWithoutCommands) { EXPECT_EQ(Run(EntryOf({})), Ran::kDone); }

TEST_F(RunEntry, IsDoneWhenEveryCommandSucceeds) {
  board.Ports(0x300, {1, 2});
  EXPECT_EQ(Run(EntryOf({PortIs(0x300, 1), PortIs(0x301, 2)})), Ran::kDone);
}

TEST_F(RunEntry, FailsAtTheFirstCommandThatDoes) {
  board.Ports(0x300, {1, 2});
  EXPECT_EQ(Run(EntryOf({PortIs(0x300, 9), PortIs(0x301, 2)})), Ran::kFailed);
  EXPECT_EQ(board.PortLog().size(), 1u);
}

TEST_F(RunEntry, EndsAtAKindThatCannotBeSteppedOver) {
  board.Ports(0x300, {1});
  EXPECT_EQ(Run(EntryOf({PortIs(0x300, 1), Command::Raw({0x19, 0, 0, 0, 0, 0, 0, 0}), PortIs(0x300, 1)})),
            Ran::kUnknownKind);
  EXPECT_EQ(board.PortLog().size(), 1u);
}

TEST_F(RunEntry, EndsAtTrailingBytesThatAreNoWholeCommand) {
  board.Ports(0x300, {1});
  EXPECT_EQ(Run(EntryOf({PortIs(0x300, 1), Command::Raw({0x05})})), Ran::kUnknownKind);
}

TEST_F(RunEntry, RepeatsACommandOfAFormThatItsKindDoesNotHaveAsLongAsItSucceeds) {
  // A command without control bits always succeeds, so it is repeated for ever; the alarm ends it.
  const IadtEntry entry = EntryOf({Command::Raw(firmware::Bytes(28, 0))});
  constexpr useconds_t kPatience = 100000;
  const auto run = [&] {
    ualarm(kPatience, 0);
    Run(entry);
  };
  EXPECT_EXIT(run(), testing::KilledBySignal(SIGALRM), "");
}

TEST_F(RunEntry, RunsTheCommandsOnTheLibrarysOwnCopy) {
  board.IndexData(0x2E, 0x2F);
  const IadtEntry entry =
      EntryOf({Command::IndexData(0x2E, 0x2F, 0x10).Control(kGetWrites | kArgumentMode).ArgumentIndex(0)});
  EXPECT_EQ(Run(entry, 0x44), Ran::kDone);
  EXPECT_EQ(entry.Body()[19], 0x44);
}

// ---- commands of sensor records ----

TEST_F(RunSensorCommand, ReadsIntoTheValueWhateverTheOutcome) {
  board.Ports(0x300, {0x5A});
  EXPECT_EQ(RunSensor(Filed(3, Record::Sensor("voltage", 2).Commands({PortIs(0x300, 1)})), 29), 0x5Au);
}

TEST_F(RunSensorCommand, TakesBytesThatWereNotKeptFor0) {
  // A current sensor keeps 21 command bytes. The AND, the OR mask and the expected value of a pair end at byte 26; its
  // control word asks for a reading with the OR mask, of which the high half was not kept.
  board.IndexData(0x2E, 0x2F);
  const firmware::Bytes command =
      Command::IndexData(0x2E, 0x2F, 0x10).Control(kGetReads | kGetOr).Or(0x44332211).Build();
  EXPECT_EQ(RunSensor(Filed(12, Record::Type(31).Value(1).Append(command)), 27), 0x2211u);
}

TEST_F(RunSensorCommand, KeepsAWriteIntoTheMasksOfACutCommand) {
  board.IndexData(0x2E, 0x2F);
  Command command = Command::IndexData(0x2E, 0x2F, 0x10).Control(kGetWrites | kArgumentMode).ArgumentIndex(0);
  const IadtEntry entry = Filed(12, Record::Type(31).Value(1).Append(command.Build()));
  RunSensor(entry, 27, 0x77);
  EXPECT_EQ(entry.Record()[27 + 19], 0x77);
}
