// SPDX-License-Identifier: MIT
// Every feature state function, code by code.
#include "tests/unit/api/ApiBoard.h"
#include "tests/unit/api/FeatureCases.h"

using namespace layout;

using namespace apitest;
using sim::In8;
using sim::Out8;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr uint16_t kUntouched = Call::kUntouched;

/// The port behind a feature's entries.
uint16_t PortOf(const FeatureCase& feature) { return static_cast<uint16_t>(0x1000 + feature.recordType); }

/// What a reading leaves in the result: a byte under a byte that is not its own, or 16 bits.
uint16_t Result(const FeatureCase& feature, uint8_t value) {
  return static_cast<uint16_t>(feature.function.wide ? value * 0x101 : 0xC300 | value);
}

std::vector<uint8_t> PerformSelectors(const FeatureCase& feature) {
  return feature.performsOne ? std::vector<uint8_t>{1, 2} : std::vector<uint8_t>{2};
}

class EveryFeature : public Api {
 protected:
  /// One list of entries for every record type: index 1, values 0x31 to 0x34, told apart by the value of a port.
  /// Setting 0x33 fails in both of its entries, 0x34 in the first of its two.
  void StartWithEntries() {
    for (int type = 1; type <= 35; ++type) {
      const auto port = static_cast<uint16_t>(0x1000 + type);
      board.Ports(port, {0x99});
      for (const uint8_t value : Numbers{0x31, 0x32})
        AddEntry(type, value, {PortIs(port, value), PortPut(port, value)});
      for (const uint8_t value : Numbers{0x33, 0x33, 0x34})
        AddEntry(type, value, {PortIs(port, value), PortMustBe(port, 0x55), PortPut(port, 0xEE)});
      AddEntry(type, 0x34, {PortIs(port, 0x34), PortPut(port, 0x34)});
    }
    Start();
  }
  void AddEntry(int type, uint8_t value, const std::vector<Command>& commands) {
    iadt.Add(Record::Type(static_cast<uint8_t>(type)).Index(1).Value(value).Commands(commands));
  }

  /// The result of a call with everything else as given; its code and the log are to be looked at afterwards.
  int Make(const FeatureCase& feature, Call* call) {
    board.Log().clear();
    api::LastErrorCode = kNoCode;
    return feature.function.call(*call);
  }
  void ExpectAnswer(const FeatureCase& feature, Call call, int result, uint64_t code, uint16_t output) {
    EXPECT_EQ(Make(feature, &call), result);
    EXPECT_EQ(VynLibDllGetLastError(), code);
    EXPECT_EQ(call.result, output);
  }
};

}  // namespace

TEST_F(EveryFeature, IsCalled) { EXPECT_EQ(std::size(kFeatureCases), 43u); }

TEST_F(EveryFeature, FailsWithCode1BeforeTheStartWhateverTheSelector) {
  for (const FeatureCase& feature : kFeatureCases)
    for (const uint8_t selector : Numbers{0, 1, 2, 3, 255}) {
      SCOPED_TRACE(feature.name);
      ExpectAnswer(feature, {.selector = selector}, 0, 1, kUntouched);
      EXPECT_THAT(board.Log(), IsEmpty());
    }
}

TEST_F(EveryFeature, FailsWithCode12ForAnotherSelector) {
  StartWithEntries();
  for (const FeatureCase& feature : kFeatureCases) {
    SCOPED_TRACE(feature.name);
    for (const uint8_t selector : Numbers{3, 4, 255}) {
      ExpectAnswer(feature, {.selector = selector, .value = 0x31}, 0, 12, kUntouched);
      EXPECT_THAT(board.Log(), IsEmpty());
    }
    if (feature.performsOne) continue;
    ExpectAnswer(feature, {.selector = 1, .value = 0x31}, 0, 12, kUntouched);
    EXPECT_THAT(board.Log(), IsEmpty());
  }
}

TEST_F(EveryFeature, TellsABadSelectorBeforeAnAbsentList) {
  Start();
  for (const FeatureCase& feature : kFeatureCases) {
    SCOPED_TRACE(feature.name);
    ExpectAnswer(feature, {.selector = 3}, 0, 12, kUntouched);
  }
}

TEST_F(EveryFeature, AnswersTheQueryOnABoardWithoutIt) {
  Start();
  for (const FeatureCase& feature : kFeatureCases) {
    SCOPED_TRACE(feature.name);
    ExpectAnswer(feature, {.selector = 0}, 0, feature.absent, kUntouched);
    EXPECT_THAT(board.Log(), IsEmpty());
  }
}

