// SPDX-License-Identifier: MIT
/// Who runs an access command, and with how many arguments.
#pragma once

#include "layout/Walk.h"

namespace diagnosis {

/// The most arguments that a caller offers: a fan's mode is asked for with so many.
inline constexpr unsigned kMostArguments = 255;

struct CommandContext {
  bool sensor;  ///< run by itself at a fixed place, for reading, whatever comes of it; elsewhere a walk steps over it
  unsigned arguments;  ///< slots that the caller offers
  bool asked = false;  ///< a question for the mode alone offers kMostArguments
};

/// Of the commands of this record.
CommandContext ContextOf(const layout::RecordView& record);

}  // namespace diagnosis
