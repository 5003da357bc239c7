/// The subcommands: each file defines one and says how its arguments look.
#pragma once

#include <functional>

#include "Context.h"
#include "commandline/Command.h"

namespace vynctl {

/// Runs the subcommand and returns the exit status.
using Action = std::function<int(Context& context)>;
/// The same for one that does without the library.
using LoneAction = std::function<int(const Outlet& outlet)>;

/// What may be typed behind the subcommand, and what then runs it.
struct Syntax {
  std::vector<commandline::Argument> arguments = {};
  std::vector<commandline::Command> verbs = {};  ///< when there are any, one of them must be given
  std::string* verb = nullptr;                   ///< receives it
  std::string usage = {};                        ///< the words of the usage line, where the arguments do not tell
  /// What cannot be undone from the same prompt, as a sentence; "" when nothing asks for consent. May be missing.
  std::function<std::string()> risk = {};
  bool needsTable = false;  ///< refused where the library has found no IADT
  Action run = {};
  LoneAction runAlone = {};  ///< instead of `run`
  /// What is to be done besides saying so when the library does not start.
  std::function<void(const Options& options)> notStarted = {};
};

struct Subcommand {
  const char* name;
  const char* summary;
  const char* examples;  ///< shown under --help, one per line
  Syntax (*describe)();
};

Syntax DescribeInfo();
Syntax DescribeFeatures();
Syntax DescribeGet();
Syntax DescribeSet();
Syntax DescribeValues();
Syntax DescribeSensors();
Syntax DescribeCheck();
Syntax DescribeWatchdog();
Syntax DescribeFans();
Syntax DescribeFan();
Syntax DescribeChip();
Syntax DescribeReport();
Syntax DescribeMonitor();
Syntax DescribeMetrics();
Syntax DescribeDoctor();

}  // namespace vynctl
