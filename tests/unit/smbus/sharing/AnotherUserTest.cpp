// SPDX-License-Identifier: MIT
// Every record beside another user of its host: a driver that takes the semaphore, one that does not, an embedded
// controller, and another segment of the bus.
#include <set>

#include "SharedBoard.h"

using testing::IsEmpty;

namespace {

TEST(SharedRowsTable, CoversAllRecords) {
  std::set<std::string> covered = {kIchxRow.record}, expected;
  for (const SharedRow& row : kSharedRows) covered.insert(row.record);
  for (const auto& [name, config] : TSMBusConfig::GetInstance()->GetConfigs()) expected.insert(name.c_str());
  EXPECT_EQ(covered, expected);
  TSMBusConfig::FreeInstance();
}

// --- any host ---

using AnotherTransfer = SharedRows;

TEST_P(AnotherTransfer, IsTheOneOfTheBoard) {
  ASSERT_NE(TSMBus::GetInstance()->GetSMBusConfig(), nullptr);
  EXPECT_STREQ(TSMBus::GetInstance()->GetSMBusConfig()->Name.c_str(), GetParam().record);
}

TEST_P(AnotherTransfer, EndsBeforeOursBegins) {
  slow->stretch = host->Layout().settling + 2 * kMillisecond;
  const auto another = Another(0, kSlow, false);
  board.Sleep(host->Layout().settling);
  ASSERT_TRUE(RunsNow());
  ExpectReads();
  EXPECT_TRUE(another->Over());
  EXPECT_EQ(another->Reads(), (sim::SmbusUser::Tally{.right = 1}));
  EXPECT_THAT(WritesToAnothersHost(), IsEmpty());
}

TEST_P(AnotherTransfer, ThatDoesNotEndIsNotWaitedForForever) {
  slow->stretch = sim::kSmbusForever;
  Another(0, kSlow, false);
  board.Sleep(host->Layout().settling);
  const Outcome outcome = Read(kSlave);
  EXPECT_EQ(outcome.done, 0);
  EXPECT_LT(outcome.took, kSecond);
}

TEST_P(AnotherTransfer, MayHaveLeftItsResult) {
  LeaveBehind(kSlow);
  ExpectReads();
  LeaveBehind(kMissing);
  ExpectReads();
}

TEST_P(AnotherTransfer, ThatDoesNotEndKeepsTheBitsBesideIt) {
  LeaveBehind(kSlave);
  slow->stretch = sim::kSmbusForever;
  StartAnothers(kSlow);
  board.Sleep(host->Layout().settling);
  ASSERT_TRUE(RunsNow());
  EXPECT_EQ(Read(kSlave).done, 0);
}

INSTANTIATE_TEST_SUITE_P(Rows, AnotherTransfer, testing::ValuesIn(kSharedRows), SharedRowName);

// --- hosts with a semaphore in the status ---

class SharedSemaphore : public SharedRows {
 protected:
  /// Once, after everything else.
  void ExpectGivenBackAtTheEnd() {
    EXPECT_EQ(GivenBack(), 1u);
    ASSERT_FALSE(writes.empty());
    EXPECT_EQ(writes.back().offset, host->Layout().status);
    EXPECT_FALSE(SemaphoreTaken());
  }
};

TEST_P(SharedSemaphore, IsWaitedForWhileAnotherHasIt) {
  const auto another = Another(3 * kMillisecond);
  ASSERT_TRUE(host->owned);
  const uint64_t before = board.Microseconds();
  ExpectReads();
  EXPECT_GE(board.Microseconds() - before, 3 * kMillisecond);
  EXPECT_TRUE(another->Over());
  EXPECT_THAT(WritesToAnothersHost(), IsEmpty());
  EXPECT_THAT(configured, IsEmpty());
  const sim::SmbusUser::Tally& tally = another->Reads();
  EXPECT_GE(tally.right, 3u);
  EXPECT_EQ(tally, (sim::SmbusUser::Tally{.right = tally.right}));
  ExpectGivenBackAtTheEnd();
}

// A byte read with all the stretching that a device may do, and the longest block.
TEST_P(SharedSemaphore, IsTakenOverWhenFirmwareLeftItAndTheHostStaysIdle) {
  constexpr uint64_t kLongestTransfer = 25 * kMillisecond + (3 + 1 + 32) * 90;
  host->Peek(board, host->Layout().status);
  const uint64_t before = board.Microseconds();
  const Outcome outcome = Read(kSlave);
  EXPECT_EQ(outcome.done, 1);
  EXPECT_EQ(outcome.value, kValue);
  EXPECT_LT(outcome.took, kSecond);
  ASSERT_FALSE(writes.empty());
  EXPECT_GE(writes.front().at - before, kLongestTransfer);
  ExpectGivenBackAtTheEnd();
}

TEST_P(SharedSemaphore, IsTakenByOneAtATime) {
  const auto first = Another(2 * kMillisecond), second = Another(4 * kMillisecond);
  ExpectReads();
  board.Sleep(10 * kMillisecond);
  for (const auto& another : {first, second}) {
    EXPECT_GE(another->Reads().right, 1u);
    EXPECT_EQ(another->Reads(), (sim::SmbusUser::Tally{.right = another->Reads().right}));
    EXPECT_TRUE(another->Over());
  }
  EXPECT_THAT(WritesToAnothersHost(), IsEmpty());
}

TEST_P(SharedSemaphore, IsSharedAtEveryPhase) {
  for (uint64_t later = 0; later < 1500; later += 29) {
    const uint64_t now = board.Microseconds();
    const auto another = sim::SmbusUser::Start(board, host,
                                               {.from = now + later,
                                                .until = now + later + kMillisecond,
                                                .address = kSlave,
                                                .command = kCommand,
                                                .expected = kValue});
    ExpectReads();
    board.Sleep(5 * kMillisecond);
    EXPECT_GE(another->Reads().right, 2u) << later;
    EXPECT_EQ(another->Reads(), (sim::SmbusUser::Tally{.right = another->Reads().right})) << later;
    EXPECT_TRUE(another->Over());
  }
  EXPECT_THAT(WritesToAnothersHost(), IsEmpty());
}

TEST_P(SharedSemaphore, KeepsAnotherWaitingFromTheFirstByteToTheLast) {
  const uint64_t now = board.Microseconds();
  const auto another = sim::SmbusUser::Start(board, host,
                                             {.from = now + 300,
                                              .until = now + 20 * kMillisecond,
                                              .address = kSlave,
                                              .command = kCommand,
                                              .expected = kValue});
  unsigned char bytes[8] = {};
  EXPECT_EQ(TSMBus::GetInstance()->ReadSmbusByte(kSlave, bytes, kCommand, 8), 1);
  EXPECT_EQ(bytes[0], kValue);
  EXPECT_EQ(another->Reads(), sim::SmbusUser::Tally{});
  EXPECT_THAT(WritesToAnothersHost(), IsEmpty());
  EXPECT_EQ(GivenBack(), 1u);
  board.Sleep(20 * kMillisecond);
  EXPECT_GE(another->Reads().right, 10u);
}

TEST_P(SharedSemaphore, IsGivenBackOnceAfterAWordAndAfterABlock) {
  unsigned char bytes[32] = {1, 2, 3};
  const auto check = [&](int done) {
    EXPECT_EQ(done, 1);
    ExpectGivenBackAtTheEnd();
    host->Poke(board, host->Layout().status, host->Layout().inUse);
    writes.clear();
  };
  check(TSMBus::GetInstance()->WriteSmbusWord(kSlave, bytes, kCommand, 1));
  check(TSMBus::GetInstance()->WriteSmbusBlock(kSlave, bytes, kCommand, 3));
  int count = 0;
  check(TSMBus::GetInstance()->ReadSmbusBlock(kSlave, bytes, kCommand, &count));
  EXPECT_EQ(count, 3);
}

TEST_P(SharedSemaphore, IsGivenBackAfterAMissingDevice) {
  ExpectFails(kMissing);
  ExpectGivenBackAtTheEnd();
}

TEST_P(SharedSemaphore, IsGivenBackAfterADeviceThatNeverEnds) {
  slow->stretch = sim::kSmbusForever;
  ExpectFails(kSlow);
  ExpectGivenBackAtTheEnd();
}

TEST_P(SharedSemaphore, IsGivenBackWhenAnothersTransferDoesNotEnd) {
  slow->stretch = sim::kSmbusForever;
  Another(0, kSlow, false);
  EXPECT_EQ(Read(kSlave).done, 0);
  EXPECT_FALSE(SemaphoreTaken());
}

TEST_P(SharedSemaphore, IsNotGivenBackForAnotherWhoKeepsIt) {
  const auto another = Another(kSecond);
  EXPECT_EQ(Read(kSlave).done, 0);
  EXPECT_THAT(WritesToAnothersHost(), IsEmpty());
  EXPECT_EQ(GivenBack(), 0u);
  EXPECT_THAT(configured, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Rows, SharedSemaphore,
                         testing::ValuesIn(SharedRowsWhere([](const sim::SmbusPlatform& platform) {
                           return platform.make == sim::MakeSmbusIch || platform.make == sim::MakeSmbusVia;
                         })),
                         SharedRowName);

// --- hosts shared with an embedded controller ---

class EmbeddedController : public SharedRows {
 protected:
  static constexpr uint8_t kOthers = 5, kOurs = 0x10;

  void SetUp() override {
    SharedRows::SetUp();
    host->Poke(board, kLock, kOthers);
    host->onWrite = [this](const sim::SmbusWrite& write) {
      writes.push_back(write);
      if (write.offset != kLock && (host->Peek(board, kLock) & kOurs) == 0) unasked.push_back(write.offset);
    };
  }
  void TearDown() override {
    SharedRows::TearDown();
    EXPECT_EQ(host->Peek(board, kLock), kOthers);
    EXPECT_THAT(unasked, IsEmpty());
    EXPECT_THAT(WritesToAnothersHost(), IsEmpty());
    EXPECT_TRUE(std::all_of(writes.begin(), writes.end(), [](const sim::SmbusWrite& write) {
      return write.offset != kLock || (write.value & 0x0F) == kOthers;
    }));
  }
  size_t Asked() const {
    return static_cast<size_t>(std::count_if(writes.begin(), writes.end(), [](const sim::SmbusWrite& write) {
      return write.offset == kLock && (write.value & kOurs) != 0 && (write.value & 0x20) == 0;
    }));
  }
  std::vector<unsigned> unasked;  ///< registers that were written while the host was not ours
};

TEST_P(EmbeddedController, IsAskedForTheHost) { ExpectReads(); }

TEST_P(EmbeddedController, IsAskedAgainAndGetsTheHostBackAfterAMissingDevice) {
  ExpectFails(kMissing);
  ExpectReads();
}

TEST_P(EmbeddedController, GetsTheHostBackAfterADeviceThatNeverEnds) {
  slow->stretch = sim::kSmbusForever;
  ExpectFails(kSlow);
}

TEST_P(EmbeddedController, IsWaitedForInStepsOfAMillisecond) {
  host->controllerUntil = board.Microseconds() + 20 * kMillisecond;
  ExpectReads();
  EXPECT_LE(Asked(), 30u);
}

TEST_P(EmbeddedController, IsWaitedForAThirdOfASecond) {
  host->controllerUntil = board.Microseconds() + 333 * kMillisecond;
  ExpectReads();
}

TEST_P(EmbeddedController, IsNotWaitedForForever) {
  host->controllerUntil = sim::kSmbusForever;
  const Outcome outcome = Read(kSlave);
  EXPECT_EQ(outcome.done, 0);
  EXPECT_LT(outcome.took, kSecond);
}

INSTANTIATE_TEST_SUITE_P(Rows, EmbeddedController,
                         testing::ValuesIn(SharedRowsWhere([](const sim::SmbusPlatform& platform) {
                           return platform.make == sim::MakeSmbusFch;
                         })),
                         SharedRowName);

// --- hosts with several segments ---

class Multiplexer : public SharedRows {
 protected:
  static constexpr uint16_t kIndex = 0xCD6, kData = 0xCD7;
  static constexpr uint8_t kRestingIndex = 0x61;

  uint8_t Get(unsigned offset) {
    board.Out(kIndex, 1, offset);
    const auto value = static_cast<uint8_t>(board.In(kData, 1));
    board.Out(kIndex, 1, kRestingIndex);
    return value;
  }
  void Set(unsigned offset, uint8_t value) {
    board.Out(kIndex, 1, offset);
    board.Out(kData, 1, value);
    board.Out(kIndex, 1, kRestingIndex);
  }
  /// Segment 2 of 0 to 3, and whatever else the register holds.
  void Choose2(unsigned offset) {
    const uint8_t mask = platform->multiplexer.mask;
    Set(offset, static_cast<uint8_t>((Get(offset) & ~mask) | (mask & (mask << 1))));
    ASSERT_EQ(host->segment, 2u);
  }
  /// The device is on segment 0.
  void ExpectReadsAndPutsBack(unsigned offset) {
    Choose2(offset);
    const uint8_t before = Get(offset);
    ExpectReads();
    EXPECT_EQ(Get(offset), before);
    ExpectFails(kMissing);
    EXPECT_EQ(Get(offset), before);
    EXPECT_EQ(board.In(kIndex, 1), kRestingIndex);
  }
};

TEST_P(Multiplexer, IsLeftAloneOnTheFirstSegment) {
  const unsigned at = platform->multiplexer.at;
  const uint8_t before = Get(at);
  ExpectReads();
  EXPECT_EQ(Get(at), before);
  EXPECT_EQ(board.In(kIndex, 1), kRestingIndex);
}

TEST_P(Multiplexer, IsSetToTheFirstSegmentAndPutBack) { ExpectReadsAndPutsBack(platform->multiplexer.at); }

TEST_P(Multiplexer, IsFoundInItsOtherRegister) {
  const sim::SmbusPlatform::Multiplexer& multiplexer = platform->multiplexer;
  if (multiplexer.chooser == 0) return ExpectReadsAndPutsBack(multiplexer.at);
  Set(multiplexer.chooser, 1);
  ExpectReadsAndPutsBack(multiplexer.otherwise);
}

TEST_P(Multiplexer, IsNotTouchedWhileTheEmbeddedControllerHasTheHost) {
  Choose2(platform->multiplexer.at);
  host->controllerUntil = board.Microseconds() + 20 * kMillisecond;
  bool touched = false;
  board.OnTick([&](sim::Board& now) {
    touched = touched || (now.Microseconds() < host->controllerUntil && host->segment != 2);
  });
  ExpectReads();
  EXPECT_FALSE(touched);
}

// On the two in between it is not known which generation's register they have.
INSTANTIATE_TEST_SUITE_P(Rows, Multiplexer, testing::ValuesIn(SharedRowsWhere([](const sim::SmbusPlatform& platform) {
                           return platform.multiplexer.mask != 0 && platform.name != "mullins" &&
                                  platform.name != "fch-early";
                         })),
                         SharedRowName);

}  // namespace
