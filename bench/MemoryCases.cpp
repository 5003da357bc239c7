// SPDX-License-Identifier: MIT
// The searches that find nothing.
#include "bench/Case.h"
#include "bench/Fixture.h"
#include "hw/Platform.h"
#include "hw/TReadWrite.h"

namespace bench {

namespace {

volatile uint64_t sink;

void FindData() {
  unsigned char pattern[] = "$CN1368$";
  sink = TReadWrite::g_Instance->MemoryFindData(kMemoryBase, 0x20000, 1, 0, pattern, 8, false);
}

/// The same spans, read byte by byte and looked through for the first byte of the pattern.
void FindDataByHand() {
  unsigned found = 0;
  uint64_t address = kMemoryBase;
  for (uint32_t left = 0x20000; left >= 8;) {
    const uint32_t chunk = left < 4096 ? left : 4096;
    const int file = platform::Open("/dev/mem", platform::OpenMode::kRead);
    const uint64_t offset = address % 4096;
    void* base = platform::Map(file, address - offset, offset + chunk, false);
    const volatile uint8_t* bytes = static_cast<uint8_t*>(base) + offset;
    for (uint32_t i = 0; i < chunk; ++i) found += bytes[i] == '$';
    platform::Unmap(base, offset + chunk);
    platform::Close(file);
    address += chunk - 7;
    left -= chunk - 7;
  }
  sink = found;
}

void FindPci() { sink = TReadWrite::g_Instance->FindPciDevice(0x12345678); }

void FindPciByHand() {
  for (uint32_t slot = 0; slot < 256 * 32; ++slot) {
    platform::Out32(0xCF8, 0x80000000 + (slot << 11));
    sink = platform::In32(0xCFC);
  }
}

}  // namespace

std::vector<Case> MemoryCases() {
  const auto setUp = [] { StartLibrary(); };
  return {{.name = "search/memory 128 KiB", .setUp = setUp, .library = FindData, .baseline = FindDataByHand},
          {.name = "search/PCI", .setUp = setUp, .library = FindPci, .baseline = FindPciByHand}};
}

}  // namespace bench
