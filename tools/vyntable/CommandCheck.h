/// Checks of single access commands.
#pragma once

#include "layout/Walk.h"
#include "vyntable/Check.h"

namespace vyntable {

/// Where a command stands.
struct CommandContext {
  bool sensor;         ///< run by itself at a fixed place; elsewhere a walk steps over it
  unsigned arguments;  ///< slots that the caller offers
};

void CheckCommand(const layout::CommandView& command, const CommandContext& context, std::vector<Finding>* findings);

}  // namespace vyntable
