// SPDX-License-Identifier: MIT
// Findings of records carry the record's name.
#include "diagnosis/Findings.h"

#include "diagnosis/Words.h"

namespace diagnosis {

void Findings::Add(const layout::RecordView& record, size_t place, Rule rule, const std::string& text) {
  Add(record.offset + place, rule, text + " (" + Title(record) + ")");
}

}  // namespace diagnosis
