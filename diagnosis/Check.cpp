#include "diagnosis/Check.h"

#include <algorithm>
#include <set>
#include <utility>

#include <fmt/core.h>

#include "diagnosis/CommandCheck.h"
#include "diagnosis/Words.h"
#include "layout/BiosRecord.h"
#include "layout/Checksum.h"
#include "layout/IoChips.h"
#include "layout/Walk.h"

namespace diagnosis {

using namespace layout;
namespace {

constexpr uint8_t kWatchdogType = Feature("Watchdog").type, kFanConfigType = Feature("FanConfig").type,
                  kBoardVersionType = Feature("MBVersionState").type;

class Checker {
 public:
  explicit Checker(const Image& image) : image_(image), bytes_(image.bytes) {}

  std::vector<Finding> Run() {
    switch (image_.kind) {
      case Kind::kIadt:
        if (CheckHeader()) CheckIadt();
        break;
      case Kind::kIamt:
        if (CheckHeader()) CheckIamt();
        break;
      case Kind::kBiosInfo:
        CheckBiosInfo();
        break;
    }
    std::ranges::stable_sort(findings_, {}, &Finding::offset);
    return findings_;
  }

 private:
  void Add(size_t offset, Severity severity, std::string text) {
    findings_.push_back({offset, severity, std::move(text)});
  }
  void Error(size_t offset, std::string text) { Add(offset, Severity::kError, std::move(text)); }
  void Warn(size_t offset, std::string text) { Add(offset, Severity::kWarning, std::move(text)); }

  /// Whether the rest of the table can be looked at.
  bool CheckHeader() {
    if (bytes_.size() < acpi::kHeaderBytes) {
      Error(0, "shorter than the 36 bytes of a table header");
      return false;
    }
    const uint64_t length = Load(bytes_, acpi::kLengthOffset, 4);
    if (length != bytes_.size())
      Error(acpi::kLengthOffset, fmt::format("the length field says {}, the file has {} bytes", length, bytes_.size()));
    if (ByteSum(bytes_.data(), bytes_.size()) != 0)
      Error(acpi::kChecksumOffset, "the bytes do not sum to 0 modulo 256");
    CheckText(acpi::kOemId, acpi::kOemIdBytes, "the OEM ID");
    CheckText(acpi::kOemTableId, acpi::kOemTableIdBytes, "the OEM table ID");
    return true;
  }

  void CheckText(size_t offset, size_t count, const char* what) {
    const auto blank = [](uint8_t byte) { return byte == 0 || byte == ' '; };
    if (std::ranges::all_of(bytes_.subspan(offset, count), blank)) Warn(offset, fmt::format("{} is empty", what));
  }

  /// What is left where a walk ended: `least` bytes make the head of a record.
  void CheckEnd(size_t end, size_t fieldBytes, size_t least) {
    const View rest = Covered(bytes_).subspan(end);
    if (rest.empty()) return;
    const uint64_t length = Load(rest, iadt::kLength, fieldBytes);
    if (rest.size() < least)
      Error(end, fmt::format("{} left, too few for a record; the walk ends here",
                             rest.size() == 1 ? "1 byte is" : fmt::format("{} bytes are", rest.size())));
    else
      BadLength(end, length);
  }
  void BadLength(size_t record, uint64_t length) {
    const std::string why = length == 0 ? " is 0" : fmt::format(" ({}) reaches beyond the table", length);
    Error(record + iadt::kLength, "the length of this record" + why + "; the walk ends here");
  }

  // --- function description table ---

  void CheckIadt() {
    std::vector<RecordView> watchdog;
    RecordCursor cursor(Covered(bytes_));
    for (; cursor.Valid(); cursor.Next()) {
      CheckRecord(cursor.Current());
      if (cursor.Current().Type() == kWatchdogType) watchdog.push_back(cursor.Current());
    }
    CheckEnd(cursor.Offset(), 4, iadt::kLengthEnd);
    CheckWatchdog(watchdog);
  }

  void CheckRecord(const RecordView& record) {
    const size_t before = findings_.size();
    const RecordType* type = record.Row();
    if (!type)
      Warn(record.offset, "the library passes this record over: unknown type or sensor kind");
    else if (type->IsSensor())
      CheckSensor(record, *type);
    else
      CheckFeature(record, *type);
    for (size_t i = before; i < findings_.size(); ++i) findings_[i].text += " (" + Title(record) + ")";
  }

  void CheckName(const RecordView& record, bool required) {
    const size_t place = record.offset + iadt::kName;
    if (std::ranges::count(record.Name(), uint8_t{0}) == 0)
      Error(place, "the name has no terminator: it is reported as an empty name");
    if (required && NameText(record).empty()) Error(place, "the record is found by name and has none");
  }

  void CheckSensor(const RecordView& record, const RecordType& type) {
    CheckName(record, true);
    if (record.length < type.bytes)
      Error(record.offset + iadt::kLength,
            fmt::format("{} bytes where this sensor record has {}", record.length, type.bytes));
    if (LosesBytes(record, type))
      Add(record.offset + type.keptBytes, Severity::kNote, "bytes beyond the sensor record are not kept");
    if (!sensorNames_.emplace(type.name, NameText(record)).second)
      Warn(record.offset + iadt::kName, "a sensor of this quantity has the same name");
    for (const CommandView& command : SensorCommands(record))
      if (!IsZero(command.bytes)) CheckCommand(command, ContextOf(record), &findings_);
  }

