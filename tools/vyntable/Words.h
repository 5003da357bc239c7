/// Access commands in words.
#pragma once

#include <string>
#include <vector>

#include "vyntable/TableWalk.h"

namespace vyntable {

/// What the command reaches, then what it does when reading and when setting, one phrase each.
std::vector<std::string> Words(const CommandView& command);
/// "06 A0 00", for a line of text.
std::string Hex(View bytes);

}  // namespace vyntable
