// SPDX-License-Identifier: MIT
// info: the model, where the firmware tables were found, and what the board supports.
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "board/BoardTables.h"
#include "board/Controls.h"
#include "board/Features.h"
#include "board/Sensors.h"
#include "commands/Context.h"
#include "view/BoardText.h"
#include "view/Text.h"

namespace vynctl {
namespace {

Value Answer(const std::string& id, const std::string& name, const std::string& quantity, Data data) {
  return {.id = id, .name = name, .quantity = quantity, .data = std::move(data)};
}

Value Model(const Library& library) {
  Value value = Answer("board/model", "model", "text", library.Model());
  if (!library.Model().empty()) return value;
  value.data = {};
  value.state = State::kUnavailable;
  value.words = "the board has no BIOS information record";
  return value;
}

/// Reads the sensors where any of them could be in doubt.
std::vector<Value> DoubtfulSensors(const Context& context) {
  const Doubts doubts = Doubts::About(context.options.load);
  if (!doubts.Any()) return {};
  std::vector<Value> sensors = ReadSensors(context.library, doubts);
  std::erase_if(sensors, [](const Value& value) { return value.state != State::kDoubtful; });
  return sensors;
}

const Value& Find(const std::vector<Value>& values, std::string_view id) {
  return *std::ranges::find(values, id, &Value::id);
}

std::vector<Value> Describe(const Context& context) {
  const Library& library = context.library;
  std::vector<Value> values = {Model(library)};
  const TablesSought sought = SeekTables(context.options.load);
  values.push_back(Answer("board/tables", "firmware tables", "presence", HasBothTables(library)));
  values.push_back(Answer("board/tables-source", "tables taken from", "text", sought.source));
  values.push_back(Answer("board/iadt", "table IADT", "presence", HasIadt(library)));
  values.push_back(Answer("board/iadt-sought", "table IADT was looked for", "text", sought.iadt));
  values.push_back(Answer("board/iamt", "table IAMT", "presence", HasIamt(library, sought)));
  values.push_back(Answer("board/iamt-sought", "table IAMT was looked for", "text", sought.iamt));
  for (const Quantity& quantity : Quantities()) {
    const auto count = static_cast<int64_t>(CountSensors(library, quantity));
    values.push_back(Answer(fmt::format("count/{}", quantity.name), quantity.title, "count", count));
  }
  values.push_back(Answer("support/watchdog", "watchdog", "support", OffersWatchdog(library)));
  values.push_back(Answer("support/fan-control", "fan control", "support", !FanNames(library).empty()));
  for (const Feature& feature : Features()) {
    values.push_back(
        Answer(fmt::format("support/{}", feature.name), feature.name, "support", Offers(library, feature)));
  }
  for (const Value& value : DoubtfulSensors(context)) values.push_back(value);
  return values;
}

/// The library's line, and what it means where the line does not tell.
std::string InWords(const std::string& message) {
  constexpr std::string_view kNoRecord = "Is Core8 ... ???";
  return message == kNoRecord ? message + "  (it found no BIOS information record)" : message;
}

std::string OfferedFeatures(const Library& library, size_t width) {
  std::string text, line;
  for (const Feature& feature : Features()) {
    if (!Offers(library, feature)) continue;
    if (!line.empty() && line.size() + strlen(feature.name) + 2 > width) {
      text += line + ",\n";
      line.clear();
    }
    line += line.empty() ? feature.name : fmt::format(", {}", feature.name);
  }
  return text.empty() && line.empty() ? "none" : text + line;
}

std::string Sources(const Context& context) {
  if (context.options.load.board.empty()) return context.library.FileName();
  return fmt::format("{}, simulating {}", context.library.FileName(), Printable(context.options.load.board));
}

std::string Text(const Context& context, const std::vector<Value>& values) {
  constexpr size_t kFirstColumn = 17;
  const Library& library = context.library;
  Table table({Table::Align::kLeft, Table::Align::kLeft});
  const auto add = [&](const std::string& title, const std::string& text, Tone tone = Tone::kPlain) {
    table.Add({{title, Tone::kFaint}, {text, tone}});
  };
  add("Model", library.Model().empty() ? "unknown (no BIOS information record)" : library.Model(), Tone::kHeading);
  add("Library", Sources(context));
  add("Tables from", ShownData(Find(values, "board/tables-source")));
  for (const auto& [id, title] : {std::pair("board/iadt", "Table IADT"), std::pair("board/iamt", "Table IAMT")}) {
    const bool found = std::get<bool>(Find(values, id).data);
    const std::string sought = ShownData(Find(values, std::string(id) + "-sought"));
    add(title, found ? "found" : "not found: " + sought, found ? Tone::kGood : Tone::kBad);
  }
  for (const Value& value : values) {
    if (value.quantity == "count") add(value.name, ShownData(value) == "0" ? "none" : ShownData(value));
  }
  add("Watchdog", OffersWatchdog(library) ? "yes" : "none");
  std::vector<std::string> fans;
  for (const std::string& name : FanNames(library)) fans.push_back(Printable(Trim(name)));
  add("Fan control", fans.empty() ? "none" : fmt::format("{}", fmt::join(fans, ", ")));
  const std::string features = OfferedFeatures(library, std::max(context.style.width, 2 * kFirstColumn) - kFirstColumn);
  for (size_t start = 0; start <= features.size();) {
    const size_t end = std::min(features.find('\n', start), features.size());
    add(start == 0 ? "Features" : "", features.substr(start, end - start));
    start = end + 1;
  }
  for (const Value& value : values) {
    if (value.state != State::kDoubtful) continue;
    add("Doubtful", fmt::format("{} {} {}: {}", value.name, ShownData(value), value.unit, value.words), Tone::kWarning);
  }
  for (const std::string& message : library.Messages()) add("Library says", InWords(message), Tone::kWarning);
  return table.Render(context.style);
}

int Run(Context& context) {
  Document document;
  document.values = Describe(context);
  document.extra = {{"messages", Json::Array(context.library.Messages().begin(), context.library.Messages().end())}};
  return context.Finish(document, Text(context, document.values));
}

}  // namespace

Syntax DescribeInfo() { return {.run = Run}; }

}  // namespace vynctl
