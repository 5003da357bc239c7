// The causes of a refused I/O privilege level, in the order in which the kernel asks for them.
#include "StartFailure.h"

#include <fmt/core.h>
#include <string.h>

#include <cerrno>

#include "Text.h"

namespace vynctl {

std::string WhyNoPrivilege(const doctor::Privilege& privilege) {
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
  return fmt::format("the kernel refuses iopl: {}", doctor::ErrorWords(privilege.trial.error));
}

}  // namespace vynctl
