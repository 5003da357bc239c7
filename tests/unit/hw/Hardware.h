// SPDX-License-Identifier: MIT
/// A simulated machine with the object under test on it, and readable expectations about both.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/support/Machine.h"
#include "tests/support/Printed.h"

namespace hwtest {

/// The log starts empty, after the constructor of `rw`.
struct Hardware : support::Machine {
  TReadWrite rw;

  Hardware() { board.Log().clear(); }
};

/// How many lines "Please run as root!" `action` prints. Any other output fails the test.
template <typename Action>
int RefusalsPrinted(Action action) {
  static const std::string line = "Please run as root!\n";
  const std::string output = support::Printed(action);
  size_t end = 0;
  while (output.compare(end, line.size(), line) == 0) end += line.size();
  EXPECT_EQ(output.substr(end), "");
  return static_cast<int>(end / line.size());
}

/// A call to make without privilege.
struct RefusedCall {
  const char* name;
  std::function<bool(TReadWrite&)> fails;  ///< makes it; true when its result is the failure value
};

/// Makes the call without privilege: it must fail, print one line and touch nothing.
inline void ExpectRefusedOnce(Hardware* hw, const RefusedCall& call) {
  hw->rw.IoplFailed = 1;
  bool fails = false;
  EXPECT_EQ(RefusalsPrinted([&] { fails = call.fails(hw->rw); }), 1);
  EXPECT_TRUE(fails);
  EXPECT_TRUE(hw->board.Log().empty());
}

// Expected entries of the log.
inline sim::Access OpenMemory(bool writable) { return {sim::Access::kOpen, 0, 0, writable, "/dev/mem"}; }
inline sim::Access Map(uint64_t offset, uint64_t length, bool writable) {
  return {sim::Access::kMap, offset, writable, length, {}};
}
inline sim::Access Unmap(uint64_t offset, uint64_t length) { return {sim::Access::kUnmap, offset, 0, length, {}}; }
inline sim::Access Close() { return {sim::Access::kClose, 0, 0, 0, {}}; }
inline sim::Access Iopl(uint64_t level) { return {sim::Access::kIopl, 0, 0, level, {}}; }

/// The entries of one kind, in order.
inline std::vector<sim::Access> Only(sim::Access::Kind kind, const std::vector<sim::Access>& log) {
  std::vector<sim::Access> chosen;
  for (const sim::Access& access : log)
    if (access.kind == kind) chosen.push_back(access);
  return chosen;
}

}  // namespace hwtest
