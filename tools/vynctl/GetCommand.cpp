#include <fmt/core.h>

#include <memory>

#include "FeatureArguments.h"
#include "Subcommand.h"

namespace vynctl {
namespace {

struct Arguments {
  std::string feature;
  std::string index;
};

std::vector<Value> Read(const Library& library, const Feature& feature, const std::string& index) {
  if (index.empty()) return ReadFeature(library, feature);
  return {ReadFeatureAt(library, feature, ByteArgument("INDEX", index))};
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
  if (!arguments.index.empty() && feature.shape != Shape::kIndexed) {
    throw UsageError(fmt::format("{} has no instances; leave INDEX out", feature.name));
  }
  Document document;
  document.values = Read(context.library, feature, arguments.index);
  for (const Value& value : document.values) document.RefuseIfNotOk(value);
  return context.Finish(document, Text(context, feature, document.values));
}

}  // namespace

Syntax DescribeGet() {
  const auto arguments = std::make_shared<Arguments>();
  return {.arguments = {{.name = "FEATURE",
                         .target = &arguments->feature,
                         .help = "name of the feature, as 'vynctl features' lists it",
                         .required = true},
                        {.name = "INDEX",
                         .target = &arguments->index,
                         .help = "instance of an indexed feature, such as the COM port; without it: all"}},
          .run = [arguments](Context& context) { return Run(context, *arguments); }};
}

}  // namespace vynctl
