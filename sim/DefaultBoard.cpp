// The board that the simulated platform acts on.
#include <cstdio>
#include <memory>

#include "sim/SimBoard.h"

namespace sim {
namespace {

Board* current = nullptr;
std::unique_ptr<Board> fallback;

std::unique_ptr<Board> MakeDefault() {
  auto board = std::make_unique<Board>();
  board->logging = false;
  board->privileged = false;
  std::fputs("VYNLIB_BOARD names no board file\n", stderr);
  return board;
}

}  // namespace

Board& Board::Current() {
  if (current) return *current;
  if (!fallback) fallback = MakeDefault();
  return *fallback;
}

void Board::MakeCurrent(Board* board) {
  current = board;
  if (!board) fallback.reset();
}

}  // namespace sim