TEST_F(EveryFeature, AnswersTheQueryOnABoardWithItWithoutTouchingHardware) {
  StartWithEntries();
  for (const FeatureCase& feature : kFeatureCases) {
    SCOPED_TRACE(feature.name);
    ExpectAnswer(feature, {.selector = 0}, 1, 0, kUntouched);
    EXPECT_THAT(board.Log(), IsEmpty());
  }
}

TEST_F(EveryFeature, CannotBePerformedOnABoardWithoutIt) {
  Start();
  for (const FeatureCase& feature : kFeatureCases)
    for (const uint8_t selector : PerformSelectors(feature)) {
      SCOPED_TRACE(feature.name);
      ExpectAnswer(feature, {.selector = selector}, 0, feature.absentPerforms, kUntouched);
    }
}

TEST_F(EveryFeature, ReadsTheValueOfTheEntryWhoseCommandsSucceed) {
  StartWithEntries();
  for (const FeatureCase& feature : kFeatureCases)
    for (const uint8_t selector : PerformSelectors(feature)) {
      if (!feature.function.reads || feature.function.wide) continue;
      SCOPED_TRACE(feature.name);
      const uint16_t port = PortOf(feature);
      board.SetPort(port, 0x32);
      ExpectAnswer(feature, {.selector = selector}, 1, 0, Result(feature, 0x32));
      EXPECT_THAT(board.PortLog(), ElementsAre(In8(port, 0x32), In8(port, 0x32)));
      board.SetPort(port, 0x99);
    }
}

TEST_F(EveryFeature, LeavesTheSentinelWhenNoReadingSucceeds) {
  StartWithEntries();
  for (const FeatureCase& feature : kFeatureCases)
    for (const uint8_t selector : PerformSelectors(feature)) {
      if (!feature.function.reads) continue;
      SCOPED_TRACE(feature.name);
      ExpectAnswer(feature, {.selector = selector}, 0, feature.failed, Result(feature, feature.failedResult));
      EXPECT_EQ(board.PortLog(), std::vector<sim::Access>(6, In8(PortOf(feature), 0x99)));
    }
}

TEST_F(EveryFeature, SetsTheEntryOfTheValue) {
  StartWithEntries();
  for (const FeatureCase& feature : kFeatureCases)
    for (const uint8_t selector : PerformSelectors(feature)) {
      if (feature.function.reads) continue;
      SCOPED_TRACE(feature.name);
      const uint16_t port = PortOf(feature);
      board.SetPort(port, 0x99);
      ExpectAnswer(feature, {.selector = selector, .value = 0x32}, 1, 0, kUntouched);
      EXPECT_THAT(board.PortLog(), ElementsAre(In8(port, 0x99), Out8(port, 0x32)));
    }
}

TEST_F(EveryFeature, FallsBackToALaterEntryOfTheSameValue) {
  StartWithEntries();
  for (const FeatureCase& feature : kFeatureCases) {
    if (feature.function.reads) continue;
    SCOPED_TRACE(feature.name);
    const uint16_t port = PortOf(feature);
    board.SetPort(port, 0x99);
    ExpectAnswer(feature, {.value = 0x34}, 1, 0, kUntouched);
    EXPECT_THAT(board.PortLog(), ElementsAre(In8(port, 0x99), In8(port, 0x99), Out8(port, 0x34)));
  }
}

TEST_F(EveryFeature, FailsToSetWhenEveryEntryOfTheValueFails) {
  StartWithEntries();
  for (const FeatureCase& feature : kFeatureCases) {
    if (feature.function.reads) continue;
    SCOPED_TRACE(feature.name);
    const uint16_t port = PortOf(feature);
    ExpectAnswer(feature, {.value = 0x33}, 0, feature.failed, kUntouched);
    EXPECT_THAT(board.PortLog(), ElementsAre(In8(port, 0x99), In8(port, 0x99)));
  }
}

TEST_F(EveryFeature, SetsNothingForAValueThatNoEntryHas) {
  StartWithEntries();
  for (const FeatureCase& feature : kFeatureCases) {
    if (feature.function.reads) continue;
    SCOPED_TRACE(feature.name);
    ExpectAnswer(feature, {.value = 0x77}, 0, feature.noEntry, kUntouched);
    EXPECT_THAT(board.Log(), IsEmpty());
  }
}

