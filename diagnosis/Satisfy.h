// SPDX-License-Identifier: MIT
/// Whether bits can have values that keep clear of forbidden combinations.
#pragma once

#include <map>
#include <span>

namespace diagnosis {

/// Values of numbered bits, as far as they are given.
using Bits = std::map<unsigned, bool>;

enum class Answer { kNo, kYes, kUnknown };

/// Whether the bits that `given` leaves open can be chosen so that none of `forbidden` holds as a whole. Unknown only
/// where the search would take too long.
Answer CanAvoid(const Bits& given, std::span<const Bits> forbidden);

/// Whether both can hold at once.
bool Agree(const Bits& one, const Bits& other);

}  // namespace diagnosis
