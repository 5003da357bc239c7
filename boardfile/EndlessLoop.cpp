// SPDX-License-Identifier: MIT
// A command whose form does not fit its kind is run until it fails, and only one that reads does.
#include "boardfile/EndlessLoop.h"

#include <algorithm>

#include "layout/Ending.h"

namespace boardfile {

using namespace layout;
namespace {

/// What is left of an entry where the walk over its commands cannot go on; nothing when it comes to the end.
std::optional<CommandView> Rest(const RecordView& record) {
  const std::vector<CommandView> commands = Commands(record);
  if (commands.empty() || commands.back().layout != nullptr) return {};
  // Behind a command that cannot be stepped over nothing is run.
  if (commands.size() > 1 && !commands[commands.size() - 2].layout->steps) return {};
  return commands.back();
}

bool IsRun(const RecordView& record) {
  const RecordType* type = record.Row();
  if (type == nullptr || type->IsSensor() || !type->used) return false;
  // The commands of a fan's modes are counted before any is run, which ends at the same place.
  return type->type != Feature("FanConfig").type || record.Value() == iadt::kIdValue;
}

Spot SpotOf(const std::vector<Origin>& origins, size_t offset) {
  const auto next = std::ranges::upper_bound(origins, offset, {}, &Origin::offset);
  return next == origins.begin() ? Spot{} : std::prev(next)->spot;
}

}  // namespace

std::optional<Complaint> FindEndlessLoop(const Firmware& firmware) {
  for (RecordCursor cursor(Covered(firmware.iadt)); cursor.Valid(); cursor.Next()) {
    if (!IsRun(cursor.Current())) continue;
    const auto rest = Rest(cursor.Current());
    if (!rest) continue;
    for (const DirectionBits* direction : {&kGetting, &kSetting})
      if (EndingOf(*rest, *direction) == Ending::kForEver)
        return Complaint{.spot = SpotOf(firmware.iadtOrigins, rest->offset),
                         .text =
                             "expected a command that ends: this one is run for ever, for its addressing form does "
                             "not fit its kind"};
  }
  return {};
}

}  // namespace boardfile
