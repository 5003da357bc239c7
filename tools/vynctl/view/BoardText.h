// SPDX-License-Identifier: MIT
/// What the board has, as people read it: values, features, sensors and fans.
#pragma once

#include <string>
#include <vector>

#include "board/Controls.h"
#include "board/Features.h"
#include "view/Table.h"

namespace vynctl {

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

/// The value as people read it: a version in hexadecimal, other states as they are.
std::string ShownState(const Feature& feature, const Value& value);
/// What the value is, or why there is none.
std::string Explain(const Feature& feature, const Value& value);

/// "Voltages"
std::string QuantityTitle(const std::string& quantity);

/// One line per value: name, number, unit and, when `failures` is set, what is wrong; without, a question mark behind a
/// doubtful reading.
std::vector<std::string> SensorLines(const std::vector<Value>& values, const Style& style, bool failures);

/// The lines under a heading per quantity.
std::string GroupedSensors(const std::vector<Value>& values, const Style& style);

/// Name, modes, current mode and parameters per fan, with a heading.
std::string FanTable(const std::vector<Fan>& fans, const Style& style, size_t indent = 0);

}  // namespace vynctl
