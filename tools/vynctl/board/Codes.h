// SPDX-License-Identifier: MIT
/// The library's codes in words: one table for the whole tool.
#pragma once

#include <cstdint>
#include <string>

namespace vynctl {

/// "0xE04"
std::string Hex(uint64_t code);

/// One sentence without a full stop, such as "Wi-Fi: no entry of the board has this value".
std::string WordsFor(uint64_t code);

/// The same without the family: "no entry of the board has this value", for places that name the thing already.
std::string ReasonFor(uint64_t code);

/// What a family number (the high byte of a code) is about, or null for a number that is not used.
const char* FamilyName(unsigned family);

/// True for the codes that mean that there is nothing to read: the board does not offer the function, or has no such
/// sensor, index or mode.
bool MeansUnavailable(uint64_t code);

}  // namespace vynctl
