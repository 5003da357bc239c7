// SPDX-License-Identifier: MIT
// Physical memory and device files of the simulated machine.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

#include "hw/Platform.h"
#include "tests/support/CurrentBoard.h"

namespace {

using platform::OpenMode;
using sim::Access;
using sim::Board;
using testing::ElementsAre;

class WithMemory : public testing::Test, protected support::CurrentBoard {
 protected:
  WithMemory() {
    board.Memory(0x1FFE, {0x11, 0x22, 0x33, 0x44});
    descriptor = platform::Open("/dev/mem", OpenMode::kReadWriteSync);
    board.Log().clear();
  }
  int descriptor = -1;
};

using MapMemory = WithMemory;
using UnmapMemory = WithMemory;
using OpenDevice = WithMemory;
using ReadDevice = WithMemory;

TEST_F(MapMemory, CopiesBytesAcrossPages) {
  const auto* bytes = static_cast<const uint8_t*>(platform::Map(descriptor, 0x1000, 0x1003, false));
  ASSERT_NE(bytes, nullptr);
  EXPECT_EQ(bytes[0xFFD], 0xFF);
  EXPECT_EQ(bytes[0xFFE], 0x11);
  EXPECT_EQ(bytes[0x1001], 0x44);
  EXPECT_EQ(bytes[0x1002], 0xFF);
}

struct BadMapping {
  uint64_t offset;
  size_t length;
};

TEST_F(MapMemory, FailsForWhatTheKernelRefuses) {
  const BadMapping cases[] = {{0x1000, 0}, {0x1001, 16}, {0xFFFFFFFFFFFFF000, 0x2000}, {0, board.mappingLimit + 1}};
  for (const BadMapping& bad : cases)
    EXPECT_EQ(platform::Map(descriptor, bad.offset, bad.length, false), nullptr) << bad.offset << "+" << bad.length;
  EXPECT_EQ(platform::Map(99, 0, 16, false), nullptr);
  EXPECT_EQ(board.LiveMappings(), 0);
}

TEST_F(UnmapMemory, WritesBackAndLogsChangedBytesOnly) {
  auto* bytes = static_cast<uint8_t*>(platform::Map(descriptor, 0x1000, 0x1002, true));
  bytes[0xFFE] = 0x11;
  bytes[0xFFF] = 0x99;
  bytes[0x1001] = 0x88;
  platform::Unmap(bytes, 0x1002);
  EXPECT_THAT(board.Log(), ElementsAre(Access{Access::kMap, 0x1000, 1, 0x1002, {}}, sim::MemWrite(0x1FFF, 0x99),
                                       sim::MemWrite(0x2001, 0x88), Access{Access::kUnmap, 0x1000, 0, 0x1002, {}}));
  EXPECT_EQ(board.MemoryByte(0x1FFF), 0x99);
  EXPECT_EQ(board.MemoryByte(0x2001), 0x88);
}

TEST_F(UnmapMemory, SwallowsWritesWhereNoMemoryIs) {
  auto* bytes = static_cast<uint8_t*>(platform::Map(descriptor, 0x5000, 1, true));
  bytes[0] = 0;
  platform::Unmap(bytes, 1);
  EXPECT_EQ(board.MemoryByte(0x5000), 0xFF);
  EXPECT_EQ(board.Log()[1], sim::MemWrite(0x5000, 0));
}

TEST_F(OpenDevice, KnowsMemoryAndTheFirstProcessorsRegistersOnly) {
  EXPECT_EQ(platform::Open("/dev/null", OpenMode::kRead), -1);
  EXPECT_EQ(platform::Open("/dev/cpu/1/msr", OpenMode::kRead), -1);
  EXPECT_GE(platform::Open("/dev/cpu/0/msr", OpenMode::kRead), 0);
}

TEST_F(OpenDevice, FailsWhenTheBoardLacksTheDevice) {
  board.memDevice = board.msrDevice = false;
  EXPECT_EQ(platform::Open("/dev/mem", OpenMode::kRead), -1);
  EXPECT_EQ(platform::Open("/dev/cpu/0/msr", OpenMode::kRead), -1);
  EXPECT_THAT(board.Log(), ElementsAre(Access{Access::kOpen, 0, 0, 0, "/dev/mem"},
                                       Access{Access::kOpen, 0, 0, 0, "/dev/cpu/0/msr"}));
}

TEST_F(OpenDevice, CountsWhatIsOpen) {
  EXPECT_EQ(board.OpenDescriptors(), 1);
  platform::Close(descriptor);
  EXPECT_EQ(board.OpenDescriptors(), 0);
}

TEST_F(ReadDevice, GivesAModelSpecificRegisterLittleEndian) {
  board.Msr(0x19C, 0x8877665544332211);
  uint8_t bytes[8] = {};
  const int msr = platform::Open("/dev/cpu/0/msr", OpenMode::kRead);
  EXPECT_EQ(platform::ReadAt(msr, bytes, 8, 0x19C), 8);
  EXPECT_THAT(bytes, ElementsAre(0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88));
}

TEST_F(ReadDevice, FailsForUnknownRegistersAndOddCounts) {
  board.Msr(0x19C, 1);
  uint8_t bytes[8];
  const int msr = platform::Open("/dev/cpu/0/msr", OpenMode::kRead);
  EXPECT_EQ(platform::ReadAt(msr, bytes, 8, 0x19D), -1);
  EXPECT_EQ(platform::ReadAt(msr, bytes, 8, 0x10000019C), -1);
  EXPECT_EQ(platform::ReadAt(msr, bytes, 4, 0x19C), -1);
  EXPECT_EQ(platform::ReadAt(1234, bytes, 8, 0x19C), -1);
}

TEST_F(ReadDevice, GivesPhysicalMemory) {
  uint8_t bytes[3];
  EXPECT_EQ(platform::ReadAt(descriptor, bytes, 3, 0x1FFF), 3);
  EXPECT_THAT(bytes, ElementsAre(0x22, 0x33, 0x44));
}

}  // namespace
