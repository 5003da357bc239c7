// SPDX-License-Identifier: MIT
// Names, modes and settings of the fans.
#include <cstdio>
#include <cstring>
#include <ctime>

#include "tests/unit/api/ApiBoard.h"

using namespace layout;

using namespace apitest;
using sim::In8;
using sim::Out8;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// A parameter: read by reading and written by setting, through argument slot `index`.
Command Parameter(uint16_t port, uint32_t index) { return Command::Port(port).Get().Set().Argument(index); }

class Fan : public Api {
 protected:
  void Add(const char* name, uint8_t value, const std::vector<Command>& commands = {}) {
    iadt.Add(Record::Feature("FanConfig").Name(name).Value(value).Commands(commands));
  }
  /// Every function that takes a selector.
  static void ExpectAll(Numbers selectors, int result, uint64_t code) {
    uint8_t block[4] = {1, 9, 9, 9}, count = 4;
    for (const uint8_t selector : selectors) {
      EXPECT_EQ(VynLibGetFanConfigNames(nullptr, &count, selector), result);
      EXPECT_EQ(TakeCode(), code);
      EXPECT_EQ(VynLibGetFANConfig("CPU Fan", block, &count, selector), result);
      EXPECT_EQ(TakeCode(), code);
      EXPECT_EQ(VynLibSetFANConfig("CPU Fan", block, 4, selector), result);
      EXPECT_EQ(TakeCode(), code);
    }
    EXPECT_EQ(count, 4);
    EXPECT_THAT(block, ElementsAre(1, 9, 9, 9));
  }
  /// A fan "CPU Fan" in mode 0 (manual: one parameter) or 1 (automatic: three), told by the port 0x310; parameters
  /// from 0x311 on. Reading tests the mode, setting writes it.
  void AddCpuFan() {
    board.Ports(0x310, {1, 50, 60, 70});
    Add("CPU Fan Mode", 0, {PortIs(0x310, 0), PortPut(0x310, 0), Parameter(0x311, 1)});
    Add("CPU Fan Mode", 1,
        {PortIs(0x310, 1), PortPut(0x310, 1), Parameter(0x311, 1), Parameter(0x312, 2), Parameter(0x313, 3)});
  }
};

class GetFanConfigNames : public Fan {};
class GetFANModeSupport : public Fan {};
class GetFANConfig : public Fan {};
class SetFANConfig : public Fan {};

}  // namespace

TEST_F(Fan, FailsWithCode1BeforeTheStart) {
  ExpectAll({0, 1, 2, 3}, 0, 1);
  uint8_t modes = 9;
  VynLibGetFANModeSupport("CPU Fan", &modes);
  EXPECT_EQ(TakeCode(), 1u);
  EXPECT_EQ(modes, 9);
}

TEST_F(Fan, FailsWithCode12ForAnotherSelector) {
  AddCpuFan();
  Start();
  ExpectAll({3, 5, 255}, 0, 12);
  EXPECT_THAT(board.Log(), IsEmpty());
}

TEST_F(Fan, FailsWithItsFamilysCodeWithoutAList) {
  Start();
  ExpectAll({0, 1, 2}, 0, 0x1800);
  uint8_t modes = 9;
  VynLibGetFANModeSupport("CPU Fan", &modes);
  EXPECT_EQ(TakeCode(), 0x1800u);
  EXPECT_EQ(modes, 9);
}

TEST_F(Fan, AnswersTheQueriesWithoutTouchingHardware) {
  AddCpuFan();
  Start();
  ExpectAll({0}, 1, 0);
  EXPECT_THAT(board.Log(), IsEmpty());
}

// ---- names ----

TEST_F(GetFanConfigNames, CountsEachFanOnce) {
  Add("CPU Fan Mode", 0);
  Add("SYS Fan Mode", 0);
  Add("CPU Fan Mode", 1);
  Add("SYS Fan Mode", 1);
  Start();
  for (const uint8_t selector : Numbers{1, 2}) {
    uint8_t count = 99;
    EXPECT_EQ(VynLibGetFanConfigNames(nullptr, &count, selector), 1);
    EXPECT_EQ(TakeCode(), 0u);
    EXPECT_EQ(count, 2);
  }
}

