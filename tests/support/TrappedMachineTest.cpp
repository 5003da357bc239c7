// SPDX-License-Identifier: MIT
// The trapped machine itself: widths, devices, memory, logs.
#include "tests/support/TrappedMachine.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/io.h>
#include <unistd.h>

#include <csignal>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::KilledBySignal;

TEST(TrappedMachine, LeavesTheRestOfTheRegisterToNarrowInputs) {
  TrappedMachine machine;
  machine.in = [](uint16_t, unsigned) { return 0xCAFEBABEu; };
  uint64_t byte = 0x1122334455667788, word = byte, dword = byte;
  const uint16_t port = 0x80;
  asm volatile("inb %%dx, %%al" : "+a"(byte) : "d"(port));
  asm volatile("inw %%dx, %%ax" : "+a"(word) : "d"(port));
  asm volatile("inl %%dx, %%eax" : "+a"(dword) : "d"(port));
  EXPECT_EQ(byte, 0x11223344556677BEu);
  EXPECT_EQ(word, 0x112233445566BABEu);
  EXPECT_EQ(dword, 0x00000000CAFEBABEu);
}

TEST(TrappedMachine, KnowsEveryPortInstruction) {
  TrappedMachine machine;
  uint32_t value = 0x44332211;
  asm volatile(
      "mov $0x300, %%edx\n out %%al, %%dx\n out %%ax, %%dx\n out %%eax, %%dx\n"
      "out %%al, $0x80\n out %%ax, $0x81\n out %%eax, $0xFF\n"
      "in $0x80, %%eax\n in $0x81, %%ax\n in $0xFF, %%al"
      : "+a"(value)
      :
      : "rdx", "memory");
  EXPECT_THAT(machine.Log(), ElementsAre("out8 0x300 <- 0x11", "out16 0x300 <- 0x2211", "out32 0x300 <- 0x44332211",
                                         "out8 0x80 <- 0x11", "out16 0x81 <- 0x2211", "out32 0xff <- 0x44332211",
                                         "in32 0x80 -> 0xff221111", "in16 0x81 -> 0x2211", "in8 0xff -> 0x11"));
}

TEST(TrappedMachine, GivesOutputsToTheTest) {
  TrappedMachine machine;
  std::vector<uint32_t> written;
  machine.out = [&](uint16_t port, unsigned width, uint32_t value) { written = {port, width, value}; };
  outw(0xBEEF, 0x2E);
  EXPECT_THAT(written, ElementsAre(0x2E, 2, 0xBEEF));
}

TEST(TrappedMachine, KeepsPortsAsBytes) {
  TrappedMachine machine;
  outl(0x44332211, 0xFFFE);
  EXPECT_EQ(machine.Port(0xFFFF), 0x22);
  EXPECT_EQ(machine.Port(0x0000), 0x33);
  EXPECT_EQ(inw(0xFFFF), 0x3322);
}

TEST(TrappedMachine, LeavesOtherFilesAlone) {
  TrappedMachine machine;
  const int file = open("/proc/self/exe", O_RDONLY);
  ASSERT_GE(file, 0);
  char magic[4] = {};
  EXPECT_EQ(pread(file, magic, 4, 0), 4);
  EXPECT_EQ(magic[1], 'E');
  EXPECT_EQ(close(file), 0);
  EXPECT_GT(sysconf(_SC_NPROCESSORS_ONLN), 0);
  EXPECT_THAT(machine.Log(), IsEmpty());
}

TEST(TrappedMachine, RefusesThePrivilegeLevelWhenThereIsNone) { EXPECT_NE(iopl(3), 0); }

TEST(TrappedMachineDeathTest, LetsOtherFaultsEndTheProgram) {
  EXPECT_EXIT(
      {
        TrappedMachine machine;
        std::raise(SIGSEGV);
        std::raise(SIGSEGV);
      },
      KilledBySignal(SIGSEGV), "");
}

TEST(TrappedMachineDeathTest, IsGoneAfterwards) {
  EXPECT_EXIT(
      {
        { TrappedMachine machine; }
        std::signal(SIGSEGV, SIG_DFL);
        inb(0x80);
      },
      KilledBySignal(SIGSEGV), "");
}
