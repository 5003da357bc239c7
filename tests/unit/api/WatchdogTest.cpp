// SPDX-License-Identifier: MIT
// Enabling, feeding, reading and disabling the watchdog.
#include <functional>

#include "tests/unit/api/ApiBoard.h"

using namespace layout;

using namespace apitest;
using sim::In8;
using sim::Out8;
using sim::Sleep;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr uint8_t kActivate = 1, kDeactivate = 2, kInterval = 3, kStart = 4, kStop = 5, kMode0 = 6, kMode1 = 7;

/// Each operation of the board writes its number to a port of its own, 0x300 plus the number; the interval is the
/// register at 0x303.
class Watchdog : public Api {
 protected:
  void Add(uint8_t operation, const std::vector<Command>& commands) { iadt.Feature("Watchdog", operation, commands); }
  void AddWorking(std::initializer_list<uint8_t> operations) {
    board.Ports(0x300, Bytes(8, 0));
    for (const uint8_t operation : operations)
      Add(operation, operation == kInterval ? std::vector<Command>{Register(0x303)}
                                            : std::vector<Command>{PortPut(PortOf(operation), operation)});
  }
  /// An entry that fails in both directions.
  void AddFailing(uint8_t operation) { Add(operation, {Command::Port(0x3F0).Control(kGetReads | kSetReads)}); }

  /// Every function but the disabling one, which waits.
  void ExpectAll(Numbers selectors, int result, uint64_t code) {
    uint32_t interval = 5;
    uint8_t mode = 5;
    const std::function<int(uint8_t)> calls[] = {
        [](uint8_t selector) { return VynLibWDTEnable(1, 0, selector); },
        [](uint8_t selector) { return VynLibWDTSetInterval(1, selector); },
        [&](uint8_t selector) { return VynLibWDTGetInterval(&interval, selector); },
        [](uint8_t selector) { return VynLibWDTSetCountMode(0, selector); },
        [&](uint8_t selector) { return VynLibWDTGetCountMode(&mode, selector); },
    };
    for (const uint8_t selector : selectors)
      for (size_t i = 0; i < std::size(calls); ++i) {
        EXPECT_EQ(calls[i](selector), result) << "call " << i << " selector " << int{selector};
        EXPECT_EQ(TakeCode(), code) << "call " << i << " selector " << int{selector};
      }
    EXPECT_EQ(interval, 5u);
    EXPECT_EQ(mode, 5);
  }

  /// Written by setting, read by reading, through the accumulator.
  static Command Register(uint16_t port) { return Command::Port(port).Get().Set().Argument(0); }
  static uint16_t PortOf(uint8_t operation) { return static_cast<uint16_t>(0x300 + operation); }
};

class Enable : public Watchdog {};
class Disable : public Watchdog {};
class SetInterval : public Watchdog {};
class GetInterval : public Watchdog {};
class SetCountMode : public Watchdog {};
class GetCountMode : public Watchdog {};

}  // namespace

TEST_F(Watchdog, FailsWithCode1BeforeTheStart) {
  ExpectAll({0, 1, 2, 3}, 0, 1);
  EXPECT_EQ(VynLibWDTDisable(2), 0);
  EXPECT_EQ(TakeCode(), 1u);
  EXPECT_THAT(board.Log(), IsEmpty());  // no delay either
}

TEST_F(Watchdog, AnswersCode12ForAnotherSelector) {
  AddWorking({1, 2, 3, 4, 5, 6, 7});
  Start();
  ExpectAll({3, 255}, 0, 12);
  EXPECT_THAT(board.Log(), IsEmpty());
}

TEST_F(Watchdog, AnswersItsFamilysCodeWithoutAList) {
  Start();
  ExpectAll({0, 1, 2}, 0, 0x1700);
  EXPECT_EQ(VynLibWDTDisable(1), 0);
  EXPECT_EQ(TakeCode(), 0x1700u);
}

TEST_F(Watchdog, AnswersTheQueriesOnABoardWithAllOperations) {
  AddWorking({1, 2, 3, 4, 5, 6, 7});
  Start();
  ExpectAll({0}, 1, 0);
  EXPECT_THAT(board.Log(), IsEmpty());
}

