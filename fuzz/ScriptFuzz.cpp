// SPDX-License-Identifier: MIT
// Running an arbitrary script, as a whole, as statements and as one statement.
#include <algorithm>
#include <string>

#include "fuzz/FuzzMachine.h"
#include "script/Program.h"
#include "script/TInterpreter.h"

namespace {

constexpr unsigned kMostRounds = 1000;

/// Endless blocks are unbounded by contract, long ones and searches of whole memories only slow.
bool IsQuick(const std::string& normalised) {
  if (normalised.find("FMEM") != std::string::npos) return false;
  const script::Program program = script::ParseScript(normalised);
  return std::all_of(program.blocks.begin(), program.blocks.end(), [](const script::Block& block) {
    const bool rounds = block.kind == script::Block::Kind::kWait || block.kind == script::Block::Kind::kLoop;
    return !rounds || (!block.count.isLocal && block.count.number > 0 && block.count.number < kMostRounds);
  });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input input({data, size});
  const auto answers = input.Bytes(input.Byte());
  const auto rest = input.Rest();
  const std::string text(rest.begin(), rest.end());

  fuzz::Start({.answers = answers, .memory = answers, .callsLeft = 20000});
  {
    TInterpreter interpreter;
    const VynString normalised = interpreter.AdjustCmdString(text.c_str());
    unsigned result = 0xFFFFFFFF;
    try {
      interpreter.ExecuteCmd(normalised, &result);
      interpreter.ExecuteCmds(normalised, &result);
      if (IsQuick(normalised.c_str())) interpreter.Interpret(text.c_str(), &result);
    } catch (const fuzz::Exhausted&) {
    }
  }
  fuzz::Finish();
  return 0;
}
