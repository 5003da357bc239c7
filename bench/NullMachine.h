// SPDX-License-Identifier: MIT
/// The machine of the benchmarks: every access answers at once from canned values and is counted.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

namespace bench {

/// One access, for comparing the library's with the baseline's.
struct Access {
  char kind;  ///< 'i' in, 'o' out, 'm' map, 'u' unmap, 'f' open, 'c' close, 's' sleep, 'r' run, 'p' privilege, 'a' read
              ///< at
  unsigned width = 0;
  uint64_t address = 0, value = 0;
  bool operator==(const Access&) const = default;
};

class NullMachine {
 public:
  static NullMachine& Get();

  /// Back to a machine that answers all ones and has memory full of zeros.
  void Reset();

  std::array<uint8_t, 0x10000> ports;
  std::map<uint32_t, uint32_t> pci;  ///< value of port 0xCF8 to configuration dword; others are absent
  std::vector<uint8_t> memory;       ///< what lies at 0xE0000 and up; every mapping lies in it
  /// An ICH SMBus host: status at this base, which writing ones clears; a start in register 2 is done at once.
  uint16_t smbusBase = 0;

  uint64_t accesses = 0;
  bool logging = false;
  std::vector<Access> log;

  void Note(char kind, unsigned width, uint64_t address, uint64_t value) {
    ++accesses;
    if (logging) log.push_back({kind, width, address, value});
  }

  uint32_t pciAddress = 0;
};

inline constexpr uint64_t kMemoryBase = 0xE0000;
inline constexpr size_t kMemoryBytes = 0x20000 + 4096;

/// Heap allocations made by this program so far.
uint64_t Allocations();

}  // namespace bench
