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

Program ParseWith(const VynString& prefix, unsigned int value) { return Parse(prefix + " " + IntToStr(value)); }

template <typename Map>
void Limit(Map& map) {
  if (map.size() >= kMostTexts) map.clear();
}

/// The operand of `program` that differs from `other`, a parsing of the same prefix with another value.
Operand* FindPlace(Program& program, const Program& other) {
  for (size_t i = 0; i < program.statements.size(); ++i)
    for (size_t k = 0; k < program.statements[i].operands.size(); ++k)
      if (program.statements[i].operands[k].number != other.statements[i].operands[k].number)
        return &program.statements[i].operands[k];
  return nullptr;
}

bool SameWords(const Program& program, const Program& other) {
  if (program.statements.size() != other.statements.size()) return false;
  for (size_t i = 0; i < program.statements.size(); ++i)
    if (program.statements[i].words != other.statements[i].words) return false;
  return true;
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
    Program program = ParseWith(prefix, 0);
    const Program other = ParseWith(prefix, 1);
    if (SameWords(program, other)) {
      Prefix& kept = found->second.emplace(Prefix{std::move(program)});
      kept.place = FindPlace(kept.program, other);
    }
  }
  if (!found->second) return single_ = ParseWith(prefix, value);
  if (found->second->place != nullptr) found->second->place->number = value;
  return found->second->program;
}

}  // namespace script
