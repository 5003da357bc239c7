// SPDX-License-Identifier: MIT
// The life of the hardware object, and the privilege that its operations need.
#include "hw/TReadWrite.h"

#include <cstdio>

#include "hw/Platform.h"

namespace {
constexpr int kPortAccessLevel = 3;
constexpr int kNoPortAccessLevel = 0;
}  // namespace

TReadWrite* TReadWrite::g_Instance = nullptr;

TReadWrite::TReadWrite()
    : IoplFailed(platform::SetIoPrivilegeLevel(kPortAccessLevel) != 0),
      PcieBase(kNoPcieBase),
      PcieAddress(0),
      PcieByteOffset(0),
      PciAddress(0),
      PciDataPort(0) {}

TReadWrite::~TReadWrite() { platform::SetIoPrivilegeLevel(kNoPortAccessLevel); }

TReadWrite* TReadWrite::GetInstance() {
  if (g_Instance != nullptr) return g_Instance;
  auto* instance = new TReadWrite;
  if (!instance->CheckPrivilege()) {
    delete instance;
    return nullptr;
  }
  g_Instance = instance;
  return g_Instance;
}

void TReadWrite::FreeInstance() {
  delete g_Instance;
  g_Instance = nullptr;
}

bool TReadWrite::Refuse() {
  std::puts("Please run as root!");
  return false;
}
