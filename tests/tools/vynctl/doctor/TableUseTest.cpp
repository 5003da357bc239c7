// SPDX-License-Identifier: MIT
// What tables touch, command by command.
#include "doctor/TableUse.h"

#include <gmock/gmock.h>

#include "Board.h"

namespace vynctl::doctor {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A table whose one entry holds these commands.
TableUse UseOfCommands(const std::string& commands) {
  return UseOf(AcpiTable("IADT", IadtRecord(15, 1, "", commands)));
}

std::string WithOpcode(std::string command, uint8_t opcode) {
  command[0] = static_cast<char>(opcode);
  return command;
}

TEST(TableUse, IsThatOfFeaturesAndSensors) {
  const TableUse use = UseOf(AcpiTable("IADT", BoardRecords()));
  EXPECT_THAT(use.ports, ElementsAre(Range{0x295, 0x295}, Range{0x296, 0x296}));
  EXPECT_THAT(use.memory, ElementsAre(Range{0xFED1F410, 0xFED1F413}));
  EXPECT_TRUE(use.smbus);
  EXPECT_TRUE(use.msr);
}

TEST(TableUse, IsNothingWithoutRecords) { EXPECT_EQ(UseOf(AcpiTable("IADT", "")), TableUse()); }

// Opcode: bits 6 and 7 the width (1, 2, 4, 8 bytes), 4 a port, 1 direct, 2 by index and data.
TEST(TableUse, CountsTheBytesOfAnAccess) {
  const std::string direct = WithOpcode(MemoryCommand(0x500), 0x05);
  EXPECT_THAT(UseOfCommands(direct).ports, ElementsAre(Range{0x500, 0x500}));
  EXPECT_THAT(UseOfCommands(WithOpcode(direct, 0x85)).ports, ElementsAre(Range{0x500, 0x503}));
  EXPECT_THAT(UseOfCommands(WithOpcode(IndexCommand(0x2E, 0x2F), 0x46)).ports,
              ElementsAre(Range{0x2E, 0x2E}, Range{0x2F, 0x30}));
  EXPECT_THAT(UseOfCommands(WithOpcode(MemoryCommand(0x1000), 0xC1)).memory, ElementsAre(Range{0x1000, 0x1007}));
}

TEST(TableUse, TakesTheLow16BitsOfAPort) {
  EXPECT_THAT(UseOfCommands(WithOpcode(MemoryCommand(0x10080), 0x05)).ports, ElementsAre(Range{0x80, 0x80}));
}

TEST(TableUse, PassesOverCommandsThatDoNothing) {
  std::string idle = MemoryCommand(0x1000);
  idle[1] = 0x33;  // masks in both directions, and neither reading nor writing
  EXPECT_THAT(UseOfCommands(idle).memory, IsEmpty());
}

TEST(TableUse, EndsWithTheTable) {
  std::string table = AcpiTable("IADT", BoardRecords());
  for (size_t bytes = 0; bytes < table.size(); ++bytes) UseOf(std::string_view(table).substr(0, bytes));
  const std::string damaged = AcpiTable("IADT", std::string(100, '\xFF'));
  EXPECT_EQ(UseOf(damaged), TableUse());
}

}  // namespace
}  // namespace vynctl::doctor
