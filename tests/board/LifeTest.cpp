// SPDX-License-Identifier: MIT
// An application's day on one board, through the public header alone: super I/O features, sensors, watchdog and fans.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "firmware/AcpiImage.h"
#include "firmware/BiosInfo.h"
#include "firmware/IadtBuilder.h"
#include "firmware/IamtBuilder.h"
#include "tests/support/Machine.h"
#include "tests/support/Printed.h"
#include "vynlib/vynlib.h"

using firmware::Command;
using firmware::Record;
using testing::ElementsAre;

namespace {

constexpr uint16_t kIndex = 0x2E, kData = 0x2F;
constexpr uint8_t kLvds = 0x10, kCom = 0x20, kVoltage = 0x30, kTemperature = 0x31, kFanHigh = 0x32, kFanLow = 0x33,
                  kInterval = 0x40, kWatchdog = 0x41, kFanMode = 0x50, kFanDuty = 0x51, kChipLow = 0x60,
                  kChipHigh = 0x61;

Command Pair(uint8_t reg) { return Command::IndexData(kIndex, kData, reg); }

/// Two states of a feature in the bits of `mask`.
void AddStates(firmware::IadtBuilder* iadt, const char* function, uint8_t index, uint8_t reg, uint8_t mask) {
  for (const bool on : {false, true}) {
    const uint8_t bits = on ? mask : uint8_t{0};
    iadt->Feature(function, index, on ? 1 : 0,
                  {Pair(reg).Get(mask, bits), Pair(reg).Set(static_cast<uint8_t>(~mask), bits)});
  }
}

/// Bits 0 and 1 of the watchdog register: active, counting. Bit 2 is the count mode.
void AddWatchdog(firmware::IadtBuilder* iadt) {
  struct Operation {
    uint8_t number, mask, bits;
  };
  for (const Operation& each : {Operation{1, 1, 1}, Operation{2, 1, 0}, Operation{4, 2, 2}, Operation{5, 2, 0},
                                Operation{6, 4, 0}, Operation{7, 4, 4}})
    iadt->Feature(
        "Watchdog", each.number,
        {Pair(kWatchdog).Get(each.mask, each.bits), Pair(kWatchdog).Set(static_cast<uint8_t>(~each.mask), each.bits)});
  iadt->Feature("Watchdog", 3, {Pair(kInterval).Get().Set().Argument(0)});
  iadt->Add(Record::Feature("Watchdog")
                .Name("WDT")
                .Value(240)
                .Commands({Pair(kChipLow).Get().Argument(0), Pair(kChipHigh).Get().Argument(1)}));
}

void AddFan(firmware::IadtBuilder* iadt) {
  const Command duty = Pair(kFanDuty).Get().Set().Argument(1);
  for (const uint8_t mode : {uint8_t{0}, uint8_t{1}})
    iadt->Add(Record::Feature("FanConfig")
                  .Name("CPU Fan Mode")
                  .Value(mode)
                  .Commands({Pair(kFanMode).Get(0x0F, mode), Pair(kFanMode).Set(0xF0, mode), duty}));
}

void AddSensors(firmware::IadtBuilder* iadt) {
  iadt->Add(Record::Sensor("voltage", 2)
                .Name("+3.3V")
                .Parameter("r1", 10)
                .Parameter("r2", 10)
                .Commands({Pair(kVoltage).Get()}));
  iadt->Add(Record::Sensor("temperature", 2).Name("CPU").Commands({Pair(kTemperature).Get()}));
  iadt->Add(Record::Sensor("fan", 2).Name("CPU Fan").Commands({Pair(kFanHigh).Get(), Pair(kFanLow).Get()}));
}

class Life : public testing::Test, protected support::Machine {
 protected:
  std::shared_ptr<std::array<uint8_t, 256>> chip = board.IndexData(kIndex, kData);
  std::string printed;

  Life() {
    firmware::IadtBuilder iadt;
    AddStates(&iadt, "LVDSState", 0, kLvds, 0x04);
    AddStates(&iadt, "ComType", 1, kCom, 0x01);
    AddStates(&iadt, "ComType", 2, kCom, 0x02);
    AddSensors(&iadt);
    AddWatchdog(&iadt);
    AddFan(&iadt);
    firmware::AcpiImage()
        .Table(firmware::IamtBuilder().Chips(0x94D2, 0, 0).Build())
        .Table(iadt.Build())
        .PutInto(&board);
    board.Memory(0xF4000, firmware::BiosInfo{.model = "VX-2000"}.Build());
    Start();
  }
  ~Life() override { VynLibDllUnInit(); }
  void Start() {
    printed = support::Printed([] { EXPECT_EQ(VynLibDllInit(), 1); });
  }
};

}  // namespace

TEST_F(Life, BeginsWithTheModelNameAndBothTables) {
  EXPECT_EQ(printed, "ModelName::VX-2000\n");
  EXPECT_EQ(VynLibTableSupported(2), 1);
}

