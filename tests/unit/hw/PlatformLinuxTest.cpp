// SPDX-License-Identifier: MIT
// The production platform, alone and below the hardware class: the calls and instructions that reach the machine.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/prctl.h>
#include <sys/time.h>

#include <array>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include "hw/Platform.h"
#include "hw/TReadWrite.h"
#include "tests/support/TrappedMachine.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Lines = std::vector<std::string>;

/// The hardware class over the production platform over a trapped machine; the log starts empty.
struct Production {
  TrappedMachine machine;
  TReadWrite rw;

  Production() { machine.ClearLog(); }

  /// The accesses to mapped memory.
  Lines MemoryAccesses() const {
    Lines chosen;
    for (const std::string& line : machine.Log())
      if (line.starts_with("load") || line.starts_with("store")) chosen.push_back(line);
    return chosen;
  }
};

long DescriptorsOfThisProcess() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return std::distance(begin(all), end(all));
}

}  // namespace

TEST(PlatformPorts, AreReadByTheInstructionOfTheirWidth) {
  TrappedMachine machine;
  for (uint16_t i = 0; i < 4; ++i) machine.SetPort(static_cast<uint16_t>(0x300 + i), static_cast<uint8_t>(0x11 + i));
  EXPECT_EQ(platform::In8(0x300), 0x11);
  EXPECT_EQ(platform::In16(0x300), 0x1211);
  EXPECT_EQ(platform::In32(0x300), 0x14131211u);
  EXPECT_THAT(machine.Log(), ElementsAre("in8 0x300 -> 0x11", "in16 0x300 -> 0x1211", "in32 0x300 -> 0x14131211"));
}

TEST(PlatformPorts, AreWrittenByTheInstructionOfTheirWidth) {
  TrappedMachine machine;
  platform::Out8(0xFFFF, 0x5A);
  platform::Out16(0x2E, 0xBEEF);
  platform::Out32(0xCF8, 0x8000FB20);
  EXPECT_THAT(machine.Log(), ElementsAre("out8 0xffff <- 0x5a", "out16 0x2e <- 0xbeef", "out32 0xcf8 <- 0x8000fb20"));
}

TEST(PlatformPrivilege, IsAskedForByIopl) {
  TrappedMachine machine;
  EXPECT_EQ(platform::SetIoPrivilegeLevel(3), 0);
  machine.privileged = false;
  EXPECT_NE(platform::SetIoPrivilegeLevel(0), 0);
  EXPECT_THAT(machine.Log(), ElementsAre("iopl 3", "iopl 0"));
}

TEST(PlatformOpen, OpensForReadingOnlyOrForSynchronousWriting) {
  TrappedMachine machine;
  const int reading = platform::Open("/dev/mem", platform::OpenMode::kRead);
  const int writing = platform::Open("/dev/mem", platform::OpenMode::kReadWriteSync);
  EXPECT_GE(reading, 0);
  EXPECT_GE(writing, 0);
  platform::Close(reading);
  platform::Close(writing);
  EXPECT_THAT(machine.Log(), ElementsAre("open /dev/mem O_RDONLY|O_CLOEXEC", "open /dev/mem O_RDWR|O_SYNC|O_CLOEXEC",
                                         "close", "close"));
}

TEST(PlatformOpen, ReportsFailure) {
  TrappedMachine machine;
  machine.memDevice = false;
  EXPECT_EQ(platform::Open("/dev/mem", platform::OpenMode::kRead), -1);
}

TEST(PlatformMap, IsSharedAndNoMoreThanReadableUnlessWritable) {
  TrappedMachine machine;
  const int memory = platform::Open("/dev/mem", platform::OpenMode::kReadWriteSync);
  machine.ClearLog();
  void* readable = platform::Map(memory, 0x123456000, 10, false);
  void* writable = platform::Map(memory, 0x1000, 20, true);
  ASSERT_NE(readable, nullptr);
  ASSERT_NE(writable, nullptr);
  platform::Unmap(readable, 10);
  platform::Unmap(writable, 20);
  EXPECT_THAT(machine.Log(), ElementsAre("mmap 0x123456000+10 PROT_READ MAP_SHARED",
                                         "mmap 0x1000+20 PROT_READ|PROT_WRITE MAP_SHARED", "munmap 10", "munmap 20"));
  platform::Close(memory);
}

