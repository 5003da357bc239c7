// SPDX-License-Identifier: MIT
/// The machine's PCI functions, as the kernel lists them: no configuration space is read.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "doctor/Machine.h"

namespace vynctl::doctor {

struct PciFunction {
  std::string address;  ///< "0000:00:1f.3"
  uint16_t vendor = 0, device = 0;
  uint32_t classCode = 0;  ///< 24 bits: class, subclass, interface
  std::string driver;      ///< bound to it; empty for none
  std::string module;      ///< that holds the driver; empty when the kernel itself does
};

/// Those that the configuration ports reach (domain 0), in the order of their addresses.
std::vector<PciFunction> PciFunctions(const Machine& machine);

}  // namespace vynctl::doctor
