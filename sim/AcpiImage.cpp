// Standard ACPI tables and their place in physical memory.
#include <algorithm>
#include <string_view>

#include "layout/AcpiLayout.h"
#include "sim/SimBoard.h"
#include "sim/TableImage.h"

namespace sim {

using namespace layout;

namespace {

constexpr size_t kAlignment = 64;
constexpr uint8_t kFadtBytes = 116;
constexpr uint8_t kMcfgHeadBytes = 44;
constexpr uint8_t kMcfgAllocationBytes = 16;
constexpr size_t kRsdpFirstBytes = 20;
constexpr size_t kRsdpBytes = 36;

void PutAscii(Bytes* bytes, size_t offset, size_t size, std::string_view text) {
  if (bytes->size() < offset + size) bytes->resize(offset + size);
  std::copy_n(text.begin(), std::min(size, text.size()), bytes->begin() + static_cast<ptrdiff_t>(offset));
}

/// A table from bytes that already have room for the header.
Bytes Finish(std::string_view signature, const Bytes& withHeader) {
  return AcpiTable({.signature = std::string(signature)},
                   Bytes(withHeader.begin() + static_cast<ptrdiff_t>(acpi::kHeaderBytes), withHeader.end()));
}

}  // namespace

Bytes AcpiTable(const AcpiHeader& header, const Bytes& body) {
  Bytes table(acpi::kHeaderBytes, 0);
  table.insert(table.end(), body.begin(), body.end());
  PutAscii(&table, 0, acpi::kSignatureBytes, header.signature);
  Put(&table, acpi::kLengthOffset, 4, header.length.value_or(static_cast<uint32_t>(table.size())));
  Put(&table, acpi::kRevisionOffset, 1, header.revision);
  PutAscii(&table, acpi::kOemId, acpi::kOemIdBytes, header.oemId);
  PutAscii(&table, acpi::kOemTableId, acpi::kOemTableIdBytes, header.oemTableId);
  Put(&table, acpi::kOemRevision, 4, header.oemRevision);
  PutAscii(&table, acpi::kCreatorId, acpi::kCreatorIdBytes, header.creatorId);
  Put(&table, acpi::kCreatorRevision, 4, header.creatorRevision);
  table[acpi::kChecksumOffset] = header.checksum.value_or(ChecksumFor(table, acpi::kChecksumOffset));
  return table;
}

Bytes FadtTable(uint32_t dsdt, uint32_t facs, uint16_t sciInterrupt, uint32_t pm1aEvent, uint32_t pmTimer) {
  Bytes table(kFadtBytes, 0);
  Put(&table, 36, 4, facs);
  Put(&table, 40, 4, dsdt);
  Put(&table, 46, 2, sciInterrupt);
  Put(&table, 56, 4, pm1aEvent);
  Put(&table, 76, 4, pmTimer);
  return Finish("FACP", table);
}

Bytes McfgTable(const std::vector<uint64_t>& bases) {
  Bytes table(kMcfgHeadBytes + kMcfgAllocationBytes * bases.size(), 0);
  for (size_t i = 0; i < bases.size(); ++i) {
    const size_t allocation = kMcfgHeadBytes + kMcfgAllocationBytes * i;
    Put(&table, allocation, 8, bases[i]);
    Put(&table, allocation + 11, 1, 0xFF);
  }
  return Finish("MCFG", table);
}

Bytes MadtTable(const Bytes& subtables) {
  Bytes table(44, 0);
  Put(&table, 36, 4, 0xFEE00000);
  table.insert(table.end(), subtables.begin(), subtables.end());
  return Finish("APIC", table);
}

Bytes IoApicSubtable(uint32_t address, uint32_t interruptBase) {
  Bytes subtable(12, 0);
  Put(&subtable, 0, 1, 1);
  Put(&subtable, 1, 1, 12);
  Put(&subtable, 4, 4, address);
  Put(&subtable, 8, 4, interruptBase);
  return subtable;
}

Bytes EcdtTable(uint16_t commandPort, uint16_t dataPort) {
  // Two 12-byte generic addresses: space 1 (ports), 8 bits wide, the port at byte 4.
  Bytes table(65, 0);
  Put(&table, 36, 2, 0x0801);
  Put(&table, 40, 8, commandPort);
  Put(&table, 48, 2, 0x0801);
  Put(&table, 52, 8, dataPort);
  return Finish("ECDT", table);
}

Bytes DsdtTable(const Bytes& aml) { return AcpiTable({.signature = "DSDT", .revision = 2}, aml); }

Bytes RsdtTable(const std::vector<uint32_t>& entries) {
  Bytes body;
  for (uint32_t entry : entries) Put(&body, body.size(), 4, entry);
  return AcpiTable({.signature = "RSDT"}, body);
}

Bytes Rsdp(uint32_t rsdt, uint8_t revision) {
  Bytes pointer(revision == 0 ? kRsdpFirstBytes : kRsdpBytes, 0);
  PutAscii(&pointer, 0, 8, "RSD PTR ");
  PutAscii(&pointer, 9, 6, "VYNMAR");
  pointer[15] = revision;
  Put(&pointer, 16, 4, rsdt);
  if (revision != 0) Put(&pointer, 20, 4, kRsdpBytes);
  pointer[8] = ChecksumFor(Bytes(pointer.begin(), pointer.begin() + kRsdpFirstBytes), 8);
  if (revision != 0) pointer[32] = ChecksumFor(pointer, 32);
  return pointer;
}

AcpiImage& AcpiImage::RootPointerAt(uint32_t address) {
  root_ = address;
  return *this;
}

AcpiImage& AcpiImage::RootPointerRevision(uint8_t revision) {
  revision_ = revision;
  return *this;
}

AcpiImage& AcpiImage::TablesAt(uint32_t address) {
  tables_ = address;
  return *this;
}

AcpiImage& AcpiImage::Table(Bytes table) {
  pieces_.push_back({std::nullopt, std::move(table), true});
  return *this;
}

AcpiImage& AcpiImage::TableAt(uint32_t address, Bytes table) {
  pieces_.push_back({address, std::move(table), true});
  return *this;
}

AcpiImage& AcpiImage::UnlistedAt(uint32_t address, Bytes table) {
  pieces_.push_back({address, std::move(table), false});
  return *this;
}

AcpiImage& AcpiImage::Entry(uint32_t address) { return TableAt(address, {}); }

std::vector<std::pair<uint32_t, Bytes>> AcpiImage::Build() const {
  std::vector<std::pair<uint32_t, Bytes>> image;
  std::vector<uint32_t> entries;
  for (const Piece& piece : pieces_)
    if (piece.listed) entries.push_back(0);
  const auto align = [](size_t bytes) { return (bytes + kAlignment - 1) / kAlignment * kAlignment; };
  size_t next = tables_ + align(RsdtTable(entries).size());
  entries.clear();
  for (const Piece& piece : pieces_) {
    const uint32_t address = piece.address.value_or(static_cast<uint32_t>(next));
    if (!piece.address) next += align(piece.bytes.size());
    if (piece.listed) entries.push_back(address);
    if (!piece.bytes.empty()) image.emplace_back(address, piece.bytes);
  }
  image.insert(image.begin(), {tables_, RsdtTable(entries)});
  image.insert(image.begin(), {root_, Rsdp(tables_, revision_)});
  return image;
}

void AcpiImage::PutInto(Board* board) const {
  for (const auto& [address, bytes] : Build()) board->Memory(address, bytes);
}

}  // namespace sim