TEST_F(GetFanConfigNames, FailsForAnotherCountAndCopiesNothing) {
  Add("CPU Fan Mode", 0);
  Add("SYS Fan Mode", 0);
  Start();
  for (const uint8_t wrong : Numbers{0, 1, 3}) {
    char name[3][20] = {"#", "#", "#"};
    char* names[] = {name[0], name[1], name[2]};
    uint8_t count = wrong;
    EXPECT_EQ(VynLibGetFanConfigNames(names, &count, 1), 0);
    EXPECT_EQ(TakeCode(), 0x1803u);
    EXPECT_EQ(count, wrong);
    EXPECT_STREQ(name[0], "#");
  }
}

TEST_F(GetFanConfigNames, CopiesTheNamesWithoutTheModeWordInFirmwareOrder) {
  Add("SYS Fan Mode", 0);
  Add("Mode of CPU", 1);
  Add("SYS Fan Mode", 1);
  Start();
  char name[2][24];
  std::memset(name, '#', sizeof name);
  char* names[] = {name[0], name[1]};
  uint8_t count = 2;
  EXPECT_EQ(VynLibGetFanConfigNames(names, &count, 2), 1);
  EXPECT_EQ(TakeCode(), 0u);
  EXPECT_STREQ(name[0], "SYS Fan ");
  EXPECT_STREQ(name[1], " of CPU");
  for (const auto& each : name) EXPECT_EQ(std::string(each + 20, 4), "####");
}

TEST_F(GetFanConfigNames, TakesANameThatAnEarlierOneBeginsWithForADuplicate) {
  Add("CPU Fan 2", 0);
  Add("CPU Fan", 0);
  Add("CPU Fan 22", 0);
  Start();
  uint8_t count = 0;
  EXPECT_EQ(VynLibGetFanConfigNames(nullptr, &count, 2), 1);
  EXPECT_EQ(count, 2);
}

TEST_F(GetFanConfigNames, TakesAnEmptyNameForADuplicateOfAnyOther) {
  Add("CPU Fan", 0);
  Add("Mode", 0);
  Start();
  uint8_t count = 0;
  EXPECT_EQ(VynLibGetFanConfigNames(nullptr, &count, 2), 1);
  EXPECT_EQ(count, 1);
}

TEST_F(GetFanConfigNames, TakesTimeInProportionToTheRecords) {
  constexpr int kRecords = 40000;
  char name[20];
  for (int i = 0; i < kRecords; ++i) {
    std::snprintf(name, sizeof name, "%05d Fan Mode", i);
    Add(name, 0);
  }
  Start();
  uint8_t count = 0;
  const std::clock_t start = std::clock();
  EXPECT_EQ(VynLibGetFanConfigNames(nullptr, &count, 2), 1);
  EXPECT_LT(std::clock() - start, 2 * CLOCKS_PER_SEC);  // seven seconds where each name meets every other
  EXPECT_EQ(count, kRecords % 256);
}

TEST_F(GetFanConfigNames, LeavesOutNoEntryForTheIdInItsName) {
  Add("CPU Fan Mode", 0);
  Add("CPU Fan Id", 240);
  Start();
  char name[2][20];
  char* names[] = {name[0], name[1]};
  uint8_t count = 2;
  EXPECT_EQ(VynLibGetFanConfigNames(names, &count, 2), 1);
  EXPECT_STREQ(name[0], "CPU Fan ");
  EXPECT_STREQ(name[1], "CPU Fan Id");
}

TEST_F(GetFanConfigNames, WritesNo21stByteOfANameThatFillsItsRecord) {
  Add("System Fan Aux1 Mode", 0);
  Add("abcdefghijklmnopqrst", 0);
  Start();
  char name[2][24];
  std::memset(name, '#', sizeof name);
  char* names[] = {name[0], name[1]};
  uint8_t count = 2;
  EXPECT_EQ(VynLibGetFanConfigNames(names, &count, 2), 1);
  EXPECT_STREQ(name[0], "System Fan Aux1 ");
  EXPECT_STREQ(name[1], "");
  for (const auto& each : name) EXPECT_EQ(std::string(each + 20, 4), "####");
}

// ---- modes ----

TEST_F(GetFANModeSupport, SetsABitForEachOfThreeModes) {
  Add("CPU Fan Mode", 0);
  Add("CPU Fan Mode", 2);
  Add("SYS Fan Mode", 1);
  Start();
  uint8_t modes = 0;
  VynLibGetFANModeSupport("CPU Fan", &modes);
  EXPECT_EQ(TakeCode(), 0u);
  EXPECT_EQ(modes, 0x05);
  VynLibGetFANModeSupport("SYS Fan", &modes);
  EXPECT_EQ(modes, 0x02);
}

