// SPDX-License-Identifier: MIT
// vynctl: operates a board from the shell.
#include <fmt/core.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <iterator>

#include "board/BoardTables.h"
#include "board/Codes.h"
#include "commandline/Streams.h"
#include "commands/Completion.h"
#include "commands/Context.h"

namespace vynctl {
namespace {

constexpr char kTool[] = "vynctl";
constexpr int kPluginUnknown = 3;
constexpr char kCheck[] = "check";
// What the completion of shells calls, with the words of the line behind it.
constexpr char kComplete[] = "__complete";

constexpr Subcommand kSubcommands[] = {
    {"info", "the model, the firmware tables and what the board supports", "vynctl info\nvynctl info --json",
     DescribeInfo},
    {"report", "everything the board offers, on one screen", "vynctl report", DescribeReport},
    {"sensors", "voltages, temperatures, fan speeds and currents",
     "vynctl sensors\nvynctl sensors voltage\nvynctl sensors 'CPU Core' --json", DescribeSensors},
    {"monitor", "the sensors, live",
     "vynctl monitor\nvynctl monitor temperature 'CPU Fan' --interval 5\nvynctl monitor --json --count 10",
     DescribeMonitor},
    {"check", "judge the sensors for a monitoring system",
     "vynctl check\nvynctl check --limit temperature/CPU=5:85,1:95 --limit voltage/+12V=11.4:12.6,10.8:13.2\n"
     "vynctl check --limits /etc/vynctl/limits",
     DescribeCheck},
    {"metrics", "the sensors as Prometheus metrics",
     "vynctl metrics\nvynctl metrics --output /var/lib/prometheus/node-exporter/vynlib.prom", DescribeMetrics},
    {"features", "every feature state that the board offers, with its values", "vynctl features\nvynctl features --all",
     DescribeFeatures},
    {"values", "the values that a feature can take on this board", "vynctl values wifi\nvynctl values com-type 2",
     DescribeValues},
    {"get", "read one feature state", "vynctl get wifi\nvynctl get com-type\nvynctl get com-type 2", DescribeGet},
    {"set", "change one feature state", "vynctl set wifi 1\nvynctl set com-type 2 0x03", DescribeSet},
    {"watchdog", "show, start, feed or stop the watchdog",
     "vynctl watchdog status\nvynctl watchdog start 60\nvynctl watchdog feed 60 --every 20 --then-stop\nvynctl "
     "watchdog stop",
     DescribeWatchdog},
    {"fans", "the fans that can be controlled, their modes and settings", "vynctl fans", DescribeFans},
    {"fan", "show one fan or set its mode", "vynctl fan 'CPU Fan'\nvynctl fan 'CPU Fan' set 2 40 80", DescribeFan},
    {"chip", "which I/O chip serves a function", "vynctl chip\nvynctl chip watchdog WDT", DescribeChip},
    {"doctor", "find out why the board cannot be used, or what gets in its way",
     "vynctl doctor\nvynctl doctor --json\nvynctl doctor --bundle report.tar", DescribeDoctor},
};

/// "Examples:" with each line indented.
std::string ExamplesText(std::string_view examples) {
  std::string text = "Examples:";
  for (size_t start = 0; start <= examples.size();) {
    const size_t end = std::min(examples.find('\n', start), examples.size());
    text += fmt::format("\n  {}", examples.substr(start, end - start));
    start = end + 1;
  }
  return text;
}

constexpr char kFooter[] =
    "Without --simulate the tool works on this machine's hardware and must run as root.\n"
    "Exit status: 0 done, 1 the library said no, 2 wrong usage; 'check' has those of a monitoring plugin.\n"
    "When something does not work: vynctl doctor.\n\n"
    "Examples:\n"
    "  vynctl report\n"
    "  vynctl --simulate boards/reference.toml report\n"
    "  vynctl get com-type 1\n"
    "  vynctl sensors --json";

/// The command line: options that all subcommands have, and the subcommands.
class CommandLine {
 public:
  CommandLine();
  CommandLine(const CommandLine&) = delete;
  CommandLine& operator=(const CommandLine&) = delete;

  commandline::Outcome Read(int argc, char** argv) const { return commandline::Parse(program_, argc, argv); }
  /// What may be typed for the last of the words.
  std::string Complete(const std::vector<std::string>& typed) const;
  /// The command that explains what was typed.
  std::string HelpCommand() const;
  bool IsCheck() const { return command_ == kCheck; }
  const std::string& Command() const { return command_; }
  const Syntax& Chosen() const;

  Options options;

