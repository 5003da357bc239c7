// SPDX-License-Identifier: MIT
/// Plain text searches of the capability queries and the fan configuration.
#pragma once

#include <cstddef>
#include <string_view>

namespace api {

/// Nonzero when the pattern occurs in the text; 0 for an empty text.
int IsSubStrInStr(std::string_view text, std::string_view pattern);

/// Removes the first occurrence of the pattern from a text buffer of `size` bytes (NUL-padded, not always terminated)
/// and closes the gap; the bytes that become free are 0.
void RemoveSubStr(size_t size, char* text, std::string_view pattern);

/// Whether the text `wanted` counts as found in `name`: over all positions of `name` that hold the first character of
/// `wanted` and leave room for it, the number of equal characters is added up, and the sum must come to the length of
/// `wanted` exactly. Contract: partial matches at several positions add up.
bool FanNameMatches(std::string_view name, std::string_view wanted);

}  // namespace api
