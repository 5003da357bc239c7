// SPDX-License-Identifier: MIT
/// ACPI tables: header and body of any, and those that discovery reads. Everything comes out right by default, and
/// every length and checksum can be set wrong on purpose.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "firmware/Bytes.h"

namespace firmware {

/// The fields of a standard ACPI table header.
struct AcpiHeader {
  std::string signature;
  uint8_t revision = 1;
  std::string oemId = "VYNMAR", oemTableId = "BOARDTBL";
  uint32_t oemRevision = 1;
  std::string creatorId = "VYNT";
  uint32_t creatorRevision = 1;
  std::optional<uint32_t> length = {};   ///< instead of the right one
  std::optional<uint8_t> checksum = {};  ///< instead of the right one
};

/// Header and body with length and checksum filled in.
Bytes AcpiTable(const AcpiHeader& header, const Bytes& body);

/// Pieces of the other tables that the discovery reads.
Bytes FadtTable(uint32_t dsdt, uint32_t facs = 0, uint16_t sciInterrupt = 9, uint32_t pm1aEvent = 0x800,
                uint32_t pmTimer = 0x808);
/// `bases`: one allocation each, segment 0, buses 0 to 255.
Bytes McfgTable(const std::vector<uint64_t>& bases);
/// `subtables` follow the local APIC address and flags.
Bytes MadtTable(const Bytes& subtables);
Bytes IoApicSubtable(uint32_t address, uint32_t interruptBase);
Bytes EcdtTable(uint16_t commandPort, uint16_t dataPort);
Bytes DsdtTable(const Bytes& aml = {});
Bytes RsdtTable(const std::vector<uint32_t>& entries);

/// A root pointer: 20 bytes for revision 0, else 36, with right checksums.
Bytes Rsdp(uint32_t rsdt, uint8_t revision = 0);

}  // namespace firmware