TEST_F(Life, SetsAFeatureAndReadsItBackAndLeavesTheOtherBits) {
  (*chip)[kLvds] = 0xA0;
  uint8_t state = 9;
  ASSERT_EQ(VynLibGetLVDSState(&state, 2), 1);
  EXPECT_EQ(state, 0);
  ASSERT_EQ(VynLibSetLVDSState(1, 2), 1);
  EXPECT_EQ((*chip)[kLvds], 0xA4);
  ASSERT_EQ(VynLibGetLVDSState(&state, 2), 1);
  EXPECT_EQ(state, 1);
}

TEST_F(Life, KeepsTheInstancesOfAFeatureApart) {
  ASSERT_EQ(VynLibSetComType(2, 1, 2), 1);
  uint8_t first = 9, second = 9;
  ASSERT_EQ(VynLibGetComType(1, &first, 2), 1);
  ASSERT_EQ(VynLibGetComType(2, &second, 2), 1);
  EXPECT_EQ(first, 0);
  EXPECT_EQ(second, 1);
}

TEST_F(Life, ListsSensorsAndReadsThemByTheirNames) {
  (*chip)[kVoltage] = 206;
  (*chip)[kTemperature] = 0xF6;
  (*chip)[kFanHigh] = 0x05;
  (*chip)[kFanLow] = 0xDC;
  char name[VYNLIB_NAME_BYTES];
  char* names[] = {name};
  uint8_t count = 0;
  float number = 0;
  uint16_t rpm = 0;
  ASSERT_EQ(VynLibGetVoltageNames(nullptr, &count, 2), 1);
  ASSERT_EQ(count, 1);
  ASSERT_EQ(VynLibGetVoltageNames(names, &count, 2), 1);
  EXPECT_STREQ(name, "+3.3V");
  ASSERT_EQ(VynLibGetVoltage(name, &number, 2), 1);
  EXPECT_EQ(number, 3.296f);  // 2 * 206 * 8 mV
  ASSERT_EQ(VynLibGetTemperature("CPU", &number, 2), 1);
  EXPECT_EQ(number, -10.0f);
  ASSERT_EQ(VynLibGetFanSpeed("CPU Fan", &rpm, 2), 1);
  EXPECT_EQ(rpm, 1000);
}

TEST_F(Life, DrivesTheWatchdog) {
  uint32_t interval = 0;
  uint8_t mode = 9;
  ASSERT_EQ(VynLibWDTEnable(60, 1, 2), 1);
  EXPECT_EQ(VynLibDllGetLastError(), 0u);
  EXPECT_EQ((*chip)[kWatchdog], 0x07);
  ASSERT_EQ(VynLibWDTSetInterval(90, 2), 1);
  ASSERT_EQ(VynLibWDTGetInterval(&interval, 2), 1);
  EXPECT_EQ(interval, 90u);
  ASSERT_EQ(VynLibWDTGetCountMode(&mode, 2), 1);
  EXPECT_EQ(mode, 1);
  ASSERT_EQ(VynLibWDTDisable(2), 1);
  EXPECT_EQ((*chip)[kWatchdog], 0x04);
  EXPECT_EQ((*chip)[kInterval], 0);
  EXPECT_EQ(board.Microseconds(), 50000u);
}

TEST_F(Life, ReadsAndSetsAFansMode) {
  (*chip)[kFanDuty] = 40;
  uint8_t modes = 0, count = 255;
  uint8_t block[2] = {};
  VynLibGetFANModeSupport("CPU Fan", &modes);
  EXPECT_EQ(modes, 0x03);
  ASSERT_EQ(VynLibGetFANConfig("CPU Fan", block, &count, 2), 1);
  EXPECT_EQ(count, 2);
  ASSERT_EQ(VynLibGetFANConfig("CPU Fan", block, &count, 2), 1);
  EXPECT_THAT(block, ElementsAre(0, 40));
  const uint8_t automatic[] = {1, 75};
  ASSERT_EQ(VynLibSetFANConfig("CPU Fan", automatic, 2, 2), 1);
  EXPECT_EQ((*chip)[kFanMode], 1);
  EXPECT_EQ((*chip)[kFanDuty], 75);
}

TEST_F(Life, TellsTheChipBehindTheWatchdog) {
  (*chip)[kChipLow] = 0xD2;
  (*chip)[kChipHigh] = 0x94;
  uint8_t io = 0;
  VynLibGetWhichIOToBeUse(25, "WDT", &io);
  EXPECT_EQ(VynLibDllGetLastError(), 0u);
  EXPECT_EQ(io, 5);
}

TEST_F(Life, RepeatsAfterAStop) {
  for (int i = 0; i < 3; ++i) {
    ASSERT_EQ(VynLibDllUnInit(), 1);
    Start();
    EXPECT_EQ(printed, "ModelName::VX-2000\n");
    const auto state = static_cast<uint8_t>(i % 2);
    ASSERT_EQ(VynLibSetLVDSState(state, 2), 1);
    uint8_t read = 9;
    ASSERT_EQ(VynLibGetLVDSState(&read, 2), 1);
    EXPECT_EQ(read, state);
    EXPECT_EQ(board.OpenDescriptors(), 0);
    EXPECT_EQ(board.LiveMappings(), 0);
  }
}
