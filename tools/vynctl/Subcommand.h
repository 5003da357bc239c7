/// The subcommands: each file defines one and says how its arguments look.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>

#include "Context.h"

namespace vynctl {

/// Runs the subcommand and returns the exit status.
using Action = std::function<int(Context& context)>;

struct Subcommand {
  const char* name;
  const char* summary;
  const char* examples;            ///< shown under --help, one per line
  Action (*build)(CLI::App& app);  ///< declares the arguments
};

Action BuildInfo(CLI::App& app);
Action BuildFeatures(CLI::App& app);
Action BuildGet(CLI::App& app);
Action BuildSet(CLI::App& app);
Action BuildSensors(CLI::App& app);
Action BuildCheck(CLI::App& app);
Action BuildWatchdog(CLI::App& app);
Action BuildFans(CLI::App& app);
Action BuildFan(CLI::App& app);
Action BuildChip(CLI::App& app);
Action BuildReport(CLI::App& app);
Action BuildMonitor(CLI::App& app);
Action BuildMetrics(CLI::App& app);

}  // namespace vynctl
