// SPDX-License-Identifier: MIT
// Every platform call of a scenario fails in turn, alone or with all that follow, and answers all ones or zeros. The
// library must leave a documented code, hold nothing open, and work again once the machine does.
#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <string>
#include <tuple>

#include "tests/faults/SmallBoard.h"
#include "vynlib/vynlib.h"

namespace {

using small_board::Machine;
using small_board::Start;

constexpr uint8_t kNothing = 0xFF;
constexpr uint8_t kStates[] = {1, 0};

/// The last error is one of the codes that the documents give for the call; 0 exactly when it succeeded.
void ExpectCode(int returned, std::initializer_list<uint64_t> failures) {
  const uint64_t code = VynLibDllGetLastError();
  EXPECT_EQ(returned, code == 0) << std::hex << code;
  EXPECT_TRUE(code == 0 || std::count(failures.begin(), failures.end(), code)) << std::hex << "code 0x" << code;
}

/// What was read is taken by reference, for it is there only after the call. A state, or all ones with a code that says
/// why not.
void ExpectState(int returned, const uint8_t& state, std::initializer_list<uint64_t> failures) {
  ExpectCode(returned, failures);
  EXPECT_TRUE(returned ? state <= 1 : state == kNothing) << unsigned{state};
}

template <typename T>
void ExpectReading(int returned, const T& value, std::initializer_list<uint64_t> failures) {
  ExpectCode(returned, failures);
  EXPECT_TRUE(returned || value == T{0}) << value;
}

// --- what happens while calls fail ---

void ReadStates() {
  uint8_t state = 0;
  ExpectState(VynLibGetLVDSState(&state, 2), state, {0x601});
  ExpectState(VynLibGetBTState(&state, 2), state, {0xD01});
  ExpectState(VynLibGetWifiState(&state, 2), state, {0xE01});
  EXPECT_EQ(VynLibGetOnboardTPMState(&state, 2), 0);
  EXPECT_TRUE(VynLibDllGetLastError() == 21 || VynLibDllGetLastError() == 0x901) << VynLibDllGetLastError();
}

/// Writing commands never fail: the hardware's answers are not looked at.
void SetStates() {
  for (const uint8_t state : kStates) {
    ExpectCode(VynLibSetLVDSState(state, 2), {});
    ExpectCode(VynLibSetBTState(state, 2), {});
    ExpectCode(VynLibSetWifiState(state, 2), {});
    ExpectCode(VynLibSetUsbPwrState(state, 2), {});
  }
}

void ReadSensors() {
  float value = 0;
  uint16_t rpm = 0;
  ExpectReading(VynLibGetVoltage("+5V", &value, 2), value, {0x302});
  ExpectReading(VynLibGetTemperature("CPU", &value, 2), value, {});
  ExpectReading(VynLibGetFanSpeed("CPU", &rpm, 2), rpm, {});
  ExpectReading(VynLibGetCurrent("12V", &value, 2), value, {0x1A04});
}

void TransferOnSmbus() {
  uint8_t state = 0;
  ExpectState(VynLibGetComType(1, &state, 2), state, {0x201});
  ExpectCode(VynLibSetComType(1, 1, 2), {});
}

// --- what must work afterwards ---

void ExpectStatesWork(Machine& machine) {
  for (const uint8_t state : kStates) {
    uint8_t read = kNothing;
    EXPECT_EQ(VynLibSetLVDSState(state, 2) + VynLibGetLVDSState(&read, 2), 2);
    EXPECT_EQ(read, state) << "LVDS";
    EXPECT_EQ(VynLibSetBTState(state, 2) + VynLibGetBTState(&read, 2), 2);
    EXPECT_EQ(read, state) << "Bluetooth";
    EXPECT_EQ(VynLibSetWifiState(state, 2) + VynLibGetWifiState(&read, 2), 2);
    EXPECT_EQ(read, state) << "Wi-Fi";
    EXPECT_EQ(VynLibSetUsbPwrState(state, 2), 1);
    EXPECT_EQ(machine.board.FindPci(0, 0x10, 0)->Get(0x40, 4), state) << "USB power";
  }
}

void ExpectSmbusWorks() {
  for (const uint8_t state : kStates) {
    uint8_t read = kNothing;
    EXPECT_EQ(VynLibSetComType(1, state, 2) + VynLibGetComType(1, &read, 2), 2);
    EXPECT_EQ(read, state) << "COM type";
  }
}

void ExpectSensorsWork() {
  float value = 0;
  uint16_t rpm = 0;
  EXPECT_EQ(VynLibGetVoltage("+5V", &value, 2), 1);
  EXPECT_FLOAT_EQ(value, small_board::kVolts);
  EXPECT_EQ(VynLibGetTemperature("CPU", &value, 2), 1);
  EXPECT_FLOAT_EQ(value, small_board::kCelsius);
  EXPECT_EQ(VynLibGetFanSpeed("CPU", &rpm, 2), 1);
  EXPECT_EQ(rpm, small_board::kRpm);
  EXPECT_EQ(VynLibGetTemperature("Board", &value, 2), 1);
  EXPECT_FLOAT_EQ(value, small_board::kBoardCelsius);
  EXPECT_EQ(VynLibGetCurrent("12V", &value, 2), 1);
  EXPECT_FLOAT_EQ(value, small_board::kAmperes);
}

// --- the faults ---

struct Faults {
  const char* name;
  uint32_t answer;  ///< of IN
  bool rest;        ///< all calls from the chosen one on, not that one alone
  uint64_t step;    ///< from one choice to the next
};

// Every call is chosen; instrumented builds, where waiting for a stuck controller takes seconds, leave some out.
constexpr uint64_t kStep = FAULT_TEST_STEP;
constexpr Faults kFaults[] = {{"OneAnswersOnes", 0xFFFFFFFF, false, kStep},
                              {"OneAnswersZeros", 0, false, kStep},
                              {"AllOnwardsAnswerOnes", 0xFFFFFFFF, true, 13 * kStep},
                              {"AllOnwardsAnswerZeros", 0, true, 13 * kStep}};

/// Counts platform calls and lets those that were chosen fail.
class Injector {
 public:
  Injector(Machine* machine, const Faults& faults, uint64_t first) : board_(machine->board) {
    board_.faultAnswer = faults.answer;
    board_.fault = [this, faults, first](sim::Access::Kind kind, uint64_t) {
      const uint64_t number = calls_++;
      const bool fails = faults.rest ? number >= first : number == first;
      if (fails && kind == sim::Access::kReadAt) ++failedReads_;
      return fails;
    };
  }
  ~Injector() { board_.fault = nullptr; }

