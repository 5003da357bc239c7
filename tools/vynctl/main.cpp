// vynctl: operates a board from the shell.
#include <fmt/core.h>

#include <algorithm>
#include <iterator>

#include "Codes.h"
#include "Subcommand.h"
#include "Text.h"

namespace vynctl {
namespace {

constexpr int kPluginUnknown = 3;
constexpr char kCheck[] = "check";

constexpr Subcommand kSubcommands[] = {
    {"info", "the model, the firmware tables and what the board supports", "vynctl info\nvynctl info --json",
     DescribeInfo},
    {"report", "everything the board offers, on one screen", "vynctl report", DescribeReport},
    {"sensors", "voltages, temperatures, fan speeds and currents",
     "vynctl sensors\nvynctl sensors voltage\nvynctl sensors 'CPU Core' --json", DescribeSensors},
    {"monitor", "the sensors, live", "vynctl monitor\nvynctl monitor --interval 5\nvynctl monitor --json --count 10",
     DescribeMonitor},
    {"check", "judge the sensors for a monitoring system",
     "vynctl check\nvynctl check --limit 'CPU Core=~:80,~:95' --limit '+12V=11.4:12.6,11:13'\n"
     "vynctl check --limits /etc/vynctl/limits",
     DescribeCheck},
    {"metrics", "the sensors as Prometheus metrics",
     "vynctl metrics\nvynctl metrics --output /var/lib/prometheus/node-exporter/vynlib.prom", DescribeMetrics},
    {"features", "every feature state that the board offers, with its values", "vynctl features\nvynctl features --all",
     DescribeFeatures},
    {"get", "read one feature state", "vynctl get wifi\nvynctl get com-type\nvynctl get com-type 2", DescribeGet},
    {"set", "change one feature state", "vynctl set wifi 1\nvynctl set com-type 2 0x03", DescribeSet},
    {"watchdog", "show, start, feed or stop the watchdog",
     "vynctl watchdog status\nvynctl watchdog start 60\nvynctl watchdog feed 60 --every 20 --then-stop\nvynctl "
     "watchdog stop",
     DescribeWatchdog},
    {"fans", "the fans that can be controlled, their modes and settings", "vynctl fans", DescribeFans},
    {"fan", "show one fan or set its mode", "vynctl fan 'CPU Fan'\nvynctl fan 'CPU Fan' set 2 40 80", DescribeFan},
    {"chip", "which I/O chip serves a function", "vynctl chip 3\nvynctl chip watchdog 'WDT Id'", DescribeChip},
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
    "Exit status: 0 done, 1 the library said no, 2 wrong usage; 'check' has those of a monitoring plugin.\n\n"
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
  /// "" or a sentence about a word where a subcommand should stand, with the nearest one.
  std::string StrayWord(int argc, char** argv) const;
  /// The command that explains what was typed.
  std::string HelpCommand() const;
  bool IsCheck() const { return command_ == kCheck; }
  const std::string& Command() const { return command_; }
  const Action& Chosen() const;

  Options options;

 private:
  std::string command_;
  std::vector<Action> actions_;
  commandline::Program program_;
};

CommandLine::CommandLine() {
  commandline::Command root{
      .name = "vynctl",
      .summary = "Reads and operates the sensors, switches, watchdog and fans of an industrial board.",
      .arguments = {{.name = "-s,--simulate",
                     .target = &options.load.board,
                     .help = "work on this board description instead",
                     .file = "BOARD.toml"},
                    {.name = "--live",
                     .target = &options.load.live,
                     .help = "let the simulated readings move",
                     .needs = "--simulate"},
                    {.name = "-j,--json", .target = &options.json, .help = "print JSON (docs/vynctl.schema.json)"},
                    {.name = "--color",
                     .target = &options.colour,
                     .help = "auto, always or never",
                     .choices = {"auto", "always", "never"}}},
      .chosen = &command_,
      .footer = kFooter};
  for (const Subcommand& subcommand : kSubcommands) {
    const Syntax syntax = subcommand.describe();
    actions_.push_back(syntax.run);
    root.commands.push_back({.name = subcommand.name,
                             .summary = subcommand.summary,
                             .arguments = syntax.arguments,
                             .commands = syntax.verbs,
                             .chosen = syntax.verb,
                             .footer = ExamplesText(subcommand.examples)});
  }
  program_ = {.command = std::move(root), .version = "vynctl " VYNCTL_VERSION, .everywhere = true};
}

const Action& CommandLine::Chosen() const {
  size_t i = 0;
  while (i + 1 < std::size(kSubcommands) && command_ != kSubcommands[i].name) ++i;
  return actions_[i];
}

std::string CommandLine::StrayWord(int argc, char** argv) const {
  if (!command_.empty()) return "";
  std::vector<std::string> names;
  for (const Subcommand& subcommand : kSubcommands) names.push_back(subcommand.name);
  for (int i = 1; i < argc; ++i) {
    if (argv[i][0] == '-' || argv[i] == options.load.board) continue;
    return fmt::format("there is no subcommand '{}'{}", Printable(argv[i]), Suggestion(argv[i], names));
  }
  return "";
}

std::string CommandLine::HelpCommand() const {
  return command_.empty() ? "vynctl --help" : fmt::format("vynctl {} --help", command_);
}

/// Says what is wrong; in the form of a plugin for `check`, which must not claim a critical state.
int Complain(const CommandLine& line, int status, const std::string& why) {
  if (line.IsCheck()) {
    fmt::print("VYNLIB UNKNOWN - {}\n", why);
    return kPluginUnknown;
  }
  fmt::print(stderr, "vynctl: {}\n", why);
  if (status == kUsage) fmt::print(stderr, "Try '{}'.\n", line.HelpCommand());
  return status;
}

/// A library that does not start, in the form that was asked for.
int ReportNotStarted(const CommandLine& line, const LibraryError& error) {
  if (!line.options.json) {
    const std::string code = error.code != 0 ? fmt::format(" (code {})", Hex(error.code)) : "";
    return Complain(line, kRefused, error.what() + code);
  }
  Document document;
  document.refusal = Refusal{error.code, error.what()};
  fmt::print("{}\n", IndentedText(ToJson(document, line.Command(), line.options, nullptr)));
  return line.IsCheck() ? kPluginUnknown : kRefused;
}

int RunChosen(const CommandLine& line) {
  OutputDivert output;
  const Library library(line.options.load, output);
  Context context{line.Command(), line.options, library, output, StyleFor(line.options, output.Descriptor())};
  return line.Chosen()(context);
}

int Execute(const CommandLine& line) {
  try {
    return RunChosen(line);
  } catch (const LibraryError& error) {
    return ReportNotStarted(line, error);
  } catch (const UsageError& error) {
    return Complain(line, kUsage, error.what());
  } catch (const std::exception& error) {
    return Complain(line, kRefused, error.what());
  }
}

std::string OneLine(std::string text) {
  std::replace(text.begin(), text.end(), '\n', ' ');
  return std::string(Trim(text));
}

int Main(int argc, char** argv) {
  CommandLine line;
  const commandline::Outcome read = line.Read(argc, argv);
  switch (read.kind) {
    case commandline::Outcome::kAnswer:
      fmt::print("{}", read.text);
      return kDone;
    case commandline::Outcome::kWrong: {
      const std::string stray = line.StrayWord(argc, argv);
      return Complain(line, kUsage, stray.empty() ? OneLine(read.error) : stray);
    }
    case commandline::Outcome::kRun:
      break;
  }
  return Execute(line);
}

}  // namespace
}  // namespace vynctl

int main(int argc, char** argv) { return vynctl::Main(argc, argv); }
