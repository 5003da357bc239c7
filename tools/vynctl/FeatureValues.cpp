// The library compares what it is given with the entries of the firmware's table; this reads the same entries.
#include "FeatureValues.h"

#include <fmt/core.h>

#include <map>
#include <set>

#include "layout/Walk.h"

namespace vynctl {
namespace {

/// "4", "4 to 7", or two numbers where that is all there is between them.
std::vector<std::string> Runs(const std::vector<uint8_t>& ascending) {
  constexpr size_t kShortestRun = 3;
  std::vector<std::string> runs;
  for (size_t first = 0; first < ascending.size();) {
    size_t end = first + 1;
    while (end < ascending.size() && ascending[end] == ascending[end - 1] + 1) ++end;
    if (end - first < kShortestRun) end = first + 1;
    const std::string start = fmt::format("{}", ascending[first]);
    runs.push_back(end - first == 1 ? start : fmt::format("{} to {}", start, ascending[end - 1]));
    first = end;
  }
  return runs;
}

std::string NameAt(const Feature& feature, uint8_t index) {
  return feature.shape == Shape::kIndexed ? fmt::format("{} {}", feature.name, index) : feature.name;
}

}  // namespace

std::vector<AllowedValues> FindAllowed(std::span<const uint8_t> iadt, const Feature& feature) {
  if (feature.shape == Shape::kVersion || iadt.size() < layout::acpi::kHeaderBytes) return {};
  std::map<uint8_t, std::set<uint8_t>> found;
  for (layout::RecordCursor cursor(layout::Covered(iadt)); cursor.Valid(); cursor.Next()) {
    const layout::RecordView record = cursor.Current();
    if (record.Type() != feature.recordType) continue;
    found[feature.shape == Shape::kIndexed ? record.Index() : uint8_t{0}].insert(record.Value());
  }
  std::vector<AllowedValues> allowed;
  for (const auto& [index, values] : found) allowed.push_back({index, {values.begin(), values.end()}});
  return allowed;
}

std::vector<uint8_t> AllowedAt(const std::vector<AllowedValues>& allowed, uint8_t index) {
  for (const AllowedValues& row : allowed) {
    if (row.index == index) return row.values;
  }
  return {};
}

std::string NumberWords(const std::vector<uint8_t>& ascending, const char* last) {
  const std::vector<std::string> runs = Runs(ascending);
  std::string text;
  for (size_t i = 0; i < runs.size(); ++i) {
    if (i > 0) text += i + 1 == runs.size() ? fmt::format(" {} ", last) : ", ";
    text += runs[i];
  }
  return text;
}

std::string WrongIndex(const std::vector<AllowedValues>& allowed, const Feature& feature, uint8_t index) {
  if (allowed.empty() || feature.shape != Shape::kIndexed || !AllowedAt(allowed, index).empty()) return "";
  std::vector<uint8_t> instances;
  for (const AllowedValues& row : allowed) instances.push_back(row.index);
  return fmt::format("{} has the instance{} {}, not {}", feature.name, instances.size() == 1 ? "" : "s",
                     NumberWords(instances, "and"), index);
}

std::string WrongValue(const std::vector<AllowedValues>& allowed, const Feature& feature, uint8_t index,
                       uint8_t value) {
  const std::string wrongIndex = WrongIndex(allowed, feature, index);
  if (allowed.empty() || !wrongIndex.empty()) return wrongIndex;
  const std::vector<uint8_t> values = AllowedAt(allowed, index);
  for (uint8_t known : values) {
    if (known == value) return "";
  }
  return fmt::format("{} takes {}, not {}", NameAt(feature, index), NumberWords(values, "or"), value);
}

}  // namespace vynctl
