// SPDX-License-Identifier: MIT
// Decides when the kernel's copies of the firmware's tables are needed, and puts them into the memory that is mapped.
#include "hw/FirmwareMemory.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <utility>

#include "layout/BiosRecord.h"
#include "layout/Checksum.h"
#include "layout/LittleEndian.h"

namespace platform {

using namespace layout;

namespace {

constexpr uint64_t kParagraph = 16;
constexpr uint64_t kBiosAreaEnd = acpi::kBiosArea + acpi::kBiosAreaBytes;
constexpr uint64_t kPageBytes = 0x1000;
constexpr char kFadt[] = "FACP", kFacs[] = "FACS", kDsdt[] = "DSDT";

using Bytes = std::vector<uint8_t>;

/// A mapping of "/dev/mem" for reading.
class Mapping {
 public:
  Mapping(int descriptor, uint64_t offset, size_t length)
      : memory_(mmap(nullptr, length, PROT_READ, MAP_SHARED, descriptor, static_cast<off_t>(offset))),
        length_(length) {}
  ~Mapping() {
    if (IsMapped()) munmap(memory_, length_);
  }
  Mapping(const Mapping&) = delete;
  Mapping& operator=(const Mapping&) = delete;

  bool IsMapped() const { return memory_ != MAP_FAILED; }
  const uint8_t* Bytes() const { return static_cast<const uint8_t*>(memory_); }
  /// Gives the mapping away.
  void* Release() { return std::exchange(memory_, MAP_FAILED); }

