// SPDX-License-Identifier: MIT
// Places of the machine that belong to somebody else, and calls that take long.
#include <algorithm>
#include <iterator>
#include <map>
#include <tuple>

#include <fmt/core.h>

#include "diagnosis/CommandFacts.h"
#include "diagnosis/FeatureShapes.h"
#include "diagnosis/RecordChecks.h"
#include "diagnosis/Words.h"

namespace diagnosis {

using namespace layout;
namespace {

/// Places from `first` to `last`.
struct Area {
  uint64_t first, last;
  constexpr bool Meets(const Area& other) const { return first <= other.last && other.first <= last; }
};

struct HarmRow {
  Rule rule;
  const char* text;
  Area area;
  bool writesOnly;
};
constexpr HarmRow kPortHarms[] = {
    {"harm-interrupts", "the port belongs to an interrupt controller", {0x20, 0x21}, true},
    {"harm-interrupts", "the port belongs to an interrupt controller", {0xA0, 0xA1}, true},
    {"harm-timer", "the port belongs to the interval timer", {0x40, 0x43}, true},
    {"harm-reset", "a write to port 0xcf9 resets the machine", {0xCF9, 0xCF9}, true},
    {"harm-reset", "a write to port 0x92 can reset the machine", {0x92, 0x92}, true},
    {"harm-pci-ports", "the port belongs to PCI configuration", {0xCF8, 0xCF8}, false},
    {"harm-pci-ports", "the port belongs to PCI configuration", {0xCFC, 0xCFF}, false},
};
constexpr HarmRow kMemoryHarms[] = {
    {"harm-interrupts", "the memory belongs to an interrupt controller", {0xFEC00000, 0xFEC00FFF}, true},
    {"harm-interrupts", "the memory belongs to an interrupt controller", {0xFEE00000, 0xFEE00FFF}, true},
};

/// Pairs of which the index port is known to be one.
struct PairRow {
  uint64_t index, data;
};
constexpr PairRow kPairs[] = {{0x2E, 0x2F}, {0x4E, 0x4F}, {0x70, 0x71}, {0x72, 0x73}, {0x295, 0x296}};
constexpr PairRow kClockPair = {0x70, 0x71};
constexpr uint64_t kClockRegisters = 0x0E;

constexpr uint64_t kLongMicroseconds = 1000000;

/// What a command touches at ports: by a write, or by any access. The index port of a pair is always written.
void CheckPorts(const RecordView& record, const CommandFacts& c, Findings* findings) {
  const size_t place = c.command.offset - record.offset;
  const auto check = [&](const Area& area, bool writes) {
    for (const HarmRow& row : kPortHarms)
      if (row.area.Meets(area) && (writes || !row.writesOnly)) findings->Add(record, place, row.rule, row.text);
  };
  const uint64_t port = c.Field(c.layout.address) & 0xFFFF, data = c.Field(c.layout.second) & 0xFFFF;
  if (!c.IsPair()) return check({port, port + c.Width() - 1}, c.Writes());
  check({port, port}, true);
  check({data, data}, c.Writes());
  if (port == kClockPair.index && data == kClockPair.data && c.Writes() &&
      (c.Field(c.layout.third) & 0x7F) < kClockRegisters)
    findings->Add(record, place, "harm-clock", "the register belongs to the clock");
}

void CheckMemory(const RecordView& record, const CommandFacts& c, Findings* findings) {
  const uint64_t address = c.Field(c.layout.address);
  for (const HarmRow& row : kMemoryHarms)
    if (row.area.Meets({address, address + c.Width() - 1}) && (c.Writes() || !row.writesOnly))
      findings->Add(record, c.command.offset - record.offset, row.rule, row.text);
}

/// The commands of a record that have a layout, one after the other.
class RunCommands {
 public:
  explicit RunCommands(const RecordView& record)
      : context_(ContextOf(record)), commands_(context_.sensor ? SensorCommands(record) : Commands(record)) {}
  template <typename Action>
  void Each(Action action) const {
    for (const CommandView& command : commands_)
      if (command.layout) action(CommandFacts{command, *command.layout, context_});
  }
  bool Any(auto holds) const {
    bool any = false;
    Each([&](const CommandFacts& c) { any = any || holds(c); });
    return any;
  }

