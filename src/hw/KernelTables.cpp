// SPDX-License-Identifier: MIT
// Reads the kernel's copies of ACPI tables, and the kernel's map of physical memory.
#include "hw/KernelTables.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <tuple>

#include "layout/AcpiLayout.h"
#include "layout/LittleEndian.h"

namespace platform {

using namespace layout;

namespace {

constexpr char kTableFolder[] = "/sys/firmware/acpi/tables";
constexpr char kMemoryMap[] = "/proc/iomem";

constexpr uint64_t kLowestRam = 0x100000;
constexpr uint64_t kRamLimit = 0x100000000;
constexpr uint64_t kPageBytes = 0x1000;
// The search for further SSDTs goes this far beyond the last table; it is to find nothing but RAM.
constexpr uint64_t kRamBehind = 0x10000 + kPageBytes;
// The kernel shows the addresses of its memory map to CAP_SYS_ADMIN alone. Every PC that runs Linux has RAM from here
// on, for its kernel is loaded there.
constexpr uint32_t kUsualRam = 0x1000000;

struct Close {
  void operator()(DIR* folder) const { closedir(folder); }
  void operator()(FILE* file) const { fclose(file); }
};
using Folder = std::unique_ptr<DIR, Close>;

class File {
 public:
  File(int folder, const char* name) : descriptor_(openat(folder, name, O_RDONLY | O_NOFOLLOW | O_CLOEXEC)) {}
  ~File() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  /// The number of bytes read, less than `count` only at the file's end or a failure.
  size_t Read(uint8_t* buffer, size_t count) const {
    size_t done = 0;
    while (done < count) {
      const ssize_t bytes = read(descriptor_, buffer + done, count - done);
      if (bytes <= 0) break;
      done += static_cast<size_t>(bytes);
    }
    return done;
  }

 private:
  int descriptor_;
};

Folder OpenTableFolder() {
  const int descriptor = open(kTableFolder, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return nullptr;
  Folder folder(fdopendir(descriptor));
  if (folder == nullptr) close(descriptor);
  return folder;
}

/// "SSDT" or "SSDT12": a signature, and the instance where there are several. Other names are no tables.
std::optional<KernelTable> NamedTable(std::string_view name) {
  if (name.size() < acpi::kSignatureBytes) return {};
  const std::string instance(name.substr(acpi::kSignatureBytes));
  constexpr size_t kMostDigits = 4;
  const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  if (instance.size() > kMostDigits || !std::all_of(instance.begin(), instance.end(), isDigit)) return {};
  KernelTable table;
  table.signature = name.substr(0, acpi::kSignatureBytes);
  table.instance = static_cast<unsigned>(std::strtoul(instance.c_str(), nullptr, 10));
  return table;
}

/// Fills in the bytes; false when the file is not exactly the table that its name and its header promise.
bool ReadTable(const File& file, uint64_t budget, KernelTable* table) {
  uint8_t header[acpi::kHeaderBytes];
  if (file.Read(header, sizeof header) != sizeof header) return false;
  const uint32_t length = Load32(header + acpi::kLengthOffset);
  if (std::memcmp(header, table->signature.data(), acpi::kSignatureBytes) != 0) return false;
  if (length < sizeof header || length > acpi::limits::kLargestTable || length > budget) return false;
  table->bytes.resize(length);
  std::copy_n(header, sizeof header, table->bytes.begin());
  const size_t rest = length - sizeof header;
  uint8_t beyond;
  return file.Read(table->bytes.data() + sizeof header, rest) == rest && file.Read(&beyond, 1) == 0;
}

}  // namespace

std::vector<KernelTable> ReadKernelTables() {
  std::vector<KernelTable> tables;
  const Folder folder = OpenTableFolder();
  if (folder == nullptr) return tables;
  uint64_t budget = acpi::limits::kMostBytesRead;
  while (const dirent* entry = readdir(folder.get())) {
    auto table = NamedTable(entry->d_name);
    if (!table || tables.size() >= acpi::limits::kMostTables) continue;
    if (!ReadTable(File(dirfd(folder.get()), entry->d_name), budget, &*table)) continue;
    budget -= table->bytes.size();
    tables.push_back(std::move(*table));
  }
  std::sort(tables.begin(), tables.end(), [](const KernelTable& a, const KernelTable& b) {
    return std::tie(a.signature, a.instance) < std::tie(b.signature, b.instance);
  });
  return tables;
}

KernelTable* Find(std::vector<KernelTable>& tables, std::string_view signature) {
  for (KernelTable& table : tables)
    if (table.signature == signature) return &table;
  return nullptr;
}

std::optional<uint32_t> FindSystemRam(uint64_t bytes) {
  const std::unique_ptr<FILE, Close> map(fopen(kMemoryMap, "re"));
  const uint64_t wanted = (bytes + kPageBytes - 1) / kPageBytes * kPageBytes + kRamBehind;
  bool shown = false;
  char line[256];
  while (map != nullptr && std::fgets(line, sizeof line, map.get()) != nullptr) {
    unsigned long long first, last;
    int name = 0;
    // Ranges within ranges are indented.
    if (line[0] == ' ' || std::sscanf(line, "%llx-%llx : %n", &first, &last, &name) != 2 || name == 0) continue;
    shown |= last != 0;
    if (std::strcmp(line + name, "System RAM\n") != 0) continue;
    const uint64_t start = std::max<uint64_t>(first, kLowestRam);
    const uint64_t end = std::min<uint64_t>(last + 1, kRamLimit) & ~(kPageBytes - 1);
    if (end > start && end - start >= wanted) return static_cast<uint32_t>(end - wanted);
  }
  if (shown) return {};
  return kUsualRam;
}

}  // namespace platform