TEST_F(GetFANModeSupport, FindsNothingForAnotherNameOrAnEmptyOne) {
  Add("CPU Fan Mode", 0);
  Start();
  for (const char* name : {"XYZ", ""}) {
    uint8_t modes = 9;
    VynLibGetFANModeSupport(name, &modes);
    EXPECT_EQ(TakeCode(), 0x1806u);
    EXPECT_EQ(modes, 0);
  }
}

TEST_F(GetFANModeSupport, CountsNoValueAbove2) {
  Add("CPU Fan Mode", 3);
  Add("CPU Fan Mode", 240);
  Start();
  uint8_t modes = 9;
  VynLibGetFANModeSupport("CPU Fan", &modes);
  EXPECT_EQ(TakeCode(), 0x1806u);
  EXPECT_EQ(modes, 0);
}

TEST_F(GetFANModeSupport, NeverCountsAnEntryWithIdInItsName) {
  Add("CPU Fan Id", 0);
  Add("CPU Fan IxIy", 1);  // one hit at each I comes to the two of "Id"
  Start();
  uint8_t modes = 9;
  VynLibGetFANModeSupport("CPU Fan", &modes);
  EXPECT_EQ(TakeCode(), 0x1806u);
  EXPECT_EQ(modes, 0);
}

TEST_F(GetFANModeSupport, AddsUpPartialHitsOfAName) {
  Add("abxaxx", 0);
  Start();
  uint8_t modes = 9;
  VynLibGetFANModeSupport("abc", &modes);
  EXPECT_EQ(TakeCode(), 0u);
  EXPECT_EQ(modes, 1);
}

// ---- reading ----

TEST_F(GetFANConfig, GivesTheModeAndItsParameters) {
  AddCpuFan();
  Start();
  for (const uint8_t selector : Numbers{1, 2}) {
    uint8_t block[5] = {1, 0, 0, 0, 0xEE}, count = 4;
    board.Log().clear();
    EXPECT_EQ(VynLibGetFANConfig("CPU Fan", block, &count, selector), 1);
    EXPECT_EQ(TakeCode(), 0u);
    EXPECT_THAT(block, ElementsAre(1, 50, 60, 70, 0xEE));
    EXPECT_EQ(count, 4);
    EXPECT_THAT(board.PortLog(),
                ElementsAre(In8(0x310, 1), In8(0x310, 1), In8(0x311, 50), In8(0x312, 60), In8(0x313, 70)));
  }
}

TEST_F(GetFANConfig, AskedWith255GivesTheModeAndItsCountAlone) {
  AddCpuFan();
  Start();
  uint8_t block[4] = {0xEE, 0xEE, 0xEE, 0xEE}, count = 255;
  EXPECT_EQ(VynLibGetFANConfig("CPU Fan", block, &count, 2), 1);
  EXPECT_EQ(TakeCode(), 0u);
  EXPECT_THAT(block, ElementsAre(1, 0xEE, 0xEE, 0xEE));
  EXPECT_EQ(count, 4);
}

TEST_F(GetFANConfig, ReportsTheModeThatSucceedsWithinTheCallersCount) {
  // The caller's block is of mode 0, two elements; the fan is in mode 1, of four.
  AddCpuFan();
  Start();
  uint8_t block[4] = {0, 0xEE, 0xEE, 0xEE}, count = 2;
  EXPECT_EQ(VynLibGetFANConfig("CPU Fan", block, &count, 2), 1);
  EXPECT_THAT(block, ElementsAre(1, 50, 0xEE, 0xEE));
  EXPECT_EQ(count, 4);
}

TEST_F(GetFANConfig, CopiesNoMoreThanTheCurrentModeHas) {
  AddCpuFan();
  board.SetPort(0x310, 0);
  Start();
  uint8_t block[4] = {1, 0xEE, 0xEE, 0xEE}, count = 4;
  EXPECT_EQ(VynLibGetFANConfig("CPU Fan", block, &count, 2), 1);
  EXPECT_THAT(block, ElementsAre(0, 50, 0xEE, 0xEE));
  EXPECT_EQ(count, 2);
}