TEST_F(Watchdog, AnswersTheCountModeQueriesWithTheirOwnCodeWithoutAnEntry) {
  AddWorking({1, 2, 3, 4, 5});
  Start();
  uint8_t mode = 5;
  EXPECT_EQ(VynLibWDTSetCountMode(0, 0), 0);
  EXPECT_EQ(TakeCode(), 0x1707u);
  EXPECT_EQ(VynLibWDTGetCountMode(&mode, 0), 0);
  EXPECT_EQ(TakeCode(), 0x1707u);
  EXPECT_EQ(VynLibWDTEnable(1, 0, 0), 1);
  EXPECT_EQ(TakeCode(), 0u);
  EXPECT_EQ(mode, 5);
}

TEST_F(Watchdog, AnswersTheCountModeQueryForEitherMode) {
  AddWorking({7});
  Start();
  EXPECT_EQ(VynLibWDTSetCountMode(0, 0), 1);
  EXPECT_EQ(TakeCode(), 0u);
}

// ---- enable ----

TEST_F(Enable, ActivatesSetsModeAndIntervalAndStarts) {
  AddWorking({1, 2, 3, 4, 5, 6, 7});
  Start();
  for (const uint8_t selector : Numbers{1, 2}) {
    board.Ports(0x300, Bytes(8, 0));
    board.Log().clear();
    EXPECT_EQ(VynLibWDTEnable(30, 1, selector), 1);
    EXPECT_EQ(TakeCode(), 0u);
    EXPECT_THAT(board.PortLog(), ElementsAre(In8(0x301, 0), Out8(0x301, 1), In8(0x307, 0), Out8(0x307, 7),
                                             Out8(0x303, 30), In8(0x304, 0), Out8(0x304, 4)));
  }
}

TEST_F(Enable, TakesMode0ForEntryValue6) {
  AddWorking({1, 3, 4, 6});
  Start();
  EXPECT_EQ(VynLibWDTEnable(30, 0, 2), 1);
  EXPECT_EQ(board.PortValue(0x306), 6);
}

TEST_F(Enable, SucceedsWithoutACountMode) {
  AddWorking({1, 3, 4});
  Start();
  EXPECT_EQ(VynLibWDTEnable(30, 1, 2), 1);
  EXPECT_EQ(TakeCode(), 0u);
  EXPECT_THAT(board.PortLog(),
              ElementsAre(In8(0x301, 0), Out8(0x301, 1), Out8(0x303, 30), In8(0x304, 0), Out8(0x304, 4)));
}

TEST_F(Enable, DoesNotMindThatTheCountModeFails) {
  AddWorking({1, 3, 4});
  AddFailing(kMode1);
  Start();
  EXPECT_EQ(VynLibWDTEnable(30, 1, 2), 1);
  EXPECT_EQ(TakeCode(), 0u);
  EXPECT_EQ(board.PortValue(0x303), 30);
  EXPECT_EQ(board.PortValue(0x304), 4);
}

TEST_F(Enable, DoesNotMindAnUnknownKindInTheCountMode) {
  AddWorking({1, 3, 4});
  Add(kMode1, {UnknownKind()});
  Start();
  EXPECT_EQ(VynLibWDTEnable(30, 1, 2), 1);
  EXPECT_EQ(TakeCode(), 0u);
  EXPECT_EQ(board.PortValue(0x304), 4);
}

TEST_F(Enable, FailsWithoutAnActivationAndWritesNothing) {
  AddWorking({2, 3, 4, 5, 6, 7});
  Start();
  EXPECT_EQ(VynLibWDTEnable(30, 1, 2), 0);
  EXPECT_EQ(TakeCode(), 0x1708u);
  EXPECT_THAT(board.Log(), IsEmpty());
}

TEST_F(Enable, FailsWhenTheActivationDoes) {
  AddFailing(kActivate);
  AddWorking({3, 4});
  Start();
  EXPECT_EQ(VynLibWDTEnable(30, 1, 2), 0);
  EXPECT_EQ(TakeCode(), 0x1701u);
  EXPECT_EQ(board.PortValue(0x303), 0);
}

TEST_F(Enable, FailsWithoutAnIntervalAfterTheActivation) {
  AddWorking({1, 4});
  Start();
  EXPECT_EQ(VynLibWDTEnable(30, 1, 2), 0);
  EXPECT_EQ(TakeCode(), 0x1708u);
  EXPECT_THAT(board.PortLog(), ElementsAre(In8(0x301, 0), Out8(0x301, 1)));
}

