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

/// One firmware table and where it came from.
struct Image {
  Kind kind;
  std::string name;  ///< for messages
  std::vector<uint8_t> bytes;
  size_t base = 0;                 ///< of a table within a file: its offset there
  std::vector<Place> places = {};  ///< by offset, from 0 on; empty when the bytes themselves were read
};

/// "iadt.bin:0x0024", or the place in the text that the byte comes from.
std::string PlaceOf(const Image& image, size_t offset);

}  // namespace diagnosis
