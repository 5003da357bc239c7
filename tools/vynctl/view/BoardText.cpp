// SPDX-License-Identifier: MIT
// Words and aligned lines for what the board reports.
#include "view/BoardText.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cmath>

#include "board/Codes.h"
#include "board/Sensors.h"

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

/// What tells a doubtful reading apart where there is no room for a sentence.
const char* Mark(const Value& value) { return value.state == State::kDoubtful ? "?" : ""; }

Tone ToneIn(const Value& value) { return value.state == State::kOk ? Tone::kPlain : ToneOf(value); }

Cell Shown(const Value& value) {
  const std::string text = ShownData(value);
  return {text.empty() ? "-" : text, ToneIn(value)};
}

}  // namespace

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

std::string ShownState(const Feature& feature, const Value& value) {
  const int64_t* number = std::get_if<int64_t>(&value.data);
  if (number == nullptr || feature.shape != Shape::kVersion) return ShownData(value);
  return fmt::format("0x{:04X}", *number);
}

std::string Explain(const Feature& feature, const Value& value) {
  if (value.state != State::kOk) return ShownFailure(value);
  const int64_t* number = std::get_if<int64_t>(&value.data);
  if (number == nullptr || feature.shape != Shape::kVersion) return value.name;
  return fmt::format("{}: bits {:08b}, {} matching", value.name, *number & 0xFF, *number >> 8);
}

std::string QuantityTitle(const std::string& quantity) {
  for (const Quantity& row : Quantities()) {
    if (quantity == row.name) return row.title;
  }
  return quantity;
}

std::vector<std::string> SensorLines(const std::vector<Value>& values, const Style& style, bool failures) {
  using enum Table::Align;
  Table table({kLeft, kRight, kLeft, kLeft});
  for (const Value& value : values) {
    const Tone tone = value.state == State::kOk ? Tone::kPlain : ToneOf(value);
    table.Add({{value.name},
               {ShownData(value), tone},
               {value.HasData() ? ShownUnit(value, style) : "", Tone::kFaint},
               {failures ? ShownFailure(value) : Mark(value), tone}});
  }
  return table.Lines(style);
}

std::string GroupedSensors(const std::vector<Value>& values, const Style& style) {
  const std::vector<std::string> lines = SensorLines(values, style, true);
  std::string text;
  for (size_t i = 0; i < values.size(); ++i) {
    if (i == 0 || values[i].quantity != values[i - 1].quantity) {
      text += (i == 0 ? "" : "\n") + style.Paint(Tone::kHeading, QuantityTitle(values[i].quantity)) + '\n';
    }
    text += "  " + lines[i] + '\n';
  }
  return text;
}

std::string FanTable(const std::vector<Fan>& fans, const Style& style, size_t indent) {
  using enum Table::Align;
  Table table({kLeft, kLeft, kLeft, kLeft, kLeft});
  table.Heading({"FAN", "MODES", "MODE", "PARAMETERS", ""});
  for (const Fan& fan : fans) {
    const bool moded = fan.modes.state == State::kOk || fan.mode.state == State::kOk;
    const std::string note = ShownFailure(fan.mode.state == State::kOk ? fan.parameters : fan.mode);
    if (moded) {
      table.Add({{fan.name}, Shown(fan.modes), Shown(fan.mode), Shown(fan.parameters), {note, ToneIn(fan.mode)}});
    } else {
      table.Add({{fan.name}, {"-"}, {"-"}, {"-"}, {note, Tone::kFaint}});
    }
  }
  return table.Render(style, indent);
}

}  // namespace vynctl
