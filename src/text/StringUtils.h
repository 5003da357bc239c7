// SPDX-License-Identifier: MIT
/// Helpers over the standard string: case, whitespace, tolerant numbers.
#pragma once

#include <string>

namespace StringUtils {

/// Space, newline, carriage return, tab.
extern const std::string WHITESPACE;

std::string UpperCase(std::string text);
std::string LowerCase(std::string text);
std::string TrimLeft(const std::string& text);
std::string TrimRight(const std::string& text);
std::string Trim(const std::string& text);

/// Hexadecimal digits in either case, after the first "0x" when there is one; `otherwise` when any other character
/// stands there. Nothing, or nothing but whitespace, is 0. Values from 2^53 up are rounded to a double's precision,
/// those from 2^64 up become 2^64 - 1.
unsigned long Hex2Dec(std::string text, unsigned long otherwise);
/// The same with decimal digits and without a prefix.
unsigned long Str2Dec(std::string text, unsigned long otherwise);

}  // namespace StringUtils
