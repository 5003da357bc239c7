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
/// The commands listed under `key`, in order.
std::vector<firmware::Command> ReadCommands(TomlSection* section, std::string_view key, const Sequences& sequences);

}  // namespace boardfile
