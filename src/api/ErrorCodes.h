// SPDX-License-Identifier: MIT
/// How the codes in the last error are composed. The public header names the global ones, below 0x100, and the
/// families.
#pragma once

#include <cstdint>

namespace api {

/// Sub-code of every family: the board has no list for it.
inline constexpr uint8_t kAbsent = 0x00;

constexpr uint64_t Code(uint8_t family, uint8_t subCode) { return uint64_t{family} << 8 | subCode; }

}  // namespace api
