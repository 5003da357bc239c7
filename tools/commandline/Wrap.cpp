// SPDX-License-Identifier: MIT
// Lines are broken where blanks are, never inside a word.
#include "commandline/Wrap.h"

#include <sys/ioctl.h>

#include <algorithm>

namespace commandline {
namespace {

constexpr char kEscape = '\x1b';
constexpr size_t kHang = 2;

bool IsContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

std::string WrappedLine(std::string_view line, size_t width) {
  if (Columns(line) <= width) return std::string(line);
  const size_t indent = std::min(line.find_first_not_of(' '), line.size());
  const std::string hang(std::min(indent + kHang, width / 2), ' ');
  std::string text;
  size_t used = 0;
  for (size_t start = 0; start < line.size();) {
    const size_t word = std::min(line.find_first_not_of(' ', start), line.size());
    const size_t end = std::min(line.find(' ', word), line.size());
    const size_t columns = Columns(line.substr(word, end - word));
    if (start > 0 && used + (word - start) + columns > width) {
      text += '\n' + hang;
      used = hang.size();
    } else {
      text += line.substr(start, word - start);
      used += word - start;
    }
    text += line.substr(word, end - word);
    used += columns;
    start = end;
  }
  return text;
}

}  // namespace

size_t Columns(std::string_view text) {
  size_t columns = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == kEscape) {
      i = std::min(text.find('m', i), text.size());
    } else if (!IsContinuation(text[i])) {
      ++columns;
    }
  }
  return columns;
}

std::string Wrapped(std::string_view text, size_t width) {
  std::string wrapped;
  while (!text.empty()) {
    const size_t end = std::min(text.find('\n'), text.size());
    wrapped += WrappedLine(text.substr(0, end), width);
    if (end < text.size()) wrapped += '\n';
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return wrapped;
}

size_t TerminalColumns(int descriptor) {
  winsize size{};
  return ioctl(descriptor, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

}  // namespace commandline
