/// Running the access commands of one list entry.
#pragma once

#include <cstdint>

#include "tables/AccessCommand.h"
#include "tables/TIADTable.h"

namespace api {

enum Direction : uint8_t { kGet = 0, kSet = 1 };

/// The caller's argument slots of one call.
struct Slots {
  unsigned long long* values;
  uint8_t count;
};

enum class Ran {
  kDone,         ///< every command succeeded, or there are none
  kFailed,       ///< a command failed
  kUnknownKind,  ///< a command cannot be stepped over or reaches beyond the entry: the whole call ends with code 21
};

/// A walk over the command block of an ordinary entry. It never leaves the entry's bytes.
class CommandCursor {
 public:
  explicit CommandCursor(const IadtEntry& entry);

  bool AtEnd() const { return command_ == end_ && whole_; }
  /// Whether all bytes of the current command belong to the entry.
  bool Fits() const;
  unsigned char** Command() { return &command_; }
  const CommandLayout* Layout() const { return FindLayout(*command_); }

  enum class Step { kMoved, kStays, kImpossible };
  /// Moves behind the current command. One whose form does not fit its kind has no length: the cursor stays.
  Step Advance();

 private:
  unsigned char* command_;
  unsigned char* end_;
  bool whole_;  ///< false for a record shorter than its own header, whose command count can never come out
};

/// Runs the commands of an ordinary entry in order, up to the first that fails. A command whose form does not fit its
/// kind is run again and again until it fails.
Ran RunEntry(const IadtEntry& entry, Direction direction, Slots slots);

/// Runs the command at a fixed offset of a sensor record, reading into `*value`; its outcome is not told. Bytes that
/// the node did not keep count as 0.
void RunSensorCommand(const IadtEntry& entry, uint8_t offset, unsigned long long* value);

}  // namespace api
