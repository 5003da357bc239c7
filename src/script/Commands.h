// SPDX-License-Identifier: MIT
/// The vocabulary of the script language.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

class TInterpreter;

namespace script {

/// What running a command came to; `value` is of interest with kValue only.
struct Outcome {
  enum Kind : uint32_t { kFailed, kDone, kValue };
  Kind kind;
  uint32_t value = 0;
};

/// Largest value of each operand.
using Limits = uint32_t[5];

/// What few commands need.
struct Extras {
  bool hasOptional = false;  ///< one more operand, which is `otherwise` when it is absent
  uint32_t otherwise = 0;
  bool takesWords = false;  ///< `run` takes its words from the interpreter's argument list
};

/// One word of the language. `run` finds the evaluated operands in the interpreter.
struct Command {
  std::string_view word;
  uint8_t operands;  ///< numeric operands, all of which must be there; further words are ignored
  const Limits& limits;
  bool needsHardware;
  Outcome (*run)(TInterpreter& interpreter);
  Extras extras = {};
};

std::span<const Command> Commands();
/// @return the word's row, or null
const Command* FindCommand(std::string_view word);

}  // namespace script
