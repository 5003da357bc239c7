// SPDX-License-Identifier: MIT
/// Chipsets with an SMBus host: the PCI functions software knows them by, and the registers through which the host gets
/// its ports.
#pragma once

#include <string_view>

#include "sim/chips/SmbusHost.h"

namespace sim {

/// A function on bus 0.
struct PciAt {
  unsigned device, function;
  bool operator==(const PciAt&) const = default;
};

struct PciValue {
  PciAt at;
  unsigned offset, width;  ///< width in bytes
  uint32_t value;
};

/// Bits that must be set for the host to answer at its base.
struct PciGate {
  PciAt at;
  unsigned offset;
  uint8_t mask;
};

struct SmbusPlatform {
  /// The register that holds a base: port = (register AND mask) + add. `flags` is what else reads as 1 in it.
  struct Window {
    unsigned offset, width;
    uint32_t mask;
    uint16_t add;
    uint32_t flags;
  };
  enum class Extra {
    kNone,
    kLpcHide,          ///< bit 3 of 0:1f.0 register 0xf2 hides the function
    kRootComplexHide,  ///< bit 3 of the memory register 0xFED1F418 does
    kBridgeHide,       ///< bit 4 of 0:2.0 register 0x77 does
    kPm2c,             ///< the base is in power management registers 0x2c and 0x2d
    kPmDecode,         ///< in power management registers 0 and 1
  };

  /// Power management bits that choose the segment of the bus. Bit 0 of `chooser`, where there is one, moves them to
  /// `otherwise`.
  struct Multiplexer {
    unsigned at = 0;
    uint8_t mask = 0;
    unsigned chooser = 0, otherwise = 0;
  };

  std::string_view name;
  SmbusMaker make;
  PciAt host;  ///< the function that holds the base
  std::vector<PciValue> values;
  std::vector<Window> windows;  ///< a second one is a second bus
  std::vector<PciGate> gates;
  Extra extra = Extra::kNone;
  unsigned ports = 0x20;
  uint16_t defaultBase = 0x0C00;
  Multiplexer multiplexer = {};
};

const std::vector<SmbusPlatform>& SmbusPlatforms();
/// The platform of this name; null when there is none.
const SmbusPlatform* FindSmbusPlatform(std::string_view name);

inline constexpr std::string_view kSmbusOptions[] = {"enabled",    "hidden",    "no_base",
                                                     "second_bus", "pm_memory", "pm_ports"};

/// Sets the chipset's registers on the board and puts a host with the given slaves behind them; the result is that
/// host. A `setup` without a base gets the platform's usual one; the function's place is the chipset's own, whatever
/// the setup says. Where the host answers, and the segment that its
/// multiplexer selects, follow the registers at every access. Options:
///   enabled     0: firmware left the host off (default 1)
///   hidden      1: firmware hid the PCI function, where the chipset can (default 0)
///   no_base     1: firmware gave it no base (default 0)
///   second_bus  1: the slaves are on the second bus, where there is one (default 0)
///   pm_memory, pm_ports  0: power management registers are not reachable that way (default 1)
std::shared_ptr<SmbusHost> AttachSmbus(Board& board, const SmbusPlatform& platform, SmbusSetup setup);

}  // namespace sim
