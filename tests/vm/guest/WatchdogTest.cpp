// SPDX-License-Identifier: MIT
// The machine's watchdog: port 0x443 starts it, port 0x441 stops it, and the host counts its expiries. The written byte
// selects the time: 30 s less two per count, so that 0x0E is 2 s and 0x0D 4 s.
#include "BoardEnvironment.h"

namespace {

constexpr uint8_t kTwoSeconds = 0x0E, kFourSeconds = 0x0D;

class Watchdog : public ::testing::Test {
 protected:
  void SetUp() override { before_ = guest::WatchdogExpiries(); }
  void TearDown() override { VynLibWDTDisable(2); }
  int Expiries() const { return guest::WatchdogExpiries() - before_; }

 private:
  int before_ = 0;
};

}  // namespace

TEST_F(Watchdog, DoesNotExpireWhileItIsFed) {
  ASSERT_EQ(1, VynLibWDTEnable(kFourSeconds, 0, 2));
  EXPECT_EQ(0u, Code());
  for (int i = 0; i < 6; i++) {
    guest::SleepMilliseconds(1000);
    EXPECT_EQ(1, VynLibWDTSetInterval(kFourSeconds, 2));
  }
  EXPECT_EQ(0, Expiries());
}

TEST_F(Watchdog, DoesNotExpireOnceStopped) {
  ASSERT_EQ(1, VynLibWDTEnable(kTwoSeconds, 0, 2));
  EXPECT_EQ(1, VynLibWDTDisable(2));
  EXPECT_EQ(0u, Code());
  guest::SleepMilliseconds(3000);
  EXPECT_EQ(0, Expiries());
}

TEST_F(Watchdog, ExpiresWhenItIsNotFed) {
  ASSERT_EQ(1, VynLibWDTEnable(kTwoSeconds, 0, 2));
  const double deadline = guest::SecondsSinceBoot() + 20;
  while (Expiries() == 0 && guest::SecondsSinceBoot() < deadline) guest::SleepMilliseconds(100);
  EXPECT_GE(Expiries(), 1);
}

TEST_F(Watchdog, TheIntervalReadsBackAsSet) {
  ASSERT_EQ(1, VynLibWDTSetInterval(kFourSeconds, 2));
  uint32_t interval = 0;
  EXPECT_EQ(1, VynLibWDTGetInterval(&interval, 2));
  EXPECT_EQ(kFourSeconds, interval);
}

TEST_F(Watchdog, TheCountModeReadsBackAsSet) {
  uint8_t mode = 0xFF;
  for (uint8_t wanted : {uint8_t{1}, uint8_t{0}}) {
    EXPECT_EQ(1, VynLibWDTSetCountMode(wanted, 2));
    EXPECT_EQ(1, VynLibWDTGetCountMode(&mode, 2));
    EXPECT_EQ(wanted, mode);
  }
}

TEST_F(Watchdog, ACountModeTheBoardLacksIsRefused) {
  EXPECT_EQ(0, VynLibWDTSetCountMode(2, 2));
  EXPECT_EQ(0x170Au, Code());
}
