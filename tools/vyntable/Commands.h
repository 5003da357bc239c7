/// The subcommands: each adds its arguments and says what to run.
#pragma once

#include <functional>

#include <CLI/CLI.hpp>

namespace vyntable {

/// Adds the arguments to `command`; the result runs it and returns the exit status. It may throw BadInput.
using Setup = std::function<int()> (*)(CLI::App* command);

std::function<int()> SetupCompile(CLI::App* command);
std::function<int()> SetupDecompile(CLI::App* command);
std::function<int()> SetupCheck(CLI::App* command);
std::function<int()> SetupExplain(CLI::App* command);

}  // namespace vyntable
