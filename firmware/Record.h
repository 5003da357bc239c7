// SPDX-License-Identifier: MIT
/// One function description record with its commands and parameters.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "firmware/Command.h"
#include "layout/RecordLayout.h"

namespace firmware {

/// One function description record.
class Record {
 public:
  /// An ordinary record by the name of its type (layout/RecordLayout.h), for example "LVDSState"; throws when unknown.
  static Record Feature(std::string_view function);
  /// A sensor record by quantity ("voltage", "temperature", "fan", "current") and sub-type; throws when unknown.
  static Record Sensor(std::string_view quantity, uint8_t subType);
  static Record Type(uint8_t type);
  static Record Raw(Bytes bytes);

  Record& Index(uint8_t index);
  Record& Value(uint8_t value);
  Record& Name(std::string_view name);                     ///< at most 20 bytes are taken; 20 leave no terminator
  Record& Commands(const std::vector<Command>& commands);  ///< sensors: in the order of their places, the rest stays 0
  Record& Parameter(std::string_view name, uint8_t value);
  Record& Append(const Bytes& bytes);
  Record& Byte(size_t offset, uint8_t value);
  Record& Length(uint32_t length);  ///< instead of the right one

  Bytes Build() const;

 private:
  Bytes bytes_ = Bytes(layout::iadt::kBody, 0);
  const layout::RecordType* type_ = nullptr;
  std::optional<uint32_t> length_;
  bool raw_ = false;
};

}  // namespace firmware
