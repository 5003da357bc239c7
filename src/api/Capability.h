// SPDX-License-Identifier: MIT
/// Which I/O chip a board carries.
#pragma once

#include <cstdint>

namespace api {

/// The display name of a chip; "None" for one that is not known.
const char* GetIOName(uint16_t identifier);

/// Stores the I/O number of a chip that the board record lists, and code 0. Otherwise returns 0 with code 17 (no board
/// record) or 19 (not listed), leaving `*io`.
int GetWhichIOUse(uint16_t identifier, uint8_t* io);

}  // namespace api
