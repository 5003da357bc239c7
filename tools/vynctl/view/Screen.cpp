// SPDX-License-Identifier: MIT
// Escape sequences, the terminal's mode and its size.
#include "view/Screen.h"

#include <fmt/core.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <sstream>

#include "view/Text.h"

namespace vynctl {
namespace {

constexpr char kEnter[] = "\x1b[?1049h\x1b[?25l\x1b[2J";
constexpr char kLeave[] = "\x1b[?25h\x1b[?1049l";
constexpr char kHome[] = "\x1b[H";
constexpr char kClearRight[] = "\x1b[K";
constexpr char kClearBelow[] = "\x1b[J";
constexpr winsize kUsualSize{.ws_row = 24, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0};

winsize SizeOf(int descriptor) {
  winsize size{};
  const bool known = ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_row > 0 && size.ws_col > 0;
  return known ? size : kUsualSize;
}

/// Lines that are longer than the screen is wide, broken between words.
std::vector<std::string> Wrapped(const std::vector<std::string>& text, size_t columns) {
  std::vector<std::string> lines;
  for (const std::string& line : text) {
    std::istringstream parts(commandline::Wrapped(line, columns));
    if (line.empty()) lines.emplace_back();
    for (std::string part; std::getline(parts, part);) lines.push_back(part);
  }
  return lines;
}

}  // namespace

void Screen::Enter() {
  if (entered_) return;
  entered_ = true;
  keys_ = tcgetattr(STDIN_FILENO, &former_) == 0;
  if (keys_) {
    termios raw = former_;
    raw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    raw.c_cc[VMIN] = 0;
    raw.c_cc[VTIME] = 0;
    tcsetattr(STDIN_FILENO, TCSANOW, &raw);
  }
  output_.Write(kEnter);
}

void Screen::Leave() {
  if (!entered_) return;
  entered_ = false;
  output_.Write(kLeave);
  if (keys_) tcsetattr(STDIN_FILENO, TCSANOW, &former_);
}

void Screen::Show(const std::vector<std::string>& text) const {
  const winsize size = SizeOf(output_.Descriptor());
  const std::vector<std::string> lines = Wrapped(text, size.ws_col);
  const bool cut = lines.size() > size.ws_row;
  const size_t shown = cut ? size.ws_row - 1u : lines.size();
  std::string frame = kHome;
  for (size_t i = 0; i < shown; ++i) {
    frame += Clip(lines[i], size.ws_col) + kClearRight;
    if (i + 1 < shown || cut) frame += "\r\n";
  }
  if (cut) frame += Clip(fmt::format("... {} more lines", lines.size() - shown), size.ws_col) + kClearRight;
  output_.Write(frame + kClearBelow);
}

char Screen::Key() const {
  char key = 0;
  return keys_ && read(STDIN_FILENO, &key, 1) == 1 ? key : '\0';
}

}  // namespace vynctl
