// SPDX-License-Identifier: MIT
// Model-specific registers through the device file.
#include "tests/unit/hw/Hardware.h"

using hwtest::Close;
using hwtest::Hardware;
using hwtest::RefusalsPrinted;
using sim::Access;
using testing::ElementsAre;

namespace {

const Access kModprobe{Access::kCommand, 0, 0, 0, "modprobe msr"};
const Access kOpenFirstCpu{Access::kOpen, 0, 0, 0, "/dev/cpu/0/msr"};

Access ReadEightBytes(uint64_t offset) { return {Access::kReadAt, offset, 0, 8, {}}; }

}  // namespace

TEST(RdmsrOnCpu, ReadsEightBytesOfTheFirstCpuAtTheRegisterNumber) {
  Hardware hw;
  hw.board.Msr(0x19C, 0x8877665544332211);
  EXPECT_EQ(hw.rw.rdmsr_on_cpu(0x19C), 0x8877665544332211u);
  EXPECT_THAT(hw.board.Log(), ElementsAre(kModprobe, kOpenFirstCpu, ReadEightBytes(0x19C), Close()));
}

TEST(RdmsrOnCpu, TakesTheRegisterNumberAsUnsigned) {
  Hardware hw;
  hw.board.Msr(0xC0000080, 0xD01);
  EXPECT_EQ(hw.rw.rdmsr_on_cpu(0xC0000080), 0xD01u);
  EXPECT_THAT(hw.board.Log(), ElementsAre(kModprobe, kOpenFirstCpu, ReadEightBytes(0xC0000080), Close()));
}

TEST(RdmsrOnCpu, RunsModprobeAndOpensAfreshOnEveryCall) {
  Hardware hw;
  hw.board.Msr(0x10, 1);
  hw.rw.rdmsr_on_cpu(0x10);
  hw.rw.rdmsr_on_cpu(0x10);
  EXPECT_THAT(hw.board.Log(), ElementsAre(kModprobe, kOpenFirstCpu, ReadEightBytes(0x10), Close(), kModprobe,
                                          kOpenFirstCpu, ReadEightBytes(0x10), Close()));
}

TEST(RdmsrOnCpu, WithoutTheDeviceReturnsZero) {
  Hardware hw;
  hw.board.Msr(0x10, 1);
  hw.board.msrDevice = false;
  EXPECT_EQ(hw.rw.rdmsr_on_cpu(0x10), 0u);
  EXPECT_THAT(hw.board.Log(), ElementsAre(kModprobe, kOpenFirstCpu));
}

TEST(RdmsrOnCpu, LeavesTheDescriptorOpenWhenTheReadFails) {
  Hardware hw;
  EXPECT_EQ(hw.rw.rdmsr_on_cpu(0x10), 0u);
  EXPECT_THAT(hw.board.Log(), ElementsAre(kModprobe, kOpenFirstCpu, ReadEightBytes(0x10)));
  EXPECT_EQ(hw.board.OpenDescriptors(), 1);
}

TEST(RdmsrOnCpu, NeedsNoPrivilegeAndPrintsNothing) {
  Hardware hw;
  hw.board.Msr(0x10, 0x1234);
  hw.rw.IoplFailed = 1;
  unsigned long long value = 0;
  EXPECT_EQ(RefusalsPrinted([&] { value = hw.rw.rdmsr_on_cpu(0x10); }), 0);
  EXPECT_EQ(value, 0x1234u);
}
