/// The board's sensors, by name.
#pragma once

#include <string>
#include <vector>

#include "Library.h"
#include "Names.h"
#include "Value.h"
#include "board/Doubts.h"

namespace vynctl {

/// One quantity that the library measures.
struct Quantity {
  const char* name;    ///< in identifiers and JSON: "voltage", "temperature", "fan-speed", "current"
  const char* title;   ///< heading for people
  const char* unit;    ///< ASCII
  const char* metric;  ///< Prometheus metric
  NamesFunction Api::*names;
  /// Reads one sensor; false leaves the library's code as the last error.
  bool (*read)(const Api& api, const char* sensor, float* reading);
};

const std::vector<Quantity>& Quantities();

/// Reads every sensor of the board, in the order of Quantities() and then of the firmware. A sensor that cannot be read
/// is listed as such, a reading that `doubts` is about as doubtful. Names are compared as the library compares them, so
/// of two sensors of one name and quantity both rows show the reading of the first that answers; their identifiers
/// differ.
std::vector<Value> ReadSensors(const Library& library, const Doubts& doubts);

/// How many sensors of a quantity the board has.
size_t CountSensors(const Library& library, const Quantity& quantity);

/// True when `word` is the value's identifier or its name.
bool IsCalled(const Value& value, const std::string& word);

}  // namespace vynctl
