// SPDX-License-Identifier: MIT
// The operations of the watchdog: which are there, and whether the interval reaches the hardware.
#include <algorithm>
#include <set>

#include <fmt/core.h>

#include "diagnosis/RecordChecks.h"

namespace diagnosis {

using namespace layout;
namespace {

constexpr uint8_t kWatchdogType = Feature("Watchdog").type;

struct OperationRow {
  uint8_t value;
  const char* without;  ///< what becomes of the watchdog without it
};
constexpr OperationRow kNeeded[] = {
    {kWatchdogActivate, "it cannot be enabled"},
    {kWatchdogDeactivate, "it cannot be disabled"},
    {kWatchdogInterval, "it can be neither enabled nor disabled"},
    {kWatchdogStart, "enabling it ends with code 0x1709"},
    {kWatchdogStop, "it counts on while it is disabled"},
};

bool UsesArgument(const CommandView& command, const DirectionBits& direction, bool writes) {
  if (!command.layout || command.layout->kind == kCommandDelay) return false;
  const uint16_t control = command.Control();
  if (!(control & kArgumentMode) || ((control & direction.writes) != 0) != writes) return false;
  return (control & (direction.reads | direction.writes)) && command.Field(command.layout->argument) == 0;
}

void CheckInterval(const RecordView& record, Findings* findings) {
  const std::vector<CommandView> commands = Commands(record);
  if (commands.empty()) return;  // found as such
  const auto any = [&](const DirectionBits& direction, bool writes) {
    return std::ranges::any_of(commands, [&](const CommandView& c) { return UsesArgument(c, direction, writes); });
  };
  if (!any(kSetting, true))
    findings->Add(record, iadt::kBody, "watchdog-interval", "no command writes argument 0, the interval");
  if (!any(kGetting, false))
    findings->Add(record, iadt::kBody, "watchdog-unread", "no command reads the interval into argument 0");
  for (const CommandView& command : commands)
    if (UsesArgument(command, kSetting, true) && WidthOf(command.Opcode()) > 1)
      findings->Add(record, command.offset - record.offset, "watchdog-wide",
                    fmt::format("{} bytes take the interval, of which a caller gives one: more than 255 units can be "
                                "read but not set",
                                WidthOf(command.Opcode())));
}

}  // namespace

void CheckWatchdog(const Records& records, Findings* findings) {
  std::set<uint8_t> values;
  const RecordView* first = nullptr;
  for (const RecordView& record : records) {
    if (record.Type() != kWatchdogType) continue;
    if (first == nullptr) first = &record;
    values.insert(record.Value());
    if (record.Value() == 0 || (record.Value() > kWatchdogCountMode1 && record.Value() != iadt::kIdValue))
      findings->Add(record, iadt::kValue, "watchdog-operation", "watchdog operations are 1 to 7, and 240");
    if (record.Value() == kWatchdogInterval) CheckInterval(record, findings);
  }
  if (first == nullptr) return;
  for (const OperationRow& row : kNeeded)
    if (!values.contains(row.value))
      findings->Add(first->offset, "watchdog-missing",
                    fmt::format("the watchdog has no entry for operation {}: {}", row.value, row.without));
  if (values.contains(kWatchdogCountMode0) != values.contains(kWatchdogCountMode1))
    findings->Add(first->offset, "watchdog-mode", "the watchdog has one count mode of two: it cannot be changed back");
}

}  // namespace diagnosis
