// SPDX-License-Identifier: MIT
/// Running the access commands of one list entry.
#pragma once

#include <cstdint>
#include <span>

#include "tables/TIADTable.h"

class TIAxTCommon;

namespace tables {

enum Direction : uint8_t { kGet = 0, kSet = 1 };

/// The caller's argument slots of one call, at most 255.
using Slots = std::span<unsigned long long>;

enum class Ran {
  kDone,         ///< every command succeeded, or there are none
  kFailed,       ///< a command failed
  kUnknownKind,  ///< a command cannot be stepped over or reaches beyond the entry: the whole call ends with code 21
};

/// Runs the commands of an ordinary entry in order, up to the first that fails. A command whose form does not fit its
/// kind is run again and again until it fails.
Ran RunEntry(const TIAxTCommon& executor, IadtEntry entry, Direction direction, Slots slots);

/// Runs the command at a fixed offset of a sensor record, reading into `*value`; its outcome is not told. Bytes that
/// the node did not keep count as 0.
void RunSensorCommand(const TIAxTCommon& executor, IadtEntry entry, uint8_t offset, unsigned long long* value);

}  // namespace tables
