#include <fmt/core.h>

#include <memory>

#include "FeatureArguments.h"
#include "Subcommand.h"

namespace vynctl {
namespace {

struct Arguments {
  std::string feature;
  std::vector<std::string> numbers;  ///< [INDEX] VALUE
};

void CheckShape(const Feature& feature, size_t numbers) {
  if (feature.setter == nullptr) throw UsageError(fmt::format("{} can only be read", feature.name));
  const bool indexed = feature.shape == Shape::kIndexed;
  if (indexed && numbers != 2) throw UsageError(fmt::format("{} needs INDEX and VALUE", feature.name));
  if (!indexed && numbers != 1) throw UsageError(fmt::format("{} takes one VALUE and no INDEX", feature.name));
}

/// What the hardware says afterwards, when it says something else.
std::string ReadBack(const Feature& feature, const Value& value, uint8_t wanted) {
  if (feature.getter == nullptr) return "";
  if (value.state != State::kOk) return fmt::format(", but cannot be read back: {}", value.words);
  if (value.data == Data(int64_t{wanted})) return "";
  return fmt::format(", but reads back {}", ShownState(feature, value));
}

int Run(Context& context, const Arguments& arguments) {
  const Feature& feature = NamedFeature(arguments.feature);
  CheckShape(feature, arguments.numbers.size());
  const bool indexed = feature.shape == Shape::kIndexed;
  const uint8_t index = indexed ? ByteArgument("INDEX", arguments.numbers.front()) : uint8_t{0};
  const uint8_t wanted = ByteArgument("VALUE", arguments.numbers.back());
  if (!OffersSetting(context.library, feature)) {
    return context.Finish(Document::Refused(context.library.LastError()), "");
  }
  const uint64_t code = SetFeature(context.library, feature, index, wanted);
  if (code != VYNLIB_OK) return context.Finish(Document::Refused(code), "");
  Document document;
  document.values = {ReadFeatureAt(context.library, feature, index)};
  const std::string instance = indexed ? fmt::format(" {}", index) : "";
  return context.Finish(document, fmt::format("{}{} set to {}{}\n", feature.name, instance, wanted,
                                              ReadBack(feature, document.values.front(), wanted)));
}

}  // namespace

Syntax DescribeSet() {
  const auto arguments = std::make_shared<Arguments>();
  return {.arguments = {{.name = "FEATURE",
                         .target = &arguments->feature,
                         .help = "name of the feature, as 'vynctl features' lists it",
                         .required = true},
                        {.name = "NUMBERS",
                         .target = &arguments->numbers,
                         .help = "[INDEX] VALUE, each 0 to 255; INDEX for indexed features",
                         .required = true,
                         .least = 1,
                         .most = 2}},
          .run = [arguments](Context& context) { return Run(context, *arguments); }};
}

}  // namespace vynctl
