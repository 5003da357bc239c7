// SPDX-License-Identifier: MIT
/// One thing the tool reports: what it is, its value, and how sure that is.
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace vynctl {

enum class State {
  kOk,
  kFault,        ///< the board has it, but it could not be read
  kDoubtful,     ///< it was read, but the hardware may not have given the value
  kUnavailable,  ///< the board does not have it, or it cannot be read by design
};

const char* ToString(State state);

using Data = std::variant<std::monostate, bool, int64_t, double, std::string, std::vector<uint8_t>>;

struct Value {
  bool HasData() const { return state == State::kOk || state == State::kDoubtful; }

  std::string id = {};        ///< stable and unique in a document: "voltage/+12V", "feature/com-type/1"
  std::string name = {};      ///< for people, printable ASCII
  std::string quantity = {};  ///< "voltage", "state", ...
  std::string unit = {};      ///< ASCII: "V", "C", "rpm", "A" or ""
  Data data = {};             ///< empty unless the state is kOk or kDoubtful
  State state = State::kOk;
  uint64_t code = 0;                  ///< the library's code when not ok
  std::string words = {};             ///< the code in words when not ok
  std::vector<uint8_t> allowed = {};  ///< of a listed feature: the values that the firmware has, when it tells
};

/// Makes `value` a failure with the library's code, its words and the state that follows from it.
Value Failed(Value value, uint64_t code);

/// The value of a float with the digits that it really carries (1.6, not 1.60000002384). A value that is not finite
/// makes the Value a fault with code 0.
Value Measured(Value value, float reading);

/// Appends "#2", "#3", ... to identifiers that occur more than once.
void MakeIdsUnique(std::vector<Value>& values);

/// Why the library (code not 0) or the tool (code 0) said no.
struct Refusal {
  uint64_t code = 0;
  std::string words;
};

}  // namespace vynctl
