// SPDX-License-Identifier: MIT
/// Keeps programs from touching the hardware at once, and signals from ending one of them halfway.
#pragma once

#include <csignal>
#include <stdexcept>
#include <string>

#include "vynlib/lock.h"

namespace vynctl {

/// Somebody else kept the hardware for too long, or the lock cannot be used.
class LockError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A signal that Signals reports came while the tool waited for the hardware; it is still to be reported.
class StoppedWaiting : public std::runtime_error {
 public:
  StoppedWaiting() : std::runtime_error("ended by a signal while waiting for the hardware") {}
};

/// The lock of vynlib/lock.h; without a file nothing is locked, and signals are deferred all the same.
class HardwareLock {
 public:
  struct Patience {
    double seconds;
    bool goOn;              ///< at its end: go on without the lock and say so, instead of a LockError
    bool stubborn = false;  ///< signals that are pending do not end the waiting
  };

  /// @param path  the lock file; empty: none
  /// @throws LockError when it cannot be opened or must not be trusted
  HardwareLock(const std::string& path, double waitSeconds);
  ~HardwareLock();
  HardwareLock(const HardwareLock&) = delete;
  HardwareLock& operator=(const HardwareLock&) = delete;

  void SetPatience(const Patience& patience) { patience_ = patience; }

  /// While one exists, this process has the hardware and no signal acts on it. For the time of one library call.
  class Turn {
   public:
    /// Waits for the lock. Signals act meanwhile, and who has it is told after a second.
    /// @throws LockError, StoppedWaiting
    explicit Turn(HardwareLock& lock) : lock_(lock) { lock_.Take(); }
    ~Turn() { lock_.Give(); }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

   private:
    HardwareLock& lock_;
  };

 private:
  void Take();
  void Give();
  /// True when the lock was taken; signals are deferred then. False after a moment.
  bool TakeSoon(double seconds);
  void DeferSignals();
  void AllowSignals();
  std::string Holder() const;

  Patience patience_;
  bool used_ = false;
  bool held_ = false;
  vynlib_lock lock_{};
  sigset_t former_{};
};

template <typename Function>
class Guarded;

/// A function of the library that is called with the hardware to itself: each call waits for its turn, and throws what
/// HardwareLock::Turn throws.
template <typename Result, typename... Arguments>
class Guarded<Result(Arguments...)> {
 public:
  Guarded() = default;
  Guarded(Result (*function)(Arguments...), HardwareLock& lock) : function_(function), lock_(&lock) {}

  Result operator()(Arguments... arguments) const {
    const HardwareLock::Turn turn(*lock_);
    return function_(arguments...);
  }

 private:
  Result (*function_)(Arguments...) = nullptr;
  HardwareLock* lock_ = nullptr;
};

}  // namespace vynctl
