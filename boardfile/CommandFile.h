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

Sequences ReadSequences(TomlSection* root);

struct CommandList {
  std::vector<firmware::Command> commands;
  std::vector<Spot> spots;  ///< of each command: the element that it comes from
};
/// The commands listed under `key`, in order.
CommandList ReadCommands(TomlSection* section, std::string_view key, const Sequences& sequences);

}  // namespace boardfile
