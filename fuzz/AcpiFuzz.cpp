// SPDX-License-Identifier: MIT
// Discovery over a hostile memory image: whatever lies in the BIOS area and behind every pointer in it.
#include <cstring>
#include <vector>

#include "fuzz/FuzzMachine.h"
#include "tables/TAcpiBase.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // The image repeats: pointers lead back into it. Its first bytes are a root pointer whose checksum comes out.
  std::vector<uint8_t> image(4096);
  std::memcpy(image.data(), data, std::min(size, image.size()));
  fuzz::SealRootPointer(image.data());

  fuzz::Start({.answers = {}, .memory = image, .callsLeft = 20000, .bytesLeft = 1u << 20});
  try {
    TAcpiBase* acpi = TAcpiBase::GetInstance();
    unsigned char buffer[36];
    for (int i = 0; i < 4 && acpi->GetAcpiTable(i); ++i)
      if (acpi->Current->Length <= sizeof buffer) acpi->GetAcpiTable(i, buffer);
    acpi->GetAcpiTable("FACP");
    acpi->CheckAcpiTableEntry(0xE0040);
  } catch (const fuzz::Exhausted&) {
  }
  fuzz::Finish();
  return 0;
}
