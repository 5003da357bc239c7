/// Running the access commands of one list entry.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "layout/AccessCommand.h"
#include "tables/TIADTable.h"

namespace api {

enum Direction : uint8_t { kGet = 0, kSet = 1 };

/// The caller's argument slots of one call, at most 255.
using Slots = std::span<unsigned long long>;

enum class Ran {
  kDone,         ///< every command succeeded, or there are none
  kFailed,       ///< a command failed
  kUnknownKind,  ///< a command cannot be stepped over or reaches beyond the entry: the whole call ends with code 21
};

/// A walk over the command block of an ordinary entry. It never leaves the entry's bytes. In a record shorter than its
/// own header no command fits, and the end is never reached.
class CommandCursor {
 public:
  explicit CommandCursor(IadtEntry entry)
      : command_(entry.Body()), remaining_(int64_t{entry.Length()} - static_cast<int64_t>(layout::iadt::kBody)) {}

  bool AtEnd() const { return remaining_ == 0; }
  /// Whether all bytes of the current command belong to the entry; to be asked before anything is done with it.
  bool Fits() {
    if (remaining_ <= 0) return false;
    layout_ = layout::FindLayout(*command_);
    return (layout_ != nullptr ? layout_->length : ReachWithoutLayout(*command_)) <= remaining_;
  }
  unsigned char* Command() const { return command_; }
  /// Null when the kind is unknown or has no such form.
  const layout::CommandLayout* Layout() const { return layout_; }

  enum class Step { kMoved, kStays, kImpossible };
  /// Moves behind the current command. One whose form does not fit its kind has no length: the cursor stays.
  Step Advance() {
    if (layout_ == nullptr) return StepsByKind(*command_) ? Step::kStays : Step::kImpossible;
    if (!layout_->steps) return Step::kImpossible;
    command_ += layout_->length;
    remaining_ -= layout_->length;
    return Step::kMoved;
  }

 private:
  // Out of line: hardly a command goes here, and every other one would have to save registers for it.
  [[gnu::noinline, gnu::cold]] static bool StepsByKind(uint8_t opcode);
  [[gnu::noinline, gnu::cold]] static int64_t ReachWithoutLayout(uint8_t opcode);

  unsigned char* command_;
  int64_t remaining_;
  const layout::CommandLayout* layout_ = nullptr;
};

/// Runs the commands of an ordinary entry in order, up to the first that fails. A command whose form does not fit its
/// kind is run again and again until it fails.
Ran RunEntry(IadtEntry entry, Direction direction, Slots slots);

/// Runs the command at a fixed offset of a sensor record, reading into `*value`; its outcome is not told. Bytes that
/// the node did not keep count as 0.
void RunSensorCommand(IadtEntry entry, uint8_t offset, unsigned long long* value);

}  // namespace api
