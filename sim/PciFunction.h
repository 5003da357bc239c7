// SPDX-License-Identifier: MIT
/// A PCI function of a simulated machine.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

namespace sim {

class Board;

/// A PCI function: 256 or 4096 bytes of configuration space. Writes go through `writeMask` (bit set = writable; all
/// writable unless a test or model narrows it) and then to `onWrite`, if set.
struct PciFunction {
  std::vector<uint8_t> config = std::vector<uint8_t>(4096, 0);
  std::vector<uint8_t> writeMask = std::vector<uint8_t>(4096, 0xFF);
  std::function<void(Board&, unsigned offset, unsigned width)> onWrite;

  uint32_t Get(unsigned offset, unsigned width) const;
  PciFunction& Set(unsigned offset, unsigned width, uint32_t value);  ///< ignores writeMask
};

}  // namespace sim
