// SPDX-License-Identifier: MIT
// The simulated machine keeps a log of its own.
#include <cstdio>
#include <memory>

#include "AccessLog.h"
#include "boardfile/BoardFile.h"

namespace probe {

bool UseBoard(const std::string& file) {
  static std::unique_ptr<sim::Board> board;
  boardfile::LoadedBoard loaded = boardfile::LoadBoard(file);
  if (!loaded.board) std::fprintf(stderr, "%s\n", loaded.error.c_str());
  board = loaded.board ? std::move(loaded.board) : sim::Board::Unprivileged();
  sim::Board::MakeCurrent(board.get());
  board->logging = true;
  return true;
}

std::vector<std::string> TakeAccesses() {
  std::vector<std::string> lines;
  for (const sim::Access& access : sim::Board::Current().Log()) lines.push_back(sim::ToString(access));
  sim::Board::Current().Log().clear();
  return lines;
}

}  // namespace probe