 private:
  std::string command_;
  std::vector<Syntax> syntaxes_;
  commandline::Program program_;
};

CommandLine::CommandLine() {
  commandline::Command root{
      .name = kTool,
      .summary = "Reads and operates the sensors, switches, watchdog and fans of an industrial board.",
      .arguments = {{.name = "-s,--simulate",
                     .target = &options.load.board,
                     .help = "work on this board description instead",
                     .file = "BOARD.toml"},
                    {.name = "--live",
                     .target = &options.load.live,
                     .help = "let the simulated readings move",
                     .needs = "--simulate"},
                    {.name = "--state",
                     .target = &options.load.state,
                     .help = "keep what is changed on the simulated board in this file",
                     .needs = "--simulate"},
                    {.name = "--wait",
                     .target = &options.load.wait,
                     .help = "seconds to wait for a program that uses the hardware (10)",
                     .range = {0, 86400}},
                    {.name = "--no-lock",
                     .target = &options.load.noLock,
                     .help = "do not take turns with other programs that use the hardware"},
                    {.name = "--lock-file",
                     .target = &options.load.lockFile,
                     .help = "take turns by this file instead of " VYNLIB_LOCK_PATH},
                    {.name = "-j,--json", .target = &options.json, .help = "print JSON (docs/vynctl.schema.json)"},
                    {.name = "--color",
                     .target = &options.colour,
                     .help = "auto, always or never",
                     .choices = {"auto", "always", "never"}}},
      .chosen = &command_,
      .footer = kFooter};
  for (const Subcommand& subcommand : kSubcommands) {
    const Syntax& syntax = syntaxes_.emplace_back(subcommand.describe());
    root.commands.push_back({.name = subcommand.name,
                             .summary = subcommand.summary,
                             .arguments = syntax.arguments,
                             .commands = syntax.verbs,
                             .chosen = syntax.verb,
                             .footer = ExamplesText(subcommand.examples),
                             .usage = syntax.usage});
  }
  program_ = {.command = std::move(root), .version = "vynctl " VYNCTL_VERSION, .everywhere = true};
}

const Syntax& CommandLine::Chosen() const {
  size_t i = 0;
  while (i + 1 < std::size(kSubcommands) && command_ != kSubcommands[i].name) ++i;
  return syntaxes_[i];
}

std::string CommandLine::HelpCommand() const {
  return command_.empty() ? "vynctl --help" : fmt::format("vynctl {} --help", command_);
}

std::string CommandLine::Complete(const std::vector<std::string>& typed) const {
  const commandline::Place place = commandline::PlaceOf(program_, typed);
  return Completions(place, BoardTables(options.load.board).Iadt());
}

/// Says what is wrong, in the form that was asked for; in that of a plugin for `check`, which must not claim a critical
/// state.
/// @param hint  what ends the message
int Complain(const CommandLine& line, int status, const std::string& why, uint64_t code = VYNLIB_OK,
             const std::string& hint = "") {
  const std::string suffix = (code != VYNLIB_OK ? fmt::format(" (code {})", Hex(code)) : "") + hint;
  if (line.options.json) {
    Document document;
    document.refusal = Refusal{code, why + hint};
    commandline::Print(kTool, IndentedText(ToJson(document, line.Command(), line.options, "")) + '\n');
  } else if (line.IsCheck()) {
    commandline::Print(kTool, fmt::format("VYNLIB UNKNOWN - {}{}\n", why, suffix));
  } else {
    const std::string help = status == kUsage ? fmt::format("Try '{}'.\n", line.HelpCommand()) : "";
    commandline::Say(fmt::format("{}: {}{}\n{}", kTool, why, suffix, help));
  }
  return line.IsCheck() ? kPluginUnknown : status;
}

bool Answers(const std::string& question) {
  commandline::Say(question);
  std::string answer;
  std::getline(std::cin, answer);
  return answer == "y" || answer == "yes";
}

/// Asks before what cannot be undone from the same prompt, where somebody can answer.
/// @throws UsageError where nobody can
bool HasConsent(const CommandLine& line) {
  const Syntax& syntax = line.Chosen();
  const std::string risk = syntax.risk ? syntax.risk() : "";
  if (risk.empty()) return true;
  if (line.options.json || isatty(STDIN_FILENO) == 0 || isatty(STDERR_FILENO) == 0)
    throw UsageError(fmt::format("{}; --yes does it all the same", risk));
  return Answers(fmt::format("{}: {}. Go on? [y/N] ", kTool, risk));
}

int RunChosen(const CommandLine& line) {
  if (!HasConsent(line)) return Complain(line, kRefused, "nothing was changed");
  OutputDivert output;
  const Outlet outlet{line.Command(), line.options, output, StyleFor(line.options, output.Descriptor())};
  const Syntax& chosen = line.Chosen();
  if (chosen.runAlone) return chosen.runAlone(outlet);
  const Library library(line.options.load, output);
  Context context{outlet, library};
  if (chosen.needsTable) {
    const std::optional<Refusal> refusal = RefuseWithoutTables(library, line.options.load);
    if (refusal) return context.Finish(Document::Refused(*refusal), "");
  }
  return chosen.run(context);
}

int Execute(const CommandLine& line) {
  try {
    return RunChosen(line);
  } catch (const LibraryError& error) {
    const Syntax& chosen = line.Chosen();
    if (chosen.notStarted) chosen.notStarted(line.options);
    return Complain(line, kRefused, error.what(), error.code, DoctorHint(line.options.load));
  } catch (const LockError& error) {
    return Complain(line, kRefused, error.what());
  } catch (const UsageError& error) {
    return Complain(line, kUsage, error.what());
  } catch (const std::exception& error) {
    return Complain(line, kRefused, error.what());
  }
}

int Main(int argc, char** argv) {
  CommandLine line;
  if (argc > 1 && std::string_view(argv[1]) == kComplete)
    return commandline::Print(kTool, line.Complete({argv + 2, argv + argc})) ? kDone : kRefused;
  const commandline::Outcome read = line.Read(argc, argv);
  switch (read.kind) {
    case commandline::Outcome::kAnswer:
      return commandline::Print(kTool, read.text) ? kDone : kRefused;
    case commandline::Outcome::kWrong:
      return Complain(line, kUsage, read.error);
    case commandline::Outcome::kRun:
      break;
  }
  return Execute(line);
}

}  // namespace
}  // namespace vynctl

int main(int argc, char** argv) {
  commandline::HoldStandardDescriptors();
  return vynctl::Main(argc, argv);
}
