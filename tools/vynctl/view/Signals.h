// SPDX-License-Identifier: MIT
/// Waiting that signals and keys can end.
#pragma once

#include <csignal>

namespace vynctl {

/// While one exists, SIGINT, SIGTERM, SIGHUP, SIGWINCH, SIGTSTP and SIGCONT no longer act by themselves; Wait() reports
/// them. Those that the process was told to ignore stay ignored. The former state returns at the end.
class Signals {
 public:
  enum class Event { kTimeout, kStop, kResize, kSuspend, kContinue, kKey };

  Signals();
  ~Signals();
  Signals(const Signals&) = delete;
  Signals& operator=(const Signals&) = delete;

  /// Waits up to `milliseconds`, for a signal or, when `keys` is a descriptor, for input on it.
  Event Wait(int milliseconds, int keys = -1) const;

  /// Will Wait() report kStop?
  static bool StopIsPending();

 private:
  Event Next() const;

  sigset_t former_;
  int descriptor_;
};

}  // namespace vynctl