TEST_F(GetFANConfig, CutsParametersToABytes) {
  board.Ports(0x311, {0x34, 0x12});
  Add("CPU Fan Mode", 0, {Parameter(0x311, 1).Width(2)});
  Start();
  uint8_t block[2] = {0, 0}, count = 2;
  EXPECT_EQ(VynLibGetFANConfig("CPU Fan", block, &count, 2), 1);
  EXPECT_EQ(block[1], 0x34);
}

TEST_F(GetFANConfig, FailsForAnotherCount) {
  AddCpuFan();
  Start();
  for (const uint8_t wrong : Numbers{0, 1, 3, 5, 254}) {
    uint8_t block[4] = {1, 0xEE, 0xEE, 0xEE}, count = wrong;
    EXPECT_EQ(VynLibGetFANConfig("CPU Fan", block, &count, 2), 0);
    EXPECT_EQ(TakeCode(), 0x1805u);
    EXPECT_EQ(count, wrong);
    EXPECT_EQ(block[0], 1);
  }
  EXPECT_THAT(board.Log(), IsEmpty());
}

TEST_F(GetFANConfig, FailsForAModeWithoutAnEntryWhateverTheCount) {
  AddCpuFan();
  Start();
  for (const uint8_t each : Numbers{0, 1, 4}) {
    uint8_t block[4] = {7}, count = each;
    EXPECT_EQ(VynLibGetFANConfig("CPU Fan", block, &count, 2), 0);
    EXPECT_EQ(TakeCode(), 0x1805u);
  }
}

TEST_F(GetFANConfig, FailsWithoutABlock) {
  AddCpuFan();
  Start();
  uint8_t count = 4;
  EXPECT_EQ(VynLibGetFANConfig("CPU Fan", nullptr, &count, 2), 0);
  EXPECT_EQ(TakeCode(), 0x1804u);
}

TEST_F(GetFANConfig, FailsWhenNoModeSucceeds) {
  AddCpuFan();
  board.SetPort(0x310, 9);
  Start();
  uint8_t block[4] = {1}, count = 4;
  EXPECT_EQ(VynLibGetFANConfig("CPU Fan", block, &count, 2), 0);
  EXPECT_EQ(TakeCode(), 0x1801u);
  EXPECT_EQ(count, 4);
  EXPECT_EQ(block[0], 1);
}

TEST_F(GetFANConfig, FindsNoEntryOfAnotherFan) {
  AddCpuFan();
  Start();
  uint8_t block[4] = {1}, count = 255;
  EXPECT_EQ(VynLibGetFANConfig("XYZ", block, &count, 2), 0);
  EXPECT_EQ(TakeCode(), 0x1806u);
  EXPECT_EQ(count, 255);
  EXPECT_THAT(board.Log(), IsEmpty());
}

TEST_F(GetFANConfig, EndsWithCode21AtAnUnknownKindOfTheFanBeforeAnyAccess) {
  AddCpuFan();
  Add("CPU Fan Mode", 2, {UnknownKind()});
  Start();
  uint8_t block[4] = {1}, count = 4;
  EXPECT_EQ(VynLibGetFANConfig("CPU Fan", block, &count, 2), 0);
  EXPECT_EQ(TakeCode(), 21u);
  EXPECT_THAT(board.Log(), IsEmpty());
}

TEST_F(GetFANConfig, DoesNotMindAnUnknownKindOfAnotherFanOrAnIdEntry) {
  AddCpuFan();
  Add("SYS Fan Mode", 0, {UnknownKind()});
  Add("CPU Fan Id", 240, {UnknownKind()});
  Start();
  uint8_t block[4] = {1}, count = 4;
  EXPECT_EQ(VynLibGetFANConfig("CPU Fan", block, &count, 2), 1);
}

TEST_F(GetFANConfig, TakesTheCountOfTheFirstEntryOfAMode) {
  board.Ports(0x310, {9, 50});
  Add("CPU Fan Mode", 0, {PortIs(0x310, 1), Parameter(0x311, 1), Parameter(0x311, 2)});
  Add("CPU Fan Mode", 0, {Parameter(0x311, 1)});
  Start();
  uint8_t block[3] = {0xEE, 0xEE, 0xEE}, count = 255;
  EXPECT_EQ(VynLibGetFANConfig("CPU Fan", block, &count, 2), 1);
  EXPECT_EQ(count, 3);
}