TEST(PlatformMap, ReportsFailureAsNull) {
  TrappedMachine machine;
  const int memory = platform::Open("/dev/mem", platform::OpenMode::kRead);
  EXPECT_EQ(platform::Map(memory, 0x1000, 0, false), nullptr);
  EXPECT_EQ(platform::Map(memory, 0x1000, 1, true), nullptr);
  machine.mappable = false;
  EXPECT_EQ(platform::Map(memory, 0x1000, 1, false), nullptr);
  platform::Close(memory);
}

TEST(PlatformPageSize, IsTheSystems) {
  TrappedMachine machine;
  machine.pageSize = 65536;
  EXPECT_EQ(platform::PageSize(), 65536u);
  EXPECT_THAT(machine.Log(), ElementsAre("sysconf _SC_PAGESIZE"));
}

TEST(PlatformReadAt, ReadsAtTheOffsetAndReportsTheCount) {
  TrappedMachine machine;
  machine.msrs[0x19C] = {1, 2, 3, 4, 5, 6, 7, 8};
  machine.msrs[0x10] = {1, 2, 3};
  const int device = platform::Open("/dev/cpu/0/msr", platform::OpenMode::kRead);
  uint8_t bytes[8] = {};
  EXPECT_EQ(platform::ReadAt(device, bytes, 8, 0x19C), 8);
  EXPECT_EQ(bytes[7], 8);
  EXPECT_EQ(platform::ReadAt(device, bytes, 8, 0x10), 3);
  EXPECT_EQ(platform::ReadAt(device, bytes, 8, 0x11), -1);
  platform::Close(device);
  EXPECT_THAT(machine.Log(), ElementsAre("open /dev/cpu/0/msr O_RDONLY|O_CLOEXEC", "pread 8 at 0x19c",
                                         "pread 8 at 0x10", "pread 8 at 0x11", "close"));
}

TEST(PlatformCommand, IsRunByTheShell) {
  TrappedMachine machine;
  platform::RunCommand("modprobe msr");
  EXPECT_THAT(machine.Log(), ElementsAre("system modprobe msr"));
}

TEST(PlatformSleep, IsGivenInMicroseconds) {
  TrappedMachine machine;
  platform::SleepMicroseconds(0);
  platform::SleepMicroseconds(100000);
  EXPECT_THAT(machine.Log(), ElementsAre("usleep 0", "usleep 100000"));
}

TEST(PlatformSleep, LeavesTheTimerSlackOfTheThreadAsItWas) {
  constexpr unsigned long kNanoseconds = 70000;
  ASSERT_EQ(prctl(PR_SET_TIMERSLACK, kNanoseconds), 0);
  platform::SleepMicroseconds(1);
  EXPECT_EQ(prctl(PR_GET_TIMERSLACK), static_cast<int>(kNanoseconds));
  prctl(PR_SET_TIMERSLACK, 0);
}

// 50 ms of slack, which every one of these sleeps would otherwise be allowed to take; a machine that is too busy to
// wake one thread in time does not delay all of them.
TEST(PlatformSleep, IsPreciseWhenItIsShort) {
  ASSERT_EQ(prctl(PR_SET_TIMERSLACK, 50000000UL), 0);
  auto shortest = std::chrono::steady_clock::duration::max();
  for (int i = 0; i < 20; ++i) {
    const auto start = std::chrono::steady_clock::now();
    platform::SleepMicroseconds(20);
    shortest = std::min(shortest, std::chrono::steady_clock::now() - start);
  }
  prctl(PR_SET_TIMERSLACK, 0);
  EXPECT_LT(shortest, std::chrono::milliseconds(25));
}

TEST(PlatformSleep, IsNotShortenedBySignals) {
  struct sigaction action {};
  action.sa_handler = [](int) {};
  struct sigaction former;
  sigaction(SIGALRM, &action, &former);
  const itimerval everyMillisecond = {{0, 1000}, {0, 1000}};
  const itimerval never = {};
  setitimer(ITIMER_REAL, &everyMillisecond, nullptr);
  const auto start = std::chrono::steady_clock::now();
  platform::SleepMicroseconds(30000);
  const auto slept = std::chrono::steady_clock::now() - start;
  setitimer(ITIMER_REAL, &never, nullptr);
  sigaction(SIGALRM, &former, nullptr);
  EXPECT_GE(slept, std::chrono::milliseconds(30));
}

