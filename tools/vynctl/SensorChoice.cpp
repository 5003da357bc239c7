#include "SensorChoice.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "Sensors.h"
#include "Text.h"

namespace vynctl {
namespace {

bool Fits(const Value& value, const std::string& word) { return IsCalled(value, word) || value.quantity == word; }

std::string NoSuchSensor(const std::vector<Value>& values, const std::string& word) {
  std::vector<std::string> names;
  for (const Value& value : values) names.push_back(value.name);
  return fmt::format("there is no sensor '{}'{}", Printable(word), Suggestion(word, names));
}

}  // namespace

std::string Misnamed(const std::vector<Value>& values, const std::string& word) {
  std::vector<std::string> identifiers;
  bool several = false;
  for (const Value& value : values) {
    if (value.id == word) return "";
    if (value.name != word) continue;
    several |= !identifiers.empty() && !identifiers.front().starts_with(value.quantity + '/');
    identifiers.push_back(value.id);
  }
  if (identifiers.empty()) return NoSuchSensor(values, word);
  if (!several) return "";
  return fmt::format("'{}' fits several quantities: choose from {}", Printable(word), fmt::join(identifiers, ", "));
}

std::string Choose(std::vector<Value>& values, const std::vector<std::string>& wanted) {
  if (wanted.empty()) return "";
  for (const std::string& word : wanted) {
    const auto measures = [&](const Value& value) { return value.quantity == word; };
    if (std::any_of(values.begin(), values.end(), measures)) continue;
    const std::string sentence = Misnamed(values, word);
    if (sentence.empty()) continue;
    values.clear();
    return sentence;
  }
  std::erase_if(values, [&](const Value& value) {
    return std::none_of(wanted.begin(), wanted.end(), [&](const std::string& word) { return Fits(value, word); });
  });
  return "";
}

}  // namespace vynctl
