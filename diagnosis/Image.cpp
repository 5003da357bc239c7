// SPDX-License-Identifier: MIT
// Places in tables, for messages.
#include "diagnosis/Image.h"

#include <algorithm>

#include <fmt/format.h>

namespace diagnosis {

std::string PlaceOf(const Image& image, size_t offset) {
  const auto next = std::ranges::upper_bound(image.places, offset, {}, &Place::offset);
  if (next == image.places.begin()) return fmt::format("{}:{:#06x}", image.name, image.base + offset);
  return std::prev(next)->text;
}

}  // namespace diagnosis
