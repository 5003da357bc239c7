#include "vyntable/TableWalk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace layout;

namespace {

using namespace vyntable;
using sim::Command;
using sim::IadtBuilder;
using sim::Record;

Image Iadt(const IadtBuilder& builder) { return {Kind::kIadt, "iadt.bin", builder.Build()}; }

TEST(RecordWalk, GivesEachRecordItsPlace) {
  const Image image = Iadt(IadtBuilder().Feature("BTState", 1, {Command::Port(0x80)}).Feature("BTState", 0, {}));
  const Records walk = WalkRecords(image);
  ASSERT_EQ(walk.records.size(), 2u);
  EXPECT_EQ(walk.records[0].offset, 36u);
  EXPECT_EQ(walk.records[0].bytes.size(), 55u);
  EXPECT_EQ(walk.records[1].offset, 91u);
  EXPECT_EQ(walk.end, 118u);
}

TEST(RecordWalk, EndsAtALengthOfZeroAndBeyondTheTable) {
  for (uint32_t length : {0u, 26u, 28u, 0xFFFFFFFFu}) {
    const Image image = Iadt(IadtBuilder().Feature("BTState", 1, {}).Add(Record::Type(5).Length(length)));
    const Records walk = WalkRecords(image);
    EXPECT_EQ(walk.records.size(), 1u) << length;
    EXPECT_EQ(walk.end, 63u) << length;
  }
}

TEST(RecordWalk, KeepsToTheLengthFieldOfTheTable) {
  const Image image = Iadt(IadtBuilder().Feature("BTState", 1, {}).Feature("BTState", 0, {}).Length(63));
  EXPECT_EQ(WalkRecords(image).records.size(), 1u);
}

TEST(CommandWalk, StepsByTheLengthOfEachCommand) {
  const Image image = Iadt(
      IadtBuilder().Feature("BTState", 1,
                            {Command::Memory(0), Command::Port(0), Command::IndexData(0, 0, 0), Command::Smbus(0, 0),
                             Command::Pci(0, 0, 0, 0), Command::Delay(kSeconds, 1), Command::Msr(0)}));
  const Records walk = WalkRecords(image);
  std::vector<size_t> offsets;
  for (const CommandView& command : WalkCommands(walk.records[0])) offsets.push_back(command.offset - 63);
  EXPECT_THAT(offsets, testing::ElementsAre(0, 28, 56, 92, 113, 142, 157));
}

TEST(CommandWalk, StopsAtWhatCannotBeSteppedOver) {
  const Image image = Iadt(
      IadtBuilder().Feature("BTState", 1, {Command::Port(0x80), Command::Port(0x80).Opcode(0x07), Command::Port(1)}));
  const Records walk = WalkRecords(image);
  const auto commands = WalkCommands(walk.records[0]);
  ASSERT_EQ(commands.size(), 2u);
  EXPECT_EQ(commands[1].layout, nullptr);
  EXPECT_EQ(commands[1].bytes.size(), 56u);
}

TEST(SensorCommandPlaces, AreThoseOfTheRecordKind) {
  const Image image = Iadt(IadtBuilder().Add(Record::Sensor("fan", 3).Commands({Command::Smbus(2, 3)})));
  const Records walk = WalkRecords(image);
  const auto commands = SensorCommands(walk.records[0]);
  ASSERT_EQ(commands.size(), 2u);
  EXPECT_EQ(commands[0].offset, 36u + 31);
  EXPECT_EQ(commands[0].bytes[3], 2);
  EXPECT_EQ(commands[1].offset, 36u + 52);
  EXPECT_EQ(commands[1].layout, nullptr);
}

TEST(BoardRecordWalk, GoesByTheLengthByte) {
  const Image image{Kind::kIamt, "iamt.bin",
                    sim::IamtBuilder().Add({7, 0, 0, 5, 0}).Chips(1, 2, 3).Add({0, 0, 0, 0}).Build()};
  const BoardRecords walk = WalkBoardRecords(image);
  ASSERT_EQ(walk.records.size(), 2u);
  EXPECT_EQ(walk.records[1].offset, 41u);
  EXPECT_EQ(walk.end, 96u);
}

}  // namespace
