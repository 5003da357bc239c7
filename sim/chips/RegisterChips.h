// SPDX-License-Identifier: MIT
/// Chips that act on a set of registers as time goes by: watchdog, fan, drifting reading.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "sim/chips/Registers.h"

namespace sim {

class Board;

/// A number that a chip is set up with.
struct ChipOption {
  static constexpr uint64_t kRequired = ~uint64_t{0};
  std::string_view name;
  uint64_t max;
  uint64_t otherwise = kRequired;
};

/// A chip that acts on registers as time goes by. `options` holds every option that the model lists.
struct ChipModel {
  std::string_view name;
  std::span<const ChipOption> options;
  void (*attach)(Board& board, const Registers& registers, const Options& options);
};

/// "watchdog", "fan" and "drift".
std::span<const ChipModel> ChipModels();
const ChipModel* FindChipModel(std::string_view name);

}  // namespace sim
