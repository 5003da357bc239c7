// SPDX-License-Identifier: MIT
// The fixed parts of ACPI tables.
#include "firmware/AcpiTable.h"

#include <algorithm>
#include <string_view>

#include "layout/AcpiLayout.h"

namespace firmware {

using namespace layout;

namespace {

/// A table from bytes that already have room for the header.
Bytes Finish(std::string_view signature, const Bytes& withHeader) {
  return AcpiTable({.signature = std::string(signature)},
                   Bytes(withHeader.begin() + static_cast<ptrdiff_t>(acpi::kHeaderBytes), withHeader.end()));
}

}  // namespace

Bytes AcpiTable(const AcpiHeader& header, const Bytes& body) {
  Bytes table(acpi::kHeaderBytes, 0);
  table.insert(table.end(), body.begin(), body.end());
  PutText(&table, 0, acpi::kSignatureBytes, header.signature);
  Put(&table, acpi::kLengthOffset, 4, header.length.value_or(static_cast<uint32_t>(table.size())));
  Put(&table, acpi::kRevisionOffset, 1, header.revision);
  PutText(&table, acpi::kOemId, acpi::kOemIdBytes, header.oemId);
  PutText(&table, acpi::kOemTableId, acpi::kOemTableIdBytes, header.oemTableId);
  Put(&table, acpi::kOemRevision, 4, header.oemRevision);
  PutText(&table, acpi::kCreatorId, acpi::kCreatorIdBytes, header.creatorId);
  Put(&table, acpi::kCreatorRevision, 4, header.creatorRevision);
  table[acpi::kChecksumOffset] = header.checksum.value_or(ChecksumFor(table, acpi::kChecksumOffset));
  return table;
}

Bytes FadtTable(uint32_t dsdt, uint32_t facs, uint16_t sciInterrupt, uint32_t pm1aEvent, uint32_t pmTimer) {
  Bytes table(acpi::fadt::kMinimumBytes, 0);
  Put(&table, acpi::fadt::kFacs, 4, facs);
  Put(&table, acpi::fadt::kDsdt, 4, dsdt);
  Put(&table, acpi::fadt::kSciInterrupt, 2, sciInterrupt);
  Put(&table, acpi::fadt::kPm1aEventBlock, 4, pm1aEvent);
  Put(&table, acpi::fadt::kPmTimerBlock, 4, pmTimer);
  return Finish("FACP", table);
}

Bytes McfgTable(const std::vector<uint64_t>& bases) {
  Bytes table(acpi::mcfg::kAllocations + acpi::mcfg::kAllocationBytes * bases.size(), 0);
  for (size_t i = 0; i < bases.size(); ++i) {
    const size_t allocation = acpi::mcfg::kAllocations + acpi::mcfg::kAllocationBytes * i;
    Put(&table, allocation, 8, bases[i]);
    Put(&table, allocation + 11, 1, 0xFF);
  }
  return Finish("MCFG", table);
}

Bytes MadtTable(const Bytes& subtables) {
  constexpr uint32_t kLocalApic = 0xFEE00000;
  Bytes table(acpi::madt::kFirstSubtable, 0);
  Put(&table, acpi::kHeaderBytes, 4, kLocalApic);
  table.insert(table.end(), subtables.begin(), subtables.end());
  return Finish("APIC", table);
}

Bytes IoApicSubtable(uint32_t address, uint32_t interruptBase) {
  using namespace acpi::madt;
  Bytes subtable(kIoApicBytes, 0);
  Put(&subtable, 0, 1, kIoApicType);
  Put(&subtable, 1, 1, kIoApicBytes);
  Put(&subtable, kIoApicAddress, 4, address);
  Put(&subtable, kIoApicInterruptBase, 4, interruptBase);
  return subtable;
}

Bytes EcdtTable(uint16_t commandPort, uint16_t dataPort) {
  // Two 12-byte generic addresses: space 1 (ports), 8 bits wide, the port at byte 4.
  Bytes table(65, 0);
  constexpr uint16_t kBytePort = 0x0801;
  Put(&table, acpi::ecdt::kControl, 2, kBytePort);
  Put(&table, acpi::ecdt::kCommandPort, 8, commandPort);
  Put(&table, acpi::ecdt::kDataPort - 4, 2, kBytePort);
  Put(&table, acpi::ecdt::kDataPort, 8, dataPort);
  return Finish("ECDT", table);
}

Bytes DsdtTable(const Bytes& aml) { return AcpiTable({.signature = "DSDT", .revision = 2}, aml); }

Bytes RsdtTable(const std::vector<uint32_t>& entries) {
  Bytes body;
  for (uint32_t entry : entries) Put(&body, body.size(), 4, entry);
  return AcpiTable({.signature = "RSDT"}, body);
}

Bytes Rsdp(uint32_t rsdt, uint8_t revision) {
  using namespace acpi::rsdp;
  constexpr size_t kOemId = 9, kExtendedChecksum = 32;
  Bytes pointer(revision == 0 ? kChecksummedBytes : kBytes, 0);
  PutText(&pointer, 0, kSignatureBytes, kSignature);
  PutText(&pointer, kOemId, acpi::kOemIdBytes, "VYNMAR");
  pointer[kRevision] = revision;
  Put(&pointer, kRsdtAddress, 4, rsdt);
  if (revision != 0) Put(&pointer, kLength, 4, kBytes);
  pointer[kChecksum] = ChecksumFor(Bytes(pointer.begin(), pointer.begin() + kChecksummedBytes), kChecksum);
  if (revision != 0) pointer[kExtendedChecksum] = ChecksumFor(pointer, kExtendedChecksum);
  return pointer;
}

}  // namespace firmware
