// SPDX-License-Identifier: MIT
// Follows an unfinished command line through the described commands up to its last word.
#include "commandline/Place.h"

#include <algorithm>
#include <string_view>

namespace commandline {
namespace {

bool IsOption(std::string_view word) { return word.size() > 1 && word.starts_with('-'); }
bool IsFlag(const Argument& argument) { return std::holds_alternative<bool*>(argument.target); }

bool IsList(const Argument& argument) {
  return std::holds_alternative<std::vector<std::string>*>(argument.target) ||
         std::holds_alternative<std::vector<unsigned>*>(argument.target);
}

/// "-s" and "--simulate" of "-s,--simulate".
std::vector<std::string> NamesOf(const Argument& argument) {
  const std::string names = argument.name;
  const size_t comma = names.find(',');
  if (comma == std::string::npos) return {names};
  return {names.substr(0, comma), names.substr(comma + 1)};
}

class Walk {
 public:
  explicit Walk(const Program& program) : program_(program), way_{&program.command} {}

  void Pass(const std::string& word);
  Place Stop(const std::string& word) const;

 private:
  const Command& Here() const { return *way_.back(); }
  std::vector<const Argument*> Options() const;
  const Argument* OptionCalled(const std::string& name) const;
  const Argument* Positional() const;
  std::vector<Candidate> Commands() const;
  std::vector<Candidate> OptionNames() const;

  const Program& program_;
  std::vector<const Command*> way_;  ///< from the tool down
  std::vector<std::string> words_;
  const Argument* waiting_ = nullptr;  ///< an option whose word comes next
};

/// Those known here: of the command, and of the tool where they are known everywhere.
std::vector<const Argument*> Walk::Options() const {
  std::vector<const Argument*> options;
  for (const Command* command : way_) {
    if (command != &Here() && !program_.everywhere) continue;
    for (const Argument& argument : command->arguments) {
      if (IsOption(argument.name)) options.push_back(&argument);
    }
  }
  return options;
}

const Argument* Walk::OptionCalled(const std::string& name) const {
  for (const Argument* option : Options()) {
    const std::vector<std::string> names = NamesOf(*option);
    if (std::find(names.begin(), names.end(), name) != names.end()) return option;
  }
  return nullptr;
}

void Walk::Pass(const std::string& word) {
  if (waiting_ != nullptr) {
    if (std::string* const* target = std::get_if<std::string*>(&waiting_->target)) **target = word;
    waiting_ = nullptr;
    return;
  }
  if (IsOption(word)) {
    const size_t equals = word.find('=');
    const Argument* option = OptionCalled(word.substr(0, equals));
    if (option == nullptr || IsFlag(*option)) return;
    waiting_ = option;
    if (equals != std::string::npos) Pass(word.substr(equals + 1));
    return;
  }
  const auto& below = Here().commands;
  const auto named = std::find_if(below.begin(), below.end(), [&](const Command& one) { return one.name == word; });
  if (named == below.end()) return words_.push_back(word);
  way_.push_back(&*named);
}

/// The argument in whose place the next word stands; a list takes all that are left.
const Argument* Walk::Positional() const {
  size_t before = words_.size();
  for (const Argument& argument : Here().arguments) {
    if (IsOption(argument.name)) continue;
    if (before == 0 || IsList(argument)) return &argument;
    --before;
  }
  return nullptr;
}

std::vector<Candidate> Walk::Commands() const {
  std::vector<Candidate> found;
  for (const Command& command : Here().commands) found.push_back({command.name, command.summary});
  return found;
}

std::vector<Candidate> Walk::OptionNames() const {
  std::vector<Candidate> found;
  for (const Argument* option : Options()) {
    for (const std::string& name : NamesOf(*option)) found.push_back({name, option->help});
  }
  found.push_back({"--help", "print help and exit"});
  return found;
}

Place Walk::Stop(const std::string& word) const {
  Place place{.words = words_, .argument = waiting_, .isOption = waiting_ != nullptr};
  if (way_.size() > 1) place.command = way_[1]->name;
  const size_t equals = word.find('=');
  if (waiting_ == nullptr && IsOption(word) && equals != std::string::npos) {
    place.argument = OptionCalled(word.substr(0, equals));
    place.isOption = true;
    place.attached = word.substr(0, equals + 1);
  } else if (waiting_ == nullptr && word.starts_with('-')) {
    place.candidates = OptionNames();
    return place;
  } else if (waiting_ == nullptr) {
    place.candidates = Commands();
    if (place.candidates.empty()) place.argument = Positional();
  }
  if (place.argument == nullptr) return place;
  for (const std::string& choice : place.argument->choices) place.candidates.push_back({choice});
  return place;
}

}  // namespace

Place PlaceOf(const Program& program, const std::vector<std::string>& typed) {
  Walk walk(program);
  for (size_t i = 0; i + 1 < typed.size(); ++i) walk.Pass(typed[i]);
  return walk.Stop(typed.empty() ? "" : typed.back());
}

}  // namespace commandline
