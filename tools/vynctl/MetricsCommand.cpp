#include <fmt/core.h>

#include <memory>

#include "Metrics.h"
#include "OutputFile.h"
#include "Sensors.h"
#include "Subcommand.h"

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
    if (value.quantity != quantity.name || value.state != State::kOk) continue;
    const int64_t* whole = std::get_if<int64_t>(&value.data);
    const std::string number =
        whole != nullptr ? fmt::format("{}", *whole) : fmt::format("{}", std::get<double>(value.data));
    text += fmt::format("{}{{sensor=\"{}\"}} {}\n", quantity.metric, Label(DistinctName(value)), number);
  }
  return text;
}

int Run(Context& context, const std::string& path) {
  Document document;
  document.values = ReadSensors(context.library);
  const std::string text = MetricsText(document.values, context.library.Model());
  if (path.empty()) return context.Finish(document, text);
  ReplaceFile(path, text);
  return kDone;
}

}  // namespace

std::string MetricsText(const std::vector<Value>& sensors, const std::string& model) {
  std::string text = Head("vynlib_board_info", "The board's model; always 1.");
  text += fmt::format("vynlib_board_info{{model=\"{}\"}} 1\n", Label(model));
  for (const Quantity& quantity : Quantities()) {
    const std::string samples = Samples(sensors, quantity);
    if (!samples.empty())
      text += Head(quantity.metric, fmt::format("{} in {}.", quantity.title, quantity.unit)) + samples;
  }
  if (sensors.empty()) return text;
  text += Head("vynlib_sensor_ok", "1 when the sensor could be read.");
  for (const Value& value : sensors) {
    text += fmt::format("vynlib_sensor_ok{{quantity=\"{}\",sensor=\"{}\"}} {}\n", value.quantity,
                        Label(DistinctName(value)), value.state == State::kOk ? 1 : 0);
  }
  return text;
}

Syntax DescribeMetrics() {
  const auto path = std::make_shared<std::string>();
  return {.arguments = {{.name = "-o,--output",
                         .target = path.get(),
                         .help = "write to this file, replacing it in one step (for a textfile collector)"}},
          .run = [path](Context& context) { return Run(context, *path); }};
}

}  // namespace vynctl