TEST(PlatformThreads, AreRaisedAtTheirFirstPortAccessAfterTheStart) {
  TrappedMachine machine;
  platform::SetIoPrivilegeLevel(3);
  std::thread([] {
    platform::Out8(0x80, 1);
    platform::Out8(0x80, 2);
  }).join();
  platform::Out8(0x80, 3);
  platform::SetIoPrivilegeLevel(0);
  EXPECT_THAT(machine.Log(),
              ElementsAre("iopl 3", "iopl 3", "out8 0x80 <- 0x01", "out8 0x80 <- 0x02", "out8 0x80 <- 0x03", "iopl 0"));
}

TEST(PlatformThreads, AreRaisedAgainAfterAnotherStart) {
  TrappedMachine machine;
  std::promise<void> restarted, ready;
  platform::SetIoPrivilegeLevel(3);
  std::thread worker([&] {
    platform::Out8(0x80, 1);
    ready.set_value();
    restarted.get_future().wait();
    platform::Out8(0x80, 2);
  });
  ready.get_future().wait();
  platform::SetIoPrivilegeLevel(0);
  platform::SetIoPrivilegeLevel(3);
  restarted.set_value();
  worker.join();
  platform::SetIoPrivilegeLevel(0);
  EXPECT_THAT(machine.Log(), ElementsAre("iopl 3", "iopl 3", "out8 0x80 <- 0x01", "iopl 0", "iopl 3", "iopl 3",
                                         "out8 0x80 <- 0x02", "iopl 0"));
}

TEST(PlatformThreads, LoseTheirLevelAtTheirFirstPortAccessAfterTheEnd) {
  TrappedMachine machine;
  machine.SetPort(0x300, 0x5A);
  std::promise<void> ended, ready;
  platform::SetIoPrivilegeLevel(3);
  uint8_t read = 0;
  std::thread worker([&] {
    platform::Out8(0x80, 1);
    ready.set_value();
    ended.get_future().wait();
    read = platform::In8(0x300);
  });
  ready.get_future().wait();
  platform::SetIoPrivilegeLevel(0);
  ended.set_value();
  worker.join();
  EXPECT_THAT(machine.Log(), ElementsAre("iopl 3", "iopl 3", "out8 0x80 <- 0x01", "iopl 0", "iopl 0"));
  EXPECT_EQ(read, 0xFF);
}

TEST(PlatformThreads, ReadAllOnesAndWriteNothingWhereTheLevelIsRefused) {
  TrappedMachine machine;
  platform::SetIoPrivilegeLevel(3);
  machine.privileged = false;
  std::thread([] {
    EXPECT_EQ(platform::In8(0x300), 0xFF);
    EXPECT_EQ(platform::In16(0x300), 0xFFFF);
    EXPECT_EQ(platform::In32(0x300), 0xFFFFFFFF);
    platform::Out32(0x300, 1);
  }).join();
  platform::SetIoPrivilegeLevel(0);
  EXPECT_THAT(machine.Log(), ElementsAre("iopl 3", "iopl 3", "iopl 3", "iopl 3", "iopl 3", "iopl 0"));
}

TEST(PlatformThreads, AreNotRaisedByAStartThatFailed) {
  TrappedMachine machine;
  machine.privileged = false;
  platform::SetIoPrivilegeLevel(3);
  platform::SetIoPrivilegeLevel(0);
  machine.privileged = true;
  std::thread([] { platform::Out8(0x80, 1); }).join();
  EXPECT_THAT(machine.Log(), ElementsAre("iopl 3", "iopl 0", "out8 0x80 <- 0x01"));
}

TEST(PlatformThreads, KeepTheLevelOfAStartThatOutlivesAnother) {
  TrappedMachine machine;
  platform::SetIoPrivilegeLevel(3);
  platform::SetIoPrivilegeLevel(3);
  platform::SetIoPrivilegeLevel(0);
  platform::Out8(0x80, 1);
  platform::SetIoPrivilegeLevel(0);
  EXPECT_THAT(machine.Log(), ElementsAre("iopl 3", "iopl 3", "iopl 0", "iopl 3", "out8 0x80 <- 0x01", "iopl 0"));
}

