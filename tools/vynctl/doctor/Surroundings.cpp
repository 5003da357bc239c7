// SPDX-License-Identifier: MIT
// Looks at the register device, the lock file, the processor's flags and the versions.
#include "doctor/Surroundings.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <sstream>

#include "view/Text.h"
#include "vynlib/lock.h"

namespace vynctl::doctor {
namespace {

constexpr char kMsrDevice[] = "/dev/cpu/0/msr";
constexpr char kLockFile[] = VYNLIB_LOCK_PATH;

bool HasWord(const std::string& text, std::string_view wanted) {
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    if (word == wanted) return true;
  }
  return false;
}

void MsrMissing(bool loaded, Finding* finding) {
  finding->found = fmt::format("{} is not there, the module msr is {}", kMsrDevice, loaded ? "loaded" : "not loaded");
  finding->next = loaded
                      ? "In a container or a service: let the device in (DeviceAllow=char-cpu/msr r)."
                      : "Load it: 'modprobe msr' now, and 'echo msr > /etc/modules-load.d/msr.conf' for every start.";
}

void MsrClosed(const Privilege& privilege, Finding* finding) {
  if (!privilege.rawIo) {
    finding->next = "See 'Capability CAP_SYS_RAWIO'.";
  } else if (privilege.LockedDown()) {
    finding->next = "See 'Kernel lockdown'.";
  } else {
    finding->next = "In a container or a service: let the device in (DeviceAllow=char-cpu/msr r).";
  }
}

/// "QEMU Standard PC (Q35 + ICH9, 2009)"; empty when the machine does not say.
std::string ProductName(const Machine& machine) {
  const std::string maker = machine.Line("/sys/class/dmi/id/sys_vendor");
  const std::string product = machine.Line("/sys/class/dmi/id/product_name");
  return Printable(Trim(maker + ' ' + product));
}

/// What programs ask of a lock file before they use it.
bool IsTrusted(const Descriptor& file) {
  struct stat status = {};
  if (fstat(file.Number(), &status) != 0) return false;
  return S_ISREG(status.st_mode) && (status.st_uid == 0 || status.st_uid == geteuid());
}

/// "vynctl (pid 4711)", as the holder has entered itself.
std::string Holder(const Machine& machine) {
  const std::string line = machine.Line(kLockFile);
  if (line.empty()) return "a program that does not tell its name";
  const size_t space = std::min(line.find(' '), line.size());
  return fmt::format("{} (pid {})", Printable(Trim(std::string_view(line).substr(space))),
                     Printable(line.substr(0, space)));
}

Finding LibraryVersion(const Machine& machine) {
  Finding finding{.id = "library", .what = "Library"};
  const Machine::Library library = machine.FindLibrary();
  finding.found = Printable(library.file);
  if (!library.file.empty()) return finding;
  finding.found = fmt::format("cannot be loaded: {}", Printable(library.error));
  finding.verdict = Verdict::kProblem;
  finding.next = "Install the package of the library, or run 'ldconfig' after copying it to /usr/local/lib.";
  return finding;
}

}  // namespace

Finding JudgeMsr(const Machine& machine, const Privilege& privilege, const std::optional<TableUse>& use) {
  Finding finding{.id = "msr", .what = "Processor registers (MSR)", .found = fmt::format("{} opens", kMsrDevice)};
  const Descriptor device = machine.Open(kMsrDevice, O_RDONLY);
  if (device.IsOpen()) return finding;
  finding.verdict = Verdict::kWarning;
  if (device.Error() == ENOENT) {
    MsrMissing(machine.HasModule("msr"), &finding);
  } else {
    finding.found = fmt::format("{} does not open: {}", kMsrDevice, ErrorWords(device.Error()));
    MsrClosed(privilege, &finding);
  }
  if (use.has_value() && !use->msr) {
    finding.found += "; the board's table reads none";
    finding.verdict = Verdict::kOk;
    finding.next.clear();
  }
  return finding;
}

Finding JudgeLock(const Machine& machine) {
  Finding finding{.id = "lock", .what = "Lock of the board", .found = "free"};
  const Descriptor file = machine.Open(kLockFile, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
  if (file.Error() == ENOENT) {
    finding.found = "free, nobody has used it since the machine was started";
  } else if (file.Error() == ELOOP || (file.IsOpen() && !IsTrusted(file))) {
    finding.found = fmt::format("{} is no regular file of root or of this user; vynctl does not trust it", kLockFile);
    finding.verdict = Verdict::kWarning;
    finding.next = fmt::format("Find out who made it, and remove it: 'rm {}'.", kLockFile);
  } else if (!file.IsOpen()) {
    finding.found = fmt::format("{} does not open: {}", kLockFile, ErrorWords(file.Error()));
    finding.verdict = Verdict::kWarning;
    finding.next = "See 'User'; a service needs 'ReadWritePaths=/run/lock'.";
  } else if (flock(file.Number(), LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
    finding.found = fmt::format("held by {}", Holder(machine));
    finding.verdict = Verdict::kWarning;
    finding.next =
        "vynctl waits until it is given back. If that takes long, see what the holder does ('ps -p PID') and "
        "stop it.";
  }
  return finding;
}

Finding JudgeHypervisor(const Machine& machine, bool hasTables) {
  Finding finding{.id = "virtual-machine", .what = "Virtual machine", .found = "no"};
  if (!HasWord(machine.Field("/proc/cpuinfo", "flags"), "hypervisor")) return finding;
  const std::string product = ProductName(machine);
  finding.found = product.empty() ? "yes" : fmt::format("yes, {}", product);
  if (hasTables) return finding;
  finding.verdict = Verdict::kWarning;
  finding.next = "Boards are operated from the machine itself: run vynctl on the host.";
  return finding;
}

Findings JudgeVersions(const Machine& machine, const std::string& toolVersion) {
  const std::string release = machine.Line("/proc/sys/kernel/osrelease");
  return {{.id = "vynctl", .what = "vynctl", .found = toolVersion},
          LibraryVersion(machine),
          {.id = "kernel", .what = "Kernel", .found = release.empty() ? "not told" : Printable(release)}};
}

}  // namespace vynctl::doctor
