// SPDX-License-Identifier: MIT
// Bytes of names and numbers, one at a time.
#include "view/Text.h"

#include <fmt/core.h>

#include <algorithm>
#include <charconv>
#include <cmath>

namespace vynctl {
namespace {

constexpr char kEscape = '\x1b';

bool IsAlnum(char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

bool IsContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

std::string Counted(unsigned count, const char* unit) {
  return fmt::format("{} {}{}", count, unit, count == 1 ? "" : "s");
}

}  // namespace

std::string IdPart(std::string_view name) {
  if (name.empty()) return "unnamed";
  std::string part(name);
  std::replace_if(
      part.begin(), part.end(), [](char c) { return !IsAlnum(c) && c != '+' && c != '-' && c != '.'; }, '_');
  return part;
}

std::optional<uint8_t> ParseByte(std::string_view text) {
  const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
  if (hexadecimal) text.remove_prefix(2);
  unsigned value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, hexadecimal ? 16 : 10);
  if (error != std::errc() || end != text.data() + text.size() || value > UINT8_MAX) return std::nullopt;
  return static_cast<uint8_t>(value);
}

std::optional<double> ParseNumber(std::string_view text) {
  if (text.starts_with('+')) text.remove_prefix(1);
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) return std::nullopt;
  return value;
}

std::string DurationWords(unsigned seconds) {
  const unsigned minutes = seconds / 60;
  if (minutes == 0) return Counted(seconds, "second");
  if (seconds % 60 == 0) return Counted(minutes, "minute");
  return fmt::format("{} {}", Counted(minutes, "minute"), Counted(seconds % 60, "second"));
}

std::string_view Trim(std::string_view text) {
  constexpr std::string_view kSpace = " \t\r\n";
  const size_t first = text.find_first_not_of(kSpace);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

std::string Clip(std::string_view text, size_t columns) {
  std::string kept;
  size_t used = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == kEscape) {
      const size_t end = std::min(text.find('m', i), text.size() - 1);
      kept += text.substr(i, end - i + 1);
      i = end;
      continue;
    }
    if (!IsContinuation(text[i])) ++used;
    if (used <= columns) kept += text[i];
  }
  return kept;
}

}  // namespace vynctl
