// SPDX-License-Identifier: MIT
/// What a simulated board is made of; shared by the sources that implement sim::Board and by nobody else.
#pragma once

#include <bitset>
#include <chrono>
#include <set>

#include "sim/Board.h"

namespace sim {

inline constexpr uint64_t kPageBytes = 4096;

struct Board::Impl {
  struct Page {
    std::array<uint8_t, kPageBytes> bytes{};
    std::bitset<kPageBytes> present;
  };
  struct Claim {
    uint32_t first, count;
    std::shared_ptr<PortDevice> device;
    bool Covers(uint32_t port) const { return port >= first && port - first < count; }
  };
  enum class File { kMemory, kMsr };
  struct Mapping {
    uint64_t offset;
    bool writable;
    std::unique_ptr<uint8_t[]> bytes;
    std::vector<uint8_t> before;  ///< of writable mappings: the content when it was made
  };

  std::unordered_map<uint16_t, uint8_t> ports;
  std::vector<Claim> claims;  ///< the latest first
  std::map<uint16_t, std::unique_ptr<PciFunction>> functions;
  uint32_t pciAddress = 0;
  std::unordered_map<uint64_t, std::unique_ptr<Page>> pages;
  std::set<uint64_t> written;  ///< of memory
  std::unordered_map<uint32_t, uint64_t> msrs;
  std::vector<std::function<void(Board&)>> ticks;
  std::map<int, File> descriptors;
  std::map<void*, Mapping> mappings;
  uint64_t calls = 0;
  std::chrono::steady_clock::time_point made = std::chrono::steady_clock::now();

  std::shared_ptr<PortDevice> DeviceAt(uint16_t port) const;
  /// The function that the address latch selects; null when absent or the latch is not enabled.
  PciFunction* Selected() const;
  bool PciEnabled() const { return (pciAddress & 0x80000000) != 0; }
};

}  // namespace sim
