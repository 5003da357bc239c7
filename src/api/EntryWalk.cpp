#include "api/EntryWalk.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstring>
#include <limits>

#include "api/Library.h"
#include "tables/TIAxTCommon.h"

namespace api {

using namespace layout;

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

/// A command whose form does not fit its kind needs the bytes of the shortest of the kind, so that padding behind a
/// block (zeros are such a command) ends the call and is not repeated for ever. One that cannot be stepped over for its
/// kind needs only its opcode and control word.
int64_t CommandCursor::ReachWithoutLayout(uint8_t opcode) {
  return StepsByKind(opcode) ? int64_t{FindKind(opcode)->length} : int64_t{kCommandPrefixBytes};
}

Ran RunEntry(IadtEntry entry, Direction direction, Slots slots) {
  assert(slots.size() <= std::numeric_limits<uint8_t>::max());
  CommandCursor cursor(entry);
  while (!cursor.AtEnd()) {
    if (!cursor.Fits()) return Ran::kUnknownKind;
    if (RunCommand(*IAxTCommon, cursor.Command(), direction, slots.data(), static_cast<uint8_t>(slots.size())) == 0)
      return Ran::kFailed;
    if (cursor.Advance() == CommandCursor::Step::kImpossible) return Ran::kUnknownKind;
  }
  return Ran::kDone;
}

void RunSensorCommand(IadtEntry entry, uint8_t offset, unsigned long long* value) {
  unsigned char* const command = entry.Record() + offset;
  const size_t kept = entry.KeptBytes() - offset;
  if (kept >= kLongestCommand) {
    RunCommand(*IAxTCommon, command, kGet, value, 1);
    return;
  }
  unsigned char copy[kLongestCommand] = {};
  std::memcpy(copy, command, kept);
  RunCommand(*IAxTCommon, copy, kGet, value, 1);
  std::memcpy(command, copy, kept);  // a command may keep a value in its own masks
}

}  // namespace api
