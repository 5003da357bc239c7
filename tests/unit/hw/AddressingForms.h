// SPDX-License-Identifier: MIT
/// The two ways to name a PCI function, by three numbers and by one word, compared operation by operation.
#pragma once

#include <functional>
#include <vector>

#include "tests/unit/hw/Hardware.h"

namespace hwtest {

using Buffer = std::vector<uint8_t>;
using Call = std::function<uint64_t(TReadWrite&, Buffer&)>;

/// One operation on one function in both forms; a call gets a buffer of 1216 bytes counting up from 1.
struct Forms {
  const char* name;
  Call separate, word;
};

/// What a call returned, left in its buffer and did to the machine.
struct Outcome {
  uint64_t result = 0;
  Buffer buffer = Buffer(1216);
  std::vector<sim::Access> log;

  bool operator==(const Outcome&) const = default;
};

/// Makes the call on a machine of its own.
template <typename Machine>
Outcome OutcomeOf(const Call& call) {
  Machine machine;
  Outcome outcome;
  for (size_t i = 0; i < outcome.buffer.size(); ++i) outcome.buffer[i] = static_cast<uint8_t>(i + 1);
  outcome.result = call(machine.rw, outcome.buffer);
  outcome.log = machine.board.Log();
  return outcome;
}

}  // namespace hwtest
