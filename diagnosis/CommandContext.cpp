// SPDX-License-Identifier: MIT
// How many arguments the library offers when it runs a record's commands.
#include "diagnosis/CommandContext.h"

#include <set>

namespace diagnosis {

using namespace layout;
namespace {

constexpr uint8_t kFanConfigType = Feature("FanConfig").type;

/// As the library counts them for a mode of a fan: indices differ by their low bytes.
unsigned DistinctArguments(const RecordView& record) {
  std::set<uint8_t> distinct;
  for (const CommandView& command : Commands(record)) {
    if (!command.layout || command.layout->kind == kCommandDelay) continue;
    const uint64_t index = command.Field(command.layout->argument);
    if (index != kNoArgument) distinct.insert(static_cast<uint8_t>(index));
  }
  return static_cast<unsigned>(distinct.size());
}

}  // namespace

CommandContext ContextOf(const RecordView& record) {
  const RecordType* type = record.Row();
  if (type && type->IsSensor()) return {.sensor = true, .arguments = 1};
  // A chip is identified by two bytes.
  if (record.Value() == iadt::kIdValue) return {.sensor = false, .arguments = 2};
  if (record.Type() != kFanConfigType) return {.sensor = false, .arguments = 1};
  return {.sensor = false, .arguments = 1 + DistinctArguments(record), .asked = true};
}

}  // namespace diagnosis
