// SPDX-License-Identifier: MIT
// Finds the root pointer and follows the ACPI tables from it.
#include "tables/TAcpiBase.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>

#include "hw/TReadWrite.h"
#include "layout/AcpiLayout.h"
#include "layout/Checksum.h"
#include "layout/LittleEndian.h"

using namespace layout;

namespace {

constexpr uint32_t kParagraph = 16;

/// Far above what firmware publishes.
constexpr unsigned kMostSsdtCandidates = 0x10000;

constexpr uint32_t kSsdtAreaBytes = 0x10000;
constexpr uint32_t kSsdtAreaLimit = 0x1000000;

struct Builder {
  char signature[5];
  size_t fixedBytes;  ///< a shorter table is passed over
  void (TAcpiBase::*build)(unsigned char* table);
};

constexpr Builder kBuilders[] = {
    {"RSDT", acpi::kHeaderBytes, &TAcpiBase::BuildRSDT},
    {"FACP", acpi::fadt::kMinimumBytes, &TAcpiBase::BuildFACP},
    {"APIC", acpi::madt::kMinimumBytes, &TAcpiBase::BuildAPIC},
    {"ECDT", acpi::ecdt::kMinimumBytes, &TAcpiBase::BuildECDT},
    {"DSDT", acpi::kHeaderBytes, &TAcpiBase::BuildDSDT},
    {"MCFG", acpi::mcfg::kMinimumBytes, &TAcpiBase::BuildMCFG},
    {"IAMT", acpi::kHeaderBytes, &TAcpiBase::BuildIAMT},
    {"IADT", acpi::kHeaderBytes, &TAcpiBase::BuildIADT},
};

const Builder* FindBuilder(const TableHeader& header) {
  for (const Builder& builder : kBuilders)
    if (std::memcmp(header.Signature, builder.signature, acpi::kSignatureBytes) == 0) return &builder;
  return nullptr;
}

bool SumsToZero(const unsigned char* bytes, size_t length) { return ByteSum(bytes, length) == 0; }

}  // namespace

TAcpiBase* TAcpiBase::g_Instance = nullptr;

TAcpiBase* TAcpiBase::GetInstance() {
  if (g_Instance == nullptr) g_Instance = new TAcpiBase;
  return g_Instance;
}

void TAcpiBase::FreeInstance() {
  delete g_Instance;
  g_Instance = nullptr;
}

TAcpiBase::TAcpiBase()
    : ReadWrite(TReadWrite::GetInstance()),
      DsdtHeader{},
      DsdtAddress(0),
      PcieBase(TReadWrite::kNoPcieBase),
      RsdpFound(0),
      Tables(std::make_unique<TableList>()),
      Current(nullptr),
      IamTable(nullptr),
      IadTable(nullptr),
      readBudget_(acpi::limits::kMostBytesRead),
      candidateBudget_(kMostSsdtCandidates) {
  InitKQConfig();
  BuildRSDP();
  BuildAcpiTables();
}

TAcpiBase::~TAcpiBase() = default;

void TAcpiBase::InitKQConfig() { Config = std::make_unique<TKQConfig>(); }

bool TAcpiBase::Read(uint32_t address, void* buffer, uint32_t count) {
  return ReadWrite != nullptr && ReadWrite->MemoryReadBlock(address, buffer, count);
}

/// Searches every 16 bytes, where ACPI places its structures in memory that no pointer leads to.
uint64_t TAcpiBase::Find(uint64_t start, uint32_t length, const char* text) {
  if (ReadWrite == nullptr) return TReadWrite::kNotFound;
  unsigned char pattern[sizeof acpi::rsdp::kSignature];
  const auto bytes = static_cast<uint32_t>(strnlen(text, sizeof pattern));
  std::memcpy(pattern, text, bytes);
  return ReadWrite->MemoryFindData(start, length, kParagraph, 0, pattern, bytes, false);
}

void TAcpiBase::BuildRSDP() {
  const uint64_t address = Find(acpi::kBiosArea, acpi::kBiosAreaBytes, acpi::rsdp::kSignature);
  // Only the first copy of the signature is tried.
  if (address == TReadWrite::kNotFound || !VerifyRSDP(static_cast<uint32_t>(address)))
    std::puts("TAcpiBase::BuildRSDP Failed !!");
}

bool TAcpiBase::VerifyRSDP(unsigned int address) {
  unsigned char rsdp[acpi::rsdp::kBytes];
  if (!Read(address, rsdp, sizeof rsdp) || !SumsToZero(rsdp, acpi::rsdp::kChecksummedBytes)) return false;
  RsdpFound = 1;
  Append(address,
         rsdp[acpi::rsdp::kRevision] == 0 ? acpi::rsdp::kChecksummedBytes : Load32(rsdp + acpi::rsdp::kLength));
  Append(Load32(rsdp + acpi::rsdp::kRsdtAddress));
  return true;
}