TEST_F(EveryFeature, FindsNoEntryOfAnotherIndex) {
  StartWithEntries();
  for (const FeatureCase& feature : kFeatureCases) {
    if (!feature.function.indexed) continue;
    SCOPED_TRACE(feature.name);
    board.SetPort(PortOf(feature), 0x31);
    const uint16_t output = feature.function.reads ? Result(feature, 0xFF) : kUntouched;
    ExpectAnswer(feature, {.index = 2, .value = 0x31}, 0, feature.noEntry, output);
    EXPECT_THAT(board.Log(), IsEmpty());
  }
}

TEST_F(EveryFeature, EndsWithCode21AtAKindThatCannotBeSteppedOver) {
  board.Msr(0x10, 0);
  for (const auto& command : {UnknownKind(), Command::Raw({0x3D, 0x00, 0x00}), Command::Msr(0x10)}) {
    for (int type = 1; type <= 35; ++type) {
      AddEntry(type, 0x31, {command});
      AddEntry(type, 0x31, {});  // never reached
    }
    Start();
    for (const FeatureCase& feature : kFeatureCases) {
      SCOPED_TRACE(feature.name);
      uint16_t output = feature.function.reads ? Result(feature, feature.failedResult) : kUntouched;
      ExpectAnswer(feature, {.value = 0x31}, 0, 21, output);
    }
    StartOver();
  }
}

TEST_F(EveryFeature, TakesAnEntryWithoutCommandsAtOnce) {
  for (int type = 1; type <= 35; ++type) {
    AddEntry(type, 0x41, {});
    AddEntry(type, 0x42, {});
  }
  Start();
  for (const FeatureCase& feature : kFeatureCases) {
    if (feature.function.wide) continue;
    SCOPED_TRACE(feature.name);
    ExpectAnswer(feature, {.value = 0x42}, 1, 0, feature.function.reads ? Result(feature, 0x41) : kUntouched);
    EXPECT_THAT(board.Log(), IsEmpty());
  }
}

TEST_F(EveryFeature, BehavesAsAbsentAfterTheTearDown) {
  StartWithEntries();
  VynLibDllUnInit();
  for (const FeatureCase& feature : kFeatureCases) {
    SCOPED_TRACE(feature.name);
    ExpectAnswer(feature, {.selector = 0}, 0, feature.absent, kUntouched);
    ExpectAnswer(feature, {.selector = 2}, 0, feature.absentPerforms, kUntouched);
    ExpectAnswer(feature, {.selector = 3}, 0, 12, kUntouched);
  }
}

// ---- single features ----

namespace {

class Features : public Api {};
class VynLibMBVersionStateTest : public Api {
 protected:
  void Add(uint8_t index, uint8_t value, const std::vector<Command>& commands) {
    iadt.Feature("MBVersionState", index, value, commands);
  }
};

}  // namespace

TEST_F(Features, ReadTheFirstOfTwoEntriesThatBothSucceed) {
  board.Ports(0x300, {1, 2});
  iadt.Feature("LVDSState", 7, {PortIs(0x300, 1)}).Feature("LVDSState", 8, {PortIs(0x301, 2)});
  Start();
  uint8_t state = 0;
  EXPECT_EQ(VynLibGetLVDSState(&state, 1), 1);
  EXPECT_EQ(state, 7);
  EXPECT_THAT(board.PortLog(), ElementsAre(In8(0x300, 1)));
}

TEST_F(Features, RunAllCommandsOfAnEntryInOrderUntilOneFails) {
  board.Ports(0x300, {1, 2, 3, 4});
  iadt.Feature("LVDSState", 7, {PortIs(0x300, 1), PortIs(0x301, 2), PortIs(0x302, 9), PortIs(0x303, 4)});
  Start();
  uint8_t state = 0;
  EXPECT_EQ(VynLibGetLVDSState(&state, 2), 0);
  EXPECT_THAT(board.PortLog(), ElementsAre(In8(0x300, 1), In8(0x301, 2), In8(0x302, 3)));
}

