// SPDX-License-Identifier: MIT
/// Access commands of a board file.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "boardfile/TomlSection.h"
#include "firmware/Command.h"

namespace boardfile {

/// Named runs of commands that `{ use = "name" }` inserts.
using Sequences = std::map<std::string, std::vector<firmware::Command>>;

/// Sequences may use others, in any order of the file, but not themselves.
/// `known`: those of other files, which they may use and whose names they do not take.
Sequences ReadSequences(TomlSection* root, const Sequences& known);
/// The commands of the sequence that the value of `key` names; throws BoardFileError when there is none.
const std::vector<firmware::Command>& FindSequence(const TomlSection& section, std::string_view key,
                                                   const std::string& name, const Sequences& sequences);
/// What the keys of a command's kind say, and its width: no direction, no masks.
firmware::Command ReadPlace(TomlSection* section);

struct CommandList {
  std::vector<firmware::Command> commands;
  std::vector<Spot> spots;  ///< of each command: the element that it comes from
};
/// The commands listed under `key`, in order.
CommandList ReadCommands(TomlSection* section, std::string_view key, const Sequences& sequences);

}  // namespace boardfile
