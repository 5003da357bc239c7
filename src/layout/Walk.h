// SPDX-License-Identifier: MIT
/// The walks over the two vendor tables and over the commands of an entry, and where each ends. The library files, runs
/// and counts by them, and whoever checks or explains a table sees what the library sees.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "layout/AccessCommand.h"
#include "layout/AcpiLayout.h"
#include "layout/BoardRecord.h"
#include "layout/LittleEndian.h"
#include "layout/RecordLayout.h"

namespace layout {

/// The part of a table that its length field covers, as far as there are bytes.
inline View Covered(View table) {
  const auto length = static_cast<size_t>(Load(table, acpi::kLengthOffset, 4));
  return table.first(std::clamp(length, std::min(table.size(), acpi::kHeaderBytes), table.size()));
}

// ---- Function description records ----

/// A function description record. What it lacks of its own header, or of what its list keeps, the library takes from
/// the bytes that follow.
struct RecordView {
  size_t offset;    ///< in the table
  uint32_t length;  ///< as the record says; at least 1 and within the table
  View rest;        ///< from its first byte to the end of the table, 7 bytes or more

  View Bytes() const { return rest.first(length); }
  View Leading(size_t bytes) const { return rest.first(std::min(bytes, rest.size())); }
  uint8_t Type() const { return rest[iadt::kType]; }
  uint8_t Index() const { return rest[iadt::kIndex]; }
  uint8_t Value() const { return rest[iadt::kValue]; }
  View Name() const { return Leading(iadt::kBody).subspan(iadt::kName); }
  /// Null when the library passes the record over.
  const RecordType* Row() const { return FindRecordType(Type(), Value()); }
};

/// Walks over the records of a whole function description table. The walk ends where fewer bytes are left than a length
/// needs, and at a length that is 0 or reaches beyond the table.
class RecordCursor {
 public:
  explicit RecordCursor(View table) : table_(table), offset_(std::min(iadt::kRecords, table.size())) { Read(); }

  bool Valid() const { return length_ != 0; }
  RecordView Current() const { return {offset_, length_, table_.subspan(offset_)}; }
  void Next() {
    offset_ += length_;
    Read();
  }
  /// Of the current record; behind the walk, where it ended.
  size_t Offset() const { return offset_; }

 private:
  void Read() {
    length_ = 0;
    const size_t left = table_.size() - offset_;
    if (left < iadt::kLengthEnd) return;
    const uint32_t length = Load32(table_.data() + offset_ + iadt::kLength);
    if (length <= left) length_ = length;
  }

  View table_;
  size_t offset_;
  uint32_t length_ = 0;  ///< 0 when the walk has ended
};

// ---- Board information records ----

/// A board information record. The library keeps 55 bytes of one of type 0, whatever its length says, and zeros for
/// what lies beyond the table.
struct BoardRecordView {
  size_t offset;
  uint8_t length;  ///< as the record says: 0 ends the walk, and so does one that reaches beyond the table
  View rest;       ///< from its first byte to the end of the table, 4 bytes or more

  View Bytes() const { return rest.first(std::min<size_t>(length, rest.size())); }
  View Kept() const { return rest.first(std::min(iamt::kBoardRecordBytes, rest.size())); }
  bool IsBoardRecord() const { return rest[iamt::kType] == iamt::kBoardRecordType; }
};

/// Walks over the records of a whole board information table. A record with a bad length is the last, but still counts.
class BoardRecordCursor {
 public:
  explicit BoardRecordCursor(View table) : table_(table), offset_(std::min(iamt::kRecords, table.size())) {}

  bool Valid() const { return !ended_ && table_.size() - offset_ >= iamt::kLengthEnd; }
  BoardRecordView Current() const {
    const View rest = table_.subspan(offset_);
    return {offset_, rest[iamt::kLength], rest};
  }
  void Next() {
    const size_t bytes = Current().Bytes().size();
    ended_ = bytes == 0;
    offset_ += bytes;
  }
  /// Of the current record; behind the walk, where it ended: at a record of length 0, else behind the last.
  size_t Offset() const { return offset_; }

