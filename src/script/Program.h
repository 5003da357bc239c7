// SPDX-License-Identifier: MIT
/// A script's text, parsed once: a loop's body runs any number of rounds without looking at text again.
/// Parsing fails nowhere. What cannot run becomes a statement or block that fails when its turn comes, so that
/// everything before it has taken effect.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "script/TInterpreter.h"

namespace script {

struct Command;

/// A word that has a value: a number, or the variable in slot `number`.
struct Operand {
  /// The slot of the variable that stands where a value is still to come; see `kOpenWord`.
  static constexpr unsigned int kOpenSlot = TInterpreter::kVariables + 1;

  bool IsOpen() const { return isLocal && number == kOpenSlot; }

  bool isLocal = false;
  unsigned int number = 0;
};

struct Statement {
  enum class Kind : unsigned char {
    kFails,
    kCopy,     ///< operand 0 to the target
    kReport,   ///< the target's value as the result
    kNothing,  ///< succeeds
    kCommand,
    kWords,  ///< a command that takes text
  };
  Kind kind = Kind::kFails;
  unsigned char breakIfZero = 0;
  unsigned char breakIfNonzero = 0;
  unsigned char operandCount = 0;
  int target = TInterpreter::kScratch;
  const Command* command = nullptr;
  std::array<Operand, TInterpreter::kOperands> operands = {};
  std::string words;  ///< all argument words of a command that takes text
};

/// A run of statements: once, or in rounds.
struct Block {
  enum class Kind : unsigned char { kOnce, kWait, kLoop, kMalformed };
  Kind kind = Kind::kOnce;
  Operand waitValue = {};
  Operand count = {};
  size_t first = 0;  ///< index of the first statement
  size_t end = 0;    ///< index behind the last one
};

struct Program {
  std::vector<Statement> statements;
  std::vector<Block> blocks;
};

/// A word that no normalised text holds.
inline constexpr std::string_view kOpenWord = "(";

/// All take normalised text, as AdjustCmdString makes it. `open`, if not empty, is a word that counts as the variable
/// of the open slot; whoever asks for it puts a value there before the program runs.
Program ParseScript(std::string_view text, std::string_view open = {});
Program ParseStatements(std::string_view text);
Statement ParseStatement(std::string_view text, std::string_view open = {});
/// @return whether the word is a number or a variable
bool ParseOperand(std::string_view word, Operand* operand, std::string_view open = {});
/// The slot that the digits behind "LOCAL" name (what follows a "=" left out), or -1.
int ParseSlot(std::string_view digits);

/// Without the spaces at both ends.
std::string_view Trimmed(std::string_view text);
/// Cuts the text before `separator` off; the separator goes too. Without one, all of it is cut off.
std::string_view CutBefore(std::string_view* text, char separator);

}  // namespace script

inline unsigned int TInterpreter::Value(const script::Operand& operand) const {
  return operand.isLocal ? Locals[operand.number] : operand.number;
}
