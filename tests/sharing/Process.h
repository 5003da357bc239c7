// SPDX-License-Identifier: MIT
/// A child process of a test.
#pragma once

#include <sys/types.h>

#include <functional>

class Process {
 public:
  /// Runs `work` in a child, which ends with status 0 when it returns true, and with 1 otherwise.
  explicit Process(const std::function<bool()>& work);
  /// Kills and reaps what is still there.
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  pid_t Id() const { return id_; }
  void Signal(int number) const;
  /// Waits for its end; true when its work returned true.
  bool Succeeded();

 private:
  pid_t id_;
  bool ended_ = false;
};

/// A byte from one process to another, once.
class Flag {
 public:
  Flag();
  ~Flag();
  Flag(const Flag&) = delete;
  Flag& operator=(const Flag&) = delete;

  void Raise() const;
  /// Waits until it is raised.
  void Await() const;

 private:
  int ends_[2];
};
