// SPDX-License-Identifier: MIT
// values: what a feature can be set to, without touching the hardware.
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <memory>

#include "board/BoardTables.h"
#include "board/Features.h"
#include "commands/Arguments.h"
#include "commands/Context.h"

namespace vynctl {
namespace {

struct Arguments {
  std::string feature;
  std::string index;
};

Value ValueOf(const Feature& feature, const AllowedValues& allowed) {
  Value value = BlankState(feature, allowed.index);
  value.id += "/values";
  value.quantity = "values";
  value.data = allowed.values;
  return value;
}

/// A single list stands alone, so that scripts can take it as it is.
std::string Text(const Context& context, const std::vector<AllowedValues>& allowed) {
  using enum Table::Align;
  if (allowed.size() == 1) return fmt::format("{}\n", fmt::join(allowed.front().values, " "));
  Table table({kRight, kLeft});
  table.Heading({"INDEX", "VALUES"});
  for (const AllowedValues& row : allowed)
    table.Add({{fmt::format("{}", row.index)}, {fmt::format("{}", fmt::join(row.values, " "))}});
  return table.Render(context.style);
}

int Refuse(Context& context, const std::string& words) {
  Document document;
  document.refusal = Refusal{0, words};
  return context.Finish(document, "");
}

int Run(Context& context, const Arguments& arguments) {
  const Feature& feature = NamedFeature(arguments.feature);
  const std::optional<uint8_t> index = IndexArgument(feature, arguments.index);
  if (!Offers(context.library, feature)) return context.Finish(Document::Refused(context.library.LastError()), "");
  std::vector<AllowedValues> allowed = FindAllowed(BoardTables(context.options.load.board).Iadt(), feature);
  if (allowed.empty()) return Refuse(context, fmt::format("the firmware's table tells no values of {}", feature.name));
  if (index) {
    const std::string wrong = WrongIndex(allowed, feature, *index);
    if (!wrong.empty()) return Refuse(context, wrong);
    std::erase_if(allowed, [&](const AllowedValues& row) { return row.index != *index; });
  }
  Document document;
  for (const AllowedValues& row : allowed) document.values.push_back(ValueOf(feature, row));
  return context.Finish(document, Text(context, allowed));
}

}  // namespace

Syntax DescribeValues() {
  const auto arguments = std::make_shared<Arguments>();
  return {.arguments = FeatureAndIndex(arguments->feature, arguments->index),
          .run = [arguments](Context& context) { return Run(context, *arguments); }};
}

}  // namespace vynctl
