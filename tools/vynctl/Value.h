/// One thing the tool reports: what it is, its value, and how sure that is.
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "Table.h"

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

/// The data as text without its unit: "12.100", "0 1 2", "yes"; the state when not ok.
std::string ShownData(const Value& value);

/// The same number without zeros at its end: "12", "11.986".
std::string ShortData(const Value& value);

/// The unit as it is shown to people: "°C" where Unicode is welcome.
std::string ShownUnit(const Value& value, const Style& style);

/// "0x301: the sensor read 0, ..." or "" when ok.
std::string ShownFailure(const Value& value);

/// The name, with the "#2" that made its identifier unique where names repeat.
std::string DistinctName(const Value& value);

/// Green, yellow or red after the state.
Tone ToneOf(const Value& value);

/// Appends "#2", "#3", ... to identifiers that occur more than once.
void MakeIdsUnique(std::vector<Value>& values);

}  // namespace vynctl
