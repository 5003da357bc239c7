// SPDX-License-Identifier: MIT
// The production library over a trapped machine: real port instructions, mappings and sleeps, and nothing left behind.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "firmware/AcpiImage.h"
#include "firmware/BiosInfo.h"
#include "firmware/IadtBuilder.h"
#include "firmware/IamtBuilder.h"
#include "tests/support/TrappedMachine.h"
#include "vynlib/vynlib.h"

using namespace layout;

using firmware::Command;
using testing::ElementsAre;

namespace {

constexpr uint16_t kIndex = 0x70, kData = 0x71;

Command Pair(uint8_t reg) { return Command::IndexData(kIndex, kData, reg); }

firmware::Bytes FunctionTable() {
  return firmware::IadtBuilder()
      .Feature("LVDSState", 0, {Pair(0x10).Get(0x04, 0x00), Pair(0x10).Set(0xFB, 0x00)})
      .Feature("LVDSState", 1, {Pair(0x10).Get(0x04, 0x04), Pair(0x10).Set(0xFB, 0x04)})
      .Feature("WifiState", 5, {Command::Memory(0xFED80010).Get(0xFF, 0x5A)})
      .Feature("BTState", 6, {Command::Pci(0, 31, 0, 0x40).Set(0, 0x12), Command::Delay(kMilliseconds, 3).Set()})
      .Feature("OTPState", 7, {Command::Msr(0x19C).Get(0xFF, 0x77)})
      .Build();
}

/// The library started on a machine with firmware and an index/data pair; the log is empty afterwards.
class ProductionLibraryOnABoard : public testing::Test {
 protected:
  TrappedMachine machine;
  std::array<uint8_t, 256> registers{};
  uint8_t selected = 0;

  ProductionLibraryOnABoard() {
    for (const auto& [address, bytes] :
         firmware::AcpiImage().Table(FunctionTable()).Table(firmware::IamtBuilder().Chips(1, 2, 3).Build()).Build())
      machine.StoreMemory(address, bytes);
    machine.StoreMemory(0xE8000, firmware::BiosInfo{.model = "TRAPPED-2"}.Build());
    machine.StoreMemory(0xFED80010, {0x5A});
    machine.msrs[0x19C] = {0x77, 0, 0, 0, 0, 0, 0, 0};
    machine.in = [this](uint16_t port, unsigned) { return port == kData ? registers[selected] : 0xFFFFFFFFu; };
    machine.out = [this](uint16_t port, unsigned, uint32_t value) {
      if (port == kIndex) selected = static_cast<uint8_t>(value);
      if (port == kData) registers[selected] = static_cast<uint8_t>(value);
    };
    testing::internal::CaptureStdout();
    EXPECT_EQ(VynLibDllInit(), 1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "ModelName::TRAPPED-2\n");
    machine.ClearLog();
  }
  ~ProductionLibraryOnABoard() override { VynLibDllUnInit(); }
};

}  // namespace

TEST_F(ProductionLibraryOnABoard, FindsBothTables) { EXPECT_EQ(VynLibTableSupported(2), 1); }

TEST_F(ProductionLibraryOnABoard, ReadsAFeatureOverAnIndexDataPair) {
  registers[0x10] = 0xA4;
  uint8_t state = 9;
  EXPECT_EQ(VynLibGetLVDSState(&state, 1), 1);
  EXPECT_EQ(state, 1);
  EXPECT_EQ(VynLibDllGetLastError(), 0u);
  EXPECT_THAT(machine.Log(), ElementsAre("out8 0x70 <- 0x10", "in8 0x71 -> 0xa4",  // value 0 does not match
                                         "out8 0x70 <- 0x10", "in8 0x71 -> 0xa4"));
}

TEST_F(ProductionLibraryOnABoard, SetsAFeatureOverAnIndexDataPair) {
  registers[0x10] = 0xA0;
  EXPECT_EQ(VynLibSetLVDSState(1, 2), 1);
  EXPECT_EQ(registers[0x10], 0xA4);
  EXPECT_THAT(machine.Log(),
              ElementsAre("out8 0x70 <- 0x10", "in8 0x71 -> 0xa0", "out8 0x70 <- 0x10", "out8 0x71 <- 0xa4"));
}

TEST_F(ProductionLibraryOnABoard, MapsMemoryForEachAccessAndLetsItGo) {
  uint8_t state = 9;
  EXPECT_EQ(VynLibGetWifiState(&state, 2), 1);
  EXPECT_EQ(state, 5);
  EXPECT_THAT(machine.Log(), testing::IsSupersetOf({"open /dev/mem O_RDONLY|O_CLOEXEC", "close"}));
  EXPECT_EQ(machine.OpenDescriptors(), 0u);
  EXPECT_EQ(machine.LiveMappings(), 0u);
}

TEST_F(ProductionLibraryOnABoard, WritesPciAndSleeps) {
  EXPECT_EQ(VynLibSetBTState(6, 2), 1);
  EXPECT_THAT(machine.Log(), ElementsAre("out32 0xcf8 <- 0x8000f840", "in32 0xcfc -> 0xffffffff",
                                         "out32 0xcf8 <- 0x8000f840", "out32 0xcfc <- 0x00000012", "usleep 3000"));
}

TEST_F(ProductionLibraryOnABoard, RunsAnMsrCommandBeforeItEndsWithCode21) {
  uint8_t state = 9;
  EXPECT_EQ(VynLibGetOTPState(&state, 2), 0);
  EXPECT_EQ(VynLibDllGetLastError(), 21u);
  EXPECT_EQ(state, 0xFF);
  EXPECT_THAT(machine.Log(), ElementsAre("system modprobe msr", testing::StartsWith("open /dev/cpu/0/msr"),
                                         "pread 8 at 0x19c", "close"));
}

TEST_F(ProductionLibraryOnABoard, DropsThePrivilegeAndLeavesNothingOpen) {
  EXPECT_EQ(VynLibDllUnInit(), 1);
  EXPECT_THAT(machine.Log(), ElementsAre("iopl 0"));
  EXPECT_EQ(machine.OpenDescriptors(), 0u);
  EXPECT_EQ(machine.LiveMappings(), 0u);
}
