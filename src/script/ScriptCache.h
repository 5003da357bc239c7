/// Scripts that are run again and again, parsed once.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "script/Program.h"

namespace script {

/// Programs by the text they were parsed from. Running one is the same as interpreting its text.
class ScriptCache {
 public:
  const Program& Get(const VynString& text);
  /// The text followed by a space and `value`. The result holds until the next call.
  const Program& GetWith(const VynString& prefix, unsigned int value);

 private:
  /// A program one operand of which may be replaced; without a place no operand takes the value.
  struct Prefix {
    Program program;
    Operand* place = nullptr;
  };
  struct Hash {
    using is_transparent = void;
    size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
  };
  template <typename T>
  using ByText = std::unordered_map<std::string, T, Hash, std::equal_to<>>;

  ByText<Program> programs_;
  ByText<std::optional<Prefix>> prefixes_;  ///< empty: the value is part of a text, so that each needs its own parsing
  Program single_;
};

}  // namespace script
