// SPDX-License-Identifier: MIT
// One line per sample, under the two lines that say what a metric is.
#include "view/Metrics.h"

#include <fmt/core.h>

#include "board/Sensors.h"
#include "view/BoardText.h"

namespace vynctl {
namespace {

std::string Head(const std::string& metric, const std::string& help) {
  return fmt::format("# HELP {0} {1}\n# TYPE {0} gauge\n", metric, help);
}

/// Label values escape the quote, and the backslash that non-printing bytes are shown with.
std::string Label(const std::string& text) {
  std::string escaped;
  for (char c : text) {
    if (c == '"' || c == '\\') escaped += '\\';
    escaped += c;
  }
  return escaped;
}

std::string Samples(const std::vector<Value>& sensors, const Quantity& quantity) {
  std::string text;
  for (const Value& value : sensors) {
    if (value.quantity != quantity.name || !value.HasData()) continue;
    const int64_t* whole = std::get_if<int64_t>(&value.data);
    const std::string number =
        whole != nullptr ? fmt::format("{}", *whole) : fmt::format("{}", std::get<double>(value.data));
    text += fmt::format("{}{{sensor=\"{}\"}} {}\n", quantity.metric, Label(DistinctName(value)), number);
  }
  return text;
}

std::string Health(bool up, bool tables) {
  return Head("vynlib_up", "1 when the sensors could be asked.") + fmt::format("vynlib_up {:d}\n", up) +
         Head("vynlib_tables_found", "1 when both firmware tables were found.") +
         fmt::format("vynlib_tables_found {:d}\n", tables);
}

/// 1 or 0 for every sensor.
std::string Marks(const std::vector<Value>& sensors, const char* metric, const char* help, State state) {
  std::string text = Head(metric, help);
  for (const Value& value : sensors) {
    text += fmt::format("{}{{quantity=\"{}\",sensor=\"{}\"}} {:d}\n", metric, value.quantity,
                        Label(DistinctName(value)), value.state == state);
  }
  return text;
}

}  // namespace

std::string MetricsOfNothing() { return Health(false, false); }

std::string MetricsText(const std::vector<Value>& sensors, const std::string& model, bool tables) {
  std::string text = Health(true, tables) + Head("vynlib_board_info", "The board's model; always 1.");
  text += fmt::format("vynlib_board_info{{model=\"{}\"}} 1\n", Label(model));
  for (const Quantity& quantity : Quantities()) {
    const std::string samples = Samples(sensors, quantity);
    if (!samples.empty())
      text += Head(quantity.metric, fmt::format("{} in {}.", quantity.title, quantity.unit)) + samples;
  }
  if (sensors.empty()) return text;
  return text +
         Marks(sensors, "vynlib_sensor_ok", "1 when the sensor could be read and nothing casts doubt on it.",
               State::kOk) +
         Marks(sensors, "vynlib_sensor_doubtful", "1 when the reading may be that of a failed access.",
               State::kDoubtful);
}

}  // namespace vynctl