  uint64_t Calls() const { return calls_; }
  /// MSR reads that failed; each leaves its descriptor open, which is the contract.
  int FailedReads() const { return failedReads_; }

 private:
  sim::Board& board_;
  uint64_t calls_ = 0;
  int failedReads_ = 0;
};

constexpr uint64_t kNever = ~uint64_t{0};

void PrintTo(const Faults& faults, std::ostream* stream) { *stream << faults.name; }

struct Scenario {
  const char* name;
  const char* controller;
  void (*run)();
  void (*works)(Machine&);
};

void PrintTo(const Scenario& scenario, std::ostream* stream) { *stream << scenario.name; }

void ExpectAllWorks(Machine& machine) {
  ExpectStatesWork(machine);
  ExpectSmbusWorks();
  ExpectSensorsWork();
}

const Scenario kRunning[] = {
    {"ReadStates", "sis964", ReadStates, ExpectStatesWork},
    {"SetStates", "sis964", SetStates, ExpectStatesWork},
    {"ReadSensors", "sis964", ReadSensors, [](Machine&) { ExpectSensorsWork(); }},
    {"SmbusIch5", "ich5", TransferOnSmbus, [](Machine&) { ExpectSmbusWorks(); }},
    {"SmbusIch9", "ich9", TransferOnSmbus, [](Machine&) { ExpectSmbusWorks(); }},
    {"SmbusSis", "sis964", TransferOnSmbus, [](Machine&) { ExpectSmbusWorks(); }},
};

void ExpectNothingHeld(const Machine& machine, int descriptors) {
  EXPECT_EQ(machine.board.OpenDescriptors(), descriptors);
  EXPECT_EQ(machine.board.LiveMappings(), 0);
}

/// One run on a fresh board with the calls from `first` on, or that one, failing. Returns how many calls it made.
uint64_t RunOnce(const Scenario& scenario, const Faults& faults, uint64_t first) {
  SCOPED_TRACE(std::string(scenario.name) + ", call " + std::to_string(first));
  Machine machine(scenario.controller);
  uint64_t calls = 0;
  int held = 0;
  {
    const Injector injector(&machine, faults, first);
    scenario.run();
    calls = injector.Calls();
    held = injector.FailedReads();
  }
  ExpectNothingHeld(machine, held);
  scenario.works(machine);
  ExpectNothingHeld(machine, held);
  return calls;
}

class RunningFault : public testing::TestWithParam<std::tuple<Scenario, Faults>> {};

TEST_P(RunningFault, LeavesADocumentedCodeAndNothingOpenAndEndsWithTheFault) {
  const auto& [scenario, faults] = GetParam();
  const Machine machine(scenario.controller);
  ASSERT_EQ(Start(), 1);
  const uint64_t calls = RunOnce(scenario, faults, kNever);
  EXPECT_GT(calls, 8u);
  for (uint64_t first = 0; first < calls && !HasFailure(); first += faults.step) RunOnce(scenario, faults, first);
  const Machine last(scenario.controller);
  EXPECT_EQ(VynLibDllUnInit(), 1);
  ExpectNothingHeld(last, 0);
}

INSTANTIATE_TEST_SUITE_P(EachCall, RunningFault,
                         testing::Combine(testing::ValuesIn(kRunning), testing::ValuesIn(kFaults)),
                         [](const auto& row) {
                           return std::string(std::get<0>(row.param).name) + "_" + std::get<1>(row.param).name;
                         });

class StartFault : public testing::TestWithParam<Faults> {};

/// Without tables, the functions say that the board does not offer them.
void ExpectOfferedOrAbsent() {
  uint8_t state = 0;
  float value = 0;
  ExpectCode(VynLibGetLVDSState(&state, 2), {0x600});
  ExpectCode(VynLibGetComType(1, &state, 2), {0x200, 0x201});
  ExpectCode(VynLibGetTemperature("CPU", &value, 2), {0x400});
}

/// Starts while calls fail. Only the privilege level, which the first call raises, can make that fail.
uint64_t StartOnce(const Faults& faults, uint64_t first) {
  SCOPED_TRACE("call " + std::to_string(first));
  Machine machine("sis964");
  uint64_t calls = 0;
  {
    const Injector injector(&machine, faults, first);
    const int started = Start();
    calls = injector.Calls();
    EXPECT_EQ(started, first == 0 ? 0 : 1);
    EXPECT_EQ(VynLibDllGetLastError(), first == 0 ? 1u : 0u);
  }
  ExpectNothingHeld(machine, 0);
  if (first != 0) ExpectOfferedOrAbsent();
  EXPECT_EQ(VynLibDllUnInit(), first == 0 ? 0 : 1);
  EXPECT_EQ(Start(), 1);
  ExpectAllWorks(machine);
  EXPECT_EQ(VynLibDllUnInit(), 1);
  ExpectNothingHeld(machine, 0);
  return calls;
}

TEST_P(StartFault, FailsForWantOfPrivilegeAloneAndTheNextStartIsComplete) {
  const uint64_t calls = StartOnce(GetParam(), kNever);
  ASSERT_GT(calls, 8u);
  for (uint64_t first = 0; first < calls && !HasFailure(); first += GetParam().step) StartOnce(GetParam(), first);
}

/// Stops while calls fail.
uint64_t StopOnce(const Faults& faults, uint64_t first) {
  Machine machine("sis964");
  EXPECT_EQ(Start(), 1);
  uint64_t calls = 0;
  {
    const Injector injector(&machine, faults, first);
    EXPECT_EQ(VynLibDllUnInit(), 1);
    EXPECT_EQ(VynLibDllGetLastError(), 0u);
    calls = injector.Calls();
  }
  ExpectNothingHeld(machine, 0);
  EXPECT_EQ(Start(), 1);
  ExpectAllWorks(machine);
  EXPECT_EQ(VynLibDllUnInit(), 1);
  return calls;
}

TEST_P(StartFault, DoesNotKeepAStopFromFreeingEverything) {
  const uint64_t calls = StopOnce(GetParam(), kNever);
  ASSERT_GT(calls, 0u);
  for (uint64_t first = 0; first < calls; ++first) StopOnce(GetParam(), first);
}

INSTANTIATE_TEST_SUITE_P(EachCall, StartFault, testing::ValuesIn(kFaults),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
