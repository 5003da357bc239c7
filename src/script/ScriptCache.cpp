// SPDX-License-Identifier: MIT
// Keeps what was parsed of the latest texts, a prefix with its value left open.
#include "script/ScriptCache.h"

namespace script {

namespace {

/// A controller has some forty scripts; callers with scripts of their own start the cache afresh at times.
constexpr size_t kMostTexts = 256;

std::string_view View(const VynString& text) { return text.Buffer() ? text.c_str() : ""; }

Program Parse(const VynString& text) {
  const VynString normalised = TInterpreter::AdjustCmdString(text);
  return ParseScript(View(normalised));
}

/// The prefix with the open word behind it.
Program ParseOpen(const VynString& prefix) {
  std::string text(View(TInterpreter::AdjustCmdString(prefix + " 0")));
  text.replace(text.size() - 1, 1, kOpenWord);
  return ParseScript(text, kOpenWord);
}

template <typename Map>
void Limit(Map& map) {
  if (map.size() >= kMostTexts) map.clear();
}

/// The operand that is still to come; null when the value counts for nothing.
Operand* FindPlace(Program& program) {
  for (Statement& statement : program.statements)
    for (Operand& operand : statement.operands)
      if (operand.IsOpen()) return &operand;
  return nullptr;
}

bool IsWord(const Program& program) {
  for (const Statement& statement : program.statements)
    if (statement.words.find(kOpenWord) != std::string::npos) return true;
  return false;
}

}  // namespace

const Program& ScriptCache::Get(const VynString& text) {
  const auto found = programs_.find(View(text));
  if (found != programs_.end()) return found->second;
  Limit(programs_);
  return programs_.emplace(View(text), Parse(text)).first->second;
}

const Program& ScriptCache::GetWith(const VynString& prefix, unsigned int value) {
  auto found = prefixes_.find(View(prefix));
  if (found == prefixes_.end()) {
    Limit(prefixes_);
    found = prefixes_.emplace(View(prefix), std::nullopt).first;
    Program program = ParseOpen(prefix);
    if (!IsWord(program)) {
      Prefix& kept = found->second.emplace(Prefix{std::move(program)});
      kept.place = FindPlace(kept.program);
    }
  }
  if (!found->second) return single_ = Parse(prefix + " " + IntToStr(value));
  if (found->second->place != nullptr) *found->second->place = {.isLocal = false, .number = value};
  return found->second->program;
}

}  // namespace script
