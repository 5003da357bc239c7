// SPDX-License-Identifier: MIT
/// The interpreter of the script language that drives SMBus controllers; docs/script-language.md tells the language.
#pragma once

#include "hw/TReadWrite.h"
#include "text/VynString.h"
#include "text/VynStringList.h"

namespace script {
struct Block;
struct Operand;
struct Program;
struct Statement;
}  // namespace script

/// Values are unsigned 32-bit; arithmetic wraps. Locals keep their values from one script to the next on the same
/// object. Nothing is printed. Without a hardware object (no privilege), statements that need one fail.
class TInterpreter {
 public:
  static constexpr int kVariables = 16;
  static constexpr int kScratch = 16;  ///< the slot of statements that assign to no variable
  static constexpr int kOperands = 5;

  TReadWrite* Hardware;
  unsigned int Locals[kVariables + 1] = {};
  int Target = kScratch;  ///< slot that receives the current statement's value
  unsigned int Operands[kOperands] = {};
  unsigned int WaitValue = 0;        ///< what the WAIT block being run waits for
  unsigned int LoopCount = 0;        ///< rounds that the block being run has left
  unsigned char Endless = 0;         ///< the block's count was 0
  unsigned char BreakIfZero = 0;     ///< set by BKIF0 for one statement
  unsigned char BreakIfNonzero = 0;  ///< set by BKIF1 for one statement
  VynString StringOperands[kOperands];
  unsigned int Result = 0;             ///< receives values when the caller gave no place for them
  VynStringList* Arguments = nullptr;  ///< not owned; words of the statement being run, while one takes them as text

  TInterpreter();

  // --- execution (Execute.cpp) ---

  /// Runs a script. `*result` receives the value of each statement that yields one; a script that yields none leaves it
  /// alone. A block's and a BKIF's test look at it, so it is to be set before.
  /// @return true when the whole script ran, a wait that ran out of rounds included; false at the first failing
  /// statement or malformed block. An endless block (count 0) whose body is empty fails; any other one runs until its
  /// condition is met, without a bound.
  bool Interpret(VynString script, unsigned int* result);
  /// The same with `Result`, set to 0 first.
  bool Interpret(VynString script);
  /// The same for a script that is parsed already; without `result` as the form above.
  bool Interpret(const script::Program& program, unsigned int* result = nullptr);
  /// Runs statements separated by ";". @return true when all ran or a break ended the run
  bool ExecuteCmds(VynString statements, unsigned int* result);
  /// Runs one normalised statement.
  bool ExecuteCmd(VynString statement, unsigned int* result);
  /// Sleeps for `microseconds`.
  void Delayms(int microseconds);

  // --- text, words, operands (Operands.cpp) ---

  /// A script as the other operations take it: trimmed, in upper case, commas and round brackets as spaces, no ";" at
  /// the end.
  static VynString AdjustCmdString(VynString script);
  /// Without leading spaces and ";".
  VynString AdjustPrefixCmdString(VynString statements);
  /// The slot that a text "LOCALx" or "LOCALx=..." names. @return whether it is one of 0..15; only then `*slot` is set
  bool GetLocalVarNum(VynString text, int* slot);
  /// The value of a variable or number. @return whether the word is either; only then `*value` is set
  bool CmdToOp(VynString word, unsigned int* value);
  /// Stores one byte for each of the words (0..256, stored modulo 256) and their number in `*count`. `data` holds a
  /// byte for each word of `text`. @return false at the first bad word, and when there is no word
  bool StrToData(VynString text, unsigned char* data, int* count);

  /// Evaluate words of `Arguments` into `Operands` and remove them: the first `count`, or word `index` into operand
  /// `operand`. @return false when a word is missing or does not evaluate, and for operands beyond the last
  bool GetOps(int count);
  bool GetOp(int index, int operand);
  /// The same into `StringOperands`, without evaluation.
  bool GetStrOps(int count);
  bool GetStrOp(int index, int operand);
  /// Whether `Arguments` holds exactly this word.
  bool CheckOps(VynString word);
  /// value <= limit
  bool CheckOpValue(unsigned int value, unsigned int limit) { return value <= limit; }
  /// Whether operands 0..3 are a bus, device, function and register of PCI: at most 255, 31, 7, 255.
  bool CheckPciCmd();

  /// The bits as '0' and '1', the most significant first: 8, 16, 32 or 64 characters.
  VynString Return8Bits(unsigned char value);
  VynString Return16Bits(unsigned short value);
  VynString Return32Bits(unsigned int value);
  VynString Return64Bits(unsigned long long value);
  /// Adds a heading of bit numbers ("15     8 7      0") and under it the bits in groups of eight.
  void ReturnBits(unsigned char value, VynStringList* lines);
  void ReturnBits(unsigned short value, VynStringList* lines);
  void ReturnBits(unsigned int value, VynStringList* lines);
  void ReturnBits(unsigned long long value, VynStringList* lines);

 private:
  unsigned int Value(const script::Operand& operand) const;
  bool Run(const script::Program& program, const script::Block& block, unsigned int* result);
  bool RunRounds(const script::Program& program, const script::Block& block, unsigned int* result);
  bool RunStatements(const script::Program& program, const script::Block& block, unsigned int* result);
  bool Run(const script::Statement& statement, unsigned int* result);
  bool RunWord(const script::Statement& statement, unsigned int* result);
  bool RunWords(const script::Statement& statement, unsigned int* result);
  bool Report(unsigned int value, unsigned int* result);
  bool BreaksAt(unsigned int result) const;
};
