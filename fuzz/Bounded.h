// SPDX-License-Identifier: MIT
/// Keeps the one loop over a command list that is unbounded by contract out of the fuzzers' way.
#pragma once

#include "layout/AccessCommand.h"
#include "tables/TIADTable.h"

namespace fuzz {

/// Gives commands whose form does not fit their kind the direct form: without a step they could be repeated forever.
inline void FitForms(const TIADTable& table) {
  for (unsigned list = 1; list < TIADTable::kSlots; ++list) {
    if (IadtEntry::kKeptBytes[list] != 0) continue;
    for (const IadtEntry entry : table.List(list)) {
      for (IadtCommands cursor = entry.Commands(); !cursor.AtEnd() && cursor.Fits();) {
        unsigned char* opcode = cursor.Command();
        const auto step = cursor.Advance();
        if (step == IadtCommands::Step::kImpossible) break;
        if (step == IadtCommands::Step::kStays)
          *opcode = static_cast<unsigned char>((*opcode & ~unsigned{layout::kFormMask}) | layout::kFormDirect);
      }
    }
  }
}

}  // namespace fuzz
