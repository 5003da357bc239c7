// SPDX-License-Identifier: MIT
/// Firmware bytes written out by hand, and a machine with the executor on it.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/Machine.h"
#include "tests/support/Printed.h"

namespace tabletest {

using Bytes = std::vector<uint8_t>;

using support::Machine;
using support::Printed;

/// A number of `size` bytes, low byte first.
struct Number {
  unsigned size;
  uint64_t value;
};

inline Bytes Join(std::initializer_list<Number> numbers) {
  Bytes bytes;
  for (const Number& number : numbers)
    for (unsigned i = 0; i < number.size; ++i)
      bytes.push_back(static_cast<uint8_t>(i < 8 ? number.value >> (8 * i) : 0));
  return bytes;
}

inline Bytes operator+(Bytes first, const Bytes& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

// ---- access commands, field by field ----

constexpr uint32_t kNobody = 0xFFFFFFFF;

struct Fields {
  uint16_t control = 0;
  uint64_t andMask = 0;
  uint64_t orMask = 0;
  uint32_t expected = 0;
  uint32_t argument = kNobody;
};

/// Memory (opcode 0x01) or a port (0x05): 28 bytes.
inline Bytes Direct(uint8_t opcode, uint32_t address, const Fields& fields) {
  return Join({{1, opcode},
               {2, fields.control},
               {4, address},
               {4, fields.andMask},
               {4, fields.orMask},
               {4, fields.expected},
               {4, fields.argument},
               {5, 0}});
}

/// An index/data port pair (opcode 0x06): 36 bytes.
inline Bytes Pair(uint8_t opcode, uint32_t indexPort, uint32_t dataPort, uint32_t reg, const Fields& fields) {
  return Join({{1, opcode},
               {2, fields.control},
               {4, indexPort},
               {4, dataPort},
               {4, reg},
               {4, fields.andMask},
               {4, fields.orMask},
               {4, fields.expected},
               {4, fields.argument},
               {5, 0}});
}

/// SMBus (opcode 0x0D a byte, 0x4D a word): 21 bytes.
inline Bytes Smbus(uint8_t opcode, uint8_t slave, uint8_t command, const Fields& fields) {
  return Join({{1, opcode},
               {2, fields.control},
               {1, slave},
               {1, command},
               {1, 0},
               {2, fields.andMask},
               {2, fields.orMask},
               {2, fields.expected},
               {4, fields.argument},
               {5, 0}});
}

/// PCI (opcode 0x11): 29 bytes.
inline Bytes Pci(uint8_t opcode, uint8_t bus, uint8_t device, uint8_t function, uint16_t reg, const Fields& fields) {
  return Join({{1, opcode},
               {2, fields.control},
               {1, bus},
               {1, device},
               {1, function},
               {2, reg},
               {4, fields.andMask},
               {4, fields.orMask},
               {4, fields.expected},
               {4, fields.argument},
               {5, 0}});
}

/// A model-specific register (opcode 0x09): 35 bytes.
inline Bytes Msr(uint8_t opcode, uint32_t number, const Fields& fields) {
  return Join({{1, opcode},
               {2, fields.control},
               {4, number},
               {8, fields.andMask},
               {8, fields.orMask},
               {4, fields.expected},
               {4, 0},
               {4, fields.argument}});
}

/// A delay (opcode 0x14): 15 bytes.
inline Bytes Delay(uint16_t control, uint8_t unit, uint16_t count, uint32_t argument = kNobody) {
  return Join({{1, 0x14}, {2, control}, {1, unit}, {2, count}, {4, argument}, {5, 0}});
}

/// One execution of a command, with four argument slots that tell whether they were written.
struct Execution {
  static constexpr unsigned long long kUntouched = 0xDEADBEEFDEADBEEF;
  unsigned long long args[4] = {kUntouched, kUntouched, kUntouched, kUntouched};
  bool result = false;
};

constexpr unsigned char kGetting = 0;
constexpr unsigned char kSetting = 1;

/// The executor on a machine, the log empty.
class Executor : public testing::Test, protected Machine {
 protected:
  TIAxTCommon* executor = TIAxTCommon::GetInstance();

  Executor() { board.Log().clear(); }

  /// The caller's pointer is never moved.
  Execution Run(Bytes& command, unsigned char direction, unsigned char count = 1, Execution execution = {}) {
    unsigned char* cursor = command.data();
    execution.result = executor->IAxTRW(&cursor, direction, execution.args, count) != 0;
    EXPECT_EQ(cursor, command.data());
    return execution;
  }
  Execution Run(Bytes&& command, unsigned char direction, unsigned char count = 1, Execution execution = {}) {
    return Run(command, direction, count, execution);
  }
};

}  // namespace tabletest
