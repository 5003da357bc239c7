// SPDX-License-Identifier: MIT
/// The whole examination, in the order in which it is told.
#pragma once

#include <string>

#include "doctor/Finding.h"
#include "doctor/Machine.h"
#include "doctor/Tables.h"
#include "view/Table.h"

namespace vynctl::doctor {

struct Examination {
  Findings findings;
  Tables tables;

  Verdict Result() const { return Gravest(findings); }
};

/// Looks at everything; nothing on the machine changes and no register of the board is touched.
Examination Examine(const Machine& machine, const std::string& toolVersion);

/// One line per finding, the next step below it, and a line on the whole.
std::string ToText(const Findings& findings, const Style& style);

/// "The board can be used." or what else the findings come to.
std::string Summary(const Findings& findings);

}  // namespace vynctl::doctor
