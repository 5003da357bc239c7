// SPDX-License-Identifier: MIT
// The verdicts in words, and the system's error numbers.
#include "doctor/Finding.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstring>

namespace vynctl::doctor {

const char* ToString(Verdict verdict) {
  constexpr const char* kWords[] = {"ok", "warning", "problem"};
  return kWords[static_cast<size_t>(verdict)];
}

Verdict Gravest(const Findings& findings) {
  Verdict gravest = Verdict::kOk;
  for (const Finding& finding : findings) gravest = std::max(gravest, finding.verdict);
  return gravest;
}

std::string Counted(size_t count, const char* word) {
  return fmt::format("{} {}{}", count, word, count == 1 ? "" : "s");
}

std::string ErrorWords(int error) {
  const char* name = strerrorname_np(error);
  const char* words = strerrordesc_np(error);
  return name != nullptr && words != nullptr ? fmt::format("{} ({})", words, name) : fmt::format("error {}", error);
}

}  // namespace vynctl::doctor
