// SPDX-License-Identifier: MIT
/// The firmware part of a board file: function description and board information tables, the BIOS information record,
/// the other ACPI tables, and where all of them lie in memory.
#pragma once

#include <cstdint>
#include <optional>

#include "boardfile/Includes.h"
#include "boardfile/TomlSection.h"
#include "firmware/AcpiImage.h"
#include "firmware/Bytes.h"

namespace boardfile {

/// What the bytes of a table from an offset on come from.
struct Origin {
  size_t offset;
  Spot spot;
};

/// A rule of `vyntable check` that bytes of a table may break.
struct Allowance {
  std::string rule;
  size_t first, end;  ///< of the bytes
  Spot spot;          ///< of the key
};

/// A table that the file does not mention is empty.
struct Firmware {
  firmware::Bytes iadt, iamt, biosInfo;  ///< what vyntable writes
  /// By offset, from 0 on where there is a table.
  std::vector<Origin> iadtOrigins = {}, iamtOrigins = {}, biosInfoOrigins = {};
  std::vector<Allowance> iadtAllowed = {}, iamtAllowed = {}, biosInfoAllowed = {};
  std::vector<Complaint> remarks = {};  ///< what should be said of a file that is right
  uint32_t biosInfoAddress = 0;
  std::optional<firmware::AcpiImage> acpi;  ///< root pointer and all tables; empty when the board has none

  /// Puts all of it into whatever takes bytes at an address by `Memory(address, bytes)`.
  template <typename Machine>
  void PutInto(Machine* machine) const {
    if (acpi) acpi->PutInto(machine);
    if (!biosInfo.empty()) machine->Memory(biosInfoAddress, biosInfo);
  }
};

/// Reads [bios], [iadt], [iamt], [acpi], [[feature]], [[sensor]], [[field]], [[record]] and [sequences] of the file's
/// root, and the last five of the files that it includes, which come first; throws BoardFileError.
Firmware ReadFirmware(TomlSection* root, std::vector<IncludedFile>* included);

}  // namespace boardfile
