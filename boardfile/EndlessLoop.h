// SPDX-License-Identifier: MIT
/// Entries that a call would never come back from.
#pragma once

#include <optional>

#include "boardfile/FirmwareFile.h"

namespace boardfile {

/// The first command of the function description table that would be run for ever; none in a sound table.
std::optional<Complaint> FindEndlessLoop(const Firmware& firmware);

}  // namespace boardfile
