// SPDX-License-Identifier: MIT
/// What may be typed next on a described command line: what completion in shells rests on.
#pragma once

#include <string>
#include <vector>

#include "commandline/Command.h"

namespace commandline {

struct Candidate {
  std::string word;
  std::string help = {};
};

/// Where the last word of an unfinished command line stands.
struct Place {
  std::string command = {};                ///< the one of the program, "" before it
  std::vector<std::string> words = {};     ///< that stand in places of their own behind it
  const Argument* argument = nullptr;      ///< that the word belongs to; null where none is wanted
  bool isOption = false;                   ///< the argument is an option's
  std::string attached = {};               ///< "--color=" where the option is part of the word
  std::vector<Candidate> candidates = {};  ///< commands, options or choices
};

/// @param typed  the words behind the tool's name; the last is unfinished and may be ""
/// Options of strings that come before are put into their targets.
Place PlaceOf(const Program& program, const std::vector<std::string>& typed);

}  // namespace commandline
