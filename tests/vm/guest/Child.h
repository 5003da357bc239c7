// SPDX-License-Identifier: MIT
/// A process of its own for a part of a test: it may change its user, and end by a signal.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <string>

namespace guest {

/// How a process that runs `body` ends: "status N" with its result, or "signal N".
inline std::string EndOfChild(const std::function<int()>& body) {
  const pid_t child = fork();
  if (child == 0) _exit(body());
  int status = 0;
  if (waitpid(child, &status, 0) != child) return "no child";
  return WIFEXITED(status) ? "status " + std::to_string(WEXITSTATUS(status))
                           : "signal " + std::to_string(WTERMSIG(status));
}

/// The same as a user without privilege. Status 100 when there is no becoming one.
inline std::string EndAsNobody(const std::function<int()>& body) {
  constexpr unsigned kNobody = 65534;
  return EndOfChild([&] { return setgid(kNobody) == 0 && setuid(kNobody) == 0 ? body() : 100; });
}

}  // namespace guest
