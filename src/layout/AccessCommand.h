// SPDX-License-Identifier: MIT
/// The byte layout of access commands, as firmware writes them into the bodies of IADT records. One row per kind and
/// form; the executor, the command walk, vyntable and the tests read it, and nobody else knows an offset.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace layout {

/// Access kind: bits 2-5 of the opcode byte, taken in place.
enum CommandKind : uint8_t {
  kCommandMemory = 0x00,
  kCommandPort = 0x04,
  kCommandMsr = 0x08,
  kCommandSmbus = 0x0C,
  kCommandPci = 0x10,
  kCommandDelay = 0x14,
};

/// Addressing form: bits 0-1 of the opcode byte.
enum CommandForm : uint8_t { kFormDirect = 1, kFormIndexData = 2 };

/// Bits of the control word. The low nibble governs setting, the high nibble reading (Get).
enum CommandControl : uint16_t {
  kSetOr = 0x0001,
  kSetAnd = 0x0002,
  kSetWrites = 0x0004,
  kSetReads = 0x0008,
  kGetOr = 0x0010,
  kGetAnd = 0x0020,
  kGetWrites = 0x0040,
  kGetReads = 0x0080,
  kArgumentMode = 0x0100,
};

enum DelayUnit : uint8_t { kMicroseconds = 1, kMilliseconds = 2, kSeconds = 3 };

inline constexpr uint8_t kKindMask = 0x3C;
inline constexpr uint8_t kFormMask = 0x03;
inline constexpr unsigned kWidthShift = 6;
inline constexpr size_t kControlOffset = 1;
/// Opcode and control word, which every command has.
inline constexpr size_t kCommandPrefixBytes = 3;
/// An argument index that names no argument.
inline constexpr uint32_t kNoArgument = 0xFFFFFFFF;

/// A little-endian field: byte offset from the command's first byte, and size. Size 0: the command has no such field.
struct CommandField {
  uint8_t offset = 0, bytes = 0;
};

struct CommandLayout {
  uint8_t kind;
  uint8_t form;          ///< 0 = any
  uint8_t length;        ///< bytes of the record
  bool steps;            ///< a walk can step over it; one that cannot stops the walk after it has run
  uint8_t valueBytes;    ///< bytes of the value that are compared with the expected value
  CommandField address;  ///< physical address, port, index port, register number, slave address, or bus
  CommandField second;   ///< data port, command byte, or device
  CommandField third;    ///< register index, or function
  CommandField reg;      ///< PCI register offset
  CommandField andMask, orMask, expected, argument;
  CommandField unit, count;  ///< of delays

  /// Whether the kind and form bits of an opcode are this row's.
  constexpr bool Fits(size_t opcode) const {
    return kind == (opcode & kKindMask) && (form == 0 || form == (opcode & kFormMask));
  }
};

// clang-format off
inline constexpr CommandLayout kCommandLayouts[] = {
  // kind          form            length steps  value address  second   third    reg      AND      OR       expected  argument  unit     count
  {kCommandMemory, kFormDirect,    28, true,  4, {3, 4},  {},      {},      {},      {7, 4},  {11, 4}, {15, 4}, {19, 4}, {},      {}},
  {kCommandPort,   kFormDirect,    28, true,  4, {3, 4},  {},      {},      {},      {7, 4},  {11, 4}, {15, 4}, {19, 4}, {},      {}},
  {kCommandPort,   kFormIndexData, 36, true,  4, {3, 4},  {7, 4},  {11, 4}, {},      {15, 4}, {19, 4}, {23, 4}, {27, 4}, {},      {}},
  {kCommandMsr,    kFormDirect,    35, false, 4, {3, 4},  {},      {},      {},      {7, 8},  {15, 8}, {23, 4}, {31, 4}, {},      {}},
  {kCommandSmbus,  kFormDirect,    21, true,  2, {3, 1},  {4, 1},  {},      {},      {6, 2},  {8, 2},  {10, 2}, {12, 4}, {},      {}},
  {kCommandPci,    kFormDirect,    29, true,  4, {3, 1},  {4, 1},  {5, 1},  {6, 2},  {8, 4},  {12, 4}, {16, 4}, {20, 4}, {},      {}},
  {kCommandDelay,  0,              15, true,  0, {},      {},      {},      {},      {},      {},      {},      {6, 4},  {3, 1},  {4, 2}},
};
// clang-format on

constexpr uint8_t KindOf(uint8_t opcode) { return opcode & kKindMask; }
constexpr uint8_t FormOf(uint8_t opcode) { return opcode & kFormMask; }
/// Bytes of the access: 1, 2, 4 or 8.
constexpr unsigned WidthOf(uint8_t opcode) { return 1u << (opcode >> kWidthShift); }

namespace detail {
/// The rows by the low six bits of the opcode (kind and form); a length of 0 where there is none.
inline constexpr auto kLayoutsByOpcode = [] {
  std::array<CommandLayout, 64> layouts{};
  for (size_t opcode = 0; opcode < layouts.size(); ++opcode)
    for (const CommandLayout& row : kCommandLayouts)
      if (row.Fits(opcode)) layouts[opcode] = row;
  return layouts;
}();
}  // namespace detail

/// The layout of the command with this opcode; null when the kind is unknown or has no such form.
constexpr const CommandLayout* FindLayout(uint8_t opcode) {
  const CommandLayout& layout = detail::kLayoutsByOpcode[opcode & (kKindMask | kFormMask)];
  return layout.length != 0 ? &layout : nullptr;
}

/// Any layout of the command's kind, the shortest; null when the kind is unknown.
constexpr const CommandLayout* FindKind(uint8_t opcode) {
  const CommandLayout* shortest = nullptr;
  for (const CommandLayout& row : kCommandLayouts)
    if (row.kind == KindOf(opcode) && (shortest == nullptr || row.length < shortest->length)) shortest = &row;
  return shortest;
}

}  // namespace layout
