// SPDX-License-Identifier: MIT
/// What the doctor has to say about one thing that it looked at.
#pragma once

#include <string>
#include <vector>

namespace vynctl::doctor {

/// From good to bad; a problem is what keeps the board from being used.
enum class Verdict { kOk, kWarning, kProblem };

struct Finding {
  std::string id;          ///< stable and unique, such as "lockdown" or "owner/port/0295"
  std::string what;        ///< what was looked at
  std::string found = {};  ///< printable ASCII, one line
  Verdict verdict = Verdict::kOk;
  std::string next = {};  ///< the next step, a sentence or two; empty exactly when there is nothing to do
};

using Findings = std::vector<Finding>;

/// "ok", "warning", "problem"
const char* ToString(Verdict verdict);

/// The gravest verdict; fine when there is none.
Verdict Gravest(const Findings& findings);

/// "1 warning", "2 warnings"
std::string Counted(size_t count, const char* word);

/// "Operation not permitted (EPERM)"
std::string ErrorWords(int error);

}  // namespace vynctl::doctor