TEST_F(Enable, FailsWhenTheIntervalDoesAndRollsNothingBack) {
  AddWorking({1, 4});
  AddFailing(kInterval);
  Start();
  EXPECT_EQ(VynLibWDTEnable(30, 1, 2), 0);
  EXPECT_EQ(TakeCode(), 0x1703u);
  EXPECT_EQ(board.PortValue(0x301), 1);
  EXPECT_EQ(board.PortValue(0x304), 0);
}

TEST_F(Enable, ToleratesAFailedStartAndLeavesItsCode) {
  AddWorking({1, 3});
  AddFailing(kStart);
  Start();
  EXPECT_EQ(VynLibWDTEnable(30, 1, 2), 1);
  EXPECT_EQ(TakeCode(), 0x1704u);
}

TEST_F(Enable, ToleratesAnUnknownKindInTheStartAndLeavesItsCode) {
  AddWorking({1, 3});
  Add(kStart, {UnknownKind()});
  Start();
  EXPECT_EQ(VynLibWDTEnable(30, 1, 2), 1);
  EXPECT_EQ(TakeCode(), 21u);
}

TEST_F(Enable, ToleratesAMissingStartAndLeavesItsCode) {
  AddWorking({1, 3});
  Start();
  EXPECT_EQ(VynLibWDTEnable(30, 1, 2), 1);
  EXPECT_EQ(TakeCode(), 0x1709u);
}

TEST_F(Enable, NeverSleeps) {
  AddWorking({1, 2, 3, 4, 5, 6, 7});
  Start();
  VynLibWDTEnable(30, 1, 2);
  VynLibWDTEnable(30, 1, 0);
  VynLibWDTEnable(30, 1, 9);
  EXPECT_EQ(board.Microseconds(), 0u);
}

TEST_F(Enable, FallsBackToALaterActivation) {
  AddFailing(kActivate);
  AddWorking({1, 3, 4});
  Start();
  EXPECT_EQ(VynLibWDTEnable(30, 1, 2), 1);
  EXPECT_EQ(board.PortValue(0x301), 1);
}

TEST_F(Enable, EndsWithCode21AtAnUnknownKind) {
  Add(kActivate, {UnknownKind()});
  AddWorking({1, 3, 4});
  Start();
  EXPECT_EQ(VynLibWDTEnable(30, 1, 2), 0);
  EXPECT_EQ(TakeCode(), 21u);
  EXPECT_THAT(board.Log(), IsEmpty());
}

// ---- disable ----

TEST_F(Disable, StopsWaitsClearsTheIntervalAndDeactivates) {
  AddWorking({1, 2, 3, 4, 5, 6, 7});
  Start();
  for (const uint8_t selector : Numbers{1, 2}) {
    board.Ports(0x300, Bytes(8, 9));
    board.Log().clear();
    EXPECT_EQ(VynLibWDTDisable(selector), 1);
    EXPECT_EQ(TakeCode(), 0u);
    EXPECT_THAT(board.PortLog(), ElementsAre(In8(0x305, 9), Out8(0x305, 5), Sleep(50000), Out8(0x303, 0), In8(0x302, 9),
                                             Out8(0x302, 2)));
  }
}

TEST_F(Disable, ToleratesThatStoppingFails) {
  AddFailing(kStop);
  AddWorking({2, 3});
  Start();
  EXPECT_EQ(VynLibWDTDisable(2), 1);
  EXPECT_EQ(TakeCode(), 0u);
}

TEST_F(Disable, ToleratesAnUnknownKindInStopping) {
  Add(kStop, {UnknownKind()});
  AddWorking({2, 3});
  Start();
  EXPECT_EQ(VynLibWDTDisable(2), 1);
  EXPECT_EQ(TakeCode(), 0u);
  EXPECT_THAT(board.PortLog(), ElementsAre(Sleep(50000), Out8(0x303, 0), In8(0x302, 0), Out8(0x302, 2)));
}

TEST_F(Disable, DoesNotDeactivateWhenTheIntervalFails) {
  AddWorking({2, 5});
  AddFailing(kInterval);
  Start();
  EXPECT_EQ(VynLibWDTDisable(2), 0);
  EXPECT_EQ(TakeCode(), 0x1703u);
  EXPECT_EQ(board.PortValue(0x302), 0);
}

