// SPDX-License-Identifier: MIT
// Fan modes: how their names are told apart, and their parameters.
#include <algorithm>
#include <map>
#include <set>

#include <fmt/core.h>

#include "diagnosis/CommandContext.h"
#include "diagnosis/RecordChecks.h"
#include "diagnosis/Words.h"
#include "layout/FanName.h"

namespace diagnosis {

using namespace layout;
namespace {

constexpr uint8_t kFanConfigType = Feature("FanConfig").type;

bool Identifies(const RecordView& record) { return record.Value() == iadt::kIdValue; }
bool HasIdName(const RecordView& record) { return FanNameMatches(NameText(record), kFanIdWord); }

/// An entry by itself.
void CheckMode(const RecordView& record, Findings* findings) {
  if (Identifies(record)) {
    if (!HasIdName(record))
      findings->Add(record, iadt::kName, "fan-id-missing",
                    "an identifying entry without the word Id in its name counts as a mode");
    return;
  }
  if (record.Value() >= kFanModes) findings->Add(record, iadt::kValue, "fan-mode", "fan modes are 0, 1 and 2");
  if (NameText(record).find(kFanModeWord) == std::string::npos)
    findings->Add(record, iadt::kName, "fan-word", "the name of a fan entry holds the word Mode");
  if (HasIdName(record))
    findings->Add(record, iadt::kName, "fan-id-name",
                  "the letters of its name count as the word Id: the entry is no mode of a fan");
}

/// Indices of the parameters, by their low bytes as the library tells them apart.
std::set<uint64_t> Parameters(const RecordView& record) {
  std::set<uint64_t> indices;
  for (const CommandView& command : Commands(record)) {
    if (!command.layout || command.layout->kind == kCommandDelay) continue;
    if (const uint64_t index = command.Field(command.layout->argument); index != kNoArgument) indices.insert(index);
  }
  return indices;
}

void CheckParameters(const RecordView& record, Findings* findings) {
  if (Identifies(record)) return;
  const std::set<uint64_t> indices = Parameters(record);
  const unsigned count = ContextOf(record).arguments;
  if (indices.contains(0))
    findings->Add(record, iadt::kBody, "fan-argument-0", "argument 0, the mode itself, is among its parameters");
  if (!indices.empty() && *indices.rbegin() >= count)
    findings->Add(
        record, iadt::kBody, "fan-argument-gap",
        fmt::format("it names argument {}, but a caller offers {}: 0 to {}", *indices.rbegin(), count, count - 1));
}

/// The fans that are reported, in order: a name is passed over when one before it begins with it.
std::vector<std::string> ReportedFans(const Records& fans) {
  std::vector<std::string> reported;
  for (const RecordView& record : fans) {
    const std::string name = FanText(record);
    if (std::ranges::none_of(reported, [&](const std::string& earlier) { return earlier.starts_with(name); }))
      reported.push_back(name);
  }
  return reported;
}

bool IsMode(const RecordView& record) { return !Identifies(record) && !HasIdName(record); }

/// Fans that the library does not report, or takes for one another.
void CheckNames(const Records& fans, Findings* findings) {
  const std::vector<std::string> reported = ReportedFans(fans);
  std::set<std::string> told;
  std::set<std::pair<std::string, std::string>> confused;
  for (const RecordView& record : fans) {
    if (!IsMode(record)) continue;
    const std::string fan = FanText(record);
    const auto longer =
        std::ranges::find_if(reported, [&](const std::string& name) { return name != fan && name.starts_with(fan); });
    if (longer != reported.end() && std::ranges::find(reported, fan) == reported.end() && told.insert(fan).second)
      findings->Add(record, iadt::kName, "fan-prefix",
                    fmt::format("the fan \"{}\" is not reported: the name of \"{}\", before it, begins with its name",
                                fan, *longer));
    for (const std::string& other : reported)
      if (other != fan && FanNameMatches(NameText(record), other) && confused.emplace(fan, other).second)
        findings->Add(record, iadt::kName, "fan-confused",
                      fmt::format("whoever asks for the fan \"{}\" gets this mode of \"{}\" as well", other, fan));
  }
}

/// The first entry of a mode says how many parameters it has.
void CheckCounts(const Records& fans, Findings* findings) {
  std::map<std::pair<std::string, uint8_t>, unsigned> counts;
  for (const RecordView& record : fans) {
    if (!IsMode(record)) continue;
    const unsigned count = ContextOf(record).arguments - 1;
    const unsigned first = counts.emplace(std::pair(FanText(record), record.Value()), count).first->second;
    if (first != count)
      findings->Add(record, iadt::kBody, "fan-count",
                    fmt::format("{} parameters where the first entry of the mode has {}", count, first));
  }
}

}  // namespace

void CheckFans(const Records& records, Findings* findings) {
  Records fans;
  std::ranges::copy_if(records, std::back_inserter(fans),
                       [](const RecordView& record) { return record.Type() == kFanConfigType; });
  for (const RecordView& record : fans) {
    CheckMode(record, findings);
    CheckParameters(record, findings);
  }
  CheckNames(fans, findings);
  CheckCounts(fans, findings);
}

}  // namespace diagnosis