  static bool IsZero(View bytes) {
    return std::ranges::all_of(bytes, [](uint8_t byte) { return byte == 0; });
  }

  /// Zeros up to the record's own length say nothing that would be lost.
  static bool LosesBytes(const RecordView& record, const RecordType& type) {
    if (record.length <= type.keptBytes) return false;
    return record.length > type.bytes || !IsZero(record.Bytes().subspan(type.keptBytes));
  }

  void CheckFeature(const RecordView& record, const RecordType& type) {
    const bool named = type.type == kWatchdogType || type.type == kFanConfigType;
    if (named) CheckName(record, type.type == kFanConfigType || record.Value() == iadt::kIdValue);
    if (!type.used) Add(record.offset, Severity::kNote, "no function reads records of this type");
    if (record.length < iadt::kBody)
      Error(
          record.offset + iadt::kLength,
          fmt::format("{} bytes, shorter than a record's head of {}: what follows is taken as part of it, and running "
                      "it ends with code 21",
                      record.length, iadt::kBody));
    if (record.length == iadt::kBody && !MayBeEmpty(record))
      Warn(record.offset, "an entry without commands always succeeds");
    if (type.type == kFanConfigType) CheckFan(record);
    const CommandContext context = ContextOf(record);
    for (const CommandView& command : Commands(record)) {
      CheckCommand(command, context, &findings_);
      if (command.layout && !command.layout->steps) break;  // nothing behind it is run
    }
  }

  /// Whether an entry does its work without commands: it gives a bit of the board's version that never changes, needs
  /// nothing done for an operation of the watchdog, or leaves it to the board information record to name the chip.
  static bool MayBeEmpty(const RecordView& record) {
    if (record.Type() == kBoardVersionType) return true;
    if (record.Type() == kWatchdogType)
      return record.Value() != kWatchdogInterval && record.Value() != kWatchdogCountMode0 &&
             record.Value() != kWatchdogCountMode1;
    return record.Type() == kFanConfigType && record.Value() == iadt::kIdValue;
  }

  void CheckFan(const RecordView& record) {
    if (record.Value() == iadt::kIdValue) return;
    if (record.Value() >= kFanModes) Warn(record.offset + 2, "fan modes are 0, 1 and 2");
    if (NameText(record).find(kFanModeWord) == std::string::npos)
      Warn(record.offset + iadt::kName, "the name of a fan entry holds the word Mode");
  }

  void CheckWatchdog(const std::vector<RecordView>& records) {
    std::set<uint8_t> values;
    size_t first = 0;
    for (const RecordView& record : records) {
      if (values.empty()) first = record.offset;
      values.insert(record.Value());
      if (record.Value() == 0 || (record.Value() > kWatchdogCountMode1 && record.Value() != iadt::kIdValue))
        Warn(record.offset + 2, "watchdog operations are 1 to 7, and 240");
    }
    if (values.empty()) return;
    for (uint8_t needed = 1; needed <= kWatchdogStop; ++needed)
      if (!values.contains(needed)) Warn(first, fmt::format("the watchdog has no entry for operation {}", needed));
  }

  // --- board information table ---

  void CheckIamt() {
    size_t found = 0;
    BoardRecordCursor cursor(Covered(bytes_));
    for (; cursor.Valid(); cursor.Next()) {
      const BoardRecordView record = cursor.Current();
      if (record.length > record.rest.size()) BadLength(record.offset, record.length);
      if (!record.IsBoardRecord()) continue;
      if (found++) Warn(record.offset, "a second board information record: the last one counts");
      CheckBoardRecord(record);
    }
    CheckEnd(cursor.Offset(), 1, iamt::kLengthEnd);
    if (found == 0) Error(acpi::kHeaderBytes, "no board information record (type 0)");
  }

  void CheckBoardRecord(const BoardRecordView& record) {
    if (record.length < iamt::kBoardRecordBytes)
      Warn(record.offset + iamt::kLength, "shorter than 55 bytes: what follows is taken as part of it");
    for (const size_t place : iamt::kChipIds) {
      const auto chip = static_cast<uint16_t>(Load(record.Kept(), place, 2));
      if (chip != 0 && !FindIoChip(chip))
        Warn(record.offset + place, fmt::format("the library knows no chip {:#06x}", chip));
    }
  }

  void CheckBiosInfo() {
    if (bytes_.size() != bios::kRecordBytes)
      return Error(0, fmt::format("{} bytes where a BIOS information record has 64", bytes_.size()));
    if (ByteSum(bytes_.data(), bytes_.size()) != 0) Error(0, "the bytes do not sum to 0 modulo 256");
    if (std::ranges::count(bytes_.subspan(bios::kModel), uint8_t{0}) == 0)
      Error(bios::kModel, "the model name has no terminator");
  }

  const Image& image_;
  View bytes_;
  std::vector<Finding> findings_;
  std::set<std::pair<std::string_view, std::string>> sensorNames_;
};

}  // namespace

std::vector<Finding> CheckImage(const Image& image) { return Checker(image).Run(); }

}  // namespace diagnosis
