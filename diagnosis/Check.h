/// Finds what the library would stumble over.
#pragma once

#include <string>
#include <vector>

#include "diagnosis/Image.h"

namespace diagnosis {

enum class Severity { kNote, kWarning, kError };

struct Finding {
  size_t offset;  ///< in the file
  Severity severity;
  std::string text;
};

/// In the order of their offsets.
std::vector<Finding> CheckImage(const Image& image);

}  // namespace diagnosis
