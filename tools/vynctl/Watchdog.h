/// The board's watchdog timer.
#pragma once

#include <cstdint>
#include <vector>

#include "Library.h"
#include "Value.h"

namespace vynctl {

/// Does the board have one? Touches no hardware and does not wait.
bool OffersWatchdog(const Library& library);

/// "watchdog/interval" (in the firmware's unit) and "watchdog/mode" as the hardware has them.
std::vector<Value> ReadWatchdog(const Library& library);

}  // namespace vynctl
