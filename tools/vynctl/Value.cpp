#include "Value.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cmath>
#include <map>

#include "Codes.h"
#include "Text.h"

namespace vynctl {
namespace {

struct Decimals {
  const char* quantity;
  int digits;
};

constexpr Decimals kDecimals[] = {{"voltage", 3}, {"temperature", 1}, {"current", 1}};
constexpr int kDefaultDecimals = 3;
constexpr double kLargestPlain = 1e9;

std::string ShownNumber(const Value& value, double number) {
  if (std::abs(number) >= kLargestPlain) return fmt::format("{:.3e}", number);
  int digits = kDefaultDecimals;
  for (const Decimals& row : kDecimals) {
    if (value.quantity == row.quantity) digits = row.digits;
  }
  return fmt::format("{:.{}f}", number, digits);
}

}  // namespace

const char* ToString(State state) {
  switch (state) {
    case State::kOk:
      return "ok";
    case State::kFault:
      return "fault";
    case State::kDoubtful:
      return "doubtful";
    case State::kUnavailable:
      break;
  }
  return "unavailable";
}

Value Failed(Value value, uint64_t code) {
  value.data = {};
  value.state = MeansUnavailable(code) ? State::kUnavailable : State::kFault;
  value.code = code;
  value.words = WordsFor(code);
  return value;
}

Value Measured(Value value, float reading) {
  if (!std::isfinite(reading)) {
    value.data = {};
    value.state = State::kFault;
    value.words = "the library's reading is not a finite number";
    return value;
  }
  value.data = ParseNumber(fmt::format("{}", reading)).value_or(reading);
  return value;
}

std::string ShownData(const Value& value) {
  if (const bool* flag = std::get_if<bool>(&value.data)) return *flag ? "yes" : "no";
  if (const int64_t* number = std::get_if<int64_t>(&value.data)) return fmt::format("{}", *number);
  if (const double* number = std::get_if<double>(&value.data)) return ShownNumber(value, *number);
  if (const std::string* text = std::get_if<std::string>(&value.data)) return *text;
  if (const auto* list = std::get_if<std::vector<uint8_t>>(&value.data))
    return fmt::format("{}", fmt::join(*list, " "));
  return ToString(value.state);
}

std::string ShortData(const Value& value) {
  std::string text = ShownData(value);
  if (text.find('.') == std::string::npos || text.find('e') != std::string::npos) return text;
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') text.pop_back();
  return text == "-0" ? "0" : text;
}

std::string ShownUnit(const Value& value, const Style& style) {
  return value.unit == "C" && style.unicode ? "\u00B0C" : value.unit;
}

std::string ShownFailure(const Value& value) {
  if (value.state == State::kOk) return "";
  return value.code == 0 ? value.words : fmt::format("{}: {}", Hex(value.code), ReasonFor(value.code));
}

std::string DistinctName(const Value& value) {
  const size_t repeat = value.id.rfind('#');
  return repeat == std::string::npos ? value.name : value.name + value.id.substr(repeat);
}

Tone ToneOf(const Value& value) {
  switch (value.state) {
    case State::kOk:
      return Tone::kGood;
    case State::kFault:
      return Tone::kBad;
    case State::kDoubtful:
    case State::kUnavailable:
      break;
  }
  return Tone::kWarning;
}

void MakeIdsUnique(std::vector<Value>& values) {
  std::map<std::string, int> seen;
  for (Value& value : values) {
    const int occurrence = ++seen[value.id];
    if (occurrence > 1) value.id += fmt::format("#{}", occurrence);
  }
}

}  // namespace vynctl
