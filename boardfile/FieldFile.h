// SPDX-License-Identifier: MIT
/// Fields of registers: one section for all states of all instances that bits of a register stand for.
#pragma once

#include <string>
#include <vector>

#include "boardfile/CommandFile.h"
#include "layout/RecordLayout.h"

namespace boardfile {

/// One state of one instance.
struct FieldEntry {
  const layout::RecordType* type;
  uint8_t index, value;
  std::string name;
  std::vector<firmware::Command> commands;
};

/// The entries of a [[field]], instance by instance, each state with its setting and its reading.
std::vector<FieldEntry> ReadField(TomlSection* section, const Sequences& sequences);

}  // namespace boardfile
