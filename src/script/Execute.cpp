// SPDX-License-Identifier: MIT
// Runs parsed scripts statement by statement.
#include <string>
#include <string_view>

#include "hw/Platform.h"
#include "script/Commands.h"
#include "script/Program.h"
#include "script/TInterpreter.h"

namespace {

std::string_view View(const VynString& text) { return text.Buffer() ? text.c_str() : ""; }

/// The words of one statement as the interpreter's argument list.
class ArgumentScope {
 public:
  ArgumentScope(TInterpreter& interpreter, const std::string& words) : interpreter_(interpreter) {
    words_.SetCommaText(words.c_str(), " ");
    interpreter_.Arguments = &words_;
  }
  ~ArgumentScope() { interpreter_.Arguments = nullptr; }
  ArgumentScope(const ArgumentScope&) = delete;
  ArgumentScope& operator=(const ArgumentScope&) = delete;

 private:
  TInterpreter& interpreter_;
  VynStringList words_;
};

}  // namespace

TInterpreter::TInterpreter() : Hardware(TReadWrite::GetInstance()) {}

/// Stores a value where the statement puts it, and as the result.
bool TInterpreter::Report(unsigned int value, unsigned int* result) {
  Locals[Target] = value;
  *result = value;
  return true;
}

bool TInterpreter::BreaksAt(unsigned int result) const {
  if (BreakIfZero) return result == 0 || BreakIfNonzero;
  return BreakIfNonzero && result != 0;
}

// Inline, this and Run, for the benchmark "script/wait round": 291 instructions instead of 340, of the 300 that it may
// take.
inline bool TInterpreter::RunWord(const script::Statement& statement, unsigned int* result) {
  const script::Command& command = *statement.command;
  for (size_t i = 0; i < statement.operandCount; ++i) {
    const script::Operand& operand = statement.operands[i];
    Operands[i] = operand.isLocal ? Locals[operand.number] : operand.number;
    if (Operands[i] > command.limits[i]) return false;
  }
  if (command.needsHardware && !Hardware) return false;
  const script::Outcome outcome = command.run(*this);
  if (outcome.kind == script::Outcome::kValue) return Report(outcome.value, result);
  return outcome.kind == script::Outcome::kDone;
}

bool TInterpreter::RunWords(const script::Statement& statement, unsigned int* result) {
  const ArgumentScope words(*this, statement.words);
  return RunWord(statement, result);
}

inline bool TInterpreter::Run(const script::Statement& statement, unsigned int* result) {
  using Kind = script::Statement::Kind;
  BreakIfZero = statement.breakIfZero;
  BreakIfNonzero = statement.breakIfNonzero;
  Target = statement.target;
  if (statement.kind == Kind::kCommand) return RunWord(statement, result);
  switch (statement.kind) {
    case Kind::kWords:
      return RunWords(statement, result);
    case Kind::kCopy:
      return Report(Value(statement.operands[0]), result);
    case Kind::kReport:
      return Report(Locals[Target], result);
    case Kind::kNothing:
      return true;
    case Kind::kCommand:  // above, before the switch: the usual kind
    case Kind::kFails:
      break;
  }
  return false;
}

bool TInterpreter::RunStatements(const script::Program& program, const script::Block& block, unsigned int* result) {
  const script::Statement* const end = program.statements.data() + block.end;
  for (const script::Statement* at = program.statements.data() + block.first; at != end; ++at) {
    if (!Run(*at, result)) return false;
    if (BreaksAt(*result)) return true;
  }
  return true;
}

bool TInterpreter::Interpret(VynString script, unsigned int* result) {
  return Interpret(script::ParseScript(View(AdjustCmdString(script))), result ? result : &Result);
}

bool TInterpreter::Interpret(VynString script) {
  Result = 0;
  return Interpret(script, &Result);
}

bool TInterpreter::Interpret(const script::Program& program, unsigned int* result) {
  if (!result) {
    Result = 0;
    result = &Result;
  }
  for (const script::Block& block : program.blocks)
    if (!Run(program, block, result)) return false;
  return true;
}

bool TInterpreter::ExecuteCmds(VynString statements, unsigned int* result) {
  return Interpret(script::ParseStatements(View(AdjustPrefixCmdString(statements))), result ? result : &Result);
}

bool TInterpreter::ExecuteCmd(VynString statement, unsigned int* result) {
  return Run(script::ParseStatement(View(statement)), result ? result : &Result);
}

// Contract: microseconds, whatever the name says.
void TInterpreter::Delayms(int microseconds) { platform::SleepMicroseconds(static_cast<uint32_t>(microseconds)); }

inline bool TInterpreter::Run(const script::Program& program, const script::Block& block, unsigned int* result) {
  using Kind = script::Block::Kind;
  if (block.kind == Kind::kMalformed) return false;
  if (block.kind == Kind::kOnce) return RunStatements(program, block, result);
  if (block.kind == Kind::kWait) WaitValue = Value(block.waitValue);
  LoopCount = Value(block.count);
  Endless = LoopCount == 0;
  return RunRounds(program, block, result);
}

bool TInterpreter::RunRounds(const script::Program& program, const script::Block& block, unsigned int* result) {
  const bool waits = block.kind == script::Block::Kind::kWait;
  for (; Endless || LoopCount != 0; --LoopCount) {
    if (!RunStatements(program, block, result)) return false;
    if (BreaksAt(*result) || (waits && *result == WaitValue)) return true;
    // Rounds of an empty body change nothing but the count: a counted block is over, an endless one would never be.
    if (block.first == block.end) {
      LoopCount = 0;
      return !Endless;
    }
  }
  return true;
}