TEST_F(Features, StepOverEveryKindOfCommandByItsLength) {
  board.Ports(0x300, {1});
  board.Memory(0x20000000, {2});
  (*board.IndexData(0x2E, 0x2F))[0x10] = 3;
  board.Pci(0, 31, 0);
  // SMBus and PCI commands compare with 0 here; the delay is not flagged.
  iadt.Feature("LVDSState", 7,
               {Command::Memory(0x20000000).Get(0xFF, 2), PortIs(0x300, 1),
                Command::IndexData(0x2E, 0x2F, 0x10).Get(0xFF, 3), Command::Smbus(0xA0, 0x10).Get(0xFF, 0),
                Command::Pci(0, 31, 0, 0x40).Get(0xFF, 0), Command::Delay(kMilliseconds, 5), PortIs(0x300, 1)});
  Start();
  uint8_t state = 0;
  EXPECT_EQ(VynLibGetLVDSState(&state, 2), 1);
  EXPECT_EQ(state, 7);
  EXPECT_EQ(board.PortLog().front(), In8(0x300, 1));
  EXPECT_EQ(board.PortLog().back(), In8(0x300, 1));
}

TEST_F(Features, RunAnMsrCommandBeforeTheyEndWithCode21) {
  board.Msr(0x19C, 0x5A);
  iadt.Feature("LVDSState", 7, {Command::Msr(0x19C).Get(0xFF, 0x5A)});
  Start();
  uint8_t state = 0;
  EXPECT_EQ(VynLibGetLVDSState(&state, 2), 0);
  EXPECT_EQ(VynLibDllGetLastError(), 21u);
  EXPECT_EQ(state, 0xFF);
  EXPECT_FALSE(board.Log().empty());
}

TEST_F(Features, TakeAnMsrThatDoesNotMatchForAFailedEntry) {
  board.Msr(0x19C, 0x5A).Ports(0x300, {1});
  iadt.Feature("LVDSState", 7, {Command::Msr(0x19C).Get(0xFF, 0x5B)}).Feature("LVDSState", 8, {PortIs(0x300, 1)});
  Start();
  uint8_t state = 0;
  EXPECT_EQ(VynLibGetLVDSState(&state, 2), 1);
  EXPECT_EQ(state, 8);
}

TEST_F(Features, TakeAFlaggedReadOfAnUnknownKindForAFailedEntry) {
  iadt.Feature("LVDSState", 7, {Command::Raw({0x19, 0x80, 0x00, 0, 0, 0, 0, 0})});
  Start();
  uint8_t state = 0;
  testing::internal::CaptureStdout();
  EXPECT_EQ(VynLibGetLVDSState(&state, 2), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "IAxTRead::UNKNOWN INTERFACE !!\n");
  EXPECT_EQ(VynLibDllGetLastError(), 0x601u);
}

TEST_F(Features, EndWithCode21AfterAFlaggedWriteOfAnUnknownKind) {
  iadt.Feature("LVDSState", 7, {Command::Raw({0x19, 0x04, 0x00, 0, 0, 0, 0, 0})});
  Start();
  testing::internal::CaptureStdout();
  EXPECT_EQ(VynLibSetLVDSState(7, 2), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "IAxTWrite::UNKNOWN INTERFACE !!\n");
  EXPECT_EQ(VynLibDllGetLastError(), 21u);
}

TEST_F(Features, TakeAFlaggedReadInAFormThatTheKindDoesNotHaveForAFailedEntry) {
  board.Ports(0x300, {1});
  iadt.Feature("LVDSState", 7, {Command::Memory(0x20000000).Get(0xFF, 0xFF).Opcode(0x02)})
      .Feature("LVDSState", 8, {PortIs(0x300, 1)});
  Start();
  uint8_t state = 0;
  EXPECT_EQ(VynLibGetLVDSState(&state, 2), 1);
  EXPECT_EQ(state, 8);
  EXPECT_THAT(board.Log(), ElementsAre(In8(0x300, 1)));
}

TEST_F(Features, EndWithCode21AtPaddingBehindTheirCommands) {
  board.Ports(0x300, {1});
  for (const size_t padding : {size_t{1}, size_t{8}, size_t{27}}) {
    iadt.Feature("LVDSState", 7, {PortIs(0x300, 1), Command::Raw(Bytes(padding, 0))}).Feature("LVDSState", 8, {});
    Start();
    uint8_t state = 0;
    EXPECT_EQ(VynLibGetLVDSState(&state, 2), 0) << padding;
    EXPECT_EQ(TakeCode(), 21u) << padding;
    EXPECT_EQ(state, 0xFF);
    StartOver();
  }
}

