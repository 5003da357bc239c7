// SPDX-License-Identifier: MIT
// Parts of names, found and taken out, and which fan a name means.
#include "api/Text.h"

#include <cstring>

#include "layout/FanName.h"

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

bool FanNameMatches(std::string_view name, std::string_view wanted) { return layout::FanNameMatches(name, wanted); }

}  // namespace api
