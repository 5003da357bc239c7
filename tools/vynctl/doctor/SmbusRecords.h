// SPDX-License-Identifier: MIT
/// Which SMBus controller record the library takes on a machine, told from PCI identifiers alone.
#pragma once

#include <vector>

#include "doctor/PciFunctions.h"

namespace vynctl::doctor {

struct SmbusChoice {
  const char* record = nullptr;       ///< its name; null when none fits the identifiers
  const PciFunction* host = nullptr;  ///< the function that holds the controller; null when the machine shows none
};

/// docs/smbus-controllers.md lists the identifiers behind each record. The choice points into `functions`.
SmbusChoice ChooseSmbusRecord(const std::vector<PciFunction>& functions);

}  // namespace vynctl::doctor
