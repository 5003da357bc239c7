// SPDX-License-Identifier: MIT
/// What shells offer behind 'vynctl': the words of its own grammar, and the names and numbers of the board at hand.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "commandline/Place.h"

namespace vynctl {

/// What may stand in the place, one word per line with a tab and its help; the line kFileNames where names of files
/// fit.
/// @param iadt  the board's function description table; without it, everything that any board could have
std::string Completions(const commandline::Place& place, std::span<const uint8_t> iadt);

inline constexpr char kFileNames[] = ":files";

}  // namespace vynctl
