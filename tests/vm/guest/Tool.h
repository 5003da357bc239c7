// SPDX-License-Identifier: MIT
/// vynctl, running beside a test.
#pragma once

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <sstream>
#include <string>

#include "Machine.h"

namespace guest {

class Tool {
 public:
  /// Starts "vynctl ARGUMENTS" by the shell's rules. What it prints is kept in a file.
  explicit Tool(const std::string& arguments) : process_(fork()) {
    if (process_ > 0) return;
    const int file = open(kOutput, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    dup2(file, STDOUT_FILENO);
    dup2(file, STDERR_FILENO);
    execl("/bin/sh", "sh", "-c", ("exec vynctl " + arguments).c_str(), nullptr);
    _exit(127);
  }
  ~Tool() {
    if (process_ == 0) return;
    Signal(SIGKILL);
    End();
  }
  Tool(const Tool&) = delete;
  Tool& operator=(const Tool&) = delete;

  void Signal(int number) const { kill(process_, number); }
  bool Runs() const { return kill(process_, 0) == 0 && waitpid(process_, nullptr, WNOHANG | WNOWAIT) == 0; }

  /// Waits for its end: "status N" or "signal N".
  std::string End() {
    int status = 0;
    waitpid(process_, &status, 0);
    process_ = 0;
    return WIFEXITED(status) ? "status " + std::to_string(WEXITSTATUS(status))
                             : "signal " + std::to_string(WTERMSIG(status));
  }

  /// What it has printed so far.
  static std::string Output() {
    std::ostringstream text;
    text << std::ifstream(kOutput).rdbuf();
    return text.str();
  }

 private:
  static constexpr char kOutput[] = "/tmp/tool-output";

  pid_t process_;
};

}  // namespace guest
