#include "api/TVyn.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>

#include "hw/TReadWrite.h"

namespace {
constexpr unsigned long long kSearchStart = 0xE0000;
constexpr unsigned int kSearchBytes = 0x20000;
constexpr unsigned long long kNotFound = 0xFFFFFFFF;
}  // namespace

TVyn::TVyn() : BiosInfoFound(0), BiosInfo{}, ReadWrite(TReadWrite::GetInstance()) {
  BiosInfoFound = static_cast<unsigned char>(GetVynmarBiosInfo(&BiosInfo));
  if (BiosInfoFound == 0) std::puts("Is Core8 ... ???");
}

TVyn::~TVyn() = default;

int TVyn::GetVynmarBiosInfo(_VYNMAR_BIOS_INFO* record) {
  if (ReadWrite == nullptr) return 0;
  unsigned char signature[] = "$CN1368$";
  for (unsigned int n = 0;; ++n) {
    const unsigned long long address =
        ReadWrite->MemoryFindData(kSearchStart, kSearchBytes, 1, n, signature, sizeof signature - 1, false);
    if (address == kNotFound) return 0;
    ReadWrite->MemoryReadBlock(address, record, sizeof *record);
    if (BiosInfoChecksum(record, sizeof *record) != 0) return 1;
  }
}

int TVyn::BiosInfoChecksum(_VYNMAR_BIOS_INFO* record, int length) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(record);
  unsigned sum = 0;
  for (int i = 0; i < length; ++i) sum += bytes[i];
  return sum % 256 == 0 ? 1 : 0;
}

void TVyn::RetrieveSmbiosInformation() {}

std::string TVyn::GetProjectName(std::string) { return {}; }

std::string TVyn::ModelName() const {
  return {BiosInfo.ModelName, strnlen(BiosInfo.ModelName, sizeof BiosInfo.ModelName)};
}
