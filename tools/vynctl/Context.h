/// What a subcommand works with, and how it hands over its result.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "Json.h"
#include "Library.h"
#include "Table.h"
#include "Value.h"

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

/// Why the library (code not 0) or the tool (code 0) said no.
struct Refusal {
  uint64_t code = 0;
  std::string words;
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

/// What ends a message about a failure of which 'vynctl doctor' knows more; empty on a simulated board.
std::string DoctorHint(const Options& options);

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

}  // namespace vynctl
