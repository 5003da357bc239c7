// SPDX-License-Identifier: MIT
/// One firmware table, as bytes.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace diagnosis {

enum class Kind { kIadt, kIamt, kBiosInfo };

/// What the bytes of a table from an offset on stand for in a text: "BOARD.toml:12:3".
struct Place {
  size_t offset;
  std::string text;
};

/// A rule that the bytes from `first` up to `end` may break.
struct Allowed {
  std::string rule;
  size_t first, end;
  std::string place;  ///< of the text that says so
};

/// What should be said of a board file that can be compiled: it does not name its maker.
struct Remark {
  std::string place, text;
};

/// One firmware table and where it came from.
struct Image {
  Kind kind;
  std::string name;  ///< for messages
  std::vector<uint8_t> bytes;
  size_t base = 0;                 ///< of a table within a file: its offset there
  std::vector<Place> places = {};  ///< by offset, from 0 on; empty when the bytes themselves were read
  std::vector<Allowed> allowed = {};
  std::vector<Remark> remarks = {};
};

/// "iadt.bin:0x0024", or the place in the text that the byte comes from.
std::string PlaceOf(const Image& image, size_t offset);

}  // namespace diagnosis
