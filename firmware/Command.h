// SPDX-License-Identifier: MIT
/// One access command of a function description record, from the facts of its layout.
#pragma once

#include <cstdint>

#include "firmware/Bytes.h"
#include "layout/AccessCommand.h"

namespace firmware {

/// One access command. Masks default to 0, the argument index to kNoArgument, the control word to 0 (applies to neither
/// direction). Setting a field that the kind and form do not have throws std::logic_error.
class Command {
 public:
  static Command Memory(uint32_t address);
  static Command Port(uint16_t port);
  static Command IndexData(uint16_t indexPort, uint16_t dataPort, uint8_t index);
  /// `slave`: the address byte as it goes over the wire, bit 0 clear.
  static Command Smbus(uint8_t slave, uint8_t command);
  static Command Pci(uint8_t bus, uint8_t device, uint8_t function, uint16_t reg);
  static Command Msr(uint32_t number);
  static Command Delay(layout::DelayUnit unit, uint16_t count);
  /// Any bytes at all.
  static Command Raw(Bytes bytes);

  Command& Width(unsigned bytes);  ///< 1 (default), 2, 4 or 8
  /// Reading compares: (value AND `mask`) must equal `expected`.
  Command& Get(uint64_t mask, uint32_t expected);
  /// Reading without masks, for sensors and arguments.
  Command& Get();
  /// Setting writes (old value AND `keep`) OR `bits`.
  Command& Set(uint64_t keep, uint64_t bits);
  /// Setting writes without masks, for arguments.
  Command& Set();
  /// Names an argument slot and turns argument mode on.
  Command& Argument(uint32_t index);

  Command& Control(uint16_t control);  ///< replaces the control word
  Command& AddControl(uint16_t bits);
  Command& And(uint64_t mask);
  Command& Or(uint64_t mask);
  Command& Expected(uint32_t value);
  Command& ArgumentIndex(uint32_t index);  ///< the field alone
  Command& Opcode(uint8_t opcode);         ///< replaces the opcode, keeps the layout
  Command& Byte(size_t offset, uint8_t value);

  const Bytes& Build() const { return bytes_; }

 private:
  Command(layout::CommandKind kind, layout::CommandForm form);
  Command& Field(layout::CommandField layout::CommandLayout::*field, uint64_t value);
  Bytes bytes_;
  const layout::CommandLayout* layout_ = nullptr;
};

}  // namespace firmware
