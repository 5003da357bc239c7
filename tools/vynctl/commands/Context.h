// SPDX-License-Identifier: MIT
/// What a subcommand says of itself, what it works with, and how it hands over its result.
#pragma once

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "board/Library.h"
#include "board/Value.h"
#include "commandline/Command.h"
#include "view/Json.h"
#include "view/Table.h"

namespace vynctl {

/// kUnwell: the watchdog is no longer fed, because the system was found unwell.
enum ExitStatus { kDone = 0, kRefused = 1, kUsage = 2, kUnwell = 3 };

/// The command line asks for something that cannot be.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The options that every subcommand has.
struct Options {
  LoadOptions load;
  bool json = false;
  std::string colour = "auto";  ///< "auto", "always", "never"
};

/// What a subcommand has to say, before it is text or JSON.
struct Document {
  std::vector<Value> values;
  std::optional<Refusal> refusal;
  Json::Object extra;  ///< further top-level members of the JSON form

  /// A refusal with the library's code and its words.
  static Document Refused(uint64_t code);
  static Document Refused(const Refusal& refusal);
  /// A refusal of a value that is not ok; nothing when it is.
  void RefuseIfNotOk(const Value& value);
};

/// The document in JSON after docs/vynctl.schema.json.
/// @param model  of the board; empty when it is not known
Json ToJson(const Document& document, const std::string& command, const Options& options, const std::string& model);

/// Terminal or not, colours, width: after --color, NO_COLOR, TERM, COLUMNS, the locale and the descriptor.
Style StyleFor(const Options& options, int descriptor);

/// Where a subcommand's result goes, and in which form.
struct Outlet {
  /// Prints the document: as JSON with --json, else `text` and, on standard error, why it was refused.
  /// @return the exit status
  int Finish(const Document& document, const std::string& text, const std::string& model) const;
  /// Writes to the real standard output.
  /// @throws std::runtime_error when that fails
  void Print(const std::string& text) const;

  std::string command;
  const Options& options;
  OutputDivert& output;
  Style style;
};

/// What a subcommand that uses the library works with.
struct Context : Outlet {
  int Finish(const Document& document, const std::string& text) const {
    return Outlet::Finish(document, text, library.Model());
  }

  const Library& library;
};

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
