// vyntable: the two firmware tables and the BIOS information record, as text and as bytes.
#include <cstdio>
#include <map>

#include <fmt/core.h>

#include "vyntable/Commands.h"
#include "vyntable/Files.h"

namespace {

using namespace vyntable;

struct Subcommand {
  const char* name;
  const char* help;
  Syntax (*describe)();
};
constexpr Subcommand kSubcommands[] = {
    {"compile", "write iadt.bin, iamt.bin and biosinfo.bin from a board file", DescribeCompile},
    {"decompile", "turn tables back into a board file", DescribeDecompile},
    {"check", "find what the library would stumble over", DescribeCheck},
    {"explain", "say in words what each record and command does", DescribeExplain},
};

int Run(int argc, char** argv) {
  std::string chosen;
  commandline::Command root{
      .name = "vyntable", .summary = "Compiles, decompiles, checks and explains firmware tables.", .chosen = &chosen};
  std::map<std::string, std::function<int()>> actions;
  for (const Subcommand& row : kSubcommands) {
    const Syntax syntax = row.describe();
    root.commands.push_back({.name = row.name, .summary = row.help, .arguments = syntax.arguments});
    actions[row.name] = syntax.run;
  }
  const commandline::Program program{.command = root, .version = "vyntable " VYNTABLE_VERSION};
  const commandline::Outcome read = commandline::Parse(program, argc, argv);
  if (read.kind == commandline::Outcome::kRun) return actions.at(chosen)();
  const bool answer = read.kind == commandline::Outcome::kAnswer;
  fmt::print(answer ? stdout : stderr, "{}", read.text);
  return answer ? kExitOk : kExitUsage;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception& error) {
    fmt::print(stderr, "vyntable: {}\n", error.what());
    return kExitBadInput;
  }
}
