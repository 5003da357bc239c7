// SPDX-License-Identifier: MIT
/// Builds the board information table.
#pragma once

#include <cstdint>

#include "firmware/AcpiTable.h"

namespace firmware {

/// The board information table.
class IamtBuilder {
 public:
  AcpiHeader header{.signature = "IAMT"};

  /// A board information record (type 0, 55 bytes) with its three chip identifiers.
  IamtBuilder& Chips(uint16_t first, uint16_t second, uint16_t third);
  /// Any record; its length byte is what the bytes say.
  IamtBuilder& Add(const Bytes& record);
  IamtBuilder& Length(uint32_t length);
  IamtBuilder& Checksum(uint8_t checksum);
  Bytes Build() const { return AcpiTable(header, body_); }

 private:
  Bytes body_;
};

}  // namespace firmware
