// SPDX-License-Identifier: MIT
/// Text on terminals that are narrower than its lines.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace commandline {

/// Terminal columns of a text: UTF-8 characters, each counted as one; colour sequences count as nothing.
size_t Columns(std::string_view text);

/// The text with lines longer than `width` columns broken at blanks, and what follows a break indented below its line.
/// A word longer than the width stays whole.
std::string Wrapped(std::string_view text, size_t width);

/// The columns of the terminal behind `descriptor`; 0 when it is none or does not say.
size_t TerminalColumns(int descriptor);

}  // namespace commandline