 private:
  const CommandContext context_;
  const std::vector<CommandView> commands_;
};

bool Touches(const CommandFacts& c, uint64_t port) {
  if (!c.Is(kCommandPort) || !(c.Reads() || c.Writes())) return false;
  const uint64_t first = c.Field(c.layout.address) & 0xFFFF;
  if (c.IsPair()) return first == port || (c.Field(c.layout.second) & 0xFFFF) == port;
  return Area{first, first + c.Width() - 1}.Meets({port, port});
}

/// An index port that is written without anything done at its data port.
void CheckIndexPorts(const RecordView& record, const RunCommands& run, Findings* findings) {
  for (const PairRow& pair : kPairs) {
    if (run.Any([&](const CommandFacts& c) { return Touches(c, pair.data); })) continue;
    bool told = false;
    run.Each([&](const CommandFacts& c) {
      if (told || c.IsPair() || !c.Writes() || !Touches(c, pair.index)) return;
      told = true;
      findings->Add(record, c.command.offset - record.offset, "harm-index",
                    fmt::format("index port {:#x} is written, and nothing is done at its data port {:#x}", pair.index,
                                pair.data));
    });
  }
}

std::string Seconds(uint64_t microseconds) { return fmt::format("{:.3g} s", static_cast<double>(microseconds) / 1e6); }

uint64_t WaitIn(const RunCommands& run, const DirectionBits& direction) {
  uint64_t total = 0;
  run.Each([&](const CommandFacts& c) {
    if (c.Reads(direction) || c.Writes(direction)) total += WaitOf(c);
  });
  return total;
}

/// The entries of features that one call may run one after the other: all of an instance when reading, all of a state
/// when setting. A sensor, an operation of the watchdog and a fan's mode count by themselves.
using Calls = std::map<std::tuple<uint8_t, int, int>, std::pair<const RecordView*, uint64_t>>;

void AddWaits(const RecordView& record, const RunCommands& run, Calls* calls) {
  const FeatureShape* shape = FindShape(record.Type());
  const auto add = [&](int value, const DirectionBits& direction) {
    const int own = static_cast<int>(record.offset);
    auto& [first, total] = (*calls)[{record.Type(), !shape ? own : shape->indexed ? record.Index() : -1, value}];
    if (first == nullptr) first = &record;
    total += WaitIn(run, direction);
  };
  if (!shape || shape->gets) add(-1, kGetting);
  if (!shape || shape->sets) add(record.Value(), kSetting);
}

void CheckWaits(const RecordView& record, const RunCommands& run, Findings* findings) {
  run.Each([&](const CommandFacts& c) {
    if ((c.Reads() || c.Writes()) && WaitOf(c) > kLongMicroseconds)
      findings->Add(record, c.command.offset - record.offset, "delay-long", "it waits " + Seconds(WaitOf(c)));
  });
}

bool LongWaitAlone(const RunCommands& run) {
  return run.Any([](const CommandFacts& c) { return WaitOf(c) > kLongMicroseconds; });
}

}  // namespace

void CheckHarm(const Records& records, Findings* findings) {
  Calls calls;
  for (const RecordView& record : records) {
    if (!record.Row()) continue;
    const RunCommands run(record);
    run.Each([&](const CommandFacts& c) {
      if (!c.Reads() && !c.Writes()) return;
      if (c.Is(kCommandPort)) CheckPorts(record, c, findings);
      if (c.Is(kCommandMemory)) CheckMemory(record, c, findings);
    });
    CheckIndexPorts(record, run, findings);
    CheckWaits(record, run, findings);
    if (!LongWaitAlone(run)) AddWaits(record, run, &calls);
  }
  for (const auto& [key, call] : calls)
    if (call.second > kLongMicroseconds)
      findings->Add(*call.first, 0, "delay-long",
                    fmt::format("a call that {} may wait {} in all", std::get<2>(key) < 0 ? "reads" : "sets it",
                                Seconds(call.second)));
}

}  // namespace diagnosis
