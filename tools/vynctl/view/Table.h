// SPDX-License-Identifier: MIT
/// Aligned columns and colours for text output.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace vynctl {

enum class Tone { kPlain, kHeading, kGood, kWarning, kBad, kFaint };

/// How text may look where it goes.
struct Style {
  bool colour = false;    ///< escape sequences are welcome
  bool unicode = false;   ///< UTF-8 is welcome (the degree sign)
  bool terminal = false;  ///< lines longer than the width would be broken anywhere
  size_t width = 80;      ///< columns

  /// `text` in the colour of `tone`, or as it is without colour.
  std::string Paint(Tone tone, const std::string& text) const;
};

struct Cell {
  std::string text;
  Tone tone = Tone::kPlain;
};

/// Rows of cells. Columns are as wide as their widest cell and stand two spaces apart; the last one is never padded.
class Table {
 public:
  enum class Align { kLeft, kRight };

  explicit Table(std::vector<Align> alignment) : alignment_(std::move(alignment)) {}
  void Add(std::vector<Cell> row) { rows_.push_back(std::move(row)); }
  /// A row of faint upper-case titles.
  void Heading(const std::vector<std::string>& titles);
  bool IsEmpty() const { return rows_.empty(); }
  std::vector<std::string> Lines(const Style& style) const;
  /// The lines, each with `indent` spaces before it and a line feed after it.
  std::string Render(const Style& style, size_t indent = 0) const;

 private:
  std::string Line(const std::vector<Cell>& row, const std::vector<size_t>& widths, const Style& style) const;
  std::vector<size_t> Widths() const;

  std::vector<Align> alignment_;
  std::vector<std::vector<Cell>> rows_;
};

/// The lines side by side in as many columns as fit `width`, filled downwards; each line of the result is indented by
/// two spaces and ends with a line feed.
std::string SideBySide(const std::vector<std::string>& lines, size_t width);

}  // namespace vynctl
