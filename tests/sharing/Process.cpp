// SPDX-License-Identifier: MIT
// fork, pipes and reaping.
#include "Process.h"

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>

Process::Process(const std::function<bool()>& work) : id_(fork()) {
  if (id_ == 0) _exit(work() ? 0 : 1);
  if (id_ < 0) throw std::runtime_error("fork failed");
}

Process::~Process() {
  if (ended_) return;
  Signal(SIGKILL);
  Succeeded();
}

void Process::Signal(int number) const { kill(id_, number); }

bool Process::Succeeded() {
  int status = 0;
  waitpid(id_, &status, 0);
  ended_ = true;
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

Flag::Flag() {
  if (pipe(ends_) != 0) throw std::runtime_error("pipe failed");
}

Flag::~Flag() {
  close(ends_[0]);
  close(ends_[1]);
}

void Flag::Raise() const {
  if (write(ends_[1], "!", 1) != 1) throw std::runtime_error("nobody waits");
}

void Flag::Await() const {
  char byte = 0;
  if (read(ends_[0], &byte, 1) != 1) throw std::runtime_error("nobody comes");
}
