// SPDX-License-Identifier: MIT
// Headers, ends, the board information table and the BIOS information record; records have checks of their own.
#include "diagnosis/Check.h"

#include <algorithm>

#include <fmt/core.h>

#include "diagnosis/RecordChecks.h"
#include "layout/BiosRecord.h"
#include "layout/Checksum.h"
#include "layout/IoChips.h"
#include "layout/Walk.h"

namespace diagnosis {

using namespace layout;
namespace {

void CheckText(View table, size_t offset, size_t count, const char* what, Findings* findings) {
  const auto blank = [](uint8_t byte) { return byte == 0 || byte == ' '; };
  if (std::ranges::all_of(table.subspan(offset, count), blank))
    findings->Add(offset, "oem-empty", fmt::format("{} is empty", what));
}

/// Whether the rest of the table can be looked at.
bool CheckHeader(View table, Findings* findings) {
  if (table.size() < acpi::kHeaderBytes) {
    findings->Add(0, "table-length", "shorter than the 36 bytes of a table header");
    return false;
  }
  const uint64_t length = Load(table, acpi::kLengthOffset, 4);
  if (length != table.size())
    findings->Add(acpi::kLengthOffset, "table-length",
                  fmt::format("the length field says {}, the table has {} bytes", length, table.size()));
  if (ByteSum(table.data(), table.size()) != 0)
    findings->Add(acpi::kChecksumOffset, "table-checksum", "the bytes do not sum to 0 modulo 256");
  CheckText(table, acpi::kOemId, acpi::kOemIdBytes, "the OEM ID", findings);
  CheckText(table, acpi::kOemTableId, acpi::kOemTableIdBytes, "the OEM table ID", findings);
  return true;
}

void AddBadLength(size_t record, uint64_t length, Findings* findings) {
  const std::string why = length == 0 ? " is 0" : fmt::format(" ({}) reaches beyond the table", length);
  findings->Add(record + iadt::kLength, "record-length", "the length of this record" + why + "; the walk ends here");
}

/// What is left where a walk ended: `least` bytes make the head of a record.
void CheckEnd(View table, size_t end, size_t fieldBytes, size_t least, Findings* findings) {
  const View rest = Covered(table).subspan(end);
  if (rest.empty()) return;
  if (rest.size() >= least) return AddBadLength(end, Load(rest, iadt::kLength, fieldBytes), findings);
  const std::string left = rest.size() == 1 ? "1 byte is" : fmt::format("{} bytes are", rest.size());
  findings->Add(end, "bytes-left", left + " left, too few for a record; the walk ends here");
}

void CheckIadt(View table, Findings* findings) {
  Records records;
  RecordCursor cursor(Covered(table));
  for (; cursor.Valid(); cursor.Next()) records.push_back(cursor.Current());
  CheckEnd(table, cursor.Offset(), 4, iadt::kLengthEnd, findings);
  for (const auto check : {CheckRecords, CheckSensors, CheckFans, CheckWatchdog, CheckStates, CheckHarm})
    check(records, findings);
}

void CheckBoardRecord(const BoardRecordView& record, Findings* findings) {
  if (record.length < iamt::kBoardRecordBytes)
    findings->Add(record.offset + iamt::kLength, "board-short",
                  "shorter than 55 bytes: what follows is taken as part of it");
  for (const size_t place : iamt::kChipIds) {
    const auto chip = static_cast<uint16_t>(Load(record.Kept(), place, 2));
    if (chip != 0 && !FindIoChip(chip))
      findings->Add(record.offset + place, "chip-unknown", fmt::format("the library knows no chip {:#06x}", chip));
  }
}

void CheckIamt(View table, Findings* findings) {
  size_t found = 0;
  BoardRecordCursor cursor(Covered(table));
  for (; cursor.Valid(); cursor.Next()) {
    const BoardRecordView record = cursor.Current();
    if (record.length > record.rest.size()) AddBadLength(record.offset, record.length, findings);
    if (!record.IsBoardRecord()) continue;
    if (found++) findings->Add(record.offset, "board-twice", "a second board information record: the last one counts");
    CheckBoardRecord(record, findings);
  }
  CheckEnd(table, cursor.Offset(), 1, iamt::kLengthEnd, findings);
  if (found == 0) findings->Add(acpi::kHeaderBytes, "board-missing", "no board information record (type 0)");
}

void CheckBiosInfo(View record, Findings* findings) {
  if (record.size() != bios::kRecordBytes)
    return findings->Add(0, "bios-size", fmt::format("{} bytes where a BIOS information record has 64", record.size()));
  if (ByteSum(record.data(), record.size()) != 0)
    findings->Add(0, "bios-checksum", "the bytes do not sum to 0 modulo 256");
  if (std::ranges::count(record.subspan(bios::kModel), uint8_t{0}) == 0)
    findings->Add(bios::kModel, "bios-model", "the model name has no terminator");
}

}  // namespace

std::vector<Finding> CheckImage(const Image& image) {
  Findings findings;
  switch (image.kind) {
    case Kind::kIadt:
      if (CheckHeader(image.bytes, &findings)) CheckIadt(image.bytes, &findings);
      break;
    case Kind::kIamt:
      if (CheckHeader(image.bytes, &findings)) CheckIamt(image.bytes, &findings);
      break;
    case Kind::kBiosInfo:
      CheckBiosInfo(image.bytes, &findings);
      break;
  }
  std::vector<Finding> all = findings.All();
  std::ranges::stable_sort(all, {}, &Finding::offset);
  return all;
}

}  // namespace diagnosis
