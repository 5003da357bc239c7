/// Small text helpers: names from firmware, numbers from the command line, suggestions, durations.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vynctl {

/// The bytes as printable ASCII: every other byte, and the backslash, as "\xHH". Always valid UTF-8, and two different
/// inputs never give the same text.
std::string Printable(std::string_view bytes);

/// A name as one part of an identifier: letters, digits, '+', '-' and '.' stay, other characters become '_'. An empty
/// name becomes "unnamed".
std::string IdPart(std::string_view name);

/// A whole number from 0 to 255, decimal or with "0x" in hexadecimal. Empty for anything else.
std::optional<uint8_t> ParseByte(std::string_view text);

/// A finite decimal number. Empty for anything else.
std::optional<double> ParseNumber(std::string_view text);

/// The candidate nearest to `word`, when it is near enough to be what was meant; else empty.
std::string Closest(std::string_view word, const std::vector<std::string>& candidates);

/// " (did you mean 'wifi'?)" or "".
std::string Suggestion(std::string_view word, const std::vector<std::string>& candidates);

/// "1 minute 30 seconds"
std::string DurationWords(unsigned seconds);

/// `text` without white space at both ends.
std::string_view Trim(std::string_view text);

/// Terminal columns of a text: UTF-8 characters, each counted as one.
size_t Columns(std::string_view text);

/// The first `columns` columns of `text`. Colour sequences count as nothing and are all kept.
std::string Clip(std::string_view text, size_t columns);

}  // namespace vynctl
