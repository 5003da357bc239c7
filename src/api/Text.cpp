#include "api/Text.h"

#include <cstring>

namespace api {

int IsSubStrInStr(std::string_view text, std::string_view pattern) {
  return !text.empty() && text.find(pattern) != std::string_view::npos ? 1 : 0;
}

void RemoveSubStr(size_t size, char* text, std::string_view pattern) {
  const std::string_view whole(text, strnlen(text, size));
  const size_t at = whole.find(pattern);
  if (at == std::string_view::npos) return;
  const size_t tail = at + pattern.size();
  std::memmove(text + at, text + tail, whole.size() - tail);
  std::memset(text + whole.size() - pattern.size(), 0, pattern.size());
}

bool FanNameMatches(std::string_view name, std::string_view wanted) {
  if (wanted.empty()) return false;
  size_t hits = 0;  // not reset between positions
  for (size_t p = 0; p + wanted.size() <= name.size(); ++p) {
    if (name[p] != wanted[0]) continue;
    for (size_t i = 0; i < wanted.size(); ++i) hits += name[p + i] == wanted[i] ? 1 : 0;
    if (hits == wanted.size()) return true;
  }
  return false;
}

}  // namespace api
