// SPDX-License-Identifier: MIT
/// What the kernel and the firmware let this process do: user, capability, privilege level, filters, lockdown.
#pragma once

#include <optional>

#include "doctor/Finding.h"
#include "doctor/Machine.h"

namespace vynctl::doctor {

struct Privilege {
  std::string user;        ///< effective user number; empty when the kernel does not say
  bool contained = false;  ///< users are those of a namespace: its root is not the machine's
  bool rawIo = false;      ///< CAP_SYS_RAWIO is effective, in the process's namespace of users
  Machine::Trial trial;    ///< of raising the privilege level
  bool filtered = false;   ///< a system call filter is on
  std::string lockdown;    ///< "none", "integrity", "confidentiality"; empty when the kernel does not say
  bool uefi = false;       ///< the kernel was started by UEFI firmware
  std::optional<bool> secureBoot;

  bool LockedDown() const { return !lockdown.empty() && lockdown != "none"; }
  /// Nothing keeps the library from starting.
  bool Raised() const { return trial.error == 0 && trial.signal == 0; }
};

Privilege LookAtPrivilege(const Machine& machine);
Findings Judge(const Privilege& privilege);

/// What keeps this process from the board's hardware, and what to do first; empty when nothing does. What the library
/// says itself ("Please run as root!") is the same for every cause.
std::string WhyNoPrivilege(const Privilege& privilege);

}  // namespace vynctl::doctor
