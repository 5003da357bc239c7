/// Takes the firmware tables apart the way the library walks them, with the place of everything.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "layout/AcpiLayout.h"
#include "layout/BiosRecord.h"
#include "layout/BoardRecord.h"
#include "layout/RecordLayout.h"
#include "vyntable/Files.h"

namespace vyntable {

using View = std::span<const uint8_t>;

/// One access command, or the bytes where a walk would stop (`layout` null).
struct CommandView {
  size_t offset;  ///< in the table
  View bytes;
  const layout::CommandLayout* layout = nullptr;

  uint64_t Field(layout::CommandField field) const;
  uint16_t Control() const;
  uint8_t Opcode() const { return bytes[0]; }
};

/// One function description record; lengths are checked, so that `bytes` lies inside the table.
struct RecordView {
  size_t offset;
  View bytes;
  const layout::RecordType* type;  ///< null when the library passes the record over

  uint8_t TypeCode() const { return bytes[0]; }
  uint8_t Index() const { return bytes[1]; }
  uint8_t Value() const { return bytes[2]; }
  View Name() const { return bytes.subspan(layout::iadt::kName, layout::iadt::kNameBytes); }
  std::string NameText() const;  ///< up to the terminator
  bool NameTerminated() const;
  /// "LVDSState index 0 value 1" or "voltage 2.1 \"+12V\"".
  std::string Title() const;
};

/// The part of the table that its length field covers.
View Body(const Image& image);

struct Records {
  std::vector<RecordView> records;
  size_t end;  ///< where the walk stopped: the end of the table unless a record length is bad
};
Records WalkRecords(const Image& iadt);

/// The commands of an ordinary record; what cannot be stepped over is the last, without a layout.
std::vector<CommandView> WalkCommands(const RecordView& record);
/// The commands of a sensor record at their places; places beyond the record's end are left out.
std::vector<CommandView> SensorCommands(const RecordView& record);

/// One board information record.
struct BoardRecordView {
  size_t offset;
  View bytes;
};
struct BoardRecords {
  std::vector<BoardRecordView> records;
  size_t end;
};
BoardRecords WalkBoardRecords(const Image& iamt);

uint64_t Load(View bytes, size_t offset, size_t size);
uint8_t SumOf(View bytes);

}  // namespace vyntable
