// SPDX-License-Identifier: MIT
// The walk over the commands of an entry, and the single commands of a sensor.
#include "tables/EntryRun.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstring>
#include <limits>

#include "tables/TIAxTCommon.h"

namespace tables {

using namespace layout;

namespace {

constexpr size_t kLongestCommand = [] {
  size_t longest = 0;
  for (const CommandLayout& row : kCommandLayouts) longest = std::max<size_t>(longest, row.length);
  return longest;
}();

}  // namespace

Ran RunEntry(const TIAxTCommon& executor, IadtEntry entry, Direction direction, Slots slots) {
  assert(slots.size() <= std::numeric_limits<uint8_t>::max());
  IadtCommands cursor = entry.Commands();
  while (!cursor.AtEnd()) {
    if (!cursor.Fits()) return Ran::kUnknownKind;
    if (RunAccess(executor, cursor.Command(), direction, slots.data(), static_cast<uint8_t>(slots.size())) == 0)
      return Ran::kFailed;
    if (cursor.Advance() == IadtCommands::Step::kImpossible) return Ran::kUnknownKind;
  }
  return Ran::kDone;
}

void RunSensorCommand(const TIAxTCommon& executor, IadtEntry entry, uint8_t offset, unsigned long long* value) {
  unsigned char* const command = entry.Record() + offset;
  const size_t kept = entry.KeptBytes() - offset;
  if (kept >= kLongestCommand) {
    RunAccess(executor, command, kGet, value, 1);
    return;
  }
  unsigned char copy[kLongestCommand] = {};
  std::memcpy(copy, command, kept);
  RunAccess(executor, copy, kGet, value, 1);
  std::memcpy(command, copy, kept);  // a command may keep a value in its own masks
}

}  // namespace tables
