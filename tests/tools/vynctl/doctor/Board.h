// SPDX-License-Identifier: MIT
/// A machine with a board on it, all of it in order, for tests to change one thing of.
#pragma once

#include "FakeMachine.h"

namespace vynctl::doctor {

// Where its tables are in memory.
inline constexpr uint32_t kRootTable = 0x7FE0000, kIadt = 0x7FE1000, kIamt = 0x7FE2000, kRootPointer = 0xF5250,
                          kRecord = 0xF6000;

/// Started by a BIOS, with an ICH9 chipset and a board whose table reads an index/data pair at 0x295, a device on the
/// SMBus, a register in memory at 0xFED1F410 and one of the processor's.
class Board : public FakeMachine {
 public:
  Board();

  /// Puts the table both into memory and among the kernel's copies.
  void SetIadt(const std::string& table) const;
  void Field(const std::string& file, const std::string& from, const std::string& to) const;
};

/// A record of a function description table.
std::string IadtRecord(uint8_t type, uint8_t value, const std::string& name, const std::string& body);
std::string IndexCommand(uint32_t indexPort, uint32_t dataPort);
std::string SmbusCommand(uint8_t slave);
std::string MemoryCommand(uint32_t address);
std::string MsrCommand(uint32_t number);
/// The records of the healthy board.
std::string BoardRecords();

}  // namespace vynctl::doctor
