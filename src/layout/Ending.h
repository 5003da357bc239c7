// SPDX-License-Identifier: MIT
/// Where the walk over an entry's commands cannot go on, and what becomes of the call there.
#pragma once

#include "layout/Walk.h"

namespace layout {

/// Which bits of a control word govern one direction.
struct DirectionBits {
  const char* name;
  uint16_t reads, writes, ands, ors;
};
inline constexpr DirectionBits kGetting = {"Get", kGetReads, kGetWrites, kGetAnd, kGetOr};
inline constexpr DirectionBits kSetting = {"Set", kSetReads, kSetWrites, kSetAnd, kSetOr};

enum class Ending {
  kCode21,   ///< the whole call ends
  kFails,    ///< the entry fails, as where the board is in another state
  kForEver,  ///< the command is run again and again
};

/// The bytes that an entry must have left for a command with this opcode to be run at all.
constexpr size_t BytesToRun(uint8_t opcode) {
  if (const CommandLayout* layout = FindLayout(opcode)) return layout->length;
  const CommandLayout* kind = FindKind(opcode);
  return kind != nullptr && kind->steps ? kind->length : kCommandPrefixBytes;
}

/// Of bytes without a layout.
inline Ending EndingOf(const CommandView& command, const DirectionBits& direction) {
  const uint8_t opcode = command.Opcode();
  if (command.bytes.size() < BytesToRun(opcode)) return Ending::kCode21;
  if ((command.Control() & (direction.reads | direction.writes)) == direction.reads) return Ending::kFails;
  const CommandLayout* kind = FindKind(opcode);
  return kind != nullptr && kind->steps ? Ending::kForEver : Ending::kCode21;
}

}  // namespace layout
