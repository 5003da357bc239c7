// SPDX-License-Identifier: MIT
// report: everything that the board offers, on one screen.
#include <fmt/core.h>

#include "board/Controls.h"
#include "board/Features.h"
#include "board/Sensors.h"
#include "commands/Context.h"
#include "view/BoardText.h"

namespace vynctl {
namespace {

/// Collects the sections of the screen and the values of the document side by side.
class Report {
 public:
  explicit Report(const Context& context) : context_(context) {}

  void AddSensors();
  void AddFeatures();
  void AddWatchdog();
  void AddFans();
  void AddFailures();
  std::string Text() const;

  Document document;

 private:
  void Section(const std::string& title, const std::string& body) {
    text_ += '\n' + context_.style.Paint(Tone::kHeading, title) + '\n' + body;
  }
  void Keep(const std::vector<Value>& values) {
    document.values.insert(document.values.end(), values.begin(), values.end());
  }
  void KeepAndExplain(const std::vector<Value>& values);

  const Context& context_;
  std::string text_;
  std::vector<Value> failures_;
};

void Report::KeepAndExplain(const std::vector<Value>& values) {
  Keep(values);
  for (const Value& value : values) {
    if (value.state != State::kOk) failures_.push_back(value);
  }
}

void Report::AddSensors() {
  const std::vector<Value> sensors = ReadSensors(context_.library, Doubts::About(context_.options.load));
  KeepAndExplain(sensors);
  for (const Quantity& quantity : Quantities()) {
    std::vector<Value> group;
    for (const Value& value : sensors) {
      if (value.quantity == quantity.name) group.push_back(value);
    }
    const std::vector<std::string> lines = SensorLines(group, context_.style, false);
    if (!group.empty()) Section(quantity.title, SideBySide(lines, context_.style.width));
  }
}

std::string FeatureLine(const Feature& feature, const std::vector<Value>& values, const Style& style) {
  std::string text;
  for (const Value& value : values) {
    const std::string shown = ShownState(feature, value);
    const std::string painted = style.Paint(value.state == State::kOk ? Tone::kPlain : ToneOf(value), shown);
    const std::string instance = InstanceOf(value);
    text += text.empty() ? "" : "  ";
    text += instance.empty() ? painted : style.Paint(Tone::kFaint, instance + ':') + painted;
  }
  return fmt::format("{:16} {}", feature.name, text);
}

void Report::AddFeatures() {
  std::vector<std::string> plain, indexed;
  for (const Feature& feature : Features()) {
    if (!Offers(context_.library, feature)) continue;
    const std::vector<Value> values = ReadFeature(context_.library, feature);
    std::vector<std::string>& lines = feature.shape == Shape::kIndexed ? indexed : plain;
    if (feature.getter == nullptr) {
      Keep(values);
      lines.push_back(fmt::format("{:16} {}", feature.name, context_.style.Paint(Tone::kFaint, "can be set")));
    } else {
      KeepAndExplain(values);
      lines.push_back(FeatureLine(feature, values, context_.style));
    }
  }
  if (!plain.empty()) Section("Features", SideBySide(plain, context_.style.width));
  if (!indexed.empty()) Section("Features by index", SideBySide(indexed, context_.style.width));
}

void Report::AddWatchdog() {
  if (!OffersWatchdog(context_.library)) return;
  const std::vector<Value> values = ReadWatchdog(context_.library);
  KeepAndExplain(values);
  std::string line;
  for (const Value& value : values) {
    const bool ok = value.state == State::kOk;
    line += fmt::format("{}{} {}", line.empty() ? "  " : "    ", value.quantity,
                        context_.style.Paint(ok ? Tone::kPlain : ToneOf(value), ShownData(value)));
  }
  Section("Watchdog", line + '\n');
}

void Report::AddFans() {
  const std::vector<Fan> fans = ReadFans(context_.library);
  Keep(FanValues(fans));
  if (!fans.empty()) Section("Fan control", FanTable(fans, context_.style, 2));
}

void Report::AddFailures() {
  using enum Table::Align;
  Table table({kLeft, kLeft});
  for (const Value& value : failures_) table.Add({{value.name}, {ShownFailure(value), ToneOf(value)}});
  if (!table.IsEmpty()) Section("Not readable or in doubt", table.Render(context_.style, 2));
}

std::string Report::Text() const {
  const Library& library = context_.library;
  const std::string model = library.Model().empty() ? "Unknown model" : library.Model();
  const std::string where = context_.options.load.board.empty() ? "" : "  (simulated)";
  const std::string head =
      context_.style.Paint(Tone::kHeading, model) + context_.style.Paint(Tone::kFaint, where) + '\n';
  return head + (text_.empty() ? "\nThis board offers nothing.\n" : text_);
}

int Run(Context& context) {
  Report report(context);
  report.AddSensors();
  report.AddFeatures();
  report.AddWatchdog();
  report.AddFans();
  report.AddFailures();
  return context.Finish(report.document, report.Text());
}

}  // namespace

Syntax DescribeReport() { return {.needsTable = true, .run = Run}; }

}  // namespace vynctl
