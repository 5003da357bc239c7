// SPDX-License-Identifier: MIT
/// What a board description says, for those who ask about a board without running one.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace boardfile {

struct Description {
  std::vector<uint8_t> iadt = {}, iamt = {};  ///< bytes of the two tables, each empty when the board has none
  bool msrDevice = false;                     ///< the board has the device file of the processor's registers
  std::string error = {};                     ///< one line, "FILE:LINE: what was expected"; all else is empty then
};

/// Reads the board file at `path`.
Description Describe(const std::string& path);

}  // namespace boardfile
