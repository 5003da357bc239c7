// SPDX-License-Identifier: MIT
/// The copies of the firmware's ACPI tables that the kernel keeps in /sys, and room for them in the address space.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

struct KernelTable {
  std::string signature;       ///< 4 characters
  unsigned instance = 0;       ///< 1, 2, ... where several tables have the signature, else 0
  std::vector<uint8_t> bytes;  ///< whole, as long as its header says
};

/// Every table of "/sys/firmware/acpi/tables" by signature and instance; empty when the folder cannot be read. Files
/// that are too large, short, unreadable or lie about their length or signature are passed over.
std::vector<KernelTable> ReadKernelTables();

/// The first table of this signature, or null.
KernelTable* Find(std::vector<KernelTable>& tables, std::string_view signature);

/// The start of `bytes` bytes of System RAM above 1 MiB and below 4 GiB, on a page boundary and with RAM behind them
/// as well: "/dev/mem" refuses it, and nothing but the kernel's memory lies there. Empty when there is no such place.
std::optional<uint32_t> FindSystemRam(uint64_t bytes);

}  // namespace platform
