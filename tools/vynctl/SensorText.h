/// Sensor values as aligned lines.
#pragma once

#include <string>
#include <vector>

#include "Value.h"

namespace vynctl {

/// "Voltages"
std::string QuantityTitle(const std::string& quantity);

/// One line per value: name, number, unit and, when `failures` is set, what is wrong; without, a question mark behind a
/// doubtful reading.
std::vector<std::string> SensorLines(const std::vector<Value>& values, const Style& style, bool failures);

/// The lines under a heading per quantity.
std::string GroupedSensors(const std::vector<Value>& values, const Style& style);

}  // namespace vynctl
