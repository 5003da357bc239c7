/// Checks of single access commands.
#pragma once

#include "layout/Walk.h"
#include "vyntable/Check.h"
#include "vyntable/CommandContext.h"

namespace vyntable {

void CheckCommand(const layout::CommandView& command, const CommandContext& context, std::vector<Finding>* findings);

}  // namespace vyntable
