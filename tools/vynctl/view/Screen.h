// SPDX-License-Identifier: MIT
/// The terminal as a full-screen display.
#pragma once

#include <termios.h>

#include <string>
#include <vector>

#include "view/Output.h"

namespace vynctl {

/// While one exists and is entered, the terminal shows its alternate screen without a cursor, and keys arrive one by
/// one without echo. Leaving gives everything back as it was.
class Screen {
 public:
  explicit Screen(const OutputDivert& output) : output_(output) { Enter(); }
  ~Screen() { Leave(); }
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;

  void Enter();
  void Leave();
  /// Shows the lines from the top, broken between words and cut to the terminal's present size; when they do not fit,
  /// the last line says how many are hidden.
  void Show(const std::vector<std::string>& text) const;
  /// A key that waits to be read, or 0.
  char Key() const;
  /// The descriptor that keys come from, or -1.
  int KeySource() const { return keys_ ? 0 : -1; }

 private:
  const OutputDivert& output_;
  bool entered_ = false;
  bool keys_ = false;
  termios former_{};
};

}  // namespace vynctl
