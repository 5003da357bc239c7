/// Board descriptions: TOML files that name firmware tables and the machine behind them (docs/board-files.md).
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "sim/FirmwareFile.h"
#include "sim/SimBoard.h"

namespace sim {

/// Bytes of the longest board file.
inline constexpr size_t kBoardFileLimit = size_t{4} << 20;

struct LoadedBoard {
  std::unique_ptr<Board> board;  ///< null when loading failed
  Firmware firmware;
  std::string error;  ///< one line, "FILE:LINE: what was expected", when loading failed
};

/// Reads the board file at `path`. The board does not log.
LoadedBoard LoadBoard(const std::string& path);
/// The same from text; `name` stands for the file in the error.
LoadedBoard ParseBoard(std::string_view text, const std::string& name);

}  // namespace sim
