/// One firmware table, as bytes.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vyntable {

enum class Kind { kIadt, kIamt, kBiosInfo };

/// One firmware table and where it came from.
struct Image {
  Kind kind;
  std::string name;  ///< for messages
  std::vector<uint8_t> bytes;
};

}  // namespace vyntable