TEST_F(Features, ShareTheAccumulatorBetweenEntries) {
  // The first entry fails but leaves what it read; the second writes it to another port.
  board.Ports(0x300, {0x5A, 0});
  iadt.Feature("LVDSState", 7, {PortIs(0x300, 1)})
      .Feature("LVDSState", 8, {Command::Port(0x301).Control(kGetWrites | kArgumentMode).ArgumentIndex(0)});
  Start();
  uint8_t state = 0;
  EXPECT_EQ(VynLibGetLVDSState(&state, 2), 1);
  EXPECT_THAT(board.PortLog(), ElementsAre(In8(0x300, 0x5A), Out8(0x301, 0x5A)));
}

TEST_F(Features, StartFromAnAccumulatorOf0) {
  board.Ports(0x300, {0x5A, 0x77});
  iadt.Feature("LVDSState", 7, {PortIs(0x300, 0x5A)})
      .Feature("WifiState", 8, {Command::Port(0x301).Control(kGetWrites | kArgumentMode).ArgumentIndex(0)});
  Start();
  uint8_t state = 0;
  VynLibGetLVDSState(&state, 2);
  board.Log().clear();
  VynLibGetWifiState(&state, 2);
  EXPECT_THAT(board.PortLog(), ElementsAre(Out8(0x301, 0)));
}

TEST_F(Features, EndWithCode21WhereACommandReachesBeyondItsEntry) {
  board.Ports(0x300, {1, 2});
  Bytes cut = PortIs(0x301, 2).Build();
  cut.pop_back();
  iadt.Feature("LVDSState", 7, {PortIs(0x300, 1), Command::Raw(cut)}).Feature("LVDSState", 8, {});
  Start();
  uint8_t state = 0;
  EXPECT_EQ(VynLibGetLVDSState(&state, 2), 0);
  EXPECT_EQ(VynLibDllGetLastError(), 21u);
  EXPECT_EQ(state, 0xFF);
  EXPECT_THAT(board.PortLog(), ElementsAre(In8(0x300, 1)));
}

