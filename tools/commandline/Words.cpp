// SPDX-License-Identifier: MIT
// Escapes, and the nearest of several words.
#include "commandline/Words.h"

#include <algorithm>
#include <numeric>

namespace commandline {
namespace {

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

/// Insertions, removals and replacements that lead from one text to the other, letters compared without case.
size_t EditDistance(std::string_view from, std::string_view to) {
  std::vector<size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), size_t{0});
  for (size_t i = 0; i < from.size(); ++i) {
    size_t diagonal = row[0];
    row[0] = i + 1;
    for (size_t j = 0; j < to.size(); ++j) {
      const size_t replaced = diagonal + (Lower(from[i]) == Lower(to[j]) ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row[to.size()];
}

}  // namespace

std::string Printable(std::string_view bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (char c : bytes) {
    if (c >= ' ' && c <= '~' && c != '\\') {
      text += c;
    } else {
      text += "\\x";
      text += kDigits[static_cast<unsigned char>(c) >> 4];
      text += kDigits[static_cast<unsigned char>(c) & 0xF];
    }
  }
  return text;
}

std::string Closest(std::string_view word, const std::vector<std::string>& candidates) {
  std::string best;
  size_t bestDistance = std::max<size_t>(2, word.size() / 3) + 1;
  for (const std::string& candidate : candidates) {
    const bool abbreviated = word.size() >= 2 && candidate.starts_with(word);
    const size_t distance = abbreviated ? 1 : EditDistance(word, candidate);
    if (distance < bestDistance && distance < candidate.size()) {
      best = candidate;
      bestDistance = distance;
    }
  }
  return best;
}

std::string Suggestion(std::string_view word, const std::vector<std::string>& candidates) {
  const std::string closest = Closest(word, candidates);
  return closest.empty() ? "" : " (did you mean '" + closest + "'?)";
}

}  // namespace commandline
