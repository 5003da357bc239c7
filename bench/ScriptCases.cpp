// SPDX-License-Identifier: MIT
// One statement, and one round of a loop that waits for a status bit.
#include "bench/Case.h"
#include "bench/Fixture.h"
#include "hw/Platform.h"
#include "script/TInterpreter.h"

namespace bench {

namespace {

volatile uint32_t sink;
constexpr unsigned kRounds = 1000;
constexpr uint16_t kStatusPort = 0x80;

TInterpreter& Interpreter() {
  static TInterpreter interpreter;
  interpreter.Hardware = TReadWrite::GetInstance();
  return interpreter;
}

void Statement() {
  unsigned result = 0;
  Interpreter().Interpret("Local1=Add(Local0,5)", &result);
  sink = result;
}

void WaitRounds() {
  unsigned result = 0;
  Interpreter().Interpret("Local0=0x80; Wait{2,1000,Local1=i(Local0); BkIf1(And(Local1,4)); And(Local1,2)}", &result);
  sink = result;
}

void WaitByHand() {
  for (unsigned i = 0; i < kRounds; ++i) {
    const uint8_t status = platform::In8(kStatusPort);
    if ((status & 4) != 0 || (status & 2) == 2) return;
  }
}

}  // namespace

std::vector<Case> ScriptCases() {
  const auto setUp = [] {
    StartLibrary();
    NullMachine::Get().ports[kStatusPort] = 1;
  };
  return {{.name = "script/statement", .setUp = setUp, .library = Statement, .baseline = [] { sink = sink + 5; }},
          {.name = "script/wait round",
           .setUp = setUp,
           .library = WaitRounds,
           .baseline = WaitByHand,
           .perCall = kRounds,
           .targetInstructions = 300}};
}

}  // namespace bench
