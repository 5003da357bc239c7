// SPDX-License-Identifier: MIT
/// The SMBus controller: the record that the library takes for it, and the kernel's driver on it.
#pragma once

#include <optional>

#include "doctor/Finding.h"
#include "doctor/Machine.h"
#include "doctor/TableUse.h"

namespace vynctl::doctor {

/// @param use  of the board's table, where there is one
Findings JudgeSmbus(const Machine& machine, const std::optional<TableUse>& use);

}  // namespace vynctl::doctor
