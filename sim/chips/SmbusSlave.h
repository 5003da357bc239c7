// SPDX-License-Identifier: MIT
/// Devices on a simulated SMBus, and what a host controller is set up with.
#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <string_view>

#include "sim/chips/Registers.h"

namespace sim {

class Board;

/// Longer than any test.
inline constexpr uint64_t kSmbusForever = std::numeric_limits<uint64_t>::max();

/// A device on the SMBus. `command` numbers its registers; the default keeps 256 one-byte registers, and a word is two
/// neighbours, the lower one first.
class SmbusSlave {
 public:
  virtual ~SmbusSlave() = default;
  virtual uint8_t ReadByte(Board&, uint8_t command) { return registers[command]; }
  virtual void WriteByte(Board&, uint8_t command, uint8_t value) { registers[command] = value; }

  std::array<uint8_t, 256> registers{};
  /// Microseconds for which it holds the clock in each transfer. Stopping the host does not make it let go.
  uint64_t stretch = 0;
};

/// What a controller model is given.
struct SmbusSetup {
  unsigned bus = 0, device = 0, function = 0;  ///< the controller's PCI function; made by the board file or the model
  uint16_t base = 0;                           ///< first I/O port
  /// By address byte as it goes over the wire, bit 0 clear (0xA0 for the first EEPROM).
  std::map<uint8_t, std::shared_ptr<SmbusSlave>> slaves;
  Options options;  ///< numbers that one model needs and others do not know

  uint64_t Option(std::string_view name, uint64_t otherwise) const {
    const auto found = options.find(name);
    return found == options.end() ? otherwise : found->second;
  }
};

}  // namespace sim
