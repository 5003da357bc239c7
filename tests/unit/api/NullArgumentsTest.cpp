// SPDX-License-Identifier: MIT
// What an application must not do: a null text counts as empty, a null result as not wanted.
#include "tests/unit/api/ApiBoard.h"

using namespace apitest;

namespace {

class NullArguments : public Api {
 protected:
  NullArguments() {
    board.Ports(0x300, {45});
    iadt.Feature("LVDSState", 5, {PortIs(0x300, 45)});
    iadt.Add(Record::Feature("DigitalIOState").Index(1).Value(1).Commands({PortIs(0x300, 45)}));
    iadt.Add(Record::Feature("MBVersionState").Value(1).Commands({PortIs(0x300, 45)}));
    iadt.Add(Record::Sensor("temperature", 2).Name("CPU").Commands({Command::Port(0x300).Get()}));
    iadt.Feature("Watchdog", 3, {Command::Port(0x300).Get().Argument(0)});
    iadt.Feature("Watchdog", 6, {PortIs(0x300, 45)});
    iadt.Add(Record::Feature("FanConfig").Name("CPU Fan Mode").Value(1).Commands({PortIs(0x300, 45)}));
    Start();
  }

  void ExpectDone(int result) {
    EXPECT_EQ(result, 1);
    EXPECT_EQ(TakeCode(), 0u);
  }
  void ExpectFailed(int result, uint64_t code) {
    EXPECT_EQ(result, 0);
    EXPECT_EQ(TakeCode(), code);
  }
};

}  // namespace

TEST_F(NullArguments, AreResultsThatAreNotWanted) {
  ExpectDone(VynLibGetLVDSState(nullptr, 2));
  ExpectDone(VynLibGetDigitalIOState(1, nullptr, 2));
  ExpectDone(VynLibMBVersionState(nullptr, 2));
  ExpectDone(VynLibGetTemperature("CPU", nullptr, 2));
  ExpectDone(VynLibGetTemperatureNames(nullptr, nullptr, 2));
  ExpectDone(VynLibWDTGetInterval(nullptr, 2));
  ExpectDone(VynLibWDTGetCountMode(nullptr, 2));
  ExpectDone(VynLibGetFanConfigNames(nullptr, nullptr, 2));
  VynLibGetFANModeSupport("CPU Fan", nullptr);
  EXPECT_EQ(TakeCode(), 0u);
  VynLibGetWhichIOToBeUse(99, "CPU Fan", nullptr);
  EXPECT_EQ(TakeCode(), 13u);
}

TEST_F(NullArguments, AreEmptyTexts) {
  float celsius = 77;
  ExpectFailed(VynLibGetTemperature(nullptr, &celsius, 2), 0x405);
  EXPECT_EQ(celsius, 0);
  uint8_t modes = 9, block[] = {1}, count = 1;
  VynLibGetFANModeSupport(nullptr, &modes);
  EXPECT_EQ(TakeCode(), 0x1806u);
  EXPECT_EQ(modes, 0);
  ExpectFailed(VynLibGetFANConfig(nullptr, block, &count, 2), 0x1805);
  ExpectFailed(VynLibSetFANConfig(nullptr, block, 1, 2), 0x1805);
}

TEST_F(NullArguments, AreACountOf0) {
  char name[20] = "#";
  char* names[] = {name};
  uint8_t block[] = {1};
  ExpectFailed(VynLibGetFanConfigNames(names, nullptr, 2), 0x1803);
  ExpectFailed(VynLibGetFANConfig("CPU Fan", block, nullptr, 2), 0x1805);
  // A count that differs is a success of the sensors' names, which leave the code.
  EXPECT_EQ(VynLibGetTemperatureNames(names, nullptr, 2), 1);
  EXPECT_EQ(TakeCode(), kNoCode);
  EXPECT_STREQ(name, "#");
}

TEST_F(NullArguments, AreFanNamesThatAreNotWanted) {
  char* names[] = {nullptr};
  uint8_t count = 1;
  ExpectDone(VynLibGetFanConfigNames(names, &count, 2));
}
