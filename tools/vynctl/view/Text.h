// SPDX-License-Identifier: MIT
/// Small text helpers: names from firmware, numbers from the command line, durations, widths.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "commandline/Words.h"
#include "commandline/Wrap.h"

namespace vynctl {

using commandline::Closest;
using commandline::Columns;
using commandline::Printable;
using commandline::Suggestion;

/// A name as one part of an identifier: letters, digits, '+', '-' and '.' stay, other characters become '_'. An empty
/// name becomes "unnamed".
std::string IdPart(std::string_view name);

/// A whole number from 0 to 255, decimal or with "0x" in hexadecimal. Empty for anything else.
std::optional<uint8_t> ParseByte(std::string_view text);

/// A finite decimal number. Empty for anything else.
std::optional<double> ParseNumber(std::string_view text);

/// "1 minute 30 seconds"
std::string DurationWords(unsigned seconds);

/// `text` without white space at both ends.
std::string_view Trim(std::string_view text);

/// The first `columns` columns of `text`. Colour sequences count as nothing and are all kept.
std::string Clip(std::string_view text, size_t columns);

}  // namespace vynctl
