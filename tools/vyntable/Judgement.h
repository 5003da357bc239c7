// SPDX-License-Identifier: MIT
/// Findings of one run: which count, and which the user has allowed.
#pragma once

#include <string>
#include <vector>

#include "diagnosis/Check.h"

namespace vyntable {

using diagnosis::Image;
using diagnosis::RuleRow;
using diagnosis::Severity;

/// A finding with its place as it is shown.
struct Verdict {
  const RuleRow* rule;
  Severity severity;
  std::string place, text;
};

/// `--allow RULE[:PLACE]`: PLACE is one or several parts of a place as it is shown, between its colons.
struct Exception {
  std::string rule, place;
  bool Covers(const Verdict& verdict) const;
};

class Judgement {
 public:
  /// Throws BadInput when there is no such rule.
  void Allow(const std::string& text);

  /// Throws BadInput when the table's own exceptions name a rule that does not exist.
  void Add(const Image& image);

  const std::vector<Verdict>& Verdicts() const { return verdicts_; }
  size_t Count(Severity severity) const;
  /// "1 error, 0 warnings, 2 notes", with those that are allowed where there are any.
  std::string Summary() const;

 private:
  void Keep(Verdict verdict);

  std::vector<Exception> exceptions_;
  std::vector<Verdict> verdicts_;
  size_t allowed_ = 0;
};

const char* SeverityName(Severity severity);

/// A finding in one line, without what a terminal would act on.
std::string LineOf(const Verdict& verdict);

}  // namespace vyntable
