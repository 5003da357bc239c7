// SPDX-License-Identifier: MIT
/// Builds the function description table:
///
///     Bytes iadt = IadtBuilder()
///                      .Feature("LVDSState", 1, {Command::IndexData(0x2E, 0x2F, 0xF0).Get(0x01, 0x01),
///                                                Command::IndexData(0x2E, 0x2F, 0xF0).Set(0xFE, 0x01)})
///                      .Add(Record::Sensor("voltage", 3).Name("+5V").Parameter("step", 16)
///                               .Commands({Command::Smbus(0x5A, 0x20).Get()}))
///                      .Build();
#pragma once

#include <string_view>
#include <vector>

#include "firmware/AcpiTable.h"
#include "firmware/Record.h"

namespace firmware {

/// The function description table. `Header` gives access to every header field.
class IadtBuilder {
 public:
  AcpiHeader header{.signature = "IADT"};

  IadtBuilder& Add(const Record& record);
  IadtBuilder& Feature(std::string_view function, uint8_t value, const std::vector<Command>& commands);
  IadtBuilder& Feature(std::string_view function, uint8_t index, uint8_t value, const std::vector<Command>& commands);
  IadtBuilder& Length(uint32_t length);
  IadtBuilder& Checksum(uint8_t checksum);
  Bytes Build() const { return AcpiTable(header, body_); }

 private:
  Bytes body_;
};

}  // namespace firmware
