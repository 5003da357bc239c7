// SPDX-License-Identifier: MIT
// Which chip serves a function: identifiers read from real registers and looked up in the firmware's board record.
#include "BoardEnvironment.h"

namespace {

constexpr uint8_t kWatchdogKind = 25, kFanKind = 26;
constexpr uint8_t kEeprom = 0xA0;

uint8_t WhichChip(uint8_t kind, const char* name) {
  uint8_t io = 0xFF;
  VynLibGetWhichIOToBeUse(kind, name, &io);
  return io;
}

}  // namespace

TEST(WhichChip, ReadsTheIdentifierFromTwoRegisters) {
  guest::SetNvram(0x70, 0xD2);
  guest::SetNvram(0x71, 0x94);
  EXPECT_EQ(5, WhichChip(kWatchdogKind, "WDT"));  // identifier 0x94D2
  EXPECT_EQ(0u, Code());
}

TEST(WhichChip, RefusesAChipThatTheBoardRecordDoesNotList) {
  guest::SetNvram(0x70, 0x15);
  guest::SetNvram(0x71, 0x02);
  WhichChip(kWatchdogKind, "WDT");  // 0x0215 is a known chip, but not this board's
  EXPECT_EQ(19u, Code());
}

TEST(WhichChip, ReadsTheIdentifierThroughSmbus) {
  guest::SetSmbus(kEeprom, 0x30, 0xC2);
  guest::SetSmbus(kEeprom, 0x31, 0xAE);
  EXPECT_EQ(4, WhichChip(kFanKind, "CPU Fan"));  // identifier 0xAEC2
  EXPECT_EQ(0u, Code());
}

TEST(WhichChip, KnowsNoIdentifyingEntryOfAnotherName) {
  EXPECT_EQ(0, WhichChip(kWatchdogKind, "Timer"));
  EXPECT_EQ(16u, Code());
}
