// SPDX-License-Identifier: MIT
/// The kernel's drivers that claim what the board's own table touches.
#pragma once

#include <optional>

#include "doctor/Finding.h"
#include "doctor/Machine.h"
#include "doctor/TableUse.h"

namespace vynctl::doctor {

/// A line on the ports and one on the pages, and a line per owner.
/// @param use  empty when there is no table
Findings JudgeOwners(const Machine& machine, const std::optional<TableUse>& use);

/// The step that frees what a driver in this module claims, as a sentence.
std::string TakeOffModule(const std::string& module);

}  // namespace vynctl::doctor
