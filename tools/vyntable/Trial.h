// SPDX-License-Identifier: MIT
/// A board's tables on its simulated machine: every state set and read back, every sensor read.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "diagnosis/Image.h"

namespace vyntable {

using diagnosis::Image;

/// What did not come out as the tables say, and the accesses that the library made for it.
struct Failure {
  std::string place, text;
  std::vector<std::string> accesses;
};

struct TrialResult {
  size_t tried = 0;
  std::vector<Failure> failures;
};

/// Called before every try with how many were made and how many there are.
using Progress = std::function<void(size_t done, size_t all)>;

/// `iadt` is the function description table of the board in the file. Throws BadInput when the board cannot be used.
TrialResult TryBoard(const std::string& file, const Image& iadt, const Progress& progress);

}  // namespace vyntable
