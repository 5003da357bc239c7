// SPDX-License-Identifier: MIT
// Every record with devices that hold the clock, that are missing, and with hosts that give up by themselves.
#include <utility>

#include "SharedBoard.h"

namespace {

class SlowDevice : public SharedRows {
 protected:
  /// In one step, since nobody else acts meanwhile.
  void SleepUntil(uint64_t time) {
    const sim::Pace pace = std::exchange(board.pace, {});
    board.Sleep(time - board.Microseconds());
    board.pace = pace;
  }
};

TEST_P(SlowDevice, IsWaitedForAsLongAsTheBusAllows) {
  slow->stretch = 20 * kMillisecond;
  ExpectReads(kSlow, kSlowValue);
  ExpectReads();
}

TEST_P(SlowDevice, IsWaitedForWhateverAccessesAndSleepsCost) {
  slow->stretch = 24 * kMillisecond;
  for (const auto& [portAccess, sleepExtra] : {std::pair<uint64_t, uint64_t>{1, 0}, {2, 0}, {1, 60}, {20, 100}}) {
    board.pace.portAccess = portAccess;
    board.pace.sleepExtra = sleepExtra;
    ExpectReads(kSlow, kSlowValue);
  }
}

TEST_P(SlowDevice, IsWaitedForInWordsAndBlocks) {
  slow->stretch = 20 * kMillisecond;
  unsigned char bytes[32] = {3, 4};
  EXPECT_EQ(TSMBus::GetInstance()->ReadSmbusWord(kSlow, bytes, kCommand, 1), 1);
  EXPECT_EQ(bytes[0], kSlowValue);
  EXPECT_EQ(TSMBus::GetInstance()->WriteSmbusBlock(kSlow, bytes, kCommand, 4), 1);
  int count = 0;
  EXPECT_EQ(TSMBus::GetInstance()->ReadSmbusBlock(kSlow, bytes, kCommand, &count), 1);
  EXPECT_EQ(count, 4);
}

TEST_P(SlowDevice, ThatNeverEndsIsStoppedByAHostThatTakesItsTime) {
  host->microsecondsToStop = kMillisecond;
  slow->stretch = sim::kSmbusForever;
  ExpectFails(kSlow);
  slow->stretch = 0;
  ExpectReads();
}

TEST_P(SlowDevice, IsGivenUpInTimeAndLeavesTheBusUsable) {
  slow->stretch = 4 * kSecond;
  const uint64_t until = board.Microseconds() + slow->stretch;
  ExpectFails(kSlow);
  ExpectFails(kSlave);
  SleepUntil(until + 10 * kMillisecond);
  ExpectReads();
}

TEST_P(SlowDevice, ThatNeverEndsIsStopped) {
  slow->stretch = sim::kSmbusForever;
  ExpectFails(kSlow);
  slow->stretch = 0;
  ExpectReads();
  ExpectReads(kSlow, kSlowValue);
}

TEST_P(SlowDevice, ThatNeverEndsIsStoppedWhenItIsWrittenToo) {
  slow->stretch = sim::kSmbusForever;
  EXPECT_EQ(TSMBus::GetInstance()->WriteSmbusByte(kSlow, kCommand, 'x'), 0);
  EXPECT_FALSE(RunsNow());
  slow->stretch = 0;
  EXPECT_EQ(TSMBus::GetInstance()->WriteSmbusByte(kSlow, kCommand, 'x'), 1);
  EXPECT_EQ(slow->registers[kCommand], 'x');
}

TEST_P(SlowDevice, ThatNeverEndsAWordIsStopped) {
  slow->stretch = sim::kSmbusForever;
  unsigned char word[2] = {};
  EXPECT_EQ(TSMBus::GetInstance()->ReadSmbusWord(kSlow, word, kCommand, 1), 0);
  EXPECT_FALSE(RunsNow());
  slow->stretch = 0;
  EXPECT_EQ(TSMBus::GetInstance()->ReadSmbusWord(kSlow, word, kCommand, 1), 1);
  EXPECT_EQ(word[0], kSlowValue);
}

TEST_P(SlowDevice, ThatNeverEndsABlockIsStopped) {
  slow->stretch = sim::kSmbusForever;
  slow->registers[kCommand] = 3;
  slow->registers[kCommand + 1] = 'a';
  unsigned char bytes[32] = {};
  EXPECT_EQ(TSMBus::GetInstance()->ReadSmbusBlock(kSlow, bytes, kCommand, nullptr), 0);
  EXPECT_FALSE(RunsNow());
  slow->stretch = 0;
  int count = 0;
  EXPECT_EQ(TSMBus::GetInstance()->ReadSmbusBlock(kSlow, bytes, kCommand, &count), 1);
  EXPECT_EQ(count, 3);
  EXPECT_EQ(bytes[0], 'a');
}

TEST_P(SlowDevice, MakesAHostGiveUpByItself) {
  host->timeOut = 25 * kMillisecond;
  slow->stretch = kSecond;
  const uint64_t until = board.Microseconds() + slow->stretch;
  ExpectFails(kSlow);
  SleepUntil(until + 10 * kMillisecond);
  ExpectReads();
}

INSTANTIATE_TEST_SUITE_P(Rows, SlowDevice, testing::ValuesIn(kSharedRows), SharedRowName);

using MissingDevice = SharedRows;

TEST_P(MissingDevice, FailsAndTheNextReadWorks) {
  ExpectFails(kMissing);
  ExpectReads();
}

TEST_P(MissingDevice, FailsWithAnyPhaseOfTheClock) {
  for (unsigned i = 0; i < 12; ++i) {
    board.Sleep(i);
    host->microsecondsPerByte = 85 + i;
    ExpectFails(kMissing);
    ExpectReads();
  }
}

INSTANTIATE_TEST_SUITE_P(Rows, MissingDevice, testing::ValuesIn(kSharedRows), SharedRowName);

/// Alert and system management interrupt enables share the register with the start bit.
class SchControl : public SharedBoard {
 protected:
  static constexpr uint8_t kOthers = 0xA0;

  void SetUp() override {
    Build({"IntelSch", "sch", "Intel SCH"});
    host->Poke(board, host->Layout().control, kOthers);
  }
  void TearDown() override {
    const unsigned control = host->Layout().control;
    EXPECT_THAT(WritesWhere([&](const sim::SmbusWrite& write) {
                  return write.offset == control && (write.value & kOthers) != kOthers;
                }),
                testing::IsEmpty());
    EXPECT_EQ(host->Peek(board, control) & kOthers, kOthers);
  }
};

TEST_F(SchControl, KeepsTheBitsOfOthersAtAByte) { ExpectReads(); }

TEST_F(SchControl, KeepsTheBitsOfOthersAtAWordAndABlock) {
  unsigned char bytes[32] = {1, 2};
  EXPECT_EQ(TSMBus::GetInstance()->WriteSmbusWord(kSlave, bytes, kCommand, 1), 1);
  EXPECT_EQ(TSMBus::GetInstance()->WriteSmbusBlock(kSlave, bytes, kCommand, 2), 1);
}

TEST_F(SchControl, KeepsTheBitsOfOthersWhenATransferIsStopped) {
  slow->stretch = sim::kSmbusForever;
  ExpectFails(kSlow);
}

}  // namespace
