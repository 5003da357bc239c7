// SPDX-License-Identifier: MIT
/// What the script texts of several records are made of.
///
/// The rules that all records but "Intel ICHx" keep: nothing is written to a host before it is known to be free and,
/// where it has a semaphore, ours; its status is cleared only while it is idle; a transfer that does not end is
/// stopped; waits are times, because between two looks at the status the processor is given away.
///
/// Variables, beyond what TSMBusCfg.h says: Local6 is the status as last read, Local8 what is ours: 0x40 the host, 0x41
/// with its settings made as well (SCH, SiS and nVidia, which have no semaphore: 1). Local7 and Local9 count looks in
/// the idle wait; AMD's texts keep what they need of Local3 to Local7 for themselves. A saved register has the bit
/// above its own set once it was changed and must be put back.
///
/// A text with blocks begins with one and has plain statements at its end only: the interpreter looks for the next
/// CMDS block before it looks for a loop.
#pragma once

#include "smbus/SMBusRows.h"

namespace smbus_rows {

using Cfg = TSMBusCfg;

/// The lists one after another.
template <size_t... sizes>
constexpr auto Joined(const SMBusText (&... lists)[sizes]) {
  std::array<SMBusText, (sizes + ...)> joined{};
  size_t count = 0;
  const auto append = [&](const auto& list) {
    for (const SMBusText& text : list) joined[count++] = text;
  };
  (append(lists), ...);
  return joined;
}

inline constexpr char kNoBase[] = "Local0=0x10000; ";
// Local0 becomes the base in Local1, unless that reads all ones (no such function) or holds no address.
inline constexpr char kTakeBaseFffc[] =
    "BkIf0(Xor(Local1,0xffff)); BkIf0(And(Local1,0xfffc)); Local0=And(Local1,0xfffc)";
inline constexpr char kTakeBaseFff0[] =
    "BkIf0(Xor(Local1,0xffff)); BkIf0(And(Local1,0xfff0)); Local0=And(Local1,0xfff0)";
inline constexpr char kTakeBaseFfe0[] =
    "BkIf0(Xor(Local1,0xffff)); BkIf0(And(Local1,0xffe0)); Local0=And(Local1,0xffe0)";
inline constexpr char kZeroDetects[] = "Local1=Cmz(Local1); Not(Local1,0)";

// Most of what a transfer of one byte or word takes at 100 kHz; what is left is polled for. A read of a byte has 39
// bits, of a word 48, a block of one byte 48.
inline constexpr char kByteTakes[] = "Delay 250; ";
inline constexpr char kWordTakes[] = "Delay 330; ";
inline constexpr char kBlockTakes[] = "Delay 400; ";

}  // namespace smbus_rows
