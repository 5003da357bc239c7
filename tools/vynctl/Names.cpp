#include "Names.h"

#include <array>
#include <cstring>

#include "vynlib/vynlib.h"

namespace vynctl {

std::vector<std::string> ListNames(const NamesFunction& getNames) {
  uint8_t count = 0;
  if (getNames(nullptr, &count, VYNLIB_PERFORM) == 0 || count == 0) return {};
  std::vector<std::array<char, VYNLIB_NAME_BYTES>> buffers(count);
  std::vector<char*> pointers;
  for (auto& buffer : buffers) pointers.push_back(buffer.data());
  if (getNames(pointers.data(), &count, VYNLIB_PERFORM) == 0) return {};
  std::vector<std::string> names;
  for (const auto& buffer : buffers) names.emplace_back(buffer.data(), strnlen(buffer.data(), buffer.size()));
  return names;
}

}  // namespace vynctl
