// The board that the simulated platform acts on.
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "sim/BoardFile.h"

namespace sim {
namespace {

constexpr char kVariable[] = "VYNLIB_BOARD";

Board* current = nullptr;
std::unique_ptr<Board> fallback;

std::unique_ptr<Board> Unprivileged(const std::string& why) {
  std::fprintf(stderr, "%s\n", why.c_str());
  auto board = std::make_unique<Board>();
  board->logging = false;
  board->privileged = false;
  return board;
}

std::unique_ptr<Board> MakeDefault() {
  const char* path = std::getenv(kVariable);
  if (!path || !*path) return Unprivileged(std::string(kVariable) + " names no board file");
  LoadedBoard loaded = LoadBoard(path);
  return loaded.board ? std::move(loaded.board) : Unprivileged(loaded.error);
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
