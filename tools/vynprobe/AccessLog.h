// SPDX-License-Identifier: MIT
/// What the library did to the machine. Each of the two programs links its own implementation.
#pragma once

#include <string>
#include <vector>

namespace probe {

/// Takes a board file for the machine, where that is simulated. @return whether it is
bool UseBoard(const std::string& file);
/// The accesses since the last call, one line each, and forgets them.
std::vector<std::string> TakeAccesses();

}  // namespace probe