TEST(ProductionTReadWrite, RaisesAndDropsThePrivilegeLevel) {
  TrappedMachine machine;
  { const TReadWrite rw; }
  EXPECT_THAT(machine.Log(), ElementsAre("iopl 3", "iopl 0"));
}

TEST(ProductionIoBaseReadBlock, UsesOneByteInstructionPerPort) {
  Production p;
  std::array<uint8_t, 3> buffer;
  EXPECT_TRUE(p.rw.IoBaseReadBlock(0xFFFE, buffer.data(), 3));
  EXPECT_THAT(p.machine.Log(), ElementsAre("in8 0xfffe -> 0xff", "in8 0xffff -> 0xff", "in8 0x0 -> 0xff"));
}

TEST(ProductionIoIndexReadWord, ReadsTheHighRegisterFirst) {
  Production p;
  p.machine.SetPort(0x2F, 0x86);
  EXPECT_EQ(p.rw.IoIndexReadWord(0x2E, 0x2F, 0xFF), 0x8686);
  EXPECT_THAT(p.machine.Log(),
              ElementsAre("out8 0x2e <- 0x00", "in8 0x2f -> 0x86", "out8 0x2e <- 0xff", "in8 0x2f -> 0x86"));
}

TEST(ProductionPciReadWord, WritesTheAddressAsADwordFirst) {
  Production p;
  p.machine.in = [](uint16_t, unsigned) { return 0xCAFE2930u; };
  EXPECT_EQ(p.rw.PciReadWord(0, 0x1F, 3, 0x02), 0x2930);
  EXPECT_THAT(p.machine.Log(), ElementsAre("out32 0xcf8 <- 0x8000fb00", "in16 0xcfe -> 0x2930"));
}

TEST(ProductionMemory, IsOpenedMappedUnmappedAndClosedByEachRead) {
  Production p;
  p.machine.StoreMemory(0x1022, {0x34, 0x12});
  const Lines each = {"open /dev/mem O_RDONLY|O_CLOEXEC", "sysconf _SC_PAGESIZE", "mmap 0x1000+37 PROT_READ MAP_SHARED",
                      "munmap 37", "close"};
  EXPECT_EQ(p.rw.MemoryReadWord(0x1023), 0x1234);
  EXPECT_EQ(p.machine.Log(), each);
  p.machine.ClearLog();
  EXPECT_EQ(p.rw.MemoryReadWord(0x1023), 0x1234);
  EXPECT_EQ(p.machine.Log(), each);
}

TEST(ProductionMemory, IsOpenedMappedUnmappedAndClosedByEachWrite) {
  Production p;
  EXPECT_TRUE(p.rw.MemoryWriteDword(0x10000000A, 0xCAFEBABE));
  EXPECT_EQ(p.machine.LoadMemory(0x100000007, 6), (std::vector<uint8_t>{0, 0xBE, 0xBA, 0xFE, 0xCA, 0}));
  EXPECT_THAT(p.machine.Log(),
              ElementsAre("open /dev/mem O_RDWR|O_SYNC|O_CLOEXEC", "sysconf _SC_PAGESIZE",
                          "mmap 0x100000000+14 PROT_READ|PROT_WRITE MAP_SHARED", "munmap 14", "close"));
}

TEST(ProductionMemory, IsMappedFromTheSystemsPageOn) {
  Production p;
  p.machine.pageSize = 16384;
  p.machine.StoreMemory(0x5001, {0x5A});
  EXPECT_EQ(p.rw.MemoryReadByte(0x5001), 0x5A);
  EXPECT_THAT(p.machine.Log(), ElementsAre("open /dev/mem O_RDONLY|O_CLOEXEC", "sysconf _SC_PAGESIZE",
                                           "mmap 0x4000+4098 PROT_READ MAP_SHARED", "munmap 4098", "close"));
}

TEST(ProductionMemory, OfCountZeroOnAPageBoundaryCannotBeMapped) {
  Production p;
  EXPECT_FALSE(p.rw.MemoryReadBlock(0x1000, nullptr, 0));
  EXPECT_THAT(p.machine.Log(), ElementsAre("open /dev/mem O_RDONLY|O_CLOEXEC", "sysconf _SC_PAGESIZE",
                                           "mmap 0x1000+0 PROT_READ MAP_SHARED", "close"));
}

