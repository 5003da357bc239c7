// SPDX-License-Identifier: MIT
/// The command lines of the tools as data: what may be typed, and where it goes.
#pragma once

#include <string>
#include <variant>
#include <vector>

namespace commandline {

/// A flag sets a bool, a list takes all words that are left; everything else takes one word.
using Target =
    std::variant<bool*, int*, unsigned*, double*, std::string*, std::vector<unsigned>*, std::vector<std::string>*>;

/// Both ends belong to it; equal ends accept every number that the target holds.
struct Range {
  double low = 0;
  double high = 0;
};

/// An option ("-o,--output") or, without dashes, a word that stands in its place ("NAME"). An option's word is not
/// empty.
struct Argument {
  const char* name;
  Target target;
  const char* help = "";
  bool required = false;
  Range range = {};                       ///< of a number
  std::vector<std::string> choices = {};  ///< the only words accepted; any when empty
  const char* file = nullptr;             ///< how the help calls it: the word names a file that exists
  const char* needs = nullptr;            ///< the option that must be there too
  int least = 0;                          ///< of a list: words, when `most` is not 0
  int most = 0;
  bool oneEach = false;  ///< of a list: the option takes one word each time that it is given
};

struct Command {
  std::string name;
  std::string summary = {};
  std::vector<Argument> arguments = {};
  std::vector<Command> commands = {};  ///< when there are any, one of them must be given
  std::string* chosen = nullptr;       ///< receives the name of the one that was given
  std::string footer = {};             ///< last words of the help
  std::string usage = {};              ///< of the words behind the options; worked out from the arguments when empty
};

/// The whole tool. The arguments of `command` are known in every place when `everywhere`.
struct Program {
  Command command;
  std::string version;  ///< what --version prints; there is no such option when empty
  bool everywhere = false;
};

struct Outcome {
  enum Kind {
    kRun,     ///< the targets are set
    kAnswer,  ///< help or version was asked for
    kWrong    ///< the flags are set, other targets may be
  };
  Kind kind = kRun;
  std::string text = {};   ///< for standard output (kAnswer) or standard error (kWrong)
  std::string error = {};  ///< the mistake alone: one line of printable ASCII
};

/// Reads the command line. The commands named before a mistake are in their `chosen` all the same.
Outcome Parse(const Program& program, int argc, char** argv);

}  // namespace commandline
