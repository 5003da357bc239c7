// SPDX-License-Identifier: MIT
// Columns as wide as their widest cell, and the colours of tones.
#include "view/Table.h"

#include <fmt/core.h>

#include <algorithm>

#include "view/Text.h"

namespace vynctl {
namespace {

constexpr size_t kGap = 2;
constexpr size_t kColumnGap = 4;

const char* Sequence(Tone tone) {
  switch (tone) {
    case Tone::kHeading:
      return "\x1b[1m";
    case Tone::kGood:
      return "\x1b[32m";
    case Tone::kWarning:
      return "\x1b[33m";
    case Tone::kBad:
      return "\x1b[31m";
    case Tone::kFaint:
      return "\x1b[2m";
    case Tone::kPlain:
      break;
  }
  return "";
}

}  // namespace

std::string Style::Paint(Tone tone, const std::string& text) const {
  if (!colour || tone == Tone::kPlain || text.empty()) return text;
  return fmt::format("{}{}\x1b[0m", Sequence(tone), text);
}

void Table::Heading(const std::vector<std::string>& titles) {
  std::vector<Cell> row;
  for (const std::string& title : titles) row.push_back({title, Tone::kFaint});
  rows_.push_back(std::move(row));
}

std::vector<size_t> Table::Widths() const {
  std::vector<size_t> widths(alignment_.size(), 0);
  for (const auto& row : rows_) {
    for (size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], Columns(row[i].text));
  }
  return widths;
}

std::string Table::Line(const std::vector<Cell>& row, const std::vector<size_t>& widths, const Style& style) const {
  std::string line;
  size_t last = row.size();
  while (last > 0 && row[last - 1].text.empty()) --last;
  for (size_t i = 0; i < last; ++i) {
    const std::string padding(widths[i] - Columns(row[i].text), ' ');
    const std::string painted = style.Paint(row[i].tone, row[i].text);
    if (i > 0) line.append(kGap, ' ');
    if (alignment_[i] == Align::kRight) line += padding;
    line += painted;
    if (alignment_[i] == Align::kLeft && i + 1 < last) line += padding;
  }
  return line;
}

std::vector<std::string> Table::Lines(const Style& style) const {
  const std::vector<size_t> widths = Widths();
  std::vector<std::string> lines;
  for (const auto& row : rows_) lines.push_back(Line(row, widths, style));
  return lines;
}

std::string Table::Render(const Style& style, size_t indent) const {
  std::string text;
  for (const std::string& line : Lines(style)) text += std::string(indent, ' ') + line + '\n';
  return text;
}

std::string SideBySide(const std::vector<std::string>& lines, size_t width) {
  size_t widest = 1;
  for (const std::string& line : lines) widest = std::max(widest, Columns(line));
  const size_t fitting = std::max<size_t>(1, (width + kColumnGap - kGap) / (widest + kColumnGap));
  const size_t height = (lines.size() + fitting - 1) / fitting;
  std::string text;
  for (size_t row = 0; row < height; ++row) {
    text.append(kGap, ' ');
    for (size_t i = row; i < lines.size(); i += height) {
      text += lines[i];
      if (i + height < lines.size()) text.append(widest + kColumnGap - Columns(lines[i]), ' ');
    }
    text += '\n';
  }
  return text;
}

}  // namespace vynctl