 private:
  void* memory_;
  size_t length_;
};

/// What lies at an address, when it can be mapped.
std::optional<Bytes> Read(int descriptor, uint64_t address, size_t count) {
  const size_t offset = address % kPageBytes;
  const Mapping memory(descriptor, address - offset, offset + count);
  if (!memory.IsMapped()) return {};
  return Bytes(memory.Bytes() + offset, memory.Bytes() + offset + count);
}

bool IsRootPointer(const uint8_t* paragraph) {
  return std::memcmp(paragraph, acpi::rsdp::kSignature, acpi::rsdp::kSignatureBytes) == 0;
}

/// One that leads to an RSDT; firmware may name an XSDT alone.
bool IsSound(const uint8_t* rootPointer) {
  return ByteSum(rootPointer, acpi::rsdp::kChecksummedBytes) == 0 &&
         Load32(rootPointer + acpi::rsdp::kRsdtAddress) != 0;
}

Bytes RootPointerTo(uint32_t rootTable) {
  Bytes bytes(acpi::rsdp::kChecksummedBytes);
  std::memcpy(bytes.data(), acpi::rsdp::kSignature, acpi::rsdp::kSignatureBytes);
  Store32(bytes.data() + acpi::rsdp::kRsdtAddress, rootTable);
  bytes[acpi::rsdp::kChecksum] = static_cast<uint8_t>(-ByteSum(bytes.data(), bytes.size()));
  return bytes;
}

void CorrectChecksum(Bytes& table) {
  table[acpi::kChecksumOffset] =
      static_cast<uint8_t>(table[acpi::kChecksumOffset] - ByteSum(table.data(), table.size()));
}

Bytes RootTable(const std::vector<uint32_t>& tables) {
  Bytes bytes(acpi::rsdt::kEntries + acpi::rsdt::kEntryBytes * tables.size());
  std::memcpy(bytes.data(), acpi::rsdt::kSignature, acpi::kSignatureBytes);
  Store32(bytes.data() + acpi::kLengthOffset, static_cast<uint32_t>(bytes.size()));
  bytes[acpi::kRevisionOffset] = 1;
  for (size_t i = 0; i < tables.size(); ++i)
    Store32(bytes.data() + acpi::rsdt::kEntries + acpi::rsdt::kEntryBytes * i, tables[i]);
  CorrectChecksum(bytes);
  return bytes;
}

/// The highest place for a root pointer in a copy of the BIOS area: bytes that are all zeros or all ones, and no part
/// of what may be a BIOS information record.
std::optional<uint64_t> FreePlace(Bytes area) {
  const std::string_view signature = bios::kSignature;
  const auto find = [&](auto from) { return std::search(from, area.end(), signature.begin(), signature.end()); };
  for (auto at = find(area.begin()); at != area.end(); at = find(at + 1)) {
    const auto record = std::min<ptrdiff_t>(bios::kRecordBytes, area.end() - at);
    std::fill(at + static_cast<ptrdiff_t>(signature.size()), at + record, uint8_t{1});
  }
  for (size_t place = area.size() - 3 * kParagraph;; place -= kParagraph) {
    const auto first = area.begin() + static_cast<ptrdiff_t>(place);
    const bool even = std::equal(first + 1, first + acpi::rsdp::kBytes, first);
    if (even && (*first == 0x00 || *first == 0xFF)) return acpi::kBiosArea + place;
    if (place == 0) return {};
  }
}

/// The DSDT and the FACS hang on the FADT; the root table names all others.
bool HangsOnFadt(const std::string& signature) { return signature == kFacs || signature == kDsdt; }

bool HasVendorTable(std::vector<KernelTable>& tables) {
  return Find(tables, "IADT") != nullptr || Find(tables, "IAMT") != nullptr;
}

constexpr uint64_t RoundUp(uint64_t bytes) { return (bytes + kParagraph - 1) / kParagraph * kParagraph; }

/// The first table whose signature passes, taken out of `tables`.
template <typename Passes>
std::optional<KernelTable> Take(std::vector<KernelTable>& tables, Passes passes) {
  const auto found =
      std::find_if(tables.begin(), tables.end(), [&](const KernelTable& table) { return passes(table.signature); });
  if (found == tables.end()) return {};
  KernelTable table = std::move(*found);
  tables.erase(found);
  return table;
}

/// Room in System RAM for all these tables and a root table; empty when there is none.
std::optional<uint32_t> RoomFor(const std::vector<KernelTable>& tables) {
  uint64_t bytes = RoundUp(acpi::rsdt::kEntries + acpi::rsdt::kEntryBytes * tables.size());
  for (const KernelTable& table : tables) bytes += RoundUp(table.bytes.size());
  return FindSystemRam(bytes);
}

}  // namespace

void* FirmwareMemory::Map(int descriptor, uint64_t offset, size_t length) {
  const Range asked = {offset, offset + length};
  if (Serves(asked, Place::kInvented)) return Compose(asked, nullptr);
  Mapping memory(descriptor, offset, length);
  if (!memory.IsMapped()) return ServeRefused(descriptor, asked) ? Compose(asked, nullptr) : nullptr;
  LookForRootPointer(descriptor, memory.Bytes(), asked);
  return ShowsThrough(asked) ? Compose(asked, memory.Bytes()) : memory.Release();
}

/// Follows the readers through the BIOS area, in what they have mapped anyway. They take the first root pointer.
void FirmwareMemory::LookForRootPointer(int descriptor, const uint8_t* memory, Range asked) {
  if (rootPointer_ != RootPointer::kUnknown || asked.begin > searchedTo_) return;
  const uint64_t end = std::min(asked.end, kBiosAreaEnd);
  for (; searchedTo_ + kParagraph <= end; searchedTo_ += kParagraph) {
    const uint8_t* paragraph = memory + (searchedTo_ - asked.begin);
    if (!IsRootPointer(paragraph)) continue;
    if (searchedTo_ + acpi::rsdp::kChecksummedBytes > end) return;  // whoever wants it will ask for the rest
    if (!IsSound(paragraph)) return ServeWithoutRootPointer(descriptor);
    rootPointer_ = RootPointer::kSound;
    rootTable_ = Load32(paragraph + acpi::rsdp::kRsdtAddress);
    return;
  }
  if (searchedTo_ == kBiosAreaEnd) ServeWithoutRootPointer(descriptor);
}

void FirmwareMemory::ServeWithoutRootPointer(int descriptor) {
  rootPointer_ = RootPointer::kMissing;
  auto tables = ReadKernelTables();
  if (!HasVendorTable(tables)) return;
  const auto area = Read(descriptor, acpi::kBiosArea, acpi::kBiosAreaBytes);
  if (!area) return;
  std::vector<Patch> patches;
  for (size_t at = 0; at < area->size(); at += kParagraph) {
    if (!IsRootPointer(area->data() + at)) continue;
    const bool whole = at + acpi::rsdp::kChecksummedBytes <= area->size();
    if (whole && IsSound(area->data() + at)) return;  // firmware's, behind one that is not: nobody tries it
    patches.push_back({acpi::kBiosArea + at, Bytes(acpi::rsdp::kSignatureBytes), Place::kOverMemory});
  }
  const auto place = FreePlace(*area);
  const uint32_t rootTable = place ? ServeAllTables(std::move(tables), 0) : 0;
  if (rootTable == 0) return;
  patches.push_back({*place, RootPointerTo(rootTable), Place::kOverMemory});
  std::move(patches.begin(), patches.end(), std::back_inserter(patches_));
}

/// A table is asked for by its header first.
bool FirmwareMemory::ServeRefused(int descriptor, Range asked) {
  const auto asksFor = [&](uint32_t table) { return asked.end == uint64_t{table} + acpi::kHeaderBytes; };
  if (rootTable_ != 0 && !looked_) {
    if (asksFor(rootTable_)) {
      looked_ = true;
      auto tables = ReadKernelTables();
      if (HasVendorTable(tables)) ServeAllTables(std::move(tables), rootTable_);
    } else {
      LearnNamedTables(descriptor);
      const auto named = [&](const Named& table) { return asksFor(table.address); };
      if (std::any_of(named_.begin(), named_.end(), named)) {
        looked_ = true;
        ServeRefusedTables(descriptor);
      }
    }
  }
  return Serves(asked, Place::kRefused);
}

/// What the readable root table names, and what a readable FADT adds.
void FirmwareMemory::LearnNamedTables(int descriptor) {
  if (learnt_) return;
  learnt_ = true;
  const auto header = Read(descriptor, rootTable_, acpi::kHeaderBytes);
  if (!header) return;
  const uint32_t length = Load32(header->data() + acpi::kLengthOffset);
  if (length < acpi::kHeaderBytes || length > acpi::kHeaderBytes + acpi::limits::kMostTables * acpi::rsdt::kEntryBytes)
    return;
  const auto root = Read(descriptor, rootTable_, length);
  if (!root) return;
  for (size_t at = acpi::rsdt::kEntries; at + acpi::rsdt::kEntryBytes <= length; at += acpi::rsdt::kEntryBytes) {
    const uint32_t address = Load32(root->data() + at);
    if (address == 0) continue;
    named_.push_back({address, ""});
    const auto fadt = Read(descriptor, address, acpi::fadt::kDsdt + sizeof(uint32_t));
    if (!fadt || std::memcmp(fadt->data(), kFadt, acpi::kSignatureBytes) != 0) continue;
    named_.push_back({Load32(fadt->data() + acpi::fadt::kFacs), kFacs});
    named_.push_back({Load32(fadt->data() + acpi::fadt::kDsdt), kDsdt});
  }
}

/// Copies of tables that can be read are of no use; the others go to the refused addresses, in their order.
void FirmwareMemory::ServeRefusedTables(int descriptor) {
  auto tables = ReadKernelTables();
  if (!HasVendorTable(tables)) return;
  std::vector<Named> refused;
  for (const Named& named : named_) {
    const auto signature = Read(descriptor, named.address, acpi::kSignatureBytes);
    if (!signature) {
      refused.push_back(named);
    } else {
      Take(tables,
           [&](const std::string& other) { return std::equal(other.begin(), other.end(), signature->begin()); });
    }
  }
  std::vector<Patch> served;
  for (const Named& named : refused) {
    auto table = Take(tables, [&](const std::string& signature) {
      return named.signature.empty() ? !HangsOnFadt(signature) : signature == named.signature;
    });
    if (table) served.push_back({named.address, std::move(table->bytes), Place::kRefused, table->signature});
  }
  const auto isFadt = [](const Patch& table) { return table.signature == kFadt; };
  if (std::any_of(served.begin(), served.end(), isFadt)) {
    // What hangs on it was refused as well, at addresses that only the real one tells.
    std::erase_if(tables, [](const KernelTable& table) { return !HangsOnFadt(table.signature); });
    Invent(std::move(tables), &served);
  }
  ServeTables(std::move(served));
}

/// Serves the tables at made-up addresses, and a root table at `rootTable`, where it was refused, or beside them.
/// @return the root table's address; 0 when there is no room
uint32_t FirmwareMemory::ServeAllTables(std::vector<KernelTable> tables, uint32_t rootTable) {
  std::vector<Patch> served;
  const uint32_t behind = Invent(std::move(tables), &served);
  if (behind == 0) return 0;
  std::vector<uint32_t> listed;
  for (const Patch& table : served)
    if (!HangsOnFadt(table.signature)) listed.push_back(static_cast<uint32_t>(table.address));
  const Place place = rootTable == 0 ? Place::kInvented : Place::kRefused;
  if (rootTable == 0) rootTable = behind;
  served.push_back({rootTable, RootTable(listed), place});
  ServeTables(std::move(served));
  return rootTable;
}

/// Gives the tables addresses in System RAM. @return the address behind them; 0 when there is no room
uint32_t FirmwareMemory::Invent(std::vector<KernelTable> tables, std::vector<Patch>* served) {
  const auto room = RoomFor(tables);
  if (!room) return 0;
  uint64_t next = *room;
  for (KernelTable& table : tables) {
    const uint64_t address = next;
    next += RoundUp(table.bytes.size());
    served->push_back({address, std::move(table.bytes), Place::kInvented, table.signature});
  }
  return static_cast<uint32_t>(next);
}

/// A FADT among them names the FACS and the DSDT among them.
void FirmwareMemory::ServeTables(std::vector<Patch> tables) {
  for (Patch& fadt : tables) {
    if (fadt.signature != kFadt || fadt.bytes.size() < acpi::fadt::kDsdt + sizeof(uint32_t)) continue;
    for (const Patch& table : tables) {
      const auto address = static_cast<uint32_t>(table.address);
      if (table.signature == kFacs) Store32(fadt.bytes.data() + acpi::fadt::kFacs, address);
      if (table.signature == kDsdt) Store32(fadt.bytes.data() + acpi::fadt::kDsdt, address);
    }
    CorrectChecksum(fadt.bytes);
  }
  std::move(tables.begin(), tables.end(), std::back_inserter(patches_));
}

/// Served is what ends within a table: every other byte of its pages is what it was.
bool FirmwareMemory::Serves(Range asked, Place place) const {
  return std::any_of(patches_.begin(), patches_.end(), [&](const Patch& patch) {
    return patch.place == place && asked.end > patch.address && asked.end <= patch.address + patch.bytes.size();
  });
}

bool FirmwareMemory::ShowsThrough(Range asked) const {
  return std::any_of(patches_.begin(), patches_.end(), [&](const Patch& patch) {
    return patch.place == Place::kOverMemory && asked.begin < patch.address + patch.bytes.size() &&
           patch.address < asked.end;
  });
}

/// Private memory with what `memory` holds, or zeros, and what is served in that range.
void* FirmwareMemory::Compose(Range asked, const uint8_t* memory) const {
  const auto length = static_cast<size_t>(asked.end - asked.begin);
  void* composed = mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (composed == MAP_FAILED) return nullptr;
  auto* bytes = static_cast<uint8_t*>(composed);
  if (memory != nullptr) std::memcpy(bytes, memory, length);
  for (const Patch& patch : patches_) {
    const uint64_t begin = std::max(asked.begin, patch.address);
    const uint64_t end = std::min(asked.end, patch.address + patch.bytes.size());
    if (begin >= end) continue;
    std::memcpy(bytes + (begin - asked.begin), patch.bytes.data() + (begin - patch.address), end - begin);
  }
  return composed;
}

}  // namespace platform
