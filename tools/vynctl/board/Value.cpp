// SPDX-License-Identifier: MIT
// States, and the failures and readings that values are made of.
#include "board/Value.h"

#include <fmt/format.h>

#include <cmath>
#include <map>

#include "board/Codes.h"
#include "view/Text.h"

namespace vynctl {

const char* ToString(State state) {
  switch (state) {
    case State::kOk:
      return "ok";
    case State::kFault:
      return "fault";
    case State::kDoubtful:
      return "doubtful";
    case State::kUnavailable:
      break;
  }
  return "unavailable";
}

Value Failed(Value value, uint64_t code) {
  value.data = {};
  value.state = MeansUnavailable(code) ? State::kUnavailable : State::kFault;
  value.code = code;
  value.words = WordsFor(code);
  return value;
}

Value Measured(Value value, float reading) {
  if (!std::isfinite(reading)) {
    value.data = {};
    value.state = State::kFault;
    value.words = "the library's reading is not a finite number";
    return value;
  }
  value.data = ParseNumber(fmt::format("{}", reading)).value_or(reading);
  return value;
}

void MakeIdsUnique(std::vector<Value>& values) {
  std::map<std::string, int> seen;
  for (Value& value : values) {
    const int occurrence = ++seen[value.id];
    if (occurrence > 1) value.id += fmt::format("#{}", occurrence);
  }
}

}  // namespace vynctl
