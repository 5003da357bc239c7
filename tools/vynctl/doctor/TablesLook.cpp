// SPDX-License-Identifier: MIT
// Walks from the root pointer below 1 MiB to the tables, as the library does, and reads the kernel's copies.
#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <deque>
#include <string_view>

#include "doctor/PhysicalMemory.h"
#include "doctor/Tables.h"
#include "layout/AcpiLayout.h"
#include "layout/BiosRecord.h"
#include "layout/Checksum.h"
#include "layout/LittleEndian.h"
#include "view/Text.h"

namespace vynctl::doctor {
namespace {

namespace acpi = layout::acpi;

constexpr char kKernelTables[] = "/sys/firmware/acpi/tables";
constexpr size_t kParagraph = 16;

constexpr std::string_view kRecordSignature = layout::bios::kSignature;

/// Tables whose every byte the library reads; of the others it reads the header.
constexpr std::string_view kWholeTables[] = {"FACP", "APIC", "ECDT", "DSDT", "MCFG", "IAMT", "IADT", "RSDT"};

bool SumsToZero(std::string_view bytes) {
  return layout::ByteSum(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()) == 0;
}

/// One walk over the tables in memory.
class Walk {
 public:
  Walk(PhysicalMemory* memory, Tables* tables) : memory_(*memory), tables_(*tables) {}

  void Run() {
    FindPointer();
    FindRecord();
    if (tables_.PointerSound()) WalkTables();
  }

 private:
  /// The library tries the first one alone.
  void FindPointer() {
    tables_.areaError = memory_.Read(acpi::kBiosArea, acpi::kBiosAreaBytes, &area_);
    for (size_t at = 0; at + acpi::rsdp::kBytes <= area_.size(); at += kParagraph) {
      const std::string_view bytes = std::string_view(area_).substr(at, acpi::rsdp::kBytes);
      if (!bytes.starts_with(acpi::rsdp::kSignature)) continue;
      const bool sums = SumsToZero(bytes.substr(0, acpi::rsdp::kChecksummedBytes));
      const uint32_t rootTable = layout::Load32(bytes.data() + acpi::rsdp::kRsdtAddress);
      if (tables_.pointer.has_value()) {
        tables_.soundBehind |= sums && rootTable != 0;
        continue;
      }
      tables_.pointer = static_cast<uint32_t>(acpi::kBiosArea + at);
      tables_.pointerSums = sums;
      tables_.rootTable = rootTable;
    }
  }

  void FindRecord() {
    for (size_t at = area_.find(kRecordSignature); at != std::string::npos; at = area_.find(kRecordSignature, at + 1)) {
      const std::string bytes = area_.substr(at, layout::bios::kRecordBytes);
      tables_.recordAddress = static_cast<uint32_t>(acpi::kBiosArea + at);
      if (bytes.size() < layout::bios::kRecordBytes || !SumsToZero(bytes)) continue;
      tables_.record = bytes;
      return;
    }
  }

  void WalkTables() {
    const std::string root = ReadTable(tables_.rootTable);
    if (!root.starts_with(acpi::rsdt::kSignature)) return;
    for (size_t at = acpi::rsdt::kEntries; at + acpi::rsdt::kEntryBytes <= root.size(); at += acpi::rsdt::kEntryBytes)
      Push(layout::Load32(root.data() + at));
    for (size_t visited = 0; !addresses_.empty() && visited < acpi::limits::kMostTables; ++visited) {
      const uint32_t address = addresses_.front();
      addresses_.pop_front();
      Visit(address);
    }
  }

  void Push(uint32_t address) {
    if (address != 0) addresses_.push_back(address);
  }

  void Visit(uint32_t address) {
    const std::string table = ReadTable(address);
    if (table.starts_with("FACP") && table.size() >= acpi::fadt::kMinimumBytes) {
      Push(layout::Load32(table.data() + acpi::fadt::kFacs));
      Push(layout::Load32(table.data() + acpi::fadt::kDsdt));
    }
    for (FirmwareTable* ours : {&tables_.iadt, &tables_.iamt}) {
      if (!table.starts_with(ours->signature) || ours->address.has_value()) continue;
      ours->address = address;
      ours->memory = table;
    }
  }

