// SPDX-License-Identifier: MIT
// The default of the simulated library: the board file that the environment names.
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "boardfile/BoardFile.h"
#include "boardfile/EndlessLoop.h"
#include "boardfile/StateFile.h"

namespace {

constexpr char kVariable[] = "VYNLIB_BOARD";
/// Set to anything but "" or "0": the board is live, whatever its file says.
constexpr char kLiveVariable[] = "VYNLIB_LIVE";
/// The file that keeps what programs changed on the board; none where this is not set or empty.
constexpr char kStateVariable[] = "VYNLIB_STATE";

bool IsSet(const char* variable) {
  const char* value = std::getenv(variable);
  return value && *value && std::string(value) != "0";
}

std::unique_ptr<sim::Board> Refused(const std::string& why) {
  std::fprintf(stderr, "%s\n", why.c_str());
  return sim::Board::Unprivileged();
}

}  // namespace

std::unique_ptr<sim::Board> sim::DefaultBoard() {
  const char* path = std::getenv(kVariable);
  if (!path || !*path) return Refused(std::string(kVariable) + " names no board file");
  boardfile::LoadedBoard loaded = boardfile::LoadBoard(path);
  if (!loaded.board) return Refused(loaded.error);
  if (const auto endless = boardfile::FindEndlessLoop(loaded.firmware))
    return Refused(boardfile::LineOf(*endless, path));
  if (IsSet(kLiveVariable)) loaded.board->live = true;
  const char* state = std::getenv(kStateVariable);
  if (state && *state) {
    const std::string trouble = boardfile::KeepState(state, path, loaded.board.get());
    if (!trouble.empty()) return Refused(trouble);
  }
  return std::move(loaded.board);
}
