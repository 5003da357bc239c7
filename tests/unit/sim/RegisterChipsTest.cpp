// SPDX-License-Identifier: MIT
// The chips that live in a file of registers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sim/Board.h"
#include "sim/chips/RegisterChips.h"

namespace {

constexpr uint64_t kSecond = 1000000;

class ChipBoard : public testing::Test {
 protected:
  void Attach(const char* model, sim::Options options) {
    for (const sim::ChipOption& option : sim::FindChipModel(model)->options)
      if (option.otherwise != sim::ChipOption::kRequired) options.emplace(option.name, option.otherwise);
    sim::FindChipModel(model)->attach(board, registers, options);
  }
  /// Writes a register as the library would, over an index/data pair.
  void Write(uint8_t index, uint8_t value) {
    board.Out(0x290, 1, index);
    board.Out(0x291, 1, value);
  }
  uint8_t Read(uint8_t index) {
    board.Out(0x290, 1, index);
    return static_cast<uint8_t>(board.In(0x291, 1));
  }
  sim::Board board;
  sim::Registers registers = board.IndexData(0x290, 0x291);
};

class WatchdogChip : public ChipBoard {
 protected:
  WatchdogChip() {
    Attach("watchdog", {{"control", 0x30}, {"interval", 0x31}, {"mode", 0x32}, {"status", 0x33}});
    Write(0x31, 3);
    Write(0x30, 0x03);
  }
};

TEST_F(WatchdogChip, CountsSecondsDown) {
  board.Sleep(kSecond - 1);
  EXPECT_EQ(Read(0x31), 3);
  board.Sleep(1);
  EXPECT_EQ(Read(0x31), 2);
}

TEST_F(WatchdogChip, ExpiresVisibly) {
  board.Sleep(3 * kSecond - 1);
  EXPECT_EQ(Read(0x33), 0);
  testing::internal::CaptureStderr();
  board.Sleep(1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "simulated board: the watchdog expired\n");
  EXPECT_EQ(Read(0x33), 0x10);
  EXPECT_EQ(Read(0x31), 0);
  EXPECT_EQ(Read(0x30), 0x01);
}

TEST_F(WatchdogChip, LivesOnWhenFed) {
  for (int i = 0; i < 10; ++i) {
    board.Sleep(2 * kSecond);
    Write(0x31, 3);
  }
  EXPECT_EQ(Read(0x33), 0);
}

TEST_F(WatchdogChip, CountsMinutesInTheOtherMode) {
  Write(0x32, 0x08);
  board.Sleep(59 * kSecond);
  EXPECT_EQ(Read(0x31), 3);
  board.Sleep(kSecond);
  EXPECT_EQ(Read(0x31), 2);
}

TEST_F(WatchdogChip, HoldsStillWhileStopped) {
  Write(0x30, 0x01);
  board.Sleep(100 * kSecond);
  EXPECT_EQ(Read(0x31), 3);
  EXPECT_EQ(Read(0x33), 0);
}

class FanChip : public ChipBoard {
 protected:
  sim::Options options = {{"mode", 0x10}, {"duty", 0x11},       {"temperature", 0x12}, {"low", 0x13},
                          {"high", 0x14}, {"speed_high", 0x20}, {"speed_low", 0x21},   {"max_rpm", 5100}};
  unsigned Speed() { return Read(0x20) * 256u + Read(0x21); }
};

TEST_F(FanChip, RunsAtFullSpeedInModeZero) {
  Attach("fan", options);
  EXPECT_EQ(Speed(), 5100u);
}

TEST_F(FanChip, FollowsTheDutyInModeOne) {
  Attach("fan", options);
  Write(0x10, 1);
  Write(0x11, 100);
  // 5100 * 100 / 255
  EXPECT_EQ(Speed(), 2000u);
  Write(0x11, 0);
  EXPECT_EQ(Speed(), 0u);
}

TEST_F(FanChip, FollowsTheTemperatureInModeTwo) {
  Attach("fan", options);
  Write(0x13, 30);
  Write(0x14, 70);
  Write(0x10, 2);
  // Duty 0x40 up to 30 degrees, 255 from 70 on; half way 0x40 + 191 * 20 / 40 = 159.
  Write(0x12, 30);
  EXPECT_EQ(Speed(), 1280u);
  Write(0x12, 50);
  EXPECT_EQ(Speed(), 3180u);
  Write(0x12, 70);
  EXPECT_EQ(Speed(), 5100u);
}

TEST_F(FanChip, ReadsAsACountWhenAsked) {
  options["counts"] = 1;
  options["max_rpm"] = 1500;
  Attach("fan", options);
  EXPECT_EQ(Speed(), 1000u);
  Write(0x10, 1);
  EXPECT_EQ(Speed(), 0xFFFFu);
}

TEST_F(ChipBoard, DriftHoldsStillOnABoardThatIsNotLive) {
  (*registers)[0x40] = 45;
  Attach("drift", {{"register", 0x40}, {"min", 40}, {"max", 50}});
  board.Sleep(17 * kSecond);
  EXPECT_EQ(Read(0x40), 45);
}

TEST_F(ChipBoard, DriftStaysWithinItsBoundsAndReachesBothOnALiveBoard) {
  board.live = true;
  (*registers)[0x40] = 45;
  Attach("drift", {{"register", 0x40}, {"min", 40}, {"max", 50}, {"period", 20}});
  int lowest = 255, highest = 0;
  for (int i = 0; i < 40; ++i) {
    board.Sleep(kSecond);
    lowest = std::min<int>(lowest, Read(0x40));
    highest = std::max<int>(highest, Read(0x40));
  }
  EXPECT_EQ(lowest, 40);
  EXPECT_EQ(highest, 50);
}

}  // namespace