TEST_F(GetFANConfig, RunsNoEntryWithIdInItsName) {
  Add("CPU Fan Id", 5, {Parameter(0x315, 1)});  // would succeed
  AddCpuFan();
  Start();
  uint8_t block[4] = {1}, count = 4;
  EXPECT_EQ(VynLibGetFANConfig("CPU Fan", block, &count, 2), 1);
  EXPECT_THAT(block, ElementsAre(1, 50, 60, 70));
  EXPECT_THAT(board.PortLog(),
              ElementsAre(In8(0x310, 1), In8(0x310, 1), In8(0x311, 50), In8(0x312, 60), In8(0x313, 70)));
}

TEST_F(GetFANConfig, KeepsWhatAFailedEntryReadInItsSlots) {
  // Both modes have two elements. Mode 0 reads slot 1 and fails; mode 1 reads slot 2, and slot 1 is what is given.
  board.Ports(0x310, {9, 50, 60});
  Add("CPU Fan Mode", 0, {Parameter(0x311, 1), PortIs(0x310, 7)});
  Add("CPU Fan Mode", 1, {Parameter(0x312, 2)});
  Start();
  uint8_t block[2] = {1, 0xEE}, count = 2;
  EXPECT_EQ(VynLibGetFANConfig("CPU Fan", block, &count, 2), 1);
  EXPECT_THAT(block, ElementsAre(1, 50));
}

TEST_F(GetFANConfig, CountsInEightBits) {
  // 256 different indexes and the mode are 257 elements, of which 8 bits say 1.
  std::vector<Command> commands;
  for (uint32_t index = 0; index < 256; ++index) commands.push_back(Command::Port(0x310).ArgumentIndex(index));
  Add("CPU Fan Mode", 2, commands);
  Start();
  uint8_t block[1] = {0xEE}, count = 255;
  EXPECT_EQ(VynLibGetFANConfig("CPU Fan", block, &count, 2), 1);
  EXPECT_EQ(block[0], 2);
  EXPECT_EQ(count, 1);
}

// ---- setting ----

TEST_F(SetFANConfig, WritesTheModeAndItsParameters) {
  AddCpuFan();
  Start();
  for (const uint8_t selector : Numbers{1, 2}) {
    const uint8_t block[] = {1, 11, 22, 33};
    board.SetPort(0x310, 0);
    board.Log().clear();
    EXPECT_EQ(VynLibSetFANConfig("CPU Fan", block, 4, selector), 1);
    EXPECT_EQ(TakeCode(), 0u);
    EXPECT_THAT(board.PortLog(),
                ElementsAre(In8(0x310, 0), Out8(0x310, 1), Out8(0x311, 11), Out8(0x312, 22), Out8(0x313, 33)));
  }
}

TEST_F(SetFANConfig, CanWriteTheModeByteItself) {
  board.Ports(0x310, {0});
  Add("CPU Fan Mode", 2, {Parameter(0x310, 0)});
  Start();
  const uint8_t block[] = {2, 0};
  EXPECT_EQ(VynLibSetFANConfig("CPU Fan", block, 2, 2), 1);  // index 0 counts like any other
  EXPECT_EQ(board.PortValue(0x310), 2);
}

TEST_F(SetFANConfig, CountsEachArgumentIndexOnce) {
  board.Ports(0x310, {0, 0, 0});
  Add("CPU Fan Mode", 0,
      {Parameter(0x310, 1), Parameter(0x311, 2), Parameter(0x310, 1), Parameter(0x311, 2),
       Command::Port(0x312).ArgumentIndex(0xFFFFFFFF)});
  Start();
  const uint8_t block[] = {0, 1, 2, 3};
  EXPECT_EQ(VynLibSetFANConfig("CPU Fan", block, 4, 2), 0);
  EXPECT_EQ(TakeCode(), 0x1805u);
  EXPECT_EQ(VynLibSetFANConfig("CPU Fan", block, 3, 2), 1);
  EXPECT_EQ(TakeCode(), 0u);
}

