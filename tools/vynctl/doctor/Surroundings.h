// SPDX-License-Identifier: MIT
/// The rest of the machine: processor registers, other users of the board, a hypervisor, versions.
#pragma once

#include "doctor/Finding.h"
#include "doctor/Machine.h"
#include "doctor/Privilege.h"
#include "doctor/TableUse.h"

namespace vynctl::doctor {

/// The processor's register device and its module.
/// @param use  of the board's table, where there is one
Finding JudgeMsr(const Machine& machine, const Privilege& privilege, const std::optional<TableUse>& use);

/// Who holds the lock that keeps programs on the board from disturbing each other.
Finding JudgeLock(const Machine& machine);

/// @param hasTables  the library finds the board's table
Finding JudgeHypervisor(const Machine& machine, bool hasTables);

/// vynctl, the library that it would load, the kernel.
Findings JudgeVersions(const Machine& machine, const std::string& toolVersion);

}  // namespace vynctl::doctor