  /// The table's bytes, or the header's where the library reads no more; empty when they cannot be had.
  std::string ReadTable(uint32_t address) {
    std::string bytes = Read(address, acpi::kHeaderBytes);
    if (bytes.empty() || !IsReadWhole(bytes)) return bytes;
    const uint32_t length = layout::Load32(bytes.data() + acpi::kLengthOffset);
    if (length < acpi::kHeaderBytes || length > acpi::limits::kLargestTable || length > budget_) return {};
    budget_ -= length;
    return Read(address, length);
  }

  static bool IsReadWhole(std::string_view table) {
    return std::ranges::count(kWholeTables, table.substr(0, acpi::kSignatureBytes)) != 0;
  }

  std::string Read(uint32_t address, uint32_t count) {
    std::string bytes;
    const int error = memory_.Read(address, count, &bytes);
    if (error != 0 && tables_.refusal == 0) {
      tables_.refusal = error;
      tables_.firstRefused = address;
    }
    return bytes;
  }

  PhysicalMemory& memory_;
  Tables& tables_;
  std::string area_;
  std::deque<uint32_t> addresses_;
  uint64_t budget_ = acpi::limits::kMostBytesRead;
};

/// Of the tables, not of the BIOS area.
size_t CountPages(const PhysicalMemory& memory) {
  return static_cast<size_t>(std::ranges::count_if(memory.Pages(), [](const auto& page) {
    return page.first < acpi::kBiosArea || page.first >= acpi::kBiosArea + acpi::kBiosAreaBytes;
  }));
}

/// The library passes over a copy that is not exactly the table which its name and its header promise.
bool IsSound(const FirmwareTable& table) {
  return table.kernel.size() >= acpi::kHeaderBytes && table.kernel.starts_with(table.signature) &&
         layout::Load32(table.kernel.data() + acpi::kLengthOffset) == table.kernel.size();
}

/// The kernel numbers the copies where several tables have one signature.
void ReadKernelCopy(const Machine& machine, FirmwareTable* table) {
  for (const char* number : {"", "1"}) {
    Machine::Content content = machine.Read(std::string(kKernelTables) + "/" + table->signature + number);
    table->kernel = std::move(content.bytes);
    table->kernelError = content.error;
    if (content.error != ENOENT) break;
  }
  if (table->kernelError != 0 || IsSound(*table)) return;
  table->kernel.clear();
  table->kernelError = EBADMSG;
}

/// The kernel's copies are served once a root table or table was refused, or when there is no sound root pointer.
Source Choose(const Tables& tables, const FirmwareTable& table) {
  if (!tables.AreaSeen()) return Source::kNone;
  if (!table.memory.empty()) return Source::kMemory;
  const bool served = tables.PointerSound() ? tables.refusal != 0 : !tables.soundBehind;
  return served && !table.kernel.empty() ? Source::kKernel : Source::kNone;
}

}  // namespace

const std::string& FirmwareTable::Used() const {
  static const std::string kNothing;
  return source == Source::kMemory ? memory : source == Source::kKernel ? kernel : kNothing;
}

std::string Tables::Model() const {
  if (record.empty()) return {};
  const std::string_view name = std::string_view(record).substr(layout::bios::kModel);
  return Printable(Trim(name.substr(0, name.find('\0'))));
}

Tables LookAtTables(const Machine& machine) {
  Tables tables;
  PhysicalMemory memory(machine);
  tables.deviceError = memory.OpenError();
  tables.writeError = machine.Open(PhysicalMemory::kPath, O_RDWR).Error();
  if (memory.IsOpen()) Walk(&memory, &tables).Run();
  tables.pages = CountPages(memory);
  tables.kernelLists = machine.Exists(kKernelTables);
  for (FirmwareTable* table : {&tables.iadt, &tables.iamt}) {
    ReadKernelCopy(machine, table);
    table->source = Choose(tables, *table);
  }
  return tables;
}

}  // namespace vynctl::doctor
