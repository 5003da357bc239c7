// SPDX-License-Identifier: MIT
/// Board descriptions: TOML files that name firmware tables and the machine behind them (docs/board-files.md).
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "boardfile/FirmwareFile.h"
#include "sim/Board.h"

namespace boardfile {

/// Bytes of the longest board file.
inline constexpr size_t kBoardFileLimit = size_t{4} << 20;

struct LoadedBoard {
  std::unique_ptr<sim::Board> board;  ///< null when loading failed
  Firmware firmware;
  std::string error;  ///< of the first complaint: one line, "FILE:LINE: what was expected", when loading failed
  std::vector<Complaint> complaints = {};  ///< all of them, in the order of the file
};

/// "FILE:LINE: what", in one line.
std::string LineOf(const Complaint& complaint, const std::string& name);

/// Reads the board file at `path`. The board does not log.
LoadedBoard LoadBoard(const std::string& path);
/// The same from text; `name` stands for the file in the error.
LoadedBoard ParseBoard(std::string_view text, const std::string& name);

struct CompiledFirmware {
  std::optional<Firmware> firmware;  ///< empty when the file is wrong
  std::string error;                 ///< as of LoadedBoard
  std::vector<Complaint> complaints = {};
  std::vector<std::string> included = {};  ///< paths of the files that it takes parts from
};

/// Reads the firmware part alone; what the machine's sections hold is not looked at.
CompiledFirmware CompileFile(const std::string& path);
CompiledFirmware CompileText(std::string_view text, const std::string& name);

}  // namespace boardfile
