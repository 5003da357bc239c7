// SPDX-License-Identifier: MIT
/// What the board's own table makes the library touch.
#pragma once

#include <set>
#include <string_view>

#include "doctor/Resources.h"

namespace vynctl::doctor {

struct TableUse {
  bool smbus = false;      ///< devices on the SMBus
  bool msr = false;        ///< registers of the processor
  std::set<Range> ports;   ///< one range per access
  std::set<Range> memory;  ///< physical addresses of the board's registers, one range per access

  bool operator==(const TableUse&) const = default;
};

/// @param table  a function description table (IADT), whole
TableUse UseOf(std::string_view table);

}  // namespace vynctl::doctor
