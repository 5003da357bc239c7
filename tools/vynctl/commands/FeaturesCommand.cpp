// SPDX-License-Identifier: MIT
// features: every feature state that the board offers, with the values that it takes.
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <memory>

#include "board/BoardTables.h"
#include "board/Features.h"
#include "commands/Context.h"
#include "view/BoardText.h"
#include "view/Text.h"

namespace vynctl {
namespace {

const char* Access(const Library& library, const Feature& feature) {
  const bool read = OffersReading(library, feature), set = OffersSetting(library, feature);
  return read && set ? "get, set" : read ? "get" : set ? "set" : "";
}

/// "-" where the firmware's table tells nothing.
std::string ShownAllowed(const Value& value) {
  return value.allowed.empty() ? "-" : fmt::format("{}", fmt::join(value.allowed, " "));
}

/// Adds what each instance can be set to.
void AddAllowed(const std::vector<AllowedValues>& allowed, std::vector<Value>& values) {
  for (Value& value : values) {
    const std::string instance = InstanceOf(value);
    const auto index = ParseByte(instance.empty() ? "0" : instance).value_or(0);
    value.allowed = AllowedAt(allowed, index);
  }
}

void AddRows(Table& table, const Feature& feature, const std::vector<Value>& values, const char* access) {
  for (const Value& value : values) {
    const bool first = &value == &values.front();
    table.Add({{first ? feature.name : "", Tone::kHeading},
               {InstanceOf(value)},
               {ShownState(feature, value), value.state == State::kOk ? Tone::kPlain : ToneOf(value)},
               {ShownAllowed(value), Tone::kFaint},
               {first ? access : "", Tone::kFaint},
               {Explain(feature, value), value.state == State::kOk ? Tone::kFaint : ToneOf(value)}});
  }
}

int Run(Context& context, bool all) {
  using enum Table::Align;
  Document document;
  Table table({kLeft, kRight, kRight, kLeft, kLeft, kLeft});
  table.Heading({"FEATURE", "INDEX", "VALUE", "ALLOWED", "ACCESS", "WHAT"});
  BoardTables tables(context.options.load.board);
  for (const Feature& feature : Features()) {
    if (!all && !Offers(context.library, feature)) continue;
    std::vector<Value> values = ReadFeature(context.library, feature);
    AddAllowed(FindAllowed(tables.Iadt(), feature), values);
    AddRows(table, feature, values, Access(context.library, feature));
    document.values.insert(document.values.end(), values.begin(), values.end());
  }
  if (document.values.empty()) return context.Finish(document, "This board offers no features.\n");
  return context.Finish(document, table.Render(context.style));
}

}  // namespace

Syntax DescribeFeatures() {
  const auto all = std::make_shared<bool>(false);
  return {.arguments = {{.name = "-a,--all", .target = all.get(), .help = "also those that the board does not offer"}},
          .needsTable = true,
          .run = [all](Context& context) { return Run(context, *all); }};
}

}  // namespace vynctl