TEST_F(Disable, GivesTheResultOfTheDeactivation) {
  AddWorking({3, 5});
  AddFailing(kDeactivate);
  Start();
  EXPECT_EQ(VynLibWDTDisable(2), 0);
  EXPECT_EQ(TakeCode(), 0x1701u);
}

TEST_F(Disable, FailsWithoutADeactivation) {
  AddWorking({3, 5});
  Start();
  EXPECT_EQ(VynLibWDTDisable(2), 0);
  EXPECT_EQ(TakeCode(), 0x1708u);
}

TEST_F(Disable, WaitsOnTheQueryToo) {
  AddWorking({2});
  Start();
  EXPECT_EQ(VynLibWDTDisable(0), 1);
  EXPECT_EQ(TakeCode(), 0u);
  EXPECT_THAT(board.Log(), ElementsAre(Sleep(50000)));
}

TEST_F(Disable, WaitsOnTheQueryOfABoardWithoutAWatchdog) {
  Start();
  EXPECT_EQ(VynLibWDTDisable(0), 0);
  EXPECT_EQ(TakeCode(), 0x1700u);
  EXPECT_THAT(board.Log(), ElementsAre(Sleep(50000)));
}

TEST_F(Disable, WaitsOnABoardWithoutAWatchdogToo) {
  Start();
  for (const uint8_t selector : Numbers{1, 2}) {
    board.Log().clear();
    EXPECT_EQ(VynLibWDTDisable(selector), 0);
    EXPECT_EQ(TakeCode(), 0x1700u);
    EXPECT_THAT(board.Log(), ElementsAre(Sleep(50000)));
  }
}

TEST_F(Disable, WaitsOnABadSelectorToo) {
  AddWorking({1, 2, 3, 4, 5});
  Start();
  EXPECT_EQ(VynLibWDTDisable(3), 0);
  EXPECT_EQ(TakeCode(), 12u);
  EXPECT_THAT(board.Log(), ElementsAre(Sleep(50000)));
}

// ---- interval ----

TEST_F(SetInterval, WritesTheByteThroughTheAccumulator) {
  AddWorking({3});
  Start();
  for (const uint8_t selector : Numbers{1, 2}) {
    board.Log().clear();
    EXPECT_EQ(VynLibWDTSetInterval(0xFE, selector), 1);
    EXPECT_EQ(TakeCode(), 0u);
    EXPECT_THAT(board.PortLog(), ElementsAre(Out8(0x303, 0xFE)));
  }
}

TEST_F(SetInterval, WidensTheByteWithZeros) {
  board.Ports(0x310, Bytes(4, 0xEE));
  Add(kInterval, {Register(0x310).Width(4)});
  Start();
  EXPECT_EQ(VynLibWDTSetInterval(0xFE, 2), 1);
  EXPECT_THAT(board.PortLog(), ElementsAre(Out8(0x310, 0xFE), Out8(0x311, 0), Out8(0x312, 0), Out8(0x313, 0)));
}

TEST_F(SetInterval, FailsWithoutAnEntryOrWhenItsCommandsFail) {
  AddWorking({1});
  Start();
  EXPECT_EQ(VynLibWDTSetInterval(1, 2), 0);
  EXPECT_EQ(TakeCode(), 0x1708u);
}

TEST_F(SetInterval, FailsWhenItsCommandsDo) {
  AddFailing(kInterval);
  Start();
  EXPECT_EQ(VynLibWDTSetInterval(1, 2), 0);
  EXPECT_EQ(TakeCode(), 0x1703u);
}

TEST_F(SetInterval, EndsWithCode21AtAnUnknownKind) {
  Add(kInterval, {UnknownKind()});
  Start();
  EXPECT_EQ(VynLibWDTSetInterval(1, 2), 0);
  EXPECT_EQ(TakeCode(), 21u);
}

TEST_F(GetInterval, ReadsTheLow32BitsOfTheAccumulator) {
  board.Ports(0x310, {0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88});
  Add(kInterval, {Register(0x310).Width(8)});
  Start();
  uint32_t interval = 0;
  EXPECT_EQ(VynLibWDTGetInterval(&interval, 1), 1);
  EXPECT_EQ(TakeCode(), 0u);
  EXPECT_EQ(interval, 0x44332211u);
  EXPECT_EQ(VynLibWDTGetInterval(&interval, 2), 1);
}

