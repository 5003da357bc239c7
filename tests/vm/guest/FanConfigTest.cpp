// SPDX-License-Identifier: MIT
// Fan configuration in NVRAM registers: the mode in one, its parameters in the next two.
#include "BoardEnvironment.h"

namespace {
constexpr uint8_t kModeRegister = 0x74, kDutyRegister = 0x75, kTargetRegister = 0x76;
constexpr const char* kFan = "CPU Fan ";  // the entries' names without the word "Mode"
}  // namespace

TEST(FanConfig, SetWritesTheModeAndItsParameters) {
  const uint8_t block[] = {2, 60, 45};
  EXPECT_EQ(1, VynLibSetFANConfig(kFan, block, sizeof block, 2));
  EXPECT_EQ(0u, Code());
  EXPECT_EQ(2, guest::Nvram(kModeRegister));
  EXPECT_EQ(60, guest::Nvram(kDutyRegister));
  EXPECT_EQ(45, guest::Nvram(kTargetRegister));
}

TEST(FanConfig, GetReadsTheCurrentModesParameters) {
  guest::SetNvram(kModeRegister, 0);
  guest::SetNvram(kDutyRegister, 80);
  uint8_t block[] = {0, 0, 0xEE};
  uint8_t count = 2;
  EXPECT_EQ(1, VynLibGetFANConfig(kFan, block, &count, 2));
  EXPECT_EQ(2, count);
  EXPECT_EQ(0, block[0]);
  EXPECT_EQ(80, block[1]);
  EXPECT_EQ(0xEE, block[2]);
}

TEST(FanConfig, ModeSupportIsThatOfTheEntries) {
  uint8_t modes = 0;
  VynLibGetFANModeSupport(kFan, &modes);
  EXPECT_EQ(0u, Code());
  EXPECT_EQ(0x05, modes);  // modes 0 and 2
}

TEST(FanConfig, NamesAreThoseOfTheEntriesWithoutTheModeWord) {
  uint8_t count = 2;
  char buffers[2][VYNLIB_NAME_BYTES];
  char* names[] = {buffers[0], buffers[1]};
  ASSERT_EQ(1, VynLibGetFanConfigNames(names, &count, 2));
  EXPECT_STREQ("CPU Fan ", buffers[0]);
  EXPECT_STREQ("CPU Fan Id", buffers[1]);
}
