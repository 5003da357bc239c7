// SPDX-License-Identifier: MIT
/// One thing that was done to a simulated machine.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>

namespace sim {

/// One thing the library did to the machine, in order.
struct Access {
  enum Kind {
    kIopl,      ///< value = level
    kIn,        ///< address = port, width = bytes, value = what was read
    kOut,       ///< address = port, width = bytes, value = what was written
    kOpen,      ///< text = path, value = 0 read, 1 read/write/sync
    kClose,     ///< (nothing)
    kMap,       ///< address = file offset, width = 1 when writable, value = length in bytes
    kUnmap,     ///< address = file offset, value = length in bytes
    kMemWrite,  ///< one byte that a writable mapping changed: address = physical, width = 1, value = new byte
    kReadAt,    ///< address = file offset, value = bytes asked for
    kCommand,   ///< text = the shell command
    kSleep,     ///< value = microseconds
  };
  Kind kind;
  uint64_t address = 0;
  unsigned width = 0;
  uint64_t value = 0;
  std::string text;

  bool operator==(const Access&) const = default;
};

/// Readable constructors for expected logs: In8(0x80, 0x5A), Out32(0xCF8, 0x8000FB20), Sleep(10).
inline Access In8(uint16_t port, uint8_t value) { return {Access::kIn, port, 1, value, {}}; }
inline Access In16(uint16_t port, uint16_t value) { return {Access::kIn, port, 2, value, {}}; }
inline Access In32(uint16_t port, uint32_t value) { return {Access::kIn, port, 4, value, {}}; }
inline Access Out8(uint16_t port, uint8_t value) { return {Access::kOut, port, 1, value, {}}; }
inline Access Out16(uint16_t port, uint16_t value) { return {Access::kOut, port, 2, value, {}}; }
inline Access Out32(uint16_t port, uint32_t value) { return {Access::kOut, port, 4, value, {}}; }
inline Access MemWrite(uint64_t address, uint8_t value) { return {Access::kMemWrite, address, 1, value, {}}; }
inline Access Sleep(uint64_t microseconds) { return {Access::kSleep, 0, 0, microseconds, {}}; }
/// "out8 0x2e <- 0x55", for failure messages and vynprobe.
std::string ToString(const Access& access);
/// So that GoogleTest prints accesses readably.
void PrintTo(const Access& access, std::ostream* stream);

}  // namespace sim
