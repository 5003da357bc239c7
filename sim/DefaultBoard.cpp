// The board that the simulated platform acts on.
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "sim/BoardFile.h"

namespace sim {
namespace {

constexpr char kVariable[] = "VYNLIB_BOARD";
/// Set to anything but "" or "0": the board is live, whatever its file says.
constexpr char kLiveVariable[] = "VYNLIB_LIVE";

bool IsSet(const char* variable) {
  const char* value = std::getenv(variable);
  return value && *value && std::string(value) != "0";
}

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
  if (!loaded.board) return Unprivileged(loaded.error);
  if (IsSet(kLiveVariable)) loaded.board->live = true;
  return std::move(loaded.board);
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
