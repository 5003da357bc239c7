// SPDX-License-Identifier: MIT
// What one byte read of every record costs: accesses, time of the processor, time beyond the wires. A table of it is
// printed at the end.
#include <cstdio>
#include <map>

#include "SharedBoard.h"

namespace {

/// Of one byte read.
struct Effort {
  uint64_t search = 0;    ///< accesses of a detection that searches
  uint64_t accesses = 0;  ///< all others
  uint64_t wire = 0;      ///< microseconds on the wires
  uint64_t spun = 0;      ///< microseconds of the processor while it was there
  uint64_t late = 0;      ///< microseconds from when the end could be seen until it was
  uint64_t beyond = 0;    ///< microseconds of the whole call, without wires and search
};

class SMBusEffort : public SharedBoard, public testing::WithParamInterface<SharedRow> {
 protected:
  void SetUp() override {
    Build(GetParam());
    measured = worst = Measure();
    for (uint64_t slower = 1; slower <= 8; ++slower) {
      host->microsecondsPerByte = 90 + slower;
      Worsen(Measure());
    }
    table[GetParam().name] = {measured, worst};
  }
  static void TearDownTestSuite() {
    std::printf("%-14s %9s %8s %6s %6s %6s %7s\n", "byte read", "accesses", "search", "wire", "spun", "late", "beyond");
    for (const auto& [name, efforts] : table) {
      const auto& [effort, most] = efforts;
      std::printf("%-14s %9llu %8llu %6llu %6llu %6llu %7llu\n", name.c_str(), Long(effort.accesses),
                  Long(effort.search), Long(effort.wire), Long(effort.spun), Long(most.late), Long(most.beyond));
    }
  }
  static unsigned long long Long(uint64_t value) { return value; }

  uint64_t DetectionAccesses() {
    const uint64_t before = board.PortAccesses();
    unsigned int result = 1;
    TInterpreter().Interpret(TSMBus::GetInstance()->DetectScript, &result);
    EXPECT_EQ(result, 0u);
    return board.PortAccesses() - before;
  }

  Effort Measure() {
    Effort effort;
    effort.search = GetParam().searches ? DetectionAccesses() : 0;
    host->timing = {};
    const uint64_t accesses = board.PortAccesses();
    const Outcome outcome = Read(kSlave);
    EXPECT_EQ(outcome.done, 1);
    EXPECT_EQ(outcome.value, kValue);
    effort.accesses = board.PortAccesses() - accesses - effort.search;
    effort.wire = host->timing.wire;
    effort.spun = host->timing.accesses * board.pace.portAccess;
    const uint64_t settling = host->Layout().settling;
    const uint64_t unseen = settling > effort.wire ? settling - effort.wire : 0;
    effort.late = host->timing.late > unseen ? host->timing.late - unseen : 0;
    effort.beyond = outcome.took - effort.wire - unseen - effort.search * board.pace.portAccess;
    return effort;
  }

  /// Polls meet the end of a transfer in any phase.
  void Worsen(const Effort& effort) {
    worst.late = std::max(worst.late, effort.late);
    worst.beyond = std::max(worst.beyond, effort.beyond);
  }

  Effort measured, worst;
  static inline std::map<std::string, std::pair<Effort, Effort>> table;
};

// Two reads for each of the functions of one bus, looked for twice.
TEST_P(SMBusEffort, SearchesNoMoreThanOneBus) { EXPECT_LE(measured.search, 2u * 2 * 32 * 8); }

TEST_P(SMBusEffort, TakesAtMost60Accesses) { EXPECT_LE(measured.accesses, 60u); }

// Start, four bytes with their acknowledge bits, a second start, stop.
TEST_P(SMBusEffort, LeavesNineTenthsOfTheWiresTimeToOthers) {
  EXPECT_EQ(measured.wire, 4u * 90 + 3 * 10);
  EXPECT_LE(measured.spun * 10, std::max(measured.wire, host->Layout().settling));
}

TEST_P(SMBusEffort, SeesTheEndWithin60Microseconds) { EXPECT_LE(worst.late, 60u); }

TEST_P(SMBusEffort, TakesAtMost60MicrosecondsBeyondTheWires) { EXPECT_LE(worst.beyond, 60u); }

INSTANTIATE_TEST_SUITE_P(Rows, SMBusEffort, testing::ValuesIn(kSharedRows), SharedRowName);

}  // namespace
