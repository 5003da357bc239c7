// SPDX-License-Identifier: MIT
// Finds the BIOS information record, which holds the model name.
#include "api/TVyn.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>

#include "hw/TReadWrite.h"
#include "layout/AcpiLayout.h"
#include "layout/BiosRecord.h"
#include "layout/Checksum.h"

using namespace layout;

TVyn::TVyn() : BiosInfoFound(0), BiosInfo{}, ReadWrite(TReadWrite::GetInstance()) {
  BiosInfoFound = static_cast<unsigned char>(GetVynmarBiosInfo(&BiosInfo));
  if (BiosInfoFound == 0) std::puts("Is Core8 ... ???");
}

TVyn::~TVyn() = default;

int TVyn::GetVynmarBiosInfo(_VYNMAR_BIOS_INFO* record) {
  if (ReadWrite == nullptr) return 0;
  unsigned char signature[bios::kSignatureBytes];
  std::memcpy(signature, bios::kSignature, sizeof signature);
  constexpr unsigned int kAreaEnd = acpi::kBiosArea + acpi::kBiosAreaBytes;
  // The next match is looked for behind the last, so that an area full of false records costs one walk.
  for (unsigned int start = acpi::kBiosArea;;) {
    const unsigned long long address =
        ReadWrite->MemoryFindData(start, kAreaEnd - start, 1, 0, signature, sizeof signature, false);
    if (address == TReadWrite::kNotFound) return 0;
    ReadWrite->MemoryReadBlock(address, record, sizeof *record);
    if (BiosInfoChecksum(record, sizeof *record) != 0) return 1;
    start = static_cast<unsigned int>(address) + 1;
  }
}

int TVyn::BiosInfoChecksum(_VYNMAR_BIOS_INFO* record, int length) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(record);
  return ByteSum(bytes, length > 0 ? static_cast<size_t>(length) : 0) == 0 ? 1 : 0;
}

void TVyn::RetrieveSmbiosInformation() {}

std::string TVyn::GetProjectName(std::string) { return {}; }

std::string TVyn::ModelName() const {
  return {BiosInfo.ModelName, strnlen(BiosInfo.ModelName, sizeof BiosInfo.ModelName)};
}
