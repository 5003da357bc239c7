// SPDX-License-Identifier: MIT
/// The board's sensors, by name, and what casts doubt on their readings.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "board/Library.h"
#include "board/Value.h"

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

/// Readings that may not be what they look like: where a register device is missing or a transfer fails, the library
/// computes with 0 and reports success.
class Doubts {
 public:
  /// What casts doubt on a reading is told by the bytes of the function description table; without them nothing does.
  /// @param msrOpens  whether processor registers can be read; asked after the reading, which loads their driver
  Doubts(const std::vector<uint8_t>& iadt, std::function<bool()> msrOpens);
  /// Of the board at hand.
  static Doubts About(const LoadOptions& options);

  /// Makes good readings doubtful: those from processor registers that cannot be read, and exact zeros from processor
  /// registers or the SMBus.
  void Mark(std::vector<Value>& sensors) const;
  /// Whether any sensor's reading could be doubtful.
  bool Any() const { return !sources_.empty(); }

 private:
  struct Source {
    bool msr = false;
    bool smbus = false;
  };
  std::string Reason(const Source& source, const Value& value) const;

  std::map<std::string, Source> sources_;  ///< by quantity and name
  std::function<bool()> msrOpens_;
};

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
