// vyntable: the two firmware tables and the BIOS information record, as text and as bytes.
#include <cstdio>
#include <map>

#include <fmt/core.h>

#include "commandline/Streams.h"
#include "commandline/Words.h"
#include "vyntable/Commands.h"
#include "vyntable/Files.h"

namespace {

using namespace vyntable;

constexpr char kTool[] = "vyntable";

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
      .name = kTool, .summary = "Compiles, decompiles, checks and explains firmware tables.", .chosen = &chosen};
  std::map<std::string, std::function<int()>> actions;
  for (const Subcommand& row : kSubcommands) {
    const Syntax syntax = row.describe();
    root.commands.push_back({.name = row.name, .summary = row.help, .arguments = syntax.arguments});
    actions[row.name] = syntax.run;
  }
  const commandline::Program program{.command = root, .version = "vyntable " VYNTABLE_VERSION};
  const commandline::Outcome read = commandline::Parse(program, argc, argv);
  switch (read.kind) {
    case commandline::Outcome::kRun:
      return actions.at(chosen)();
    case commandline::Outcome::kAnswer:
      return commandline::Print(kTool, read.text) ? kExitOk : kExitBadInput;
    case commandline::Outcome::kWrong:
      commandline::Say(read.text);
      break;
  }
  return kExitUsage;
}

int RunOrExplain(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception& error) {
    // Output that could not be written is told at the end.
    if (std::ferror(stdout) == 0)
      commandline::Say(fmt::format("{}: {}\n", kTool, commandline::Printable(error.what())));
    return kExitBadInput;
  }
}

}  // namespace

int main(int argc, char** argv) {
  commandline::HoldStandardDescriptors();
  const int status = RunOrExplain(argc, argv);
  return commandline::Flush(kTool) ? status : kExitBadInput;
}
