// SPDX-License-Identifier: MIT
/// Checks of single access commands.
#pragma once

#include "diagnosis/Findings.h"
#include "layout/Walk.h"

namespace diagnosis {

/// A command of the record by itself, of an entry or of a sensor.
void CheckCommand(const layout::RecordView& record, const layout::CommandView& command, Findings* findings);

}  // namespace diagnosis
