// SPDX-License-Identifier: MIT
/// Records and access commands in words.
#pragma once

#include <string>
#include <vector>

#include "diagnosis/CommandContext.h"
#include "layout/Ending.h"

namespace diagnosis {

/// The name up to its terminator, byte for byte.
std::string NameText(const layout::RecordView& record);
/// What all modes of a fan have in common: the name without the first word Mode.
std::string FanText(const layout::RecordView& record);
/// "LVDSState index 0 value 1" or "voltage 2.1 \"+12V\"". Names are as the firmware has them: not for terminals.
std::string Title(const layout::RecordView& record);

/// Why the walk ends at bytes without a layout, and what follows from it.
std::string EndText(const layout::CommandView& command, const CommandContext& context);

/// What the command reaches, then what it does when reading and when setting, one phrase each; sensors only read.
std::vector<std::string> Words(const layout::CommandView& command, const CommandContext& context);

}  // namespace diagnosis
