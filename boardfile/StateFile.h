// SPDX-License-Identifier: MIT
/// A simulated board that outlives the program: what programs changed on it, in a file.
#pragma once

#include <string>

#include "sim/Board.h"

namespace boardfile {

/// Puts the board, which was just read from `boardPath`, into the state that the file `path` holds, as if it had gone
/// on since: its clock has followed the time of day, and does so from now on. When the board ends, the file gets its
/// state then. Where there is no file, it is made. Meanwhile no other board can use the file.
/// @return "", or in one line why not; the board is of no use then
std::string KeepState(const std::string& path, const std::string& boardPath, sim::Board* board);

}  // namespace boardfile
