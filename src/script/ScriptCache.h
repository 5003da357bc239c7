// SPDX-License-Identifier: MIT
/// Scripts that are run again and again, parsed once.
#pragma once

#include <algorithm>
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
    /// Texts of some hundred characters differ in their length, beginning or end; the comparison reads all of them
    /// anyway.
    size_t operator()(std::string_view text) const {
      constexpr size_t kEnd = 32;
      const std::hash<std::string_view> hash;
      return hash(text.substr(0, kEnd)) ^ hash(text.substr(text.size() - std::min(text.size(), kEnd))) ^ text.size();
    }
  };
  template <typename T>
  using ByText = std::unordered_map<std::string, T, Hash, std::equal_to<>>;

  ByText<Program> programs_;
  ByText<std::optional<Prefix>> prefixes_;  ///< empty: the value is part of a text, so that each needs its own parsing
  Program single_;
};

}  // namespace script
