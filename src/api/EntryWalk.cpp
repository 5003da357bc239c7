#include "api/EntryWalk.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "api/Library.h"
#include "tables/TIAxTCommon.h"

namespace api {

namespace {

constexpr size_t kLongestCommand = [] {
  size_t longest = 0;
  for (const CommandLayout& row : kCommandLayouts) longest = std::max<size_t>(longest, row.length);
  return longest;
}();

}  // namespace

bool CommandCursor::StepsByKind(uint8_t opcode) {
  const CommandLayout* kind = FindKind(opcode);
  return kind != nullptr && kind->steps;
}

Ran RunEntry(IadtEntry entry, Direction direction, Slots slots) {
  for (CommandCursor cursor(entry); !cursor.AtEnd();) {
    if (!cursor.Fits()) return Ran::kUnknownKind;
    if (IAxTCommon->IAxTRW(cursor.Command(), direction, slots.values, slots.count) == 0) return Ran::kFailed;
    if (cursor.Advance() == CommandCursor::Step::kImpossible) return Ran::kUnknownKind;
  }
  return Ran::kDone;
}

void RunSensorCommand(IadtEntry entry, uint8_t offset, unsigned long long* value) {
  unsigned char* command = entry.Record() + offset;
  const size_t kept = entry.KeptBytes() - offset;
  const CommandLayout* layout = FindLayout(*command);
  if (kept >= (layout != nullptr ? layout->length : kCommandPrefixBytes)) {
    IAxTCommon->IAxTRW(&command, kGet, value, 1);
    return;
  }
  unsigned char copy[kLongestCommand] = {};
  std::memcpy(copy, command, kept);
  unsigned char* copied = copy;
  IAxTCommon->IAxTRW(&copied, kGet, value, 1);
  std::memcpy(command, copy, kept);  // a command may keep a value in its own masks
}

}  // namespace api
