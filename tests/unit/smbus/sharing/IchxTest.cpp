// SPDX-License-Identifier: MIT
// "Intel ICHx" beside others. Contract: its texts clear the status as they poll, take running out of time for success
// and stop nothing.
#include "SharedBoard.h"

using testing::IsEmpty;
using testing::Not;

namespace {

class SharedIchx : public SharedBoard {
 protected:
  void SetUp() override { Build(kIchxRow); }
};

TEST_F(SharedIchx, ReadsFromAMissingSlowAndHealthyDevice) {
  slow->stretch = 20 * kMillisecond;
  ExpectFails(kMissing);
  ExpectReads(kSlow, kSlowValue);
  ExpectReads();
}

TEST_F(SharedIchx, TakesTheHostFromItsOwner) {
  Another(3 * kMillisecond);
  Read(kSlave);
  EXPECT_THAT(WritesToAnothersHost(), Not(IsEmpty()));
}

TEST_F(SharedIchx, ClearsTheStatusOfARunningTransfer) {
  slow->stretch = 2 * kMillisecond;
  Another(0, kSlow, false);
  ExpectReads();
  EXPECT_THAT(StatusWritesWhileBusy(), Not(IsEmpty()));
}

TEST_F(SharedIchx, TakesADeviceThatNeverEndsForOneThatAnswered) {
  slow->stretch = sim::kSmbusForever;
  EXPECT_EQ(Read(kSlow).done, 1);
  EXPECT_TRUE(RunsNow());
  EXPECT_EQ(Read(kSlave).done, 0);
  slow->stretch = 0;
  ExpectReads();
}

TEST_F(SharedIchx, LeavesTheSemaphoreTaken) {
  ExpectReads();
  EXPECT_TRUE(SemaphoreTaken());
}

}  // namespace