TEST_F(SetFANConfig, CountsTheArgumentsOfEveryKindAndTellsThemApartByTheirLowByte) {
  board.IndexData(0x2E, 0x2F);
  board.Memory(0x20000000, Bytes(1, 0));
  Add("CPU Fan Mode", 0,
      {Command::Memory(0x20000000).ArgumentIndex(1), Command::Port(0x310).ArgumentIndex(2),
       Command::IndexData(0x2E, 0x2F, 0).ArgumentIndex(3), Command::Smbus(0xA0, 0).ArgumentIndex(4),
       Command::Pci(0, 0, 0, 0).ArgumentIndex(5), Command::Delay(kMicroseconds, 1).ArgumentIndex(6),
       Command::Port(0x310).ArgumentIndex(0x102)});
  Start();
  uint8_t block[1] = {0}, count = 255;
  EXPECT_EQ(VynLibGetFANConfig("CPU Fan", block, &count, 2), 1);
  EXPECT_EQ(count, 6);  // the mode and the indexes 1 to 5; delays name none
}

TEST_F(SetFANConfig, FailsWithoutABlockOrForAnotherCount) {
  AddCpuFan();
  Start();
  const uint8_t block[] = {1, 11, 22, 33};
  EXPECT_EQ(VynLibSetFANConfig("CPU Fan", nullptr, 4, 2), 0);
  EXPECT_EQ(TakeCode(), 0x1804u);
  for (const uint8_t wrong : Numbers{0, 1, 2, 3, 5, 255}) {
    EXPECT_EQ(VynLibSetFANConfig("CPU Fan", block, wrong, 2), 0);
    EXPECT_EQ(TakeCode(), 0x1805u);
  }
  const uint8_t unknown[] = {7};
  EXPECT_EQ(VynLibSetFANConfig("CPU Fan", unknown, 0, 2), 0);
  EXPECT_EQ(TakeCode(), 0x1805u);
  EXPECT_THAT(board.Log(), IsEmpty());
}

TEST_F(SetFANConfig, FindsNoCountForAnotherFan) {
  AddCpuFan();
  Start();
  const uint8_t block[] = {1, 11, 22, 33};
  EXPECT_EQ(VynLibSetFANConfig("XYZ", block, 4, 2), 0);
  EXPECT_EQ(TakeCode(), 0x1805u);
}

TEST_F(SetFANConfig, RunsNoEntryWithIdInItsName) {
  board.Ports(0x315, {0});
  Add("CPU Fan Id", 1, {Parameter(0x315, 1), Parameter(0x315, 2), Parameter(0x315, 3)});  // would succeed
  AddCpuFan();
  Start();
  const uint8_t block[] = {1, 11, 22, 33};
  EXPECT_EQ(VynLibSetFANConfig("CPU Fan", block, 4, 2), 1);
  EXPECT_EQ(board.PortValue(0x315), 0);
  EXPECT_EQ(board.PortValue(0x313), 33);
}

TEST_F(SetFANConfig, FallsBackToALaterEntryOfTheMode) {
  board.Ports(0x310, {9, 0});
  Add("CPU Fan Mode", 0, {PortMustBe(0x310, 1), Parameter(0x311, 1)});
  Add("CPU Fan Mode", 0, {Parameter(0x311, 1)});
  Start();
  const uint8_t block[] = {0, 44};
  EXPECT_EQ(VynLibSetFANConfig("CPU Fan", block, 2, 2), 1);
  EXPECT_EQ(TakeCode(), 0u);
  EXPECT_EQ(board.PortValue(0x311), 44);
}

TEST_F(SetFANConfig, FailsWhenEveryEntryOfTheModeDoes) {
  board.Ports(0x310, {9, 0});
  Add("CPU Fan Mode", 0, {PortMustBe(0x310, 1), Parameter(0x311, 1)});
  Start();
  const uint8_t block[] = {0, 44};
  EXPECT_EQ(VynLibSetFANConfig("CPU Fan", block, 2, 2), 0);
  EXPECT_EQ(TakeCode(), 0x1802u);
  EXPECT_EQ(board.PortValue(0x311), 0);
}

TEST_F(SetFANConfig, EndsWithCode21AtAnUnknownKindOfTheFan) {
  AddCpuFan();
  Add("CPU Fan Mode", 2, {UnknownKind()});
  Start();
  const uint8_t block[] = {1, 11, 22, 33};
  EXPECT_EQ(VynLibSetFANConfig("CPU Fan", block, 4, 2), 0);
  EXPECT_EQ(TakeCode(), 21u);
  EXPECT_THAT(board.Log(), IsEmpty());
}
