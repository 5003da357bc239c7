// SPDX-License-Identifier: MIT
// The machine is the one that its boot names: where firmware of this kind keeps the tables, and whether the kernel lets
// /dev/mem reach them. Looks by itself, without the library.
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <optional>

#include "BoardEnvironment.h"
#include "FirmwareKind.h"

using guest::ThisFirmware;

namespace {

constexpr uint32_t kBiosArea = 0xE0000, kBiosAreaBytes = 0x20000;
constexpr size_t kPointerStep = 16, kRsdtField = 16;

/// What /dev/mem holds there, nothing when the kernel refuses the map. `address` is that of a page.
std::optional<std::string> Physical(uint32_t address, size_t count) {
  const int memory = open("/dev/mem", O_RDONLY | O_CLOEXEC);
  void* view = mmap(nullptr, count, PROT_READ, MAP_SHARED, memory, static_cast<off_t>(address));
  close(memory);
  if (view == MAP_FAILED) return std::nullopt;
  std::string bytes(static_cast<const char*>(view), count);
  munmap(view, count);
  return bytes;
}

/// The root table by the root pointer below 1 MiB, 0 without such a pointer.
uint32_t RootTableByPointer() {
  const std::string area = Physical(kBiosArea, kBiosAreaBytes).value();
  for (size_t at = 0; at < area.size(); at += kPointerStep) {
    if (area.compare(at, 8, "RSD PTR ") != 0) continue;
    uint32_t address = 0;
    std::memcpy(&address, area.data() + at + kRsdtField, sizeof address);
    return address;
  }
  return 0;
}

/// The root pointer that UEFI names to the kernel, 0 on other machines.
uint32_t RootPointerOfUefi() {
  std::ifstream table("/sys/firmware/efi/systab");
  for (std::string line; std::getline(table, line);)
    if (line.starts_with("ACPI=")) return static_cast<uint32_t>(std::stoul(line.substr(5), nullptr, 16));
  return 0;
}

}  // namespace

TEST(Firmware, KeepsTheRootPointerWhereItsKindDoes) {
  EXPECT_EQ(ThisFirmware().pointerBelow1MiB, RootTableByPointer() != 0);
  EXPECT_EQ(ThisFirmware().pointerBelow1MiB, RootPointerOfUefi() == 0);
}

TEST(Firmware, LetsTheKernelHideTheTablesAsItsKindDoes) {
  const uint32_t tables = ThisFirmware().pointerBelow1MiB ? RootTableByPointer() : RootPointerOfUefi();
  EXPECT_EQ(ThisFirmware().tablesReachable, Physical(tables & ~0xFFFu, 0x1000).has_value());
}
