// SPDX-License-Identifier: MIT
// Turns the described command lines into a parser and runs it: the only source that knows the parser.
#include <CLI/CLI.hpp>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <limits>
#include <sstream>

#include "commandline/Command.h"
#include "commandline/Words.h"

namespace commandline {
namespace {

/// What a target keeps of one word; lists keep many of them.
template <typename Target>
struct ElementOf {
  using Type = Target;
};
template <typename Element>
struct ElementOf<std::vector<Element>> {
  using Type = Element;
};

/// The usage line with the words as the row has them.
class Help : public CLI::Formatter {
 public:
  explicit Help(std::string words) : words_(std::move(words)) {}

  std::string make_usage(const CLI::App* app, std::string name) const override {
    if (words_.empty()) return CLI::Formatter::make_usage(app, name);
    return "Usage: " + name + " [OPTIONS] " + words_ + "\n";
  }

 private:
  const std::string words_;
};

/// The number in both notations for whole ones; NaN for anything else.
template <typename Number>
double NumberIn(const std::string& text) {
  constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
  if (text.empty()) return kNone;
  char* end = nullptr;
  errno = 0;
  const double number = std::is_integral_v<Number> ? static_cast<double>(std::strtoll(text.c_str(), &end, 0))
                                                   : std::strtod(text.c_str(), &end);
  return errno == 0 && *end == '\0' ? number : kNone;
}

std::string Shown(double number) {
  constexpr int kDigits = 10;
  std::ostringstream text;
  text.precision(kDigits);
  text << number;
  return text.str();
}

/// Accepts numbers of the range; the parser would accept NaN, and say nothing useful of other words.
template <typename Number>
CLI::Validator NumberOf(Range range) {
  if (range.low == range.high) {
    range = {static_cast<double>(std::numeric_limits<Number>::lowest()),
             static_cast<double>(std::numeric_limits<Number>::max())};
  }
  const std::string ends = Shown(range.low) + " to " + Shown(range.high);
  const char* kind = std::is_integral_v<Number> ? "a whole number" : "a number";
  const auto check = [=](const std::string& text) -> std::string {
    const double number = NumberIn<Number>(text);
    if (number >= range.low && number <= range.high) return "";
    return std::string("needs ") + kind + " from " + ends + ", not '" + text + "'";
  };
  return {[check](std::string& text) { return check(text); },
          "in [" + Shown(range.low) + " - " + Shown(range.high) + "]"};
}

CLI::Validator NotEmpty() {
  return {[](std::string& text) -> std::string { return text.empty() ? "must not be empty" : ""; }, ""};
}

void AddChecks(CLI::Option& option, const Argument& argument) {
  std::visit(
      [&](auto* target) {
        using Element = typename ElementOf<std::remove_pointer_t<decltype(target)>>::Type;
        if constexpr (std::is_same_v<Element, std::string>) {
          if (!option.get_positional()) option.check(NotEmpty());
        } else if constexpr (!std::is_same_v<Element, bool>) {
          option.check(NumberOf<Element>(argument.range));
        }
      },
      argument.target);
}

void AddLimits(CLI::Option& option, const Argument& argument) {
  option.required(argument.required);
  AddChecks(option, argument);
  if (!argument.choices.empty()) option.check(CLI::IsMember(argument.choices));
  if (argument.file != nullptr) option.check(CLI::ExistingFile)->type_name(argument.file);
  if (argument.most != 0) option.expected(argument.least, argument.most);
  if (argument.oneEach) option.expected(1)->take_all()->allow_extra_args(false);
}

CLI::Option* AddTo(CLI::App& app, const Argument& argument) {
  return std::visit(
      [&](auto* target) {
        if constexpr (std::is_same_v<decltype(target), bool*>) {
          return app.add_flag(argument.name, *target, argument.help);
        } else {
          return app.add_option(argument.name, *target, argument.help);
        }
      },
      argument.target);
}

void AddArguments(CLI::App& app, const Command& command) {
  std::vector<std::pair<CLI::Option*, const char*>> needs;
  for (const Argument& argument : command.arguments) {
    CLI::Option* option = AddTo(app, argument);
    AddLimits(*option, argument);
    if (argument.needs != nullptr) needs.emplace_back(option, argument.needs);
  }
  for (const auto& [option, other] : needs) option->needs(app.get_option(other));
}

void AddCommands(CLI::App& app, const Command& command) {
  AddArguments(app, command);
  app.footer(command.footer);
  app.formatter(std::make_shared<Help>(command.usage));
  for (const Command& below : command.commands) AddCommands(*app.add_subcommand(below.name, below.summary), below);
  if (!command.commands.empty()) app.require_subcommand(1);
}

/// The deepest command that was given, and the way there.
struct Given {
  const Command* command;
  std::string path;
};

/// Notes in `chosen` which commands were given, from the top down.
Given Follow(const CLI::App& app, const Command& command, const std::string& path) {
  const std::vector<CLI::App*> given = app.get_subcommands();
  for (const Command& below : command.commands) {
    if (given.empty() || below.name != given.front()->get_name()) continue;
    if (command.chosen != nullptr) *command.chosen = below.name;
    return Follow(*given.front(), below, path + ' ' + below.name);
  }
  return {&command, path};
}

/// After a mistake the parser leaves the targets as they were; how to speak of the mistake may depend on a flag.
void SetFlags(const CLI::App& app, const Command& command) {
  for (const Argument& argument : command.arguments) {
    bool* const* flag = std::get_if<bool*>(&argument.target);
    const std::string names = argument.name;
    if (flag != nullptr && app.get_option(names.substr(names.rfind(',') + 1))->count() > 0) **flag = true;
  }
}

/// A sentence about a word that stands where a command should; "" when there is none.
std::string StrayWord(const CLI::App& app, const Given& given) {
  if (given.command->commands.empty()) return "";
  std::vector<std::string> names;
  for (const Command& below : given.command->commands) names.push_back(below.name);
  for (const std::string& word : app.remaining(true)) {
    if (word.starts_with('-')) continue;
    return "there is no subcommand '" + word + "'" + Suggestion(word, names);
  }
  return "";
}

std::string OneLine(std::string text) {
  std::replace(text.begin(), text.end(), '\n', ' ');
  return Printable(text.substr(0, text.find_last_not_of(' ') + 1));
}

/// What the parser itself says of help, version or a mistake.
Outcome Explain(CLI::App& app, const Program& program, const CLI::ParseError& why) {
  std::ostringstream answer, complaint;
  const Given given = Follow(app, program.command, app.get_name());
  if (app.exit(why, answer, complaint) == 0) return {Outcome::kAnswer, answer.str()};
  SetFlags(app, program.command);
  const std::string stray = StrayWord(app, given);
  const std::string error = OneLine(stray.empty() ? why.what() : stray);
  return {Outcome::kWrong, app.get_name() + ": " + error + "\nTry '" + given.path + " --help'.\n", error};
}

}  // namespace

Outcome Parse(const Program& program, int argc, char** argv) {
  CLI::App app(program.command.summary, program.command.name);
  app.fallthrough(program.everywhere);
  if (!program.version.empty()) app.set_version_flag("--version", program.version);
  AddCommands(app, program.command);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& why) {
    return Explain(app, program, why);
  }
  Follow(app, program.command, "");
  return {};
}

}  // namespace commandline