TEST(ProductionMemory, IsNotMappedWhenItCannotBeOpened) {
  Production p;
  p.machine.memDevice = false;
  EXPECT_EQ(p.rw.MemoryReadDword(0x1000), 0xFFFFFFFFu);
  EXPECT_FALSE(p.rw.MemoryWriteByte(0x1000, 1));
  EXPECT_THAT(p.machine.Log(),
              ElementsAre("open /dev/mem O_RDONLY|O_CLOEXEC", "open /dev/mem O_RDWR|O_SYNC|O_CLOEXEC"));
}

TEST(ProductionMemory, AboveWhatCanBeMappedFails) {
  Production p;
  EXPECT_EQ(p.rw.MemoryReadWord(0xFFFFFFFFFFFFFFFE), 0xFFFF);
  EXPECT_EQ(p.machine.OpenDescriptors(), 0u);
}

namespace {

struct WidthCase {
  const char* name;
  unsigned width;
  Lines loads, stores;
};

/// Count 7 from address 0x1001 on.
const WidthCase kWidthCases[] = {
    {"Bytes",
     0,
     {"load 0x1001", "load 0x1002", "load 0x1003", "load 0x1004", "load 0x1005", "load 0x1006", "load 0x1007"},
     {"store 0x1001 <- a1", "store 0x1002 <- a2", "store 0x1003 <- a3", "store 0x1004 <- a4", "store 0x1005 <- a5",
      "store 0x1006 <- a6", "store 0x1007 <- a7"}},
    {"Words",
     1,
     {"load 0x1000", "load 0x1002", "load 0x1004"},
     {"store 0x1000 <- a1 a2", "store 0x1002 <- a3 a4", "store 0x1004 <- a5 a6"}},
    {"Dwords", 2, {"load 0x1000"}, {"store 0x1000 <- a1 a2 a3 a4"}},
    {"Nothing", 3, {}, {}},
};

class ProductionMemoryBlock : public testing::TestWithParam<WidthCase> {};

}  // namespace

TEST_P(ProductionMemoryBlock, IsReadElementByElement) {
  Production p;
  p.machine.watchMemory = true;
  std::array<uint8_t, 7> buffer;
  EXPECT_TRUE(p.rw.MemoryReadBlock(0x1001, buffer.data(), 7, GetParam().width));
  EXPECT_EQ(p.MemoryAccesses(), GetParam().loads);
}

TEST_P(ProductionMemoryBlock, IsWrittenElementByElement) {
  Production p;
  p.machine.watchMemory = true;
  std::array<uint8_t, 7> buffer{0xA1, 0xA2, 0xA3, 0xA4, 0xA5, 0xA6, 0xA7};
  EXPECT_TRUE(p.rw.MemoryWriteBlock(0x1001, buffer.data(), 7, GetParam().width));
  EXPECT_EQ(p.MemoryAccesses(), GetParam().stores);
}

