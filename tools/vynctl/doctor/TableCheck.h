// SPDX-License-Identifier: MIT
/// What 'vyntable check' says of the tables that the library works on.
#pragma once

#include "doctor/Finding.h"
#include "doctor/Tables.h"

namespace vynctl::doctor {

Findings JudgeContents(const Tables& tables);

}  // namespace vynctl::doctor
