// SPDX-License-Identifier: MIT
// Running arbitrary commands, as an entry and as a sensor record, over a machine with arbitrary answers.
#include <algorithm>
#include <vector>

#include "fuzz/Bounded.h"
#include "fuzz/FuzzMachine.h"
#include "fuzz/TableFuzz.h"
#include "tables/EntryRun.h"
#include "tables/TIADTable.h"
#include "tables/TIAxTCommon.h"

using namespace layout;

namespace {

constexpr uint8_t kSensorTypes[][2] = {{2, 1}, {2, 2}, {2, 3}, {3, 1}, {3, 2}, {3, 3},
                                       {3, 4}, {4, 1}, {4, 2}, {4, 3}, {31, 1}};
constexpr uint8_t kLvdsType = 5;
constexpr uint8_t kCommandOffsets[] = {27, 29, 30, 31, 48};

/// A record with this type and sub-type around the given body.
std::vector<uint8_t> Record(uint8_t type, uint8_t subType, std::span<const uint8_t> body) {
  std::vector<uint8_t> record(iadt::kBody + body.size());
  record[iadt::kType] = type;
  record[iadt::kValue] = subType;
  std::copy(body.begin(), body.end(), record.begin() + iadt::kBody);
  Store32(record.data() + iadt::kLength, static_cast<uint32_t>(record.size()));
  return record;
}

void RunAll(const TIAxTCommon& executor, const TIADTable& table, tables::Direction direction) {
  for (unsigned list = 1; list < TIADTable::kSlots; ++list) {
    for (const IadtEntry entry : table.List(list)) {
      // The slots have exactly the announced number of elements.
      std::vector<unsigned long long> slots(entry.Index() % 4 + 1u, 0x0123456789ABCDEF);
      if (IadtEntry::kKeptBytes[list] == 0)
        tables::RunEntry(executor, entry, direction, {slots.data(), static_cast<uint8_t>(slots.size())});
      else
        for (const uint8_t offset : kCommandOffsets) tables::RunSensorCommand(executor, entry, offset, slots.data());
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input input({data, size});
  const bool hasController = input.Byte() % 16 != 0;
  const auto direction = input.Flag() ? tables::kSet : tables::kGet;
  const uint8_t sensor = input.Byte();
  const auto answers = input.Bytes(input.Byte());
  const auto body = input.Rest();

  fuzz::Start({.answers = answers, .memory = answers, .hasController = hasController, .callsLeft = 30000});
  const auto& [type, subType] = kSensorTypes[sensor % std::size(kSensorTypes)];
  auto records = Record(kLvdsType, 1, body);
  const auto sensorRecord = Record(type, subType, body);
  records.insert(records.end(), sensorRecord.begin(), sensorRecord.end());
  const auto table = fuzz::Table("IADT", records);
  try {
    TIADTable::GetInstance()->Fill(table.get(), Load32(table.get() + 4));
    fuzz::FitForms(*TIADTable::GetInstance());
    RunAll(*TIAxTCommon::GetInstance(), *TIADTable::GetInstance(), direction);
  } catch (const fuzz::Exhausted&) {
  }
  fuzz::Finish();
  return 0;
}
