/// Access commands of a board file.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "sim/TableImage.h"
#include "sim/TomlSection.h"

namespace sim {

/// Named runs of commands that `{ use = "name" }` inserts.
using Sequences = std::map<std::string, std::vector<Command>>;

Sequences ReadSequences(TomlSection* root);
/// The commands listed under `key`, in order.
std::vector<Command> ReadCommands(TomlSection* section, std::string_view key, const Sequences& sequences);

}  // namespace sim