void TAcpiBase::BuildAcpiTables() {
  // Builders append entries, which the same walk then visits.
  for (size_t i = 1; i < Tables->size(); ++i) VisitTable((*Tables)[i].get());
}

void TAcpiBase::VisitTable(TableEntry* entry) {
  const TableHeader header = ReadHeader(entry->Address);
  entry->Length = Load32(header.Length);
  const Builder* builder = FindBuilder(header);
  if (builder == nullptr || entry->Length < builder->fixedBytes) return;
  const auto table = ReadTable(entry->Address, entry->Length);
  if (table == nullptr) return;
  appending_ = visited_.insert(entry->Address).second;
  (this->*builder->build)(table.get());
  appending_ = true;
}

void TAcpiBase::Append(uint32_t address, uint32_t length) {
  if (!appending_ || Tables->size() >= acpi::limits::kMostTables) return;
  Tables->push_back(std::make_unique<TableEntry>(TableEntry{address, length}));
}

TableHeader TAcpiBase::ReadHeader(uint32_t address) {
  TableHeader header = {};
  Read(address, &header, sizeof header);
  return header;
}

/// A copy of a whole table; null when it cannot be read or is larger than the limits allow.
std::unique_ptr<unsigned char[]> TAcpiBase::ReadTable(uint32_t address, uint32_t length) {
  if (length > acpi::limits::kLargestTable || length > readBudget_) return nullptr;
  readBudget_ -= length;
  std::unique_ptr<unsigned char[]> table(new (std::nothrow) unsigned char[length]);
  if (table != nullptr && !Read(address, table.get(), length)) table.reset();
  return table;
}

void TAcpiBase::SetupSSDTEx() {
  uint32_t end = 0;
  for (const auto& entry : *Tables) end = std::max(end, entry->Address + entry->Length);
  const uint32_t start = end & ~(kParagraph - 1);
  // Beyond the limit the distance wraps in 32 bits, which leaves the whole area to search.
  uint32_t area = std::min(kSsdtAreaBytes, kSsdtAreaLimit - start);
  // The next match is looked for behind the last, so that an area full of signatures costs one walk.
  for (uint64_t next = start; candidateBudget_ > 0; --candidateBudget_) {
    const uint64_t found = Find(next, area, "SSDT");
    if (found == TReadWrite::kNotFound) return;
    area -= static_cast<uint32_t>(found + kParagraph - next);
    next = found + kParagraph;
    const auto address = static_cast<uint32_t>(found);
    const TableHeader header = ReadHeader(address);
    const uint32_t length = Load32(header.Length);
    if (length < acpi::kHeaderBytes) continue;
    const auto table = ReadTable(address, length);
    // The list is not consulted: an SSDT that the RSDT lists too is listed twice.
    if (table != nullptr && SumsToZero(table.get(), length)) Append(address);
  }
}

bool TAcpiBase::Select(TableEntry* entry) {
  Current = entry;
  return true;
}

bool TAcpiBase::ReadEntry(const TableEntry& entry, unsigned char* buffer) {
  Read(entry.Address, buffer, entry.Length);
  return true;
}

bool TAcpiBase::GetAcpiTable(int index) {
  if (index < 0 || static_cast<size_t>(index) >= Tables->size()) return false;
  return Select((*Tables)[static_cast<size_t>(index)].get());
}

bool TAcpiBase::GetAcpiTable(int index, unsigned char* buffer) {
  return GetAcpiTable(index) && ReadEntry(*Current, buffer);
}

bool TAcpiBase::GetAcpiTable(const char* signature) {
  if (strnlen(signature, acpi::kSignatureBytes + 1) != acpi::kSignatureBytes) return false;
  for (const auto& entry : *Tables) {
    const TableHeader header = ReadHeader(entry->Address);
    if (std::memcmp(header.Signature, signature, acpi::kSignatureBytes) == 0) return Select(entry.get());
  }
  return false;
}

bool TAcpiBase::GetAcpiTable(const char* signature, unsigned char* buffer) {
  return GetAcpiTable(signature) && ReadEntry(*Current, buffer);
}

bool TAcpiBase::CheckAcpiTableEntry(unsigned int address) {
  for (size_t i = 1; i < Tables->size(); ++i)
    if ((*Tables)[i]->Address == address) return Select((*Tables)[i].get());
  return false;
}

bool TAcpiBase::CheckTableChecksum(TableHeader* table) {
  return SumsToZero(reinterpret_cast<unsigned char*>(table), Load32(table->Length));
}

bool TAcpiBase::CheckTableChecksum(unsigned char* bytes, int length) {
  return SumsToZero(bytes, length > 0 ? static_cast<size_t>(length) : 0);
}

unsigned int TAcpiBase::GetPcieBaseAddress() { return PcieBase; }
