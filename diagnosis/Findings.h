// SPDX-License-Identifier: MIT
/// Where the checks leave what they find.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "diagnosis/Check.h"
#include "layout/Walk.h"

namespace diagnosis {

class Findings {
 public:
  void Add(size_t offset, Rule rule, std::string text) {
    findings_.push_back({offset, rule.row->severity, std::move(text), rule.row});
  }
  /// The same of a record, which is named behind the text.
  void Add(const layout::RecordView& record, size_t place, Rule rule, const std::string& text);

  const std::vector<Finding>& All() const { return findings_; }

 private:
  std::vector<Finding> findings_;
};

}  // namespace diagnosis
