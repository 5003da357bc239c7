// SPDX-License-Identifier: MIT
/// Words that were typed, or that firmware holds, as they stand in messages.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace commandline {

/// The bytes as printable ASCII: every other byte, and the backslash, as "\xHH". Always valid UTF-8, and two different
/// inputs never give the same text.
std::string Printable(std::string_view bytes);

/// The candidate nearest to `word`, when it is near enough to be what was meant; else empty.
std::string Closest(std::string_view word, const std::vector<std::string>& candidates);

/// " (did you mean 'wifi'?)" or "".
std::string Suggestion(std::string_view word, const std::vector<std::string>& candidates);

}  // namespace commandline
