// SPDX-License-Identifier: MIT
/// The command by which the watchdog's feeder asks whether the system is well.
#pragma once

#include <string>

#include "view/Signals.h"

namespace vynctl {

struct Health {
  enum class State {
    kWell,
    kUnwell,  ///< `words` tell what the command did
    kStopped  ///< a signal ended the waiting
  };
  State state;
  std::string words = {};
};

/// Runs `command` by the shell, without standard input, with standard output on standard error, without the right to
/// use ports and out of the service manager's sight. It is well when it ends with status 0 within `seconds`; a command
/// that takes longer, or that is running when a signal comes, is killed with all that it started.
Health AskCommand(const std::string& command, double seconds, const Signals& signals);

}  // namespace vynctl