TEST_F(Features, EndWithCode21AtARecordShorterThanItsHeader) {
  iadt.Add(Record::Raw({5, 0, 7, 20, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
  Start();
  uint8_t state = 0;
  EXPECT_EQ(VynLibGetLVDSState(&state, 2), 0);
  EXPECT_EQ(VynLibDllGetLastError(), 21u);
}

TEST_F(Features, SkipEntriesOfOtherIndexes) {
  board.Ports(0x300, {1, 1});
  iadt.Feature("ComType", 3, 7, {PortIs(0x300, 1)}).Feature("ComType", 4, 8, {PortIs(0x301, 1)});
  Start();
  uint8_t type = 0;
  EXPECT_EQ(VynLibGetComType(4, &type, 2), 1);
  EXPECT_EQ(type, 8);
  EXPECT_THAT(board.PortLog(), ElementsAre(In8(0x301, 1)));
}

TEST_F(Features, SetByBothIndexAndValue) {
  board.Ports(0x300, {0, 0, 0});
  iadt.Feature("ComType", 3, 7, {PortPut(0x300, 1)})
      .Feature("ComType", 4, 8, {PortPut(0x301, 1)})
      .Feature("ComType", 4, 7, {PortPut(0x302, 1)});
  Start();
  EXPECT_EQ(VynLibSetComType(4, 7, 2), 1);
  EXPECT_THAT(board.PortLog(), ElementsAre(In8(0x302, 0), Out8(0x302, 1)));
}

TEST_F(Features, LeaveTheResultOfDigitalIoAt0OnlyWhenAnEntryOfTheIndexWasTried) {
  board.Ports(0x300, {0});
  iadt.Feature("DigitalIOState", 3, 7, {PortIs(0x300, 1)}).Feature("DioConfig", 3, 7, {PortIs(0x300, 1)});
  Start();
  uint8_t result = 0x12;
  EXPECT_EQ(VynLibGetDigitalIOState(3, &result, 2), 0);
  EXPECT_EQ(VynLibDllGetLastError(), 0x1601u);
  EXPECT_EQ(result, 0);
  EXPECT_EQ(VynLibGetDigitalIOState(4, &result, 2), 0);
  EXPECT_EQ(VynLibDllGetLastError(), 0x1604u);
  EXPECT_EQ(result, 0xFF);
  EXPECT_EQ(VynLibGetDioConfig(3, &result, 2), 0);
  EXPECT_EQ(VynLibDllGetLastError(), 0x2001u);
  EXPECT_EQ(result, 0);
  EXPECT_EQ(VynLibGetDioConfig(4, &result, 2), 0);
  EXPECT_EQ(VynLibDllGetLastError(), 0x2004u);
  EXPECT_EQ(result, 0xFF);
}

TEST_F(Features, ReportAnAbsentUserLedColourUnderAnotherFamilyOnlyWhenSetting) {
  Start();
  uint8_t result = 0;
  EXPECT_EQ(VynLibSetUserLEDColor(1, 1, 0), 0);
  EXPECT_EQ(VynLibDllGetLastError(), 0x1F00u);
  EXPECT_EQ(VynLibSetUserLEDColor(1, 1, 1), 0);
  EXPECT_EQ(VynLibDllGetLastError(), 0x1E00u);
  EXPECT_EQ(VynLibGetUserLEDColor(1, &result, 1), 0);
  EXPECT_EQ(VynLibDllGetLastError(), 0x1F00u);
}

TEST_F(Features, LeaveWhatAFailedCandidateWrote) {
  board.Ports(0x300, {0, 0, 0});
  iadt.Feature("BTState", 1, {PortPut(0x300, 0x11), PortMustBe(0x301, 9)})
      .Feature("BTState", 1, {PortPut(0x302, 0x22)});
  Start();
  EXPECT_EQ(VynLibSetBTState(1, 2), 1);
  EXPECT_EQ(board.PortValue(0x300), 0x11);
  EXPECT_EQ(board.PortValue(0x302), 0x22);
}

// ---- board version ----

TEST_F(VynLibMBVersionStateTest, CountsEntriesAndSetsTheBitsOfOddValues) {
  Add(0, 1, {});
  Add(1, 0, {});
  Add(2, 1, {});
  Start();
  uint16_t version = 0;
  EXPECT_EQ(VynLibMBVersionState(&version, 2), 1);
  EXPECT_EQ(version, 0x0305);
  EXPECT_EQ(VynLibDllGetLastError(), 0u);
}

TEST_F(VynLibMBVersionStateTest, VisitsEveryEntryAndSkipsTheOnesThatFail) {
  board.Ports(0x300, {1, 2, 3});
  Add(0, 1, {PortIs(0x300, 9)});
  Add(1, 1, {PortIs(0x301, 2)});
  Add(2, 1, {PortIs(0x302, 9)});
  Add(3, 1, {PortIs(0x302, 3)});
  Start();
  uint16_t version = 0;
  EXPECT_EQ(VynLibMBVersionState(&version, 2), 1);
  EXPECT_EQ(version, 0x020A);
  EXPECT_THAT(board.PortLog(), ElementsAre(In8(0x300, 1), In8(0x301, 2), In8(0x302, 3), In8(0x302, 3)));
}

TEST_F(VynLibMBVersionStateTest, FailsWithoutASuccess) {
  board.Ports(0x300, {1});
  Add(0, 1, {PortIs(0x300, 9)});
  Start();
  uint16_t version = 0;
  EXPECT_EQ(VynLibMBVersionState(&version, 2), 0);
  EXPECT_EQ(VynLibDllGetLastError(), 0x1501u);
  EXPECT_EQ(version, 0xFFFF);
}

TEST_F(VynLibMBVersionStateTest, TakesTheLowestBitOfTheValueAndEightBitsInAll) {
  Add(7, 0xFF, {});
  Add(8, 1, {});   // shifted out of the eight bits
  Add(31, 1, {});  // likewise
  Add(33, 3, {});  // 33 AND 31 is 1
  Add(4, 0xFE, {});
  Start();
  uint16_t version = 0;
  EXPECT_EQ(VynLibMBVersionState(&version, 2), 1);
  EXPECT_EQ(version, 0x0582);
}

TEST_F(VynLibMBVersionStateTest, CountsIn8Bits) {
  for (int i = 0; i < 256; ++i) Add(0, 0, {});
  Start();
  uint16_t version = 0;
  EXPECT_EQ(VynLibMBVersionState(&version, 2), 0);
  EXPECT_EQ(VynLibDllGetLastError(), 0x1501u);
  EXPECT_EQ(version, 0xFFFF);
}

TEST_F(VynLibMBVersionStateTest, EndsWithCode21InTheMiddleOfTheWalk) {
  Add(0, 1, {});
  Add(1, 1, {UnknownKind()});
  Add(2, 1, {});
  Start();
  uint16_t version = 0;
  EXPECT_EQ(VynLibMBVersionState(&version, 2), 0);
  EXPECT_EQ(VynLibDllGetLastError(), 21u);
  EXPECT_EQ(version, 0xFFFF);
}
