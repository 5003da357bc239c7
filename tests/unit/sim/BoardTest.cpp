// SPDX-License-Identifier: MIT
// Privilege, clock, log and faults of the simulated machine.
#include "sim/Board.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hw/Platform.h"
#include "tests/support/CurrentBoard.h"

namespace {

using sim::Access;
using sim::Board;
using testing::ElementsAre;

class OnBoard : public testing::Test, protected support::CurrentBoard {};

using Privilege = OnBoard;
using SleepTime = OnBoard;
using Logging = OnBoard;
using Faults = OnBoard;

TEST_F(Privilege, IsGrantedToAPrivilegedBoard) {
  EXPECT_EQ(platform::SetIoPrivilegeLevel(3), 0);
  EXPECT_THAT(board.Log(), ElementsAre(Access{Access::kIopl, 0, 0, 3, {}}));
}

TEST_F(Privilege, IsRefusedToAnUnprivilegedBoard) {
  board.privileged = false;
  EXPECT_NE(platform::SetIoPrivilegeLevel(3), 0);
}

TEST_F(SleepTime, AdvancesTheClockWithoutWaiting) {
  platform::SleepMicroseconds(5000);
  platform::SleepMicroseconds(50);
  EXPECT_EQ(board.Microseconds(), 5050u);
  EXPECT_THAT(board.Log(), ElementsAre(sim::Sleep(5000), sim::Sleep(50)));
}

TEST_F(SleepTime, TellsChipsJustAsWritesDoBeforeAndAfter) {
  std::vector<uint64_t> times;
  board.OnTick([&](Board& b) { times.push_back(b.Microseconds()); });
  platform::SleepMicroseconds(10);
  platform::Out8(0x80, 0);
  platform::SleepMicroseconds(7);
  EXPECT_THAT(times, ElementsAre(10, 10, 10, 17));
}

TEST_F(SleepTime, IsLongerAndInStepsAsThePaceSays) {
  std::vector<uint64_t> times;
  board.pace = {.portAccess = 0, .sleepExtra = 10, .step = 25};
  board.OnTick([&](Board& b) { times.push_back(b.Microseconds()); });
  platform::SleepMicroseconds(50);
  EXPECT_THAT(times, ElementsAre(25, 50, 60));
  platform::SleepMicroseconds(15);
  EXPECT_THAT(times, ElementsAre(25, 50, 60, 85));
}

TEST_F(SleepTime, PassesWithPortAccessesAsThePaceSays) {
  platform::In8(0x80);
  EXPECT_EQ(board.Microseconds(), 0u);
  board.pace.portAccess = 3;
  platform::In8(0x80);
  platform::Out32(0xCF8, 0);
  EXPECT_EQ(board.Microseconds(), 6u);
  EXPECT_EQ(board.PortAccesses(), 3u);
}

TEST_F(Logging, KeepsCommandsToTheShell) {
  platform::RunCommand("modprobe msr");
  EXPECT_THAT(board.Log(), ElementsAre(Access{Access::kCommand, 0, 0, 0, "modprobe msr"}));
}

TEST_F(Logging, RecordsNothingWhenSwitchedOff) {
  board.logging = false;
  platform::Out8(0x80, 1);
  platform::SleepMicroseconds(1);
  EXPECT_TRUE(board.Log().empty());
}

TEST_F(Logging, PortLogLeavesOutEverythingButPortsAndSleeps) {
  platform::SetIoPrivilegeLevel(3);
  platform::Out8(0x80, 1);
  platform::Close(platform::Open("/dev/mem", platform::OpenMode::kRead));
  platform::SleepMicroseconds(1);
  platform::In8(0x80);
  EXPECT_THAT(board.PortLog(), ElementsAre(sim::Out8(0x80, 1), sim::Sleep(1), sim::In8(0x80, 0xFF)));
}

TEST_F(Faults, AreAskedForWithKindAndRunningNumber) {
  std::vector<std::pair<Access::Kind, uint64_t>> asked;
  board.fault = [&](Access::Kind kind, uint64_t number) {
    asked.emplace_back(kind, number);
    return false;
  };
  platform::SetIoPrivilegeLevel(3);
  platform::In8(0x80);
  platform::SleepMicroseconds(1);
  EXPECT_THAT(asked, ElementsAre(std::pair(Access::kIopl, 0), std::pair(Access::kIn, 1), std::pair(Access::kSleep, 2)));
}

TEST_F(Faults, MakeInputsAnswerTheFaultAnswer) {
  board.Ports(0x80, {0x12, 0x34});
  board.fault = [](Access::Kind, uint64_t) { return true; };
  EXPECT_EQ(platform::In16(0x80), 0xFFFF);
  board.faultAnswer = 0;
  EXPECT_EQ(platform::In16(0x80), 0);
}

TEST_F(Faults, SwallowOutputsAndSleepsAndFailTheRest) {
  board.Ports(0x80, {0x12}).Memory(0, {1});
  const int descriptor = platform::Open("/dev/mem", platform::OpenMode::kRead);
  board.fault = [](Access::Kind, uint64_t) { return true; };
  platform::Out8(0x80, 0x99);
  platform::SleepMicroseconds(10);
  uint8_t byte;
  EXPECT_EQ(board.PortValue(0x80), 0x12);
  EXPECT_EQ(board.Microseconds(), 0u);
  EXPECT_NE(platform::SetIoPrivilegeLevel(3), 0);
  EXPECT_EQ(platform::Open("/dev/mem", platform::OpenMode::kRead), -1);
  EXPECT_EQ(platform::Map(descriptor, 0, 1, false), nullptr);
  EXPECT_EQ(platform::ReadAt(descriptor, &byte, 1, 0), -1);
}

TEST_F(Faults, NeverKeepDescriptorsAndMappingsAlive) {
  const int descriptor = platform::Open("/dev/mem", platform::OpenMode::kRead);
  void* mapping = platform::Map(descriptor, 0, 16, false);
  board.fault = [](Access::Kind, uint64_t) { return true; };
  platform::Unmap(mapping, 16);
  platform::Close(descriptor);
  EXPECT_EQ(board.LiveMappings(), 0);
  EXPECT_EQ(board.OpenDescriptors(), 0);
}

TEST(AccessToString, NamesPortWidthAndValue) {
  EXPECT_EQ(ToString(sim::Out8(0x2E, 0x55)), "out8 0x2e <- 0x55");
  EXPECT_EQ(ToString(sim::Out32(0xCF8, 0x8000FB20)), "out32 0xcf8 <- 0x8000fb20");
  EXPECT_EQ(ToString(sim::In16(0x400, 0x42)), "in16 0x400 -> 0x0042");
  EXPECT_EQ(ToString(sim::MemWrite(0xFED40000, 7)), "mem8 0xfed40000 <- 0x07");
  EXPECT_EQ(ToString(sim::Sleep(10)), "sleep 10 us");
}

TEST(DefaultBoard, IsUnprivilegedWhereNoneIsLinked) {
  Board::MakeCurrent(nullptr);
  testing::internal::CaptureStderr();
  EXPECT_NE(platform::SetIoPrivilegeLevel(3), 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  Board::MakeCurrent(nullptr);
}

}  // namespace
