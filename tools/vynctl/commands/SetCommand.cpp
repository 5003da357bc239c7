// SPDX-License-Identifier: MIT
// set: changes one feature state and reads it back.
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
  std::string first, second;  ///< INDEX and VALUE, or VALUE alone
  bool yes = false;
};

/// What is asked for, once it is plain that it can be asked.
struct Request {
  const Feature& feature;
  uint8_t index;
  uint8_t value;

  std::string Name() const {
    return feature.shape == Shape::kIndexed ? fmt::format("{} {}", feature.name, index) : feature.name;
  }
};

Request Understand(const Arguments& arguments) {
  const Feature& feature = NamedFeature(arguments.feature);
  if (feature.setter == nullptr) throw UsageError(fmt::format("{} can only be read", feature.name));
  const bool indexed = feature.shape == Shape::kIndexed;
  if (indexed && arguments.second.empty()) throw UsageError(fmt::format("{} needs INDEX and VALUE", feature.name));
  if (!indexed && (arguments.first.empty() || !arguments.second.empty()))
    throw UsageError(fmt::format("{} takes one VALUE and no INDEX", feature.name));
  if (!indexed) return {feature, 0, ByteArgument("VALUE", arguments.first)};
  return {feature, ByteArgument("INDEX", arguments.first), ByteArgument("VALUE", arguments.second)};
}

std::string Risk(const Arguments& arguments) {
  const Request request = Understand(arguments);
  if (!request.feature.grave || arguments.yes) return "";
  return fmt::format("setting {} to {} cannot be undone from here on every board", request.Name(), request.value);
}

/// What the hardware says afterwards, when it says something else.
std::string ReadBack(const Feature& feature, const Value& value, uint8_t wanted) {
  if (feature.getter == nullptr) return "";
  if (value.state != State::kOk) return fmt::format(", but cannot be read back: {}", value.words);
  if (value.data == Data(int64_t{wanted})) return "";
  return fmt::format(", but reads back {}", ShownState(feature, value));
}

/// The library's refusal, in the words of the firmware's own table where that explains it.
Document Refused(const Context& context, const Request& request, uint64_t code) {
  Document document = Document::Refused(code);
  const auto allowed = FindAllowed(BoardTables(context.options.load.board).Iadt(), request.feature);
  const std::string wrong = WrongValue(allowed, request.feature, request.index, request.value);
  if (!wrong.empty()) document.refusal->words = wrong;
  return document;
}

int Run(Context& context, const Arguments& arguments) {
  const Request request = Understand(arguments);
  const Feature& feature = request.feature;
  if (!OffersSetting(context.library, feature)) {
    return context.Finish(Document::Refused(context.library.LastError()), "");
  }
  const uint64_t code = SetFeature(context.library, feature, request.index, request.value);
  if (code != VYNLIB_OK) return context.Finish(Refused(context, request, code), "");
  Document document;
  document.values = {ReadFeatureAt(context.library, feature, request.index)};
  return context.Finish(document, fmt::format("{} set to {}{}\n", request.Name(), request.value,
                                              ReadBack(feature, document.values.front(), request.value)));
}

}  // namespace

Syntax DescribeSet() {
  const auto arguments = std::make_shared<Arguments>();
  return {.arguments = {{.name = "FEATURE",
                         .target = &arguments->feature,
                         .help = "name of the feature, as 'vynctl features' lists it",
                         .required = true},
                        {.name = "INDEX", .target = &arguments->first, .help = "instance, for indexed features alone"},
                        {.name = "VALUE",
                         .target = &arguments->second,
                         .help = "0 to 255; 'vynctl values FEATURE' lists those that the board has"},
                        {.name = "-y,--yes",
                         .target = &arguments->yes,
                         .help = "do not ask before what cannot be undone from the same prompt"}},
          .usage = "FEATURE [INDEX] VALUE",
          .risk = [arguments] { return Risk(*arguments); },
          .run = [arguments](Context& context) { return Run(context, *arguments); }};
}

}  // namespace vynctl
