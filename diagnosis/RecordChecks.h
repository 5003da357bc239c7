// SPDX-License-Identifier: MIT
/// The checks of function description records, each of what it is about. `records` are all that the library's walk
/// meets.
#pragma once

#include <vector>

#include "diagnosis/Findings.h"
#include "layout/Ending.h"

namespace diagnosis {

using Records = std::vector<layout::RecordView>;

/// Heads, names and lengths, and every command by itself.
void CheckRecords(const Records& records, Findings* findings);
void CheckSensors(const Records& records, Findings* findings);
void CheckFans(const Records& records, Findings* findings);
void CheckWatchdog(const Records& records, Findings* findings);
/// Which states can be told, and whether what is set is told.
void CheckStates(const Records& records, Findings* findings);
/// What commands do to the rest of the machine, and how long a call takes.
void CheckHarm(const Records& records, Findings* findings);

}  // namespace diagnosis