TEST_F(GetInterval, FallsBackToALaterEntry) {
  AddFailing(kInterval);
  AddWorking({3});
  board.SetPort(0x303, 42);
  Start();
  uint32_t interval = 0;
  EXPECT_EQ(VynLibWDTGetInterval(&interval, 2), 1);
  EXPECT_EQ(interval, 42u);
}

TEST_F(GetInterval, LeavesTheResultUntouchedWhenItFails) {
  AddFailing(kInterval);
  Start();
  uint32_t interval = 5;
  EXPECT_EQ(VynLibWDTGetInterval(&interval, 2), 0);
  EXPECT_EQ(TakeCode(), 0x1702u);
  EXPECT_EQ(interval, 5u);
}

TEST_F(GetInterval, FailsWithoutAnEntry) {
  AddWorking({1});
  Start();
  uint32_t interval = 5;
  EXPECT_EQ(VynLibWDTGetInterval(&interval, 2), 0);
  EXPECT_EQ(TakeCode(), 0x1708u);
  EXPECT_EQ(interval, 5u);
}

// ---- count mode ----

TEST_F(SetCountMode, RunsTheEntryOfTheMode) {
  AddWorking({6, 7});
  Start();
  EXPECT_EQ(VynLibWDTSetCountMode(0, 1), 1);
  EXPECT_EQ(TakeCode(), 0u);
  EXPECT_EQ(VynLibWDTSetCountMode(1, 2), 1);
  EXPECT_EQ(TakeCode(), 0u);
  EXPECT_THAT(board.PortLog(), ElementsAre(In8(0x306, 0), Out8(0x306, 6), In8(0x307, 0), Out8(0x307, 7)));
}

TEST_F(SetCountMode, FailsForAnyOtherModeWithoutTouchingHardware) {
  AddWorking({1, 2, 3, 4, 5, 6, 7});
  Start();
  for (const uint8_t mode : Numbers{2, 3, 6, 7, 254, 255}) {
    EXPECT_EQ(VynLibWDTSetCountMode(mode, 2), 0);
    EXPECT_EQ(TakeCode(), 0x170Au);
  }
  EXPECT_THAT(board.Log(), IsEmpty());
}

TEST_F(SetCountMode, FailsWhenItsCommandsDo) {
  AddFailing(kMode0);
  Start();
  EXPECT_EQ(VynLibWDTSetCountMode(0, 2), 0);
  EXPECT_EQ(TakeCode(), 0x1706u);
}

TEST_F(GetCountMode, ReadsTheModeOfTheFirstEntryThatSucceeds) {
  board.Ports(0x306, {0, 1});
  Add(kMode0, {PortIs(0x306, 1)});
  Add(kMode1, {PortIs(0x307, 1)});
  Start();
  uint8_t mode = 9;
  EXPECT_EQ(VynLibWDTGetCountMode(&mode, 1), 1);
  EXPECT_EQ(TakeCode(), 0u);
  EXPECT_EQ(mode, 1);
  board.SetPort(0x306, 1);
  EXPECT_EQ(VynLibWDTGetCountMode(&mode, 2), 1);
  EXPECT_EQ(mode, 0);
}

TEST_F(GetCountMode, LeavesMode0WhenNoEntrySucceeds) {
  AddFailing(kMode0);
  AddFailing(kMode1);
  Start();
  uint8_t mode = 9;
  EXPECT_EQ(VynLibWDTGetCountMode(&mode, 2), 0);
  EXPECT_EQ(TakeCode(), 0x1705u);
  EXPECT_EQ(mode, 0);
}

TEST_F(GetCountMode, FailsWithoutAnEntry) {
  AddWorking({1, 2, 3, 4, 5});
  Start();
  uint8_t mode = 9;
  EXPECT_EQ(VynLibWDTGetCountMode(&mode, 2), 0);
  EXPECT_EQ(TakeCode(), 0x170Au);
  EXPECT_EQ(mode, 0);
}

TEST_F(GetCountMode, EndsWithCode21AtAnUnknownKind) {
  Add(kMode0, {UnknownKind()});
  Start();
  uint8_t mode = 9;
  EXPECT_EQ(VynLibWDTGetCountMode(&mode, 2), 0);
  EXPECT_EQ(TakeCode(), 21u);
}
