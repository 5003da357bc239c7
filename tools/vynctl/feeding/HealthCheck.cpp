// SPDX-License-Identifier: MIT
// Running the command as a process group of its own, and waiting for it together with signals.
#include "feeding/HealthCheck.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/io.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>

namespace vynctl {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kCannotRun = 127;  // as the shell says it

[[noreturn]] void BecomeCommand(const std::string& command) {
  setpgid(0, 0);
  iopl(0);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  signal(SIGPIPE, SIG_DFL);
  for (const char* name : {"NOTIFY_SOCKET", "WATCHDOG_USEC", "WATCHDOG_PID"}) unsetenv(name);
  const int nothing = open("/dev/null", O_RDWR);
  dup2(nothing, STDIN_FILENO);
  dup2(STDERR_FILENO, STDOUT_FILENO);
  execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
  _exit(kCannotRun);
}

std::string HowItEnded(int status) {
  if (WIFSIGNALED(status)) return fmt::format("was ended by signal {}", WTERMSIG(status));
  return fmt::format("ended with status {}", WEXITSTATUS(status));
}

/// Until `process` is ready (kKey), the time is over (kTimeout) or a signal ends the tool (kStop).
Signals::Event Await(int process, double seconds, const Signals& signals) {
  const Clock::time_point end =
      Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
    if (left <= 0) return Signals::Event::kTimeout;
    const Signals::Event event = signals.Wait(static_cast<int>(left), process);
    if (event == Signals::Event::kStop || event == Signals::Event::kKey) return event;
  }
}

}  // namespace

Health AskCommand(const std::string& command, double seconds, const Signals& signals) {
  const pid_t child = fork();
  if (child == 0) BecomeCommand(command);
  if (child < 0) return {Health::State::kUnwell, fmt::format("cannot be run: {}", strerror(errno))};
  setpgid(child, child);
  // By its number: the C library's header for it is not made for C++.
  const auto process = static_cast<int>(syscall(SYS_pidfd_open, child, 0));
  const Signals::Event event = Await(process, seconds, signals);
  if (process >= 0) close(process);
  int status = 0;
  if (event == Signals::Event::kKey) {
    waitpid(child, &status, 0);
    return status == 0 ? Health{Health::State::kWell} : Health{Health::State::kUnwell, HowItEnded(status)};
  }
  kill(-child, SIGKILL);
  // One that sleeps in the kernel does not end even so; it is not waited for.
  waitpid(child, &status, WNOHANG);
  if (event == Signals::Event::kStop) return {Health::State::kStopped};
  return {Health::State::kUnwell, fmt::format("took longer than {:g} s", seconds)};
}

}  // namespace vynctl
