// SPDX-License-Identifier: MIT
// Heads, commands and parameters of function description records.
#include "firmware/Record.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>

namespace firmware {

using namespace layout;

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

}  // namespace firmware
