// SPDX-License-Identifier: MIT
// The default of programs that make a board of their own current.
#include "sim/Board.h"

namespace sim {

std::unique_ptr<Board> DefaultBoard() { return Board::Unprivileged(); }

}  // namespace sim
