// SPDX-License-Identifier: MIT
// Heads, names and lengths of records, and the commands of those that are not sensors.
#include <algorithm>
#include <array>

#include <fmt/core.h>

#include "diagnosis/CommandCheck.h"
#include "diagnosis/RecordChecks.h"
#include "diagnosis/Words.h"

namespace diagnosis {

using namespace layout;
namespace {

constexpr uint8_t kWatchdogType = Feature("Watchdog").type, kFanConfigType = Feature("FanConfig").type,
                  kBoardVersionType = Feature("MBVersionState").type;

/// Whether an entry does its work without commands: it gives a bit of the board's version that never changes, needs
/// nothing done for an operation of the watchdog, or leaves it to the board information record to name the chip.
bool MayBeEmpty(const RecordView& record) {
  if (record.Type() == kBoardVersionType) return true;
  if (record.Type() == kWatchdogType)
    return record.Value() != kWatchdogInterval && record.Value() != kWatchdogCountMode0 &&
           record.Value() != kWatchdogCountMode1;
  return record.Type() == kFanConfigType && record.Value() == iadt::kIdValue;
}

/// Entries that are found by their names. Of these only a fan's name is copied, before the word Mode is taken out.
void CheckName(const RecordView& record, Findings* findings) {
  const bool required =
      record.Type() == kFanConfigType || (record.Type() == kWatchdogType && record.Value() == iadt::kIdValue);
  if (required && NameText(record).empty())
    findings->Add(record, iadt::kName, "name-missing", "the record is found by name and has none");
}

void CheckEntry(const RecordView& record, const RecordType& type, Findings* findings) {
  CheckName(record, findings);
  if (!type.used) findings->Add(record, 0, "record-unread", "no function reads records of this type");
  if (record.length < iadt::kBody)
    findings->Add(record, iadt::kLength, "record-short",
                  fmt::format("{} bytes, shorter than a record's head of {}: what follows is taken as part of it, and "
                              "running it ends with code 21",
                              record.length, iadt::kBody));
  if (record.length == iadt::kBody && !MayBeEmpty(record))
    findings->Add(record, 0, "entry-empty", "an entry without commands always succeeds");
  for (const CommandView& command : Commands(record)) {
    CheckCommand(record, command, findings);
    if (command.layout && !command.layout->steps) break;  // nothing behind it is run
  }
}

}  // namespace

void CheckRecords(const Records& records, Findings* findings) {
  for (const RecordView& record : records) {
    const RecordType* type = record.Row();
    if (!type)
      findings->Add(record, 0, "record-unknown", "the library passes this record over: unknown type or sensor kind");
    else if (!type->IsSensor())
      CheckEntry(record, *type, findings);
  }
}

}  // namespace diagnosis
