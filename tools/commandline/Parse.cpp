// Turns the described command lines into a parser and runs it: the only source that knows the parser.
#include <CLI/CLI.hpp>
#include <sstream>

#include "commandline/Command.h"

namespace commandline {
namespace {

void AddRange(CLI::Option& option, const Argument& argument) {
  const auto [low, high] = argument.range;
  if (low == high) return;
  if (std::holds_alternative<double*>(argument.target)) {
    option.check(CLI::Range(low, high));
  } else {
    option.check(CLI::Range(static_cast<int>(low), static_cast<int>(high)));
  }
}

void AddLimits(CLI::Option& option, const Argument& argument) {
  option.required(argument.required);
  AddRange(option, argument);
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
  for (const Command& below : command.commands) AddCommands(*app.add_subcommand(below.name, below.summary), below);
  if (!command.commands.empty()) app.require_subcommand(1);
}

/// Notes which commands were given, from the top down.
void Choose(const CLI::App& app, const Command& command) {
  if (app.get_subcommands().empty()) return;
  const CLI::App& given = *app.get_subcommands().front();
  if (command.chosen != nullptr) *command.chosen = given.get_name();
  for (const Command& below : command.commands) {
    if (below.name == given.get_name()) Choose(given, below);
  }
}

/// What the parser itself says of help, version or a mistake.
Outcome Explain(CLI::App& app, const CLI::ParseError& why) {
  std::ostringstream answer, complaint;
  const bool wrong = app.exit(why, answer, complaint) != 0;
  if (wrong) return {Outcome::kWrong, complaint.str(), why.what()};
  return {Outcome::kAnswer, answer.str()};
}

}  // namespace

Outcome Parse(const Program& program, int argc, char** argv) {
  CLI::App app(program.command.summary, program.command.name);
  app.fallthrough(program.everywhere);
  if (!program.version.empty()) app.set_version_flag("--version", program.version);
  AddCommands(app, program.command);
  Outcome outcome;
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& why) {
    outcome = Explain(app, why);
  }
  Choose(app, program.command);
  return outcome;
}

}  // namespace commandline
