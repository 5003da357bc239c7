// SPDX-License-Identifier: MIT
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
    {"test", "try everything on the board's simulated machine", DescribeTest},
    {"new", "begin a board file", DescribeNew},
    {"diff", "say in words how two firmwares differ", DescribeDiff},
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
      return commandline::Print(kTool, read.text) ? kExitOk : kExitTrouble;
    case commandline::Outcome::kWrong:
      commandline::Say(read.text);
      break;
  }
  return kExitTrouble;
}

/// A line for each line of the text, with nothing but printable characters in it.
std::string Complaint(std::string_view text) {
  std::string lines;
  for (;;) {
    const size_t end = text.find('\n');
    lines += fmt::format("{}: {}\n", kTool, commandline::Printable(text.substr(0, end)));
    if (end == text.npos) return lines;
    text.remove_prefix(end + 1);
  }
}

/// Options of one letter and more that firmware teams know from compilers, as the parser has them.
std::vector<char*> WithLongOptions(int argc, char** argv) {
  static char dependencies[] = "--MD", file[] = "--MF";
  std::vector<char*> words(argv, argv + argc);
  for (char*& word : words) {
    if (std::string_view(word) == "-MD") word = dependencies;
    if (std::string_view(word) == "-MF") word = file;
  }
  words.push_back(nullptr);
  return words;
}

int RunOrExplain(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception& error) {
    // Output that could not be written is told at the end.
    if (std::ferror(stdout) == 0) commandline::Say(Complaint(error.what()));
    return kExitTrouble;
  }
}

}  // namespace

int main(int argc, char** argv) {
  commandline::HoldStandardDescriptors();
  const int status = RunOrExplain(argc, WithLongOptions(argc, argv).data());
  return commandline::Flush(kTool) ? status : kExitTrouble;
}
