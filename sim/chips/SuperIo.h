// SPDX-License-Identifier: MIT
/// A super I/O chip: an index/data pair that answers after an entry key, with registers 0x00 to 0x2F of the whole chip
/// and 0x30 to 0xFF of the logical device that register 0x07 selects.
#pragma once

#include <map>
#include <vector>

#include "sim/Board.h"
#include "sim/chips/Registers.h"

namespace sim {

class SuperIo : public PortDevice {
 public:
  /// `enter`: bytes that, written to the index port in a row, open the configuration registers (none: always open).
  /// `leave`: the byte that closes them.
  SuperIo(uint16_t indexPort, std::vector<uint8_t> enter, uint8_t leave);

  uint32_t Read(Board& board, uint16_t port, unsigned width) override;
  void Write(Board& board, uint16_t port, unsigned width, uint32_t value) override;

  Registers global = std::make_shared<std::array<uint8_t, 256>>();
  std::map<uint8_t, Registers> devices;

 private:
  uint8_t* Selected();
  void WriteIndex(uint8_t value);

  uint16_t indexPort_;
  std::vector<uint8_t> enter_;
  uint8_t leave_;
  size_t keys_ = 0;
  bool open_;
  uint8_t index_ = 0;
};

}  // namespace sim
