// SPDX-License-Identifier: MIT
// Records one after another.
#include "firmware/IadtBuilder.h"

namespace firmware {

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

}  // namespace firmware
