// SPDX-License-Identifier: MIT
// Fields of access commands.
#include "firmware/Command.h"

#include <stdexcept>
#include <utility>

#include "layout/LittleEndian.h"

namespace firmware {

using namespace layout;

Command::Command(CommandKind kind, CommandForm form) {
  const auto opcode = static_cast<uint8_t>(unsigned{kind} | unsigned{form});
  layout_ = FindLayout(opcode);
  bytes_.assign(layout_->length, 0);
  bytes_[0] = opcode;
  if (layout_->argument.bytes) Field(&CommandLayout::argument, kNoArgument);
}

Command& Command::Field(CommandField CommandLayout::*field, uint64_t value) {
  const CommandField place = layout_ ? layout_->*field : CommandField{};
  if (place.bytes == 0) throw std::logic_error("this access command has no such field");
  Put(&bytes_, place.offset, place.bytes, value);
  return *this;
}

Command Command::Memory(uint32_t address) {
  return Command(kCommandMemory, kFormDirect).Field(&CommandLayout::address, address);
}

Command Command::Port(uint16_t port) { return Command(kCommandPort, kFormDirect).Field(&CommandLayout::address, port); }

Command Command::IndexData(uint16_t indexPort, uint16_t dataPort, uint8_t index) {
  return Command(kCommandPort, kFormIndexData)
      .Field(&CommandLayout::address, indexPort)
      .Field(&CommandLayout::second, dataPort)
      .Field(&CommandLayout::third, index);
}

Command Command::Smbus(uint8_t slave, uint8_t command) {
  return Command(kCommandSmbus, kFormDirect)
      .Field(&CommandLayout::address, slave)
      .Field(&CommandLayout::second, command);
}

Command Command::Pci(uint8_t bus, uint8_t device, uint8_t function, uint16_t reg) {
  return Command(kCommandPci, kFormDirect)
      .Field(&CommandLayout::address, bus)
      .Field(&CommandLayout::second, device)
      .Field(&CommandLayout::third, function)
      .Field(&CommandLayout::reg, reg);
}

Command Command::Msr(uint32_t number) {
  return Command(kCommandMsr, kFormDirect).Field(&CommandLayout::address, number);
}

Command Command::Delay(DelayUnit unit, uint16_t count) {
  return Command(kCommandDelay, CommandForm{}).Field(&CommandLayout::unit, unit).Field(&CommandLayout::count, count);
}

Command Command::Raw(Bytes bytes) {
  Command command(kCommandDelay, CommandForm{});
  command.layout_ = nullptr;
  command.bytes_ = std::move(bytes);
  return command;
}

Command& Command::Width(unsigned bytes) {
  for (unsigned exponent = 0; exponent < 4; ++exponent)
    if (1u << exponent == bytes)
      return Opcode(static_cast<uint8_t>((bytes_[0] & (kKindMask | kFormMask)) | exponent << kWidthShift));
  throw std::logic_error("a width is 1, 2, 4 or 8 bytes");
}

Command& Command::Get(uint64_t mask, uint32_t expected) {
  return AddControl(kGetReads | kGetAnd).And(mask).Expected(expected);
}

Command& Command::Get() { return AddControl(kGetReads); }

Command& Command::Set(uint64_t keep, uint64_t bits) {
  return AddControl(kSetWrites | kSetAnd | kSetOr).And(keep).Or(bits);
}

Command& Command::Set() { return AddControl(kSetWrites); }

Command& Command::Argument(uint32_t index) { return AddControl(kArgumentMode).ArgumentIndex(index); }

Command& Command::Control(uint16_t control) {
  // The unit of a delay takes the place after byte 2 alone, so the control word fits every kind.
  Put(&bytes_, kControlOffset, 2, control);
  return *this;
}

Command& Command::AddControl(uint16_t bits) {
  return Control(static_cast<uint16_t>(Load(bytes_, kControlOffset, 2) | bits));
}

Command& Command::And(uint64_t mask) { return Field(&CommandLayout::andMask, mask); }
Command& Command::Or(uint64_t mask) { return Field(&CommandLayout::orMask, mask); }
Command& Command::Expected(uint32_t value) { return Field(&CommandLayout::expected, value); }
Command& Command::ArgumentIndex(uint32_t index) { return Field(&CommandLayout::argument, index); }
Command& Command::Opcode(uint8_t opcode) { return Byte(0, opcode); }

Command& Command::Byte(size_t offset, uint8_t value) {
  Put(&bytes_, offset, 1, value);
  return *this;
}

}  // namespace firmware
