// SPDX-License-Identifier: MIT
// fan: shows one fan or sets its mode.
#include <fmt/core.h>

#include <algorithm>
#include <memory>

#include "board/Codes.h"
#include "board/Controls.h"
#include "commands/Arguments.h"
#include "commands/Context.h"
#include "view/BoardText.h"
#include "view/Text.h"

namespace vynctl {
namespace {

struct Arguments {
  std::string name;
  std::string verb;
  std::vector<std::string> numbers;
  bool yes = false;
};

constexpr uint64_t kNoSuchFan = (VYNLIB_FAMILY_FAN_CONFIG << 8) | 0x06;
constexpr uint64_t kOtherCount = (VYNLIB_FAMILY_FAN_CONFIG << 8) | 0x05;

/// The library's name for the fan that the user calls `name`; empty when the board lists no such fan.
std::optional<std::string> FindFan(const std::vector<std::string>& names, const std::string& name) {
  const auto called = [&](const std::string& raw) { return raw == name || Printable(Trim(raw)) == Trim(name); };
  const auto found = std::find_if(names.begin(), names.end(), called);
  if (found == names.end()) return std::nullopt;
  return *found;
}

int NoSuchFan(Context& context, const std::vector<std::string>& names, const std::string& name) {
  if (names.empty()) return context.Finish(Document::Refused(context.library.LastError()), "");
  Document document = Document::Refused(kNoSuchFan);
  std::vector<std::string> printable;
  for (const std::string& raw : names) printable.push_back(Printable(Trim(raw)));
  document.refusal->words = fmt::format("there is no fan '{}'{}", Printable(name), Suggestion(name, printable));
  return context.Finish(document, "");
}

int Show(Context& context, const std::string& rawName, const std::string& sentence) {
  const std::vector<Fan> fans = {ReadFan(context.library, rawName)};
  Document document;
  document.values = FanValues(fans);
  document.RefuseIfNotOk(fans.front().mode);
  return context.Finish(document, sentence + FanTable(fans, context.style));
}

/// A wrong number of parameters is explained by the right one.
std::string Explained(const Context& context, const std::string& rawName, uint64_t code, uint8_t mode, size_t given) {
  if (code != kOtherCount) return WordsFor(code);
  const std::optional<unsigned> wanted = ParameterCount(context.library, rawName, mode);
  if (!wanted) return fmt::format("{} has no mode {}", Printable(Trim(rawName)), mode);
  return fmt::format("mode {} of {} takes {} parameter{}, not {}", mode, Printable(Trim(rawName)), *wanted,
                     *wanted == 1 ? "" : "s", given);
}

/// The mode, then its parameters.
std::vector<uint8_t> Block(const Arguments& arguments) {
  constexpr size_t kLargestBlock = 254;
  if (arguments.numbers.empty()) throw UsageError("'set' needs MODE and the mode's parameters");
  if (arguments.numbers.size() > kLargestBlock) throw UsageError("too many parameters");
  std::vector<uint8_t> block;
  for (const std::string& number : arguments.numbers)
    block.push_back(ByteArgument(block.empty() ? "MODE" : "PARAM", number));
  return block;
}

bool Sets(const Arguments& arguments) {
  if (!arguments.verb.empty() && arguments.verb != "set") {
    throw UsageError(fmt::format("'{}' is not something a fan does; write 'vynctl fan NAME set MODE PARAM...'",
                                 Printable(arguments.verb)));
  }
  return !arguments.verb.empty();
}

std::string Risk(const Arguments& arguments) {
  if (!Sets(arguments) || arguments.yes) return "";
  const std::vector<uint8_t> block = Block(arguments);
  if (std::find(block.begin() + 1, block.end(), uint8_t{0}) == block.end()) return "";
  return fmt::format("a parameter of 0 may stop {}, and a board that overheats cannot be told to start it again",
                     Printable(Trim(arguments.name)));
}

int Set(Context& context, const std::string& rawName, const std::vector<uint8_t>& block) {
  const uint64_t code = SetFan(context.library, rawName, block);
  if (code == VYNLIB_OK)
    return Show(context, rawName, fmt::format("{} set to mode {}.\n", Printable(Trim(rawName)), block[0]));
  Document document = Document::Refused(code);
  document.refusal->words = Explained(context, rawName, code, block[0], block.size() - 1);
  return context.Finish(document, "");
}

int Run(Context& context, const Arguments& arguments) {
  const std::vector<uint8_t> block = Sets(arguments) ? Block(arguments) : std::vector<uint8_t>{};
  const std::vector<std::string> names = FanNames(context.library);
  const std::optional<std::string> rawName = FindFan(names, arguments.name);
  if (!rawName) return NoSuchFan(context, names, arguments.name);
  return block.empty() ? Show(context, *rawName, "") : Set(context, *rawName, block);
}

}  // namespace

Syntax DescribeFan() {
  const auto arguments = std::make_shared<Arguments>();
  return {
      .arguments =
          {{.name = "NAME",
            .target = &arguments->name,
            .help = "name of the fan, as 'vynctl fans' lists it",
            .required = true},
           {.name = "VERB", .target = &arguments->verb, .help = "'set' to change the fan; without it the fan is shown"},
           {.name = "NUMBERS", .target = &arguments->numbers, .help = "MODE and the mode's parameters, each 0 to 255"},
           {.name = "-y,--yes",
            .target = &arguments->yes,
            .help = "do not ask before what cannot be undone from the same prompt"}},
      .usage = "NAME [set MODE [PARAM...]]",
      .risk = [arguments] { return Risk(*arguments); },
      .run = [arguments](Context& context) { return Run(context, *arguments); }};
}

}  // namespace vynctl
