// SPDX-License-Identifier: MIT
// Waiting for the hardware in short steps, between which signals act.
#include "board/HardwareLock.h"

#include <fmt/core.h>

#include <algorithm>
#include <chrono>
#include <cstring>

#include "view/Output.h"
#include "view/Signals.h"
#include "view/Text.h"

namespace vynctl {
namespace {

using Clock = std::chrono::steady_clock;

constexpr double kStepSeconds = 0.02;
constexpr double kSilentSeconds = 1;
constexpr double kMillisecondsPerSecond = 1000;

std::string Words(const vynlib_lock_owner& owner) {
  if (owner.pid == 0) return "another program";
  return fmt::format("{} (pid {})", Printable(owner.name), owner.pid);
}

std::string WhyNot(int code, const std::string& path, int error) {
  if (code == VYNLIB_LOCK_UNSAFE) {
    return fmt::format("{} is not safe to lock: it must be a regular file of root or of this user, and no link",
                       Printable(path));
  }
  return fmt::format("cannot lock {}: {}", Printable(path), strerror(error));
}

}  // namespace

HardwareLock::HardwareLock(const std::string& path, double waitSeconds) : patience_{waitSeconds, false} {
  if (path.empty()) return;
  const int code = vynlib_lock_open(&lock_, path.c_str());
  const int error = errno;
  used_ = code == VYNLIB_LOCK_OK;
  if (used_) return;
  vynlib_lock_close(&lock_);
  throw LockError(WhyNot(code, path, error) + "; --no-lock goes on without, where no other program uses the hardware");
}

HardwareLock::~HardwareLock() {
  if (used_) vynlib_lock_close(&lock_);
}

void HardwareLock::DeferSignals() {
  sigset_t deferred;
  sigfillset(&deferred);
  // A fault in the call itself ends the process in any case.
  for (int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT}) sigdelset(&deferred, fault);
  pthread_sigmask(SIG_BLOCK, &deferred, &former_);
}

void HardwareLock::AllowSignals() { pthread_sigmask(SIG_SETMASK, &former_, nullptr); }

std::string HardwareLock::Holder() const { return Words(vynlib_lock_holder(&lock_)); }

bool HardwareLock::TakeSoon(double seconds) {
  DeferSignals();
  const int code = vynlib_lock_take(&lock_, static_cast<int>(seconds * kMillisecondsPerSecond));
  const int error = errno;
  held_ = code == VYNLIB_LOCK_OK;
  if (held_) return true;
  AllowSignals();
  if (code == VYNLIB_LOCK_ERROR) throw LockError(fmt::format("cannot lock the hardware: {}", strerror(error)));
  return false;
}

void HardwareLock::Take() {
  if (!used_) return DeferSignals();
  const Clock::time_point begin = Clock::now();
  bool silent = true;
  for (double waited = 0; !TakeSoon(std::clamp(patience_.seconds - waited, 0.0, kStepSeconds));) {
    if (!patience_.stubborn && Signals::StopIsPending()) throw StoppedWaiting();
    waited = std::chrono::duration<double>(Clock::now() - begin).count();
    if (silent && waited >= kSilentSeconds) {
      Notice("waiting for " + Holder());
      silent = false;
    }
    if (waited < patience_.seconds) continue;
    if (!patience_.goOn)
      throw LockError(fmt::format("{} has had the hardware for {:g} s", Holder(), patience_.seconds));
    Notice(Holder() + " keeps the hardware; going on without waiting any longer");
    return DeferSignals();
  }
}

void HardwareLock::Give() {
  const vynlib_lock_owner dead = held_ ? vynlib_lock_dead_holder(&lock_) : vynlib_lock_owner{};
  if (held_) vynlib_lock_give(&lock_);
  held_ = false;
  AllowSignals();
  if (dead.pid != 0) {
    Notice(Words(dead) +
           " ended in the middle of a library call; if that used the SMBus, its controller may have stayed enabled");
  }
}

}  // namespace vynctl
