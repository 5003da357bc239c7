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

/// Bytes that the command touches: its whole record, or the opcode and control word alone when its form is not one of
/// its kind's or its kind is unknown.
size_t Reach(uint8_t opcode) {
  const CommandLayout* layout = FindLayout(opcode);
  return layout != nullptr ? layout->length : kCommandPrefixBytes;
}

}  // namespace

CommandCursor::CommandCursor(const IadtEntry& entry)
    : command_(entry.Body()), end_(command_), whole_(entry.Length() >= iadt::kBody) {
  if (whole_) end_ += entry.Length() - iadt::kBody;
}

bool CommandCursor::Fits() const {
  return command_ != end_ && Reach(*command_) <= static_cast<size_t>(end_ - command_);
}

CommandCursor::Step CommandCursor::Advance() {
  const CommandLayout* layout = Layout();
  if (layout == nullptr) {
    const CommandLayout* kind = FindKind(*command_);
    return kind != nullptr && kind->steps ? Step::kStays : Step::kImpossible;
  }
  if (!layout->steps) return Step::kImpossible;
  command_ += layout->length;
  return Step::kMoved;
}

Ran RunEntry(const IadtEntry& entry, Direction direction, Slots slots) {
  for (CommandCursor cursor(entry); !cursor.AtEnd();) {
    if (!cursor.Fits()) return Ran::kUnknownKind;
    if (IAxTCommon->IAxTRW(cursor.Command(), direction, slots.values, slots.count) == 0) return Ran::kFailed;
    if (cursor.Advance() == CommandCursor::Step::kImpossible) return Ran::kUnknownKind;
  }
  return Ran::kDone;
}

void RunSensorCommand(const IadtEntry& entry, uint8_t offset, unsigned long long* value) {
  unsigned char* command = entry.Record() + offset;
  const size_t kept = entry.KeptBytes() - offset;
  if (kept >= Reach(*command)) {
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
