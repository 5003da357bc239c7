// SPDX-License-Identifier: MIT
// SMBus commands through the real ICH9 host controller and the EEPROMs behind it.
#include "BoardEnvironment.h"

namespace {
constexpr uint8_t kEeprom = 0xA0;
constexpr uint8_t kEmptyAddress = 0xC0;
}  // namespace

TEST(SmbusByte, GetReadsTheEeprom) {
  guest::SetSmbus(kEeprom, 0x10, 0x01);
  uint8_t state = 0xFF;
  EXPECT_EQ(1, VynLibGetIntelPwrSolutionState(&state, 2));
  EXPECT_EQ(1, state);
}

TEST(SmbusByte, SetChangesTheMaskedBitsOnly) {
  guest::SetSmbus(kEeprom, 0x10, 0xF1);
  EXPECT_EQ(1, VynLibSetIntelPwrSolutionState(2, 2));
  EXPECT_EQ(0u, Code());
  EXPECT_EQ(0xF2, guest::Smbus(kEeprom, 0x10));
}

TEST(SmbusByte, SetLeavesTheNeighbouringRegistersAlone) {
  guest::SetSmbus(kEeprom, 0x0F, 0x77);
  guest::SetSmbus(kEeprom, 0x11, 0x88);
  EXPECT_EQ(1, VynLibSetIntelPwrSolutionState(1, 2));
  EXPECT_EQ(0x77, guest::Smbus(kEeprom, 0x0F));
  EXPECT_EQ(0x88, guest::Smbus(kEeprom, 0x11));
}

TEST(SmbusWord, GetReadsTwoBytesLowFirst) {
  guest::SetSmbus(kEeprom, 0x20, 0x34);
  guest::SetSmbus(kEeprom, 0x21, 0x12);
  uint8_t state = 0xFF;
  EXPECT_EQ(1, VynLibGetUserLEDState(&state, 2));
  EXPECT_EQ(1, state);
}

TEST(SmbusWord, SetWritesTwoBytesLowFirst) {
  EXPECT_EQ(1, VynLibSetUserLEDState(0, 2));
  EXPECT_EQ(0xCD, guest::Smbus(kEeprom, 0x20));
  EXPECT_EQ(0xAB, guest::Smbus(kEeprom, 0x21));
}

TEST(SmbusMissingSlave, FailsTheReading) {
  ASSERT_EQ(-1, guest::Smbus(kEmptyAddress, 0x00));
  uint8_t state = 0;
  EXPECT_EQ(0, VynLibDetectTbCIOPlug(&state, 2));
  EXPECT_EQ(0x1301u, Code());
  EXPECT_EQ(0xFF, state);
}

TEST(SmbusMissingSlave, LeavesTheControllerUsable) {
  guest::SetSmbus(kEeprom, 0x10, 0x02);
  uint8_t state = 0;
  EXPECT_EQ(0, VynLibDetectTbCIOPlug(&state, 2));
  EXPECT_EQ(1, VynLibGetIntelPwrSolutionState(&state, 2));
  EXPECT_EQ(2, state);
}

TEST(SmbusTransaction, PutsTheControllersConfigurationBack) {
  const uint32_t before = guest::PciDword(guest::kSmbusFunction, guest::kSmbusConfiguration);
  uint8_t state = 0;
  EXPECT_EQ(0, VynLibDetectTbCIOPlug(&state, 2));
  EXPECT_EQ(1, VynLibSetIntelPwrSolutionState(1, 2));
  EXPECT_EQ(before, guest::PciDword(guest::kSmbusFunction, guest::kSmbusConfiguration));
}
