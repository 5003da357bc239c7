// SPDX-License-Identifier: MIT
// get: reads one feature state, or those of all its instances.
#include <fmt/core.h>

#include <memory>

#include "board/BoardTables.h"
#include "board/Features.h"
#include "commands/Arguments.h"
#include "commands/Context.h"
#include "view/BoardText.h"

namespace vynctl {
namespace {

struct Arguments {
  std::string feature;
  std::string index;
};

/// Says which instances there are when `index` is none of them.
void NameInstances(const Context& context, const Feature& feature, uint8_t index, Document& document) {
  const auto allowed = FindAllowed(BoardTables(context.options.load.board).Iadt(), feature);
  const std::string wrong = WrongIndex(allowed, feature, index);
  if (document.refusal && document.refusal->code != VYNLIB_OK && !wrong.empty()) document.refusal->words = wrong;
}

/// A single value stands alone, so that scripts can take it as it is; nothing for a single failure.
std::string Text(const Context& context, const Feature& feature, const std::vector<Value>& values) {
  using enum Table::Align;
  const Value& first = values.front();
  if (values.size() == 1) return first.state == State::kOk ? ShownState(feature, first) + '\n' : "";
  Table table({kRight, kRight, kLeft});
  table.Heading({"INDEX", "VALUE", ""});
  for (const Value& value : values) {
    table.Add({{InstanceOf(value)}, {ShownState(feature, value)}, {ShownFailure(value), ToneOf(value)}});
  }
  return table.Render(context.style);
}

int Run(Context& context, const Arguments& arguments) {
  const Feature& feature = NamedFeature(arguments.feature);
  const std::optional<uint8_t> index = IndexArgument(feature, arguments.index);
  Document document;
  if (index) {
    document.values = {ReadFeatureAt(context.library, feature, *index)};
  } else {
    document.values = ReadFeature(context.library, feature);
  }
  for (const Value& value : document.values) document.RefuseIfNotOk(value);
  if (index) NameInstances(context, feature, *index, document);
  return context.Finish(document, Text(context, feature, document.values));
}

}  // namespace

Syntax DescribeGet() {
  const auto arguments = std::make_shared<Arguments>();
  return {.arguments = FeatureAndIndex(arguments->feature, arguments->index),
          .run = [arguments](Context& context) { return Run(context, *arguments); }};
}

}  // namespace vynctl