INSTANTIATE_TEST_SUITE_P(Of, ProductionMemoryBlock, testing::ValuesIn(kWidthCases),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(ProductionMemory, IsAccessedOncePerValueAtItsRoundedAddress) {
  Production p;
  p.machine.watchMemory = true;
  p.rw.MemoryReadByte(0x1003);
  p.rw.MemoryReadWord(0x1003);
  p.rw.MemoryReadDword(0x1003);
  p.rw.MemoryWriteByte(0x1003, 0xA1);
  p.rw.MemoryWriteWord(0x2003, 0xA2A1);
  p.rw.MemoryWriteDword(0x3003, 0xA4A3A2A1);
  EXPECT_THAT(p.MemoryAccesses(), ElementsAre("load 0x1003", "load 0x1002", "load 0x1000", "store 0x1003 <- a1",
                                              "store 0x2002 <- a1 a2", "store 0x3000 <- a1 a2 a3 a4"));
}

TEST(ProductionMemoryPage, MovesByItsElements) {
  Production p;
  p.machine.watchMemory = true;
  std::vector<uint8_t> buffer(256, 0xA5);
  p.rw.MemoryReadPage(0x1001, buffer.data());
  EXPECT_EQ(p.MemoryAccesses().size(), 256u);
  p.machine.ClearLog();
  p.rw.MemoryReadPage(0x1001, buffer.data(), 1);
  EXPECT_EQ(p.MemoryAccesses().size(), 128u);
  p.machine.ClearLog();
  p.rw.MemoryWritePage(0x1001, buffer.data(), 2);
  EXPECT_EQ(p.MemoryAccesses().size(), 64u);
  EXPECT_EQ(p.MemoryAccesses().back(), "store 0x10fc <-");
}

TEST(ProductionMemoryFindData, ReadsItsSpanByteByByte) {
  Production p;
  p.machine.StoreMemory(0xF0002, {'K', 'E', 'Y'});
  p.machine.watchMemory = true;
  unsigned char key[] = {'K', 'E', 'Y'};
  EXPECT_EQ(p.rw.MemoryFindData(0xF0000, 5, 1, 0, key, 3, false), 0xF0002u);
  EXPECT_THAT(p.MemoryAccesses(),
              ElementsAre("load 0xf0000", "load 0xf0001", "load 0xf0002", "load 0xf0003", "load 0xf0004"));
}

TEST(ProductionPciEWriteByte, ReadsAndWritesTheWholeDword) {
  Production p;
  p.rw.PcieBase = 0xE0000000;
  p.machine.watchMemory = true;
  p.machine.StoreMemory(0xE0000100, {0x11, 0x22, 0x33, 0x44});
  EXPECT_TRUE(p.rw.PciEWriteByte(0, 0, 0, 0x103, 0xA5));
  EXPECT_THAT(p.MemoryAccesses(), ElementsAre("load 0xe0000100", "store 0xe0000100 <- 11 22 33 a5"));
}

TEST(ProductionRdmsrOnCpu, RunsModprobeAndReadsTheFirstCpuOnEveryCall) {
  Production p;
  p.machine.msrs[0xC0000080] = {0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88};
  const Lines each = {"system modprobe msr", "open /dev/cpu/0/msr O_RDONLY|O_CLOEXEC", "pread 8 at 0xc0000080",
                      "close"};
  EXPECT_EQ(p.rw.rdmsr_on_cpu(0xC0000080), 0x8877665544332211u);
  EXPECT_EQ(p.machine.Log(), each);
  p.machine.ClearLog();
  EXPECT_EQ(p.rw.rdmsr_on_cpu(0xC0000080), 0x8877665544332211u);
  EXPECT_EQ(p.machine.Log(), each);
}

TEST(ProductionRdmsrOnCpu, WithoutTheDeviceReturnsZero) {
  Production p;
  p.machine.msrDevice = false;
  EXPECT_EQ(p.rw.rdmsr_on_cpu(0x10), 0u);
  EXPECT_THAT(p.machine.Log(), ElementsAre("system modprobe msr", "open /dev/cpu/0/msr O_RDONLY|O_CLOEXEC"));
}

TEST(ProductionRdmsrOnCpu, LeavesTheDescriptorOfAShortReadOpen) {
  Production p;
  p.machine.msrs[0x10] = {0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77};
  EXPECT_EQ(p.rw.rdmsr_on_cpu(0x10), 0u);
  EXPECT_THAT(p.machine.Log(),
              ElementsAre("system modprobe msr", "open /dev/cpu/0/msr O_RDONLY|O_CLOEXEC", "pread 8 at 0x10"));
  EXPECT_EQ(p.machine.OpenDescriptors(), 1u);
}

TEST(ProductionTReadWrite, KeepsNoDescriptorAndNoMapping) {
  Production p;
  p.machine.logging = false;
  p.machine.msrs[0x10] = std::vector<uint8_t>(8);
  const long before = DescriptorsOfThisProcess();
  for (unsigned i = 0; i < 100; ++i) {
    std::array<uint8_t, 64> buffer{};
    p.rw.MemoryReadBlock(0x1000 + i, buffer.data(), 64);
    p.rw.MemoryWriteBlock(0x1000 + i, buffer.data(), 64, 2);
    p.rw.MemoryReadBlock(0x1000, buffer.data(), 0);
    p.rw.MemoryFindData(0xF0000, 0x10000, 16, 0, buffer.data(), 64, false);
    p.rw.rdmsr_on_cpu(0x10);
  }
  EXPECT_EQ(DescriptorsOfThisProcess(), before);
  EXPECT_EQ(p.machine.OpenDescriptors(), 0u);
  EXPECT_EQ(p.machine.LiveMappings(), 0u);
}
