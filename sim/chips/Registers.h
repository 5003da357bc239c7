// SPDX-License-Identifier: MIT
/// What chips act on, and the numbers that they are set up with.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace sim {

/// 256 one-byte registers, shared by the device that gives access to them and the chips that act on them.
using Registers = std::shared_ptr<std::array<uint8_t, 256>>;
/// Numbers by name.
using Options = std::map<std::string, uint64_t, std::less<>>;

}  // namespace sim
