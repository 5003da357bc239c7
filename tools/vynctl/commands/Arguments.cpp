// SPDX-License-Identifier: MIT
// Arguments in words become what they name, or a complaint with the nearest name.
#include "commands/Arguments.h"

#include <fmt/core.h>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <fstream>

#include "board/Sensors.h"
#include "commands/Context.h"
#include "view/Text.h"

namespace vynctl {

const Feature& NamedFeature(const std::string& name) {
  const Feature* feature = FindFeature(name);
  if (feature == nullptr) {
    throw UsageError(fmt::format("there is no feature '{}'{}; 'vynctl features --all' lists them", Printable(name),
                                 Suggestion(name, FeatureNames())));
  }
  return *feature;
}

uint8_t ByteArgument(const char* what, const std::string& text) {
  const std::optional<uint8_t> byte = ParseByte(text);
  if (!byte) throw UsageError(fmt::format("{} must be a number from 0 to 255, not '{}'", what, Printable(text)));
  return *byte;
}

std::vector<commandline::Argument> FeatureAndIndex(std::string& feature, std::string& index) {
  return {{.name = "FEATURE",
           .target = &feature,
           .help = "name of the feature, as 'vynctl features' lists it",
           .required = true},
          {.name = "INDEX",
           .target = &index,
           .help = "instance of an indexed feature, such as the COM port; without it: all"}};
}

std::optional<uint8_t> IndexArgument(const Feature& feature, const std::string& text) {
  if (text.empty()) return std::nullopt;
  if (feature.shape == Shape::kIndexed) return ByteArgument("INDEX", text);
  throw UsageError(fmt::format("{} has no instances; leave INDEX out", feature.name));
}

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

namespace {

double ParseBound(std::string_view text, std::string_view range) {
  const std::optional<double> number = ParseNumber(text);
  if (!number) {
    throw UsageError(fmt::format("'{}' is not a range such as 10:20, 500:, ~:80 or @0:5", Printable(range)));
  }
  return *number;
}

}  // namespace

Range ParseRange(std::string_view text) {
  text = Trim(text);
  Range range;
  if (text.empty() || text == "-") return range;
  range.text = text;
  std::string_view rest = text;
  if (rest.starts_with('@')) {
    range.inverted = true;
    rest.remove_prefix(1);
  }
  const size_t colon = rest.find(':');
  const std::string_view low = colon == std::string_view::npos ? "" : rest.substr(0, colon);
  const std::string_view high = colon == std::string_view::npos ? rest : rest.substr(colon + 1);
  if (low != "~") range.low = low.empty() ? 0 : ParseBound(low, text);
  if (!high.empty() || colon == std::string_view::npos) range.high = ParseBound(high, text);
  if (range.low > range.high) throw UsageError(fmt::format("the range '{}' ends before it begins", Printable(text)));
  return range;
}

Limit ParseLimit(std::string_view text) {
  const size_t equals = text.rfind('=');
  if (equals == std::string_view::npos || Trim(text.substr(0, equals)).empty()) {
    throw UsageError(fmt::format("'{}' is not a limit; write SENSOR=WARNING,CRITICAL", Printable(text)));
  }
  const std::string_view ranges = text.substr(equals + 1);
  const size_t comma = ranges.find(',');
  Limit limit{.sensor = std::string(Trim(text.substr(0, equals))), .warning = ParseRange(ranges.substr(0, comma))};
  if (comma != std::string_view::npos) limit.critical = ParseRange(ranges.substr(comma + 1));
  if (limit.warning.text.empty() && limit.critical.text.empty()) {
    throw UsageError(fmt::format("the limit of '{}' has no range", Printable(limit.sensor)));
  }
  return limit;
}

std::vector<Limit> ReadLimits(const std::string& path) {
  std::ifstream file(path);
  if (!file) throw UsageError(fmt::format("cannot read the limits file {}", Printable(path)));
  std::vector<Limit> limits;
  size_t number = 0;
  for (std::string line; std::getline(file, line);) {
    ++number;
    const std::string_view text = Trim(line);
    if (text.empty() || text.starts_with('#')) continue;
    try {
      limits.push_back(ParseLimit(text));
    } catch (const UsageError& error) {
      throw UsageError(fmt::format("{}:{}: {}", Printable(path), number, error.what()));
    }
  }
  if (file.bad()) throw UsageError(fmt::format("cannot read the limits file {}", Printable(path)));
  // A monitoring that judges nothing would say OK for ever.
  if (limits.empty()) throw UsageError(fmt::format("the limits file {} holds no limit", Printable(path)));
  return limits;
}

}  // namespace vynctl
