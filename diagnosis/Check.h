// SPDX-License-Identifier: MIT
/// Finds what the library would stumble over.
#pragma once

#include <string>
#include <vector>

#include "diagnosis/Image.h"
#include "diagnosis/Rules.h"

namespace diagnosis {

struct Finding {
  size_t offset;  ///< in the table
  Severity severity;
  std::string text;
  const RuleRow* rule;
};

/// In the order of their offsets.
std::vector<Finding> CheckImage(const Image& image);

}  // namespace diagnosis
