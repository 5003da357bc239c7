// vyntable: the two firmware tables and the BIOS information record, as text and as bytes.
#include <cstdio>

#include <fmt/core.h>

#include "vyntable/Commands.h"
#include "vyntable/Files.h"

namespace {

using namespace vyntable;

struct Subcommand {
  const char* name;
  const char* help;
  Setup setup;
};
constexpr Subcommand kSubcommands[] = {
    {"compile", "write iadt.bin, iamt.bin and biosinfo.bin from a board file", SetupCompile},
    {"decompile", "turn tables back into a board file", SetupDecompile},
    {"check", "find what the library would stumble over", SetupCheck},
    {"explain", "say in words what each record and command does", SetupExplain},
};

int Run(int argc, char** argv) {
  CLI::App app("Compiles, decompiles, checks and explains firmware tables.", "vyntable");
  app.set_version_flag("--version", "vyntable " VYNTABLE_VERSION);
  app.require_subcommand(1);
  std::function<int()> chosen;
  for (const Subcommand& row : kSubcommands) {
    CLI::App* command = app.add_subcommand(row.name, row.help);
    command->callback([&chosen, run = row.setup(command)] { chosen = run; });
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kExitOk : kExitUsage;
  }
  return chosen();
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
