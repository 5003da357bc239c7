// SPDX-License-Identifier: MIT
// Looks at /proc/self/status, the lockdown file and the firmware's Secure Boot variable, and tries iopl(3).
#include "doctor/Privilege.h"

#include <fmt/core.h>
#include <string.h>

#include <cerrno>
#include <sstream>

#include "view/Text.h"

namespace vynctl::doctor {
namespace {

constexpr char kStatus[] = "/proc/self/status";
constexpr char kLockdown[] = "/sys/kernel/security/lockdown";
constexpr char kEfi[] = "/sys/firmware/efi";
constexpr char kVariables[] = "/sys/firmware/efi/efivars";
constexpr char kSecureBoot[] = "SecureBoot-";
constexpr unsigned kRawIoBit = 17;
/// Four bytes of attributes, and one that says on or off.
constexpr size_t kVariableBytes = 5;

/// The effective one of "real effective saved filesystem".
std::string EffectiveUser(const Machine& machine) {
  std::istringstream users(machine.Field(kStatus, "Uid"));
  std::string user;
  users >> user >> user;
  return user;
}

/// The machine's own users are mapped as "0 0 4294967295".
bool IsContained(const Machine& machine) {
  std::istringstream map(machine.Line("/proc/self/uid_map"));
  uint64_t inside = 0, outside = 0, count = UINT32_MAX;
  map >> inside >> outside >> count;
  return inside != 0 || outside != 0 || count != UINT32_MAX;
}

bool HasRawIo(const Machine& machine) {
  const std::string held = machine.Field(kStatus, "CapEff");
  return (strtoull(held.c_str(), nullptr, 16) >> kRawIoBit & 1) != 0;
}

/// The word in brackets of "none [integrity] confidentiality".
std::string Lockdown(const Machine& machine) {
  const std::string line = machine.Line(kLockdown);
  const size_t open = line.find('['), close = line.find(']');
  return open < close && close != std::string::npos ? line.substr(open + 1, close - open - 1) : "";
}

std::optional<bool> SecureBoot(const Machine& machine) {
  for (const std::string& name : machine.Names(kVariables)) {
    if (!name.starts_with(kSecureBoot)) continue;
    const std::string bytes = machine.Read(fmt::format("{}/{}", kVariables, name)).bytes;
    if (bytes.size() == kVariableBytes) return bytes.back() != 0;
  }
  return std::nullopt;
}

Finding User(const Privilege& privilege) {
  Finding finding{.id = "user", .what = "User", .found = "root (uid 0)"};
  if (privilege.user.empty()) {
    finding.found = "not told by the kernel";
  } else if (privilege.user != "0") {
    finding.found = fmt::format("uid {}", Printable(privilege.user));
  }
  if (privilege.contained) {
    finding.found += " of a container, who is not the machine's";
    finding.verdict = Verdict::kProblem;
    finding.next = "Run vynctl outside of the container, as root.";
  } else if (privilege.user != "0" && !privilege.rawIo) {
    finding.verdict = Verdict::kProblem;
    finding.next = "Run it as root: 'sudo vynctl doctor'.";
  }
  return finding;
}

Finding Capability(const Privilege& privilege) {
  Finding finding{.id = "capability", .what = "Capability CAP_SYS_RAWIO", .found = "held"};
  if (privilege.rawIo) return finding;
  finding.found = "not held";
  finding.verdict = Verdict::kProblem;
  finding.next = privilege.user == "0"
                     ? "In a container: start it with '--cap-add=SYS_RAWIO', or run vynctl outside of it. "
                       "In a service: add CAP_SYS_RAWIO to CapabilityBoundingSet=."
                     : "Root holds it: see 'User'.";
  return finding;
}

/// Why iopl(3) is refused with EPERM, and what to do.
void Refused(const Privilege& privilege, Finding* finding) {
  const auto because = [finding](const char* why, const char* next) {
    finding->found += fmt::format("; {}", why);
    finding->next = next;
  };
  if (privilege.contained) return because("the user is one of a container", "See 'User'.");
  if (!privilege.rawIo) return because("CAP_SYS_RAWIO is missing", "See 'Capability CAP_SYS_RAWIO'.");
  if (privilege.LockedDown()) return because("the kernel is locked down", "See 'Kernel lockdown'.");
  if (privilege.filtered) return because("the system call filter forbids it", "See 'System call filter'.");
  because("the kernel does not tell why", "Ask who set up this system which security module forbids raw I/O.");
}

Finding Iopl(const Privilege& privilege) {
  Finding finding{.id = "iopl", .what = "Privilege level (iopl)", .found = "can be raised"};
  if (privilege.Raised()) return finding;
  finding.verdict = Verdict::kProblem;
  if (privilege.trial.signal != 0) {
    finding.found =
        fmt::format("trying to raise it ended the process with SIG{}", sigabbrev_np(privilege.trial.signal));
    finding.next = "See 'System call filter'.";
    return finding;
  }
  finding.found = fmt::format("refused: {}", ErrorWords(privilege.trial.error));
  if (privilege.trial.error == EPERM) {
    Refused(privilege, &finding);
  } else if (privilege.trial.error == ENOSYS) {
    finding.found += "; this kernel is built without it";
    finding.next = "Boot a kernel with CONFIG_X86_IOPL_IOPERM=y, such as Debian's own.";
  } else {
    finding.next = "Try again; if it stays, send a bundle to support: 'vynctl doctor --bundle FILE.tar'.";
  }
  return finding;
}

Finding Filter(const Privilege& privilege) {
  Finding finding{.id = "filter", .what = "System call filter", .found = "none"};
  if (!privilege.filtered) return finding;
  finding.found = "on (Seccomp in /proc/self/status)";
  if (privilege.Raised()) {
    finding.found += ", and lets iopl pass";
    return finding;
  }
  finding.verdict = Verdict::kWarning;
  finding.next =
      "In a service: add 'SystemCallFilter=@raw-io' and remove 'PrivateDevices='. In a container: run vynctl outside "
      "of "
      "it.";
  return finding;
}

Finding LockdownState(const Privilege& privilege) {
  Finding finding{.id = "lockdown", .what = "Kernel lockdown", .found = Printable(privilege.lockdown)};
  if (privilege.lockdown.empty()) finding.found = "not told by this kernel";
  if (!privilege.LockedDown()) return finding;
  finding.found += ": ports, /dev/mem and processor registers are closed, to root as well";
  finding.verdict = Verdict::kProblem;
  finding.next =
      privilege.secureBoot.value_or(false)
          ? "Switch Secure Boot off in the firmware's setup and boot again."
          : "Take 'lockdown=' off the kernel's command line (/etc/default/grub, then 'update-grub') and boot again.";
  return finding;
}

Finding SecureBootState(const Privilege& privilege) {
  Finding finding{.id = "secure-boot", .what = "Secure Boot"};
  if (!privilege.uefi) {
    finding.found = "none, this machine was not started by UEFI";
  } else if (!privilege.secureBoot.has_value()) {
    finding.found = "not told by the firmware";
  } else {
    finding.found = *privilege.secureBoot ? "on" : "off";
  }
  if (privilege.secureBoot.value_or(false) && privilege.LockedDown()) {
    finding.found += ", which is why the kernel is locked down";
    finding.verdict = Verdict::kWarning;
    finding.next = "See 'Kernel lockdown'.";
  }
  return finding;
}

}  // namespace

Privilege LookAtPrivilege(const Machine& machine) {
  const std::string filter = machine.Field(kStatus, "Seccomp");
  return {.user = EffectiveUser(machine),
          .contained = IsContained(machine),
          .rawIo = HasRawIo(machine),
          .trial = machine.TryPrivilege(),
          .filtered = !filter.empty() && filter != "0",
          .lockdown = Lockdown(machine),
          .uefi = machine.Exists(kEfi),
          .secureBoot = SecureBoot(machine)};
}

Findings Judge(const Privilege& privilege) {
  return {User(privilege),   Capability(privilege),    Iopl(privilege),
          Filter(privilege), LockdownState(privilege), SecureBootState(privilege)};
}

/// The causes in the order in which the kernel asks for them.
std::string WhyNoPrivilege(const Privilege& privilege) {
  if (privilege.Raised()) return "";
  if (privilege.trial.error == ENOSYS) return "this kernel is built without iopl (CONFIG_X86_IOPL_IOPERM)";
  if (privilege.trial.signal != 0) {
    return fmt::format("a system call filter ends the process with SIG{} at iopl",
                       sigabbrev_np(privilege.trial.signal));
  }
  if (!privilege.rawIo && privilege.user != "0") {
    return fmt::format("user {} does not hold CAP_SYS_RAWIO; run it as root", Printable(privilege.user));
  }
  if (!privilege.rawIo) return "root does not hold CAP_SYS_RAWIO here (a container or a service without it)";
  if (privilege.LockedDown()) {
    return fmt::format("the kernel is locked down ({}), to root as well", Printable(privilege.lockdown));
  }
  if (privilege.filtered) return "a system call filter refuses iopl";
  return fmt::format("the kernel refuses iopl: {}", ErrorWords(privilege.trial.error));
}

}  // namespace vynctl::doctor
