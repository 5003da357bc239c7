// SPDX-License-Identifier: MIT
/// What answers at ports.
#pragma once

#include <cstdint>

namespace sim {

class Board;

/// Something that answers at ports. `width` is 1, 2 or 4 bytes; `port` is absolute.
class PortDevice {
 public:
  virtual ~PortDevice() = default;
  virtual uint32_t Read(Board& board, uint16_t port, unsigned width) = 0;
  virtual void Write(Board& board, uint16_t port, unsigned width, uint32_t value) = 0;
};

}  // namespace sim
