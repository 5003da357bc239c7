// SPDX-License-Identifier: MIT
// The walks over tables and commands, and where each ends.
#include "layout/Walk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "firmware/IadtBuilder.h"
#include "firmware/IamtBuilder.h"

using namespace layout;

namespace {

using firmware::Bytes;
using firmware::Command;
using firmware::IadtBuilder;
using firmware::IamtBuilder;
using firmware::Record;
using testing::ElementsAre;
using testing::IsEmpty;

/// Offset and length of every record, then where the walk ended.
template <typename Cursor>
std::vector<size_t> Places(const Bytes& table) {
  std::vector<size_t> places;
  Cursor cursor(Covered(table));
  for (; cursor.Valid(); cursor.Next()) places.insert(places.end(), {cursor.Current().offset, cursor.Current().length});
  places.push_back(cursor.Offset());
  return places;
}
constexpr auto RecordPlaces = Places<RecordCursor>;
constexpr auto BoardRecordPlaces = Places<BoardRecordCursor>;

RecordView Only(const Bytes& table) { return RecordCursor(table).Current(); }

/// Offset of each command behind the record's head, -1 for what has no layout, and its bytes.
std::vector<std::pair<int, size_t>> CommandPlaces(const std::vector<Command>& commands) {
  const Bytes table = IadtBuilder().Feature("BTState", 1, commands).Build();
  std::vector<std::pair<int, size_t>> places;
  for (const CommandView& command : Commands(Only(table)))
    places.emplace_back(command.layout ? static_cast<int>(command.offset) - 63 : -1, command.bytes.size());
  return places;
}

TEST(RecordWalk, GivesEachRecordItsPlace) {
  const Bytes table = IadtBuilder().Feature("BTState", 1, {Command::Port(0x80)}).Feature("BTState", 0, {}).Build();
  EXPECT_THAT(RecordPlaces(table), ElementsAre(36, 55, 91, 27, 118));
}

TEST(RecordWalk, EndsAtALengthOfZeroAndBeyondTheTable) {
  for (uint32_t length : {0u, 28u, 0xFFFFFFFFu}) {
    const Bytes table = IadtBuilder().Feature("BTState", 1, {}).Add(Record::Type(5).Length(length)).Build();
    EXPECT_THAT(RecordPlaces(table), ElementsAre(36, 27, 63)) << length;
  }
}

TEST(RecordWalk, GoesOnBehindARecordShorterThanItsHead) {
  // A head cut to its first 7 bytes, and 26 of the 27.
  const Bytes seven = IadtBuilder().Add(Record::Raw({5, 0, 1, 7, 0, 0, 0})).Feature("BTState", 1, {}).Build();
  EXPECT_THAT(RecordPlaces(seven), ElementsAre(36, 7, 43, 27, 70));
  Bytes head(26, 0);
  head[0] = 5;
  head[3] = 26;
  const Bytes table = IadtBuilder().Add(Record::Raw(head)).Feature("BTState", 1, {}).Build();
  EXPECT_THAT(RecordPlaces(table), ElementsAre(36, 26, 62, 27, 89));
}

TEST(RecordWalk, NeedsTheBytesOfALength) {
  const Bytes six = IadtBuilder().Add(Record::Raw({5, 0, 1, 6, 0, 0})).Build();
  EXPECT_THAT(RecordPlaces(six), ElementsAre(36));
  EXPECT_THAT(RecordPlaces(Bytes(20, 0)), ElementsAre(20));
}

TEST(RecordWalk, KeepsToTheLengthFieldOfTheTable) {
  const Bytes table = IadtBuilder().Feature("BTState", 1, {}).Feature("BTState", 0, {}).Length(63).Build();
  EXPECT_THAT(RecordPlaces(table), ElementsAre(36, 27, 63));
}

TEST(RecordFields, OfAShortRecordComeFromWhatFollows) {
  const Bytes table =
      IadtBuilder().Add(Record::Raw({5, 1, 2, 7, 0, 0, 0})).Add(Record::Raw({'A', 'B', 0, 9, 0, 0, 0, 0, 0})).Build();
  const RecordView record = Only(table);
  EXPECT_EQ(record.Type(), 5);
  EXPECT_EQ(record.Index(), 1);
  EXPECT_EQ(record.Value(), 2);
  EXPECT_THAT(record.Name(), ElementsAre('A', 'B', 0, 9, 0, 0, 0, 0, 0));
  EXPECT_EQ(record.Row()->name, "LVDSState");
  EXPECT_THAT(Commands(record), IsEmpty());
}

TEST(CommandWalk, StepsByTheLengthOfEachCommand) {
  EXPECT_THAT(CommandPlaces({Command::Memory(0), Command::Port(0), Command::IndexData(0, 0, 0), Command::Smbus(0, 0),
                             Command::Pci(0, 0, 0, 0), Command::Delay(kSeconds, 1), Command::Msr(0)}),
              ElementsAre(std::pair(0, 28), std::pair(28, 28), std::pair(56, 36), std::pair(92, 21), std::pair(113, 29),
                          std::pair(142, 15), std::pair(157, 35)));
}

TEST(CommandWalk, EndsAtAFormThatDoesNotFit) {
  EXPECT_THAT(CommandPlaces({Command::Port(0x80), Command::Port(0x80).Opcode(0x07), Command::Port(1)}),
              ElementsAre(std::pair(0, 28), std::pair(-1, 56)));
}

TEST(CommandWalk, EndsAtACommandThatIsCutShort) {
  EXPECT_THAT(CommandPlaces({Command::Raw({0x05, 0x80, 0})}), ElementsAre(std::pair(-1, 3)));
}

TEST(CommandWalk, EndsBehindAModelSpecificRegister) {
  EXPECT_THAT(CommandPlaces({Command::Msr(1), Command::Port(1)}), ElementsAre(std::pair(0, 35), std::pair(-1, 28)));
}

TEST(SensorCommandPlaces, AreThoseOfTheRecordKind) {
  const Bytes table = IadtBuilder().Add(Record::Sensor("fan", 3).Commands({Command::Smbus(2, 3)})).Build();
  const auto commands = SensorCommands(Only(table));
  ASSERT_EQ(commands.size(), 2u);
  EXPECT_EQ(commands[0].offset, 36u + 31);
  EXPECT_EQ(commands[0].bytes[3], 2);
  EXPECT_EQ(commands[1].offset, 36u + 52);
  EXPECT_EQ(commands[1].layout, nullptr);
}

TEST(SensorCommandPlaces, BeyondTheRecordAreLeftOut) {
  Bytes head(60, 0);
  head[0] = 4;
  head[2] = 3;
  head[3] = 60;
  EXPECT_EQ(SensorCommands(Only(IadtBuilder().Add(Record::Raw(head)).Build())).size(), 1u);
}

TEST(BoardRecordWalk, GoesByTheLengthByte) {
  const Bytes table = IamtBuilder().Add({7, 0, 0, 5, 0}).Chips(1, 2, 3).Build();
  EXPECT_THAT(BoardRecordPlaces(table), ElementsAre(36, 5, 41, 55, 96));
}

TEST(BoardRecordWalk, StepsByLessThanTheHead) {
  EXPECT_THAT(BoardRecordPlaces(IamtBuilder().Add({7, 0, 0, 2}).Add({0, 4, 1, 1}).Build()),
              ElementsAre(36, 2, 38, 4, 42));
}

TEST(BoardRecordWalk, CountsARecordOfLengthZeroAndEndsAtIt) {
  const Bytes table = IamtBuilder().Add({0, 0, 0, 0, 9, 9}).Build();
  EXPECT_THAT(BoardRecordPlaces(table), ElementsAre(36, 0, 36));
  EXPECT_THAT(BoardRecordCursor(table).Current().Bytes(), IsEmpty());
  EXPECT_THAT(BoardRecordCursor(table).Current().Kept(), ElementsAre(0, 0, 0, 0, 9, 9));
}

TEST(BoardRecordWalk, CountsARecordThatReachesBeyondTheTable) {
  const Bytes table = IamtBuilder().Add({0, 0, 0, 200, 7}).Build();
  EXPECT_THAT(BoardRecordPlaces(table), ElementsAre(36, 200, 41));
  EXPECT_THAT(BoardRecordCursor(table).Current().Bytes(), ElementsAre(0, 0, 0, 200, 7));
}

TEST(BoardRecordWalk, NeedsTheBytesOfAHead) {
  EXPECT_THAT(BoardRecordPlaces(IamtBuilder().Add({0, 0, 0}).Build()), ElementsAre(36));
}

}  // namespace
