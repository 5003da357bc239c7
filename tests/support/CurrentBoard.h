// SPDX-License-Identifier: MIT
/// A simulated board that is the current one for as long as it lives.
#pragma once

#include "sim/Board.h"

namespace support {

struct CurrentBoard {
  CurrentBoard() { sim::Board::MakeCurrent(&board); }
  ~CurrentBoard() { sim::Board::MakeCurrent(nullptr); }
  CurrentBoard(const CurrentBoard&) = delete;
  CurrentBoard& operator=(const CurrentBoard&) = delete;

  sim::Board board;
};

}  // namespace support
