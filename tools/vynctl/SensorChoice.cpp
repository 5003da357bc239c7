#include "SensorChoice.h"

#include <fmt/core.h>

#include <algorithm>

#include "Sensors.h"
#include "Text.h"

namespace vynctl {
namespace {

bool Fits(const Value& value, const std::string& word) { return IsCalled(value, word) || value.quantity == word; }

}  // namespace

std::string NoSuchSensor(const std::vector<Value>& values, const std::string& word) {
  std::vector<std::string> names;
  for (const Value& value : values) names.push_back(value.name);
  return fmt::format("there is no sensor '{}'{}", Printable(word), Suggestion(word, names));
}

std::string Choose(std::vector<Value>& values, const std::vector<std::string>& wanted) {
  if (wanted.empty()) return "";
  for (const std::string& word : wanted) {
    const auto fits = [&](const Value& value) { return Fits(value, word); };
    if (std::none_of(values.begin(), values.end(), fits)) {
      const std::string sentence = NoSuchSensor(values, word);
      values.clear();
      return sentence;
    }
  }
  std::erase_if(values, [&](const Value& value) {
    return std::none_of(wanted.begin(), wanted.end(), [&](const std::string& word) { return Fits(value, word); });
  });
  return "";
}

}  // namespace vynctl
