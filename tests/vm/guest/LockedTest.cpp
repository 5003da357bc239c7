// SPDX-License-Identifier: MIT
// A kernel that is locked down, as it is under Secure Boot: even root gets neither ports nor physical memory.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/io.h>
#include <vynlib/vynlib.h>

#include <cerrno>
#include <fstream>

#include "Machine.h"

using ::testing::AllOf;
using ::testing::HasSubstr;

namespace {

uint64_t CodeOfAFailedStart() {
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(0, VynLibDllInit());
  EXPECT_EQ("Please run as root!\n", ::testing::internal::GetCapturedStdout());
  return VynLibDllGetLastError();
}

}  // namespace

TEST(Lockdown, RefusesPortsToRoot) {
  std::string state;
  std::getline(std::ifstream("/sys/kernel/security/lockdown"), state);
  EXPECT_EQ("none [integrity] confidentiality", state);
  EXPECT_EQ(-1, iopl(3));
  EXPECT_EQ(EPERM, errno);
}

TEST(Locked, TheLibraryDoesNotStart) { EXPECT_EQ(1u, CodeOfAFailedStart()); }

TEST(Locked, EveryCallIsRefusedAfterwards) {
  CodeOfAFailedStart();
  uint8_t state = 0x5A;
  float volts = 1.5f;
  EXPECT_EQ(0, VynLibGetLVDSState(&state, 2));
  EXPECT_EQ(1u, VynLibDllGetLastError());
  EXPECT_EQ(0x5A, state);
  EXPECT_EQ(0, VynLibGetVoltage("+12V", &volts, 2));
  EXPECT_EQ(1u, VynLibDllGetLastError());
  EXPECT_EQ(0, VynLibWDTEnable(1, 0, 2));
  EXPECT_EQ(1u, VynLibDllGetLastError());
}

TEST(Locked, EveryCommandOfVynctlEndsWithStatus1) {
  for (const char* command : {"info", "report", "sensors", "features", "get lvds-state", "watchdog status"})
    EXPECT_EQ(1, guest::Run(std::string("vynctl ") + command + " 2>&1").status) << command;
}

TEST(Locked, TheDoctorSaysWhy) {
  const guest::CommandResult result = guest::Run("vynctl doctor");
  EXPECT_EQ(2, result.status);
  EXPECT_THAT(
      result.output,
      AllOf(HasSubstr("\nPrivilege level (iopl): refused: Operation not permitted (EPERM); the kernel is locked "
                      "down  [problem]\n"),
            HasSubstr("\nKernel lockdown: integrity: "), HasSubstr("Take 'lockdown=' off the kernel's command line"),
            HasSubstr("\n/dev/mem: does not open: Operation not permitted (EPERM)  [problem]\n")));
}

TEST(Locked, FailuresPointToTheDoctor) {
  EXPECT_THAT(guest::Run("vynctl sensors 2>&1").output, HasSubstr("; run 'vynctl doctor'\n"));
}
