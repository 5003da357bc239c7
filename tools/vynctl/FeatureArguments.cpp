#include "FeatureArguments.h"

#include <fmt/core.h>

#include "Context.h"
#include "Text.h"

namespace vynctl {

const Feature& NamedFeature(const std::string& name) {
  const Feature* feature = FindFeature(name);
  if (feature == nullptr) {
    throw UsageError(fmt::format("there is no feature '{}'{}; 'vynctl features --all' lists them", Printable(name),
                                 Suggestion(name, FeatureNames())));
  }
  return *feature;
}

uint8_t ByteArgument(const char* what, const std::string& text) {
  const std::optional<uint8_t> byte = ParseByte(text);
  if (!byte) throw UsageError(fmt::format("{} must be a number from 0 to 255, not '{}'", what, Printable(text)));
  return *byte;
}

std::vector<commandline::Argument> FeatureAndIndex(std::string& feature, std::string& index) {
  return {{.name = "FEATURE",
           .target = &feature,
           .help = "name of the feature, as 'vynctl features' lists it",
           .required = true},
          {.name = "INDEX",
           .target = &index,
           .help = "instance of an indexed feature, such as the COM port; without it: all"}};
}

std::optional<uint8_t> IndexArgument(const Feature& feature, const std::string& text) {
  if (text.empty()) return std::nullopt;
  if (feature.shape == Shape::kIndexed) return ByteArgument("INDEX", text);
  throw UsageError(fmt::format("{} has no instances; leave INDEX out", feature.name));
}

}  // namespace vynctl
