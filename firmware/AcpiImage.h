// SPDX-License-Identifier: MIT
/// Root pointer and tables with their places in physical memory:
///
///     AcpiImage().Table(iadt).Table(iamt).PutInto(&board);
#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "firmware/Bytes.h"

namespace firmware {

/// A root pointer, an RSDT and tables, laid out in physical memory one after the other on 64-byte boundaries.
class AcpiImage {
 public:
  AcpiImage& RootPointerAt(uint32_t address);  ///< default 0xF0000; a multiple of 16 in 0xE0000..0xFFFFF is found
  AcpiImage& RootPointerRevision(uint8_t revision);
  AcpiImage& TablesAt(uint32_t address);  ///< default 0x7F000000, where the RSDT goes
  AcpiImage& Table(Bytes table);          ///< at the next free address, listed in the RSDT
  AcpiImage& TableAt(uint32_t address, Bytes table);
  AcpiImage& UnlistedAt(uint32_t address, Bytes table);  ///< in memory, but not in the RSDT
  AcpiImage& Entry(uint32_t address);                    ///< an RSDT entry with nothing behind it, 0 included

  /// The pieces as (address, bytes), root pointer first.
  std::vector<std::pair<uint32_t, Bytes>> Build() const;
  /// Puts the pieces into whatever takes bytes at an address by `Memory(address, bytes)`.
  template <typename Machine>
  void PutInto(Machine* machine) const {
    for (const auto& [address, bytes] : Build()) machine->Memory(address, bytes);
  }

 private:
  struct Piece {
    std::optional<uint32_t> address;
    Bytes bytes;
    bool listed;
  };
  uint32_t root_ = 0xF0000, tables_ = 0x7F000000;
  uint8_t revision_ = 0;
  std::vector<Piece> pieces_;
};

}  // namespace firmware
