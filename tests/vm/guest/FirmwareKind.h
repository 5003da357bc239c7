// SPDX-License-Identifier: MIT
/// The kind of the machine's firmware, as the boot names it.
#pragma once

#include <cstdlib>
#include <stdexcept>
#include <string>

namespace guest {

struct FirmwareKind {
  const char* name;
  bool pointerBelow1MiB;  ///< the ACPI root pointer, as BIOS has it and UEFI has not
  bool tablesReachable;   ///< by /dev/mem
};

inline constexpr FirmwareKind kFirmwareKinds[] = {
    {"seabios", true, true},
    {"seabios-acpi-data", true, false},
    {"ovmf", false, false},
};

inline const FirmwareKind& ThisFirmware() {
  const char* name = getenv("VM_FIRMWARE");
  for (const FirmwareKind& kind : kFirmwareKinds)
    if (name != nullptr && std::string(name) == kind.name) return kind;
  throw std::runtime_error("the boot names no kind of firmware");
}

}  // namespace guest
