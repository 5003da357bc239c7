// SPDX-License-Identifier: MIT
// One sentence per cause of a refused I/O privilege level.
#include "doctor/Privilege.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>

namespace vynctl::doctor {
namespace {

/// Root with everything it needs, and yet refused.
Privilege Refused(int error = EPERM) {
  Privilege privilege;
  privilege.user = "0";
  privilege.rawIo = true;
  privilege.trial.error = error;
  return privilege;
}

TEST(WhyNoPrivilege, IsSilentWhenTheLevelCanBeRaised) { EXPECT_EQ("", WhyNoPrivilege(Refused(0))); }

TEST(WhyNoPrivilege, TellsAUserToBecomeRoot) {
  Privilege privilege = Refused();
  privilege.user = "1000";
  privilege.rawIo = false;
  EXPECT_EQ("user 1000 does not hold CAP_SYS_RAWIO; run it as root", WhyNoPrivilege(privilege));
}

TEST(WhyNoPrivilege, TellsRootWhatItLacks) {
  Privilege privilege = Refused();
  privilege.rawIo = false;
  EXPECT_EQ("root does not hold CAP_SYS_RAWIO here (a container or a service without it)", WhyNoPrivilege(privilege));
}

TEST(WhyNoPrivilege, TellsLockdownByName) {
  Privilege privilege = Refused();
  privilege.lockdown = "integrity";
  EXPECT_EQ("the kernel is locked down (integrity), to root as well", WhyNoPrivilege(privilege));
}

TEST(WhyNoPrivilege, TellsAKernelWithoutIopl) {
  EXPECT_EQ("this kernel is built without iopl (CONFIG_X86_IOPL_IOPERM)", WhyNoPrivilege(Refused(ENOSYS)));
}

TEST(WhyNoPrivilege, TellsASystemCallFilter) {
  Privilege privilege = Refused();
  privilege.filtered = true;
  EXPECT_EQ("a system call filter refuses iopl", WhyNoPrivilege(privilege));
  privilege.trial = {.error = 0, .signal = SIGSYS};
  EXPECT_EQ("a system call filter ends the process with SIGSYS at iopl", WhyNoPrivilege(privilege));
}

TEST(WhyNoPrivilege, GivesTheErrorOfAnyOtherRefusal) {
  EXPECT_EQ("the kernel refuses iopl: Operation not permitted (EPERM)", WhyNoPrivilege(Refused()));
}

}  // namespace
}  // namespace vynctl::doctor
