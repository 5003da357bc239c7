// SPDX-License-Identifier: MIT
/// What the board does by itself once told: its watchdog, and the fans with their modes and settings.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "board/Library.h"
#include "board/Value.h"

namespace vynctl {

struct Fan {
  std::string rawName;  ///< as the library knows it; often ends with a space
  std::string name;     ///< for people: printable, without space at its ends
  Value modes;          ///< list of mode numbers
  Value mode;           ///< current mode
  Value parameters;     ///< list: the current mode's parameters
};

/// Names of the fans as the library lists them, in firmware order, without entries that only identify an I/O chip.
/// Empty with the library's code in the last error when the board offers no fan control.
std::vector<std::string> FanNames(const Library& library);

/// Reads a fan's modes and its present mode with parameters.
Fan ReadFan(const Library& library, const std::string& rawName);
std::vector<Fan> ReadFans(const Library& library);
/// The three values of each fan, in order, with unique identifiers.
std::vector<Value> FanValues(const std::vector<Fan>& fans);

/// The library's code: 0 when `block` (the mode, then its parameters) was set.
uint64_t SetFan(const Library& library, const std::string& rawName, const std::vector<uint8_t>& block);

/// How many parameters a mode of the fan takes; found by asking with every possible count, which reads the hardware at
/// most once. Empty when the fan has no such mode.
std::optional<unsigned> ParameterCount(const Library& library, const std::string& rawName, uint8_t mode);

/// Does the board have a watchdog? Touches no hardware and does not wait.
bool OffersWatchdog(const Library& library);

/// "watchdog/interval" (in the firmware's unit) and "watchdog/mode" as the hardware has them.
std::vector<Value> ReadWatchdog(const Library& library);

}  // namespace vynctl
