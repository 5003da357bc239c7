#include "sim/TableImage.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "layout/AcpiLayout.h"
#include "layout/BiosRecord.h"
#include "layout/BoardRecord.h"
#include "layout/Checksum.h"

namespace sim {

using namespace layout;

void Put(Bytes* bytes, size_t offset, size_t size, uint64_t value) {
  if (bytes->size() < offset + size) bytes->resize(offset + size);
  for (size_t i = 0; i < size; ++i) (*bytes)[offset + i] = static_cast<uint8_t>(value >> (8 * i));
}

uint64_t Take(const Bytes& bytes, size_t offset, size_t size) {
  uint64_t value = 0;
  for (size_t i = 0; i < size && offset + i < bytes.size(); ++i) value |= uint64_t{bytes[offset + i]} << (8 * i);
  return value;
}

uint8_t ChecksumFor(const Bytes& bytes, size_t offset) {
  return static_cast<uint8_t>(bytes[offset] - ByteSum(bytes.data(), bytes.size()));
}

namespace {

/// Text into a fixed field: cut at its end, padded with zeros.
void PutText(Bytes* bytes, size_t offset, size_t size, std::string_view text) {
  if (bytes->size() < offset + size) bytes->resize(offset + size);
  std::fill_n(bytes->begin() + static_cast<ptrdiff_t>(offset), size, uint8_t{0});
  std::copy_n(text.begin(), std::min(size, text.size()), bytes->begin() + static_cast<ptrdiff_t>(offset));
}

}  // namespace

// --- access commands ---

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
  return Control(static_cast<uint16_t>(Take(bytes_, kControlOffset, 2) | bits));
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

// --- function description records ---

Record Record::Feature(std::string_view function) {
  const RecordType* type = FindFeature(function);
  if (!type) throw std::logic_error("no record type is called " + std::string(function));
  return Type(type->type);
}

Record Record::Sensor(std::string_view quantity, uint8_t subType) {
  Record record;
  record.type_ = FindSensor(quantity, subType);
  if (!record.type_) throw std::logic_error("no sensor record type is called " + std::string(quantity));
  record.bytes_.resize(record.type_->bytes);
  return record.Byte(iadt::kType, record.type_->type).Byte(iadt::kValue, subType);
}

Record Record::Type(uint8_t type) { return Record().Byte(iadt::kType, type); }

Record Record::Raw(Bytes bytes) {
  Record record;
  record.bytes_ = std::move(bytes);
  record.raw_ = true;
  return record;
}

Record& Record::Index(uint8_t index) { return Byte(iadt::kIndex, index); }
Record& Record::Value(uint8_t value) { return Byte(iadt::kValue, value); }

Record& Record::Name(std::string_view name) {
  PutText(&bytes_, iadt::kName, iadt::kNameBytes, name);
  return *this;
}

Record& Record::Commands(const std::vector<Command>& commands) {
  if (!type_) {
    for (const Command& command : commands) Append(command.Build());
    return *this;
  }
  if (commands.size() > type_->places.size()) throw std::logic_error("more commands than the sensor record has places");
  for (size_t i = 0; i < commands.size(); ++i) {
    const Bytes& bytes = commands[i].Build();
    if (bytes.size() > type_->places[i].bytes) throw std::logic_error("the command is too long for its place");
    std::copy(bytes.begin(), bytes.end(), bytes_.begin() + type_->places[i].offset);
  }
  return *this;
}

Record& Record::Parameter(std::string_view name, uint8_t value) {
  if (type_)
    if (const RecordParameter* parameter = type_->Parameter(name)) return Byte(parameter->offset, value);
  throw std::logic_error("the record has no parameter " + std::string(name));
}

Record& Record::Append(const Bytes& bytes) {
  bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
  return *this;
}

Record& Record::Byte(size_t offset, uint8_t value) {
  Put(&bytes_, offset, 1, value);
  return *this;
}

Record& Record::Length(uint32_t length) {
  length_ = length;
  return *this;
}

Bytes Record::Build() const {
  Bytes bytes = bytes_;
  if (length_ || !raw_) Put(&bytes, iadt::kLength, 4, length_.value_or(static_cast<uint32_t>(bytes.size())));
  return bytes;
}

// --- the two vendor tables ---

IadtBuilder& IadtBuilder::Add(const Record& record) {
  const Bytes bytes = record.Build();
  body_.insert(body_.end(), bytes.begin(), bytes.end());
  return *this;
}

IadtBuilder& IadtBuilder::Feature(std::string_view function, uint8_t value, const std::vector<Command>& commands) {
  return Feature(function, 0, value, commands);
}

IadtBuilder& IadtBuilder::Feature(std::string_view function, uint8_t index, uint8_t value,
                                  const std::vector<Command>& commands) {
  return Add(Record::Feature(function).Index(index).Value(value).Commands(commands));
}

IadtBuilder& IadtBuilder::Length(uint32_t length) {
  header.length = length;
  return *this;
}

IadtBuilder& IadtBuilder::Checksum(uint8_t checksum) {
  header.checksum = checksum;
  return *this;
}

IamtBuilder& IamtBuilder::Chips(uint16_t first, uint16_t second, uint16_t third) {
  Bytes record(iamt::kBoardRecordBytes, 0);
  Put(&record, iamt::kLength, 1, iamt::kBoardRecordBytes);
  Put(&record, iamt::kChipIds[0], 2, first);
  Put(&record, iamt::kChipIds[1], 2, second);
  Put(&record, iamt::kChipIds[2], 2, third);
  return Add(record);
}

IamtBuilder& IamtBuilder::Add(const Bytes& record) {
  body_.insert(body_.end(), record.begin(), record.end());
  return *this;
}

IamtBuilder& IamtBuilder::Length(uint32_t length) {
  header.length = length;
  return *this;
}

IamtBuilder& IamtBuilder::Checksum(uint8_t checksum) {
  header.checksum = checksum;
  return *this;
}

// --- the BIOS information record ---

Bytes BiosInfo::Build() const {
  Bytes bytes(bios::kRecordBytes, 0);
  PutText(&bytes, 0, bios::kSignatureBytes, signature);
  Put(&bytes, bios::kUnused, 2, unused);
  PutText(&bytes, bios::kModel, bios::kModelBytes, model);
  bytes.at(checksumOffset) = checksum.value_or(ChecksumFor(bytes, checksumOffset));
  return bytes;
}

}  // namespace sim
