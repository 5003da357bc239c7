// SPDX-License-Identifier: MIT
// vynctl as the feeder of the machine's watchdog, whose expiries the host counts. The interval 14 is 2 s on this
// machine, which the tool takes for 14 s.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tool.h"
#include "vynlib/lock.h"

using ::testing::HasSubstr;

namespace {

constexpr char kStart[] = "vynctl watchdog start 1 >/dev/null";
constexpr char kFeed[] = "watchdog feed 13 --every 0.4 ";

class Feeding : public ::testing::Test {
 protected:
  void SetUp() override {
    guest::AllowPorts();
    guest::Run("vynctl --no-lock watchdog stop");
    before_ = guest::WatchdogExpiries();
    ASSERT_EQ(0, guest::Run(kStart).status);
  }
  void TearDown() override { guest::Run("vynctl --no-lock watchdog stop"); }

  int Expiries() const { return guest::WatchdogExpiries() - before_; }
  /// For longer than the time of the watchdog.
  bool StaysQuiet() const {
    guest::SleepMilliseconds(6000);
    return Expiries() == 0;
  }
  bool Expires() const {
    const double deadline = guest::SecondsSinceBoot() + 40;
    while (Expiries() == 0 && guest::SecondsSinceBoot() < deadline) guest::SleepMilliseconds(50);
    return Expiries() > 0;
  }

 private:
  int before_ = 0;
};

}  // namespace

TEST_F(Feeding, KeepsTheBoardAliveUntilItIsStoppedOrderly) {
  guest::Tool feeder(std::string(kFeed) + "--then-stop --check true");
  EXPECT_TRUE(StaysQuiet());
  feeder.Signal(SIGTERM);
  EXPECT_EQ("status 0", feeder.End());
  EXPECT_TRUE(StaysQuiet()) << "the watchdog is stopped";
}

TEST_F(Feeding, AnEndWithoutAStopSaysSoAndResetsTheBoard) {
  guest::Tool feeder(kFeed);
  EXPECT_TRUE(StaysQuiet());
  feeder.Signal(SIGTERM);
  EXPECT_EQ("status 0", feeder.End());
  EXPECT_THAT(guest::Tool::Output(), HasSubstr("resets the board in about 13 s; 'vynctl watchdog stop' stops it"));
  EXPECT_TRUE(Expires());
}

TEST_F(Feeding, AKilledServiceResetsTheBoard) {
  guest::Tool feeder(std::string(kFeed) + "--then-stop");
  EXPECT_TRUE(StaysQuiet());
  feeder.Signal(SIGKILL);
  EXPECT_TRUE(Expires());
}

TEST_F(Feeding, AFrozenServiceResetsTheBoard) {
  guest::Tool feeder(std::string(kFeed) + "--then-stop");
  EXPECT_TRUE(StaysQuiet());
  feeder.Signal(SIGSTOP);
  EXPECT_TRUE(Expires());
}

TEST_F(Feeding, AFrozenCheckResetsTheBoard) {
  guest::Tool feeder(std::string(kFeed) + "--then-stop --check 'test -e /tmp/well || kill -STOP $$'");
  std::ofstream("/tmp/well").close();
  EXPECT_TRUE(StaysQuiet());
  unlink("/tmp/well");
  EXPECT_EQ("status 3", feeder.End());
  EXPECT_THAT(guest::Tool::Output(), HasSubstr("the health command took longer than 0.2 s"));
  EXPECT_TRUE(Expires());
}

TEST_F(Feeding, APausedProgramThatHoldsTheHardwareDoesNotResetTheBoard) {
  guest::Tool feeder(kFeed);
  EXPECT_TRUE(StaysQuiet());
  vynlib_lock lock;
  ASSERT_EQ(VYNLIB_LOCK_OK, vynlib_lock_open(&lock, VYNLIB_LOCK_PATH));
  ASSERT_EQ(VYNLIB_LOCK_OK, vynlib_lock_take(&lock, 10000));
  EXPECT_TRUE(StaysQuiet());
  vynlib_lock_give(&lock);
  vynlib_lock_close(&lock);
  EXPECT_THAT(guest::Tool::Output(), HasSubstr("keeps the hardware; going on without waiting any longer"));
}

TEST_F(Feeding, AMonitorWhoseOutputNobodyReadsDoesNotResetTheBoard) {
  guest::Tool feeder(kFeed);
  FILE* unread = popen("exec vynctl monitor --json --interval 0.01", "r");
  ASSERT_NE(nullptr, unread);
  guest::SleepMilliseconds(3000);
  EXPECT_TRUE(StaysQuiet());
  EXPECT_EQ("", guest::Tool::Output());
  pclose(unread);
}
