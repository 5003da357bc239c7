// SPDX-License-Identifier: MIT
/// How a fan's entries are told by their names.
#pragma once

#include <cstddef>
#include <string_view>

namespace layout {

/// In the names of entries that identify a chip, not of modes.
inline constexpr std::string_view kFanIdWord = "Id";

/// Whether the text `wanted` counts as found in `name`: over all positions of `name` that hold the first character of
/// `wanted` and leave room for it, the number of equal characters is added up, and the sum must come to the length of
/// `wanted` exactly. Contract: partial matches at several positions add up.
constexpr bool FanNameMatches(std::string_view name, std::string_view wanted) {
  if (wanted.empty()) return false;
  size_t hits = 0;  // not reset between positions
  for (size_t p = 0; p + wanted.size() <= name.size(); ++p) {
    if (name[p] != wanted[0]) continue;
    for (size_t i = 0; i < wanted.size(); ++i) hits += name[p + i] == wanted[i] ? 1 : 0;
    if (hits == wanted.size()) return true;
  }
  return false;
}

}  // namespace layout