 private:
  View table_;
  size_t offset_;
  bool ended_ = false;
};

// ---- Access commands ----

/// Walks over the commands of an ordinary record. It never leaves the record's bytes. In a record shorter than its own
/// header no command fits, and the end is never reached. `Byte` is unsigned char, const where nothing is run.
template <typename Byte>
class CommandCursor {
 public:
  /// `bytes` may be negative: the record is that much shorter than its header.
  CommandCursor(Byte* commands, int64_t bytes) : command_(commands), remaining_(bytes) {}

  bool AtEnd() const { return remaining_ == 0; }
  /// Whether all bytes of the current command belong to the record; to be asked before anything is done with it.
  bool Fits() {
    if (remaining_ <= 0) return false;
    layout_ = FindLayout(*command_);
    return (layout_ != nullptr ? layout_->length : ReachWithoutLayout(*command_)) <= remaining_;
  }
  Byte* Command() const { return command_; }
  /// Null when the kind is unknown or has no such form.
  const CommandLayout* Layout() const { return layout_; }

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
  static bool StepsByKind(uint8_t opcode) {
    const CommandLayout* kind = FindKind(opcode);
    return kind != nullptr && kind->steps;
  }
  /// A command whose form does not fit its kind needs the bytes of the shortest of the kind, so that padding behind a
  /// block (zeros are such a command) ends the call and is not repeated for ever. One that cannot be stepped over for
  /// its kind needs only its opcode and control word.
  static int64_t ReachWithoutLayout(uint8_t opcode) {
    return StepsByKind(opcode) ? int64_t{FindKind(opcode)->length} : int64_t{kCommandPrefixBytes};
  }

  Byte* command_;
  int64_t remaining_;
  const CommandLayout* layout_ = nullptr;
};

/// One access command to look at, or the bytes where the walk ends (`layout` null).
struct CommandView {
  size_t offset;  ///< in the table
  View bytes;     ///< never empty
  const CommandLayout* layout = nullptr;

  uint8_t Opcode() const { return bytes[0]; }
  uint16_t Control() const { return static_cast<uint16_t>(Load(bytes, kControlOffset, 2)); }
  uint64_t Field(CommandField field) const { return Load(bytes, field.offset, field.bytes); }
};

/// The commands of an ordinary record. Behind one that the walk cannot step over come the bytes that are left, as a
/// last view without a layout.
inline std::vector<CommandView> Commands(const RecordView& record) {
  std::vector<CommandView> commands;
  const View bytes = record.Bytes();
  if (bytes.size() <= iadt::kBody) return commands;
  size_t at = iadt::kBody;
  CommandCursor cursor(bytes.data() + at, static_cast<int64_t>(bytes.size() - at));
  while (!cursor.AtEnd() && cursor.Fits() && cursor.Layout() != nullptr) {
    const CommandLayout* row = cursor.Layout();
    commands.push_back({record.offset + at, bytes.subspan(at, row->length), row});
    at += row->length;
    if (cursor.Advance() != CommandCursor<const uint8_t>::Step::kMoved) break;
  }
  if (at < bytes.size()) commands.push_back({record.offset + at, bytes.subspan(at)});
  return commands;
}

/// The commands of a sensor record at their places; places beyond the record's end are left out.
inline std::vector<CommandView> SensorCommands(const RecordView& record) {
  std::vector<CommandView> commands;
  for (const CommandPlace& place : record.Row()->places) {
    if (size_t{place.offset} + place.bytes > record.length) break;
    const View bytes = record.Bytes().subspan(place.offset, place.bytes);
    const CommandLayout* layout = FindLayout(bytes[0]);
    if (layout != nullptr && layout->length > bytes.size()) layout = nullptr;
    commands.push_back({record.offset + place.offset, layout != nullptr ? bytes.first(layout->length) : bytes, layout});
  }
  return commands;
}

}  // namespace layout
