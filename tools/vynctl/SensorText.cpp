#include "SensorText.h"

#include "Sensors.h"

namespace vynctl {

std::string QuantityTitle(const std::string& quantity) {
  for (const Quantity& row : Quantities()) {
    if (quantity == row.name) return row.title;
  }
  return quantity;
}

/// What tells a doubtful reading apart where there is no room for a sentence.
static const char* Mark(const Value& value) { return value.state == State::kDoubtful ? "?" : ""; }

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

}  // namespace vynctl
