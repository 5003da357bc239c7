// SPDX-License-Identifier: MIT
/// Builds the BIOS information record.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "firmware/Bytes.h"
#include "layout/BiosRecord.h"

namespace firmware {

/// The BIOS information record, 64 bytes; `checksumOffset` (9 by default) is the byte that makes the sum right.
struct BiosInfo {
  std::string model;
  std::string signature = layout::bios::kSignature;
  uint16_t unused = 0;  ///< bytes 8 and 9; the checksum overwrites its byte
  size_t checksumOffset = 9;
  std::optional<uint8_t> checksum = {};  ///< instead of the right one
  Bytes Build() const;
};

}  // namespace firmware
