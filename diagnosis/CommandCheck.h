/// Checks of single access commands.
#pragma once

#include "layout/Walk.h"
#include "diagnosis/Check.h"
#include "diagnosis/CommandContext.h"

namespace diagnosis {

void CheckCommand(const layout::CommandView& command, const CommandContext& context, std::vector<Finding>* findings);

}  // namespace diagnosis
