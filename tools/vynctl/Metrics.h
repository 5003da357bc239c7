/// Sensor values in the text exposition format that Prometheus scrapes.
#pragma once

#include <string>
#include <vector>

#include "Value.h"

namespace vynctl {

/// A gauge per quantity with one sample per readable sensor (label "sensor": its name, with "#2" and so on where a name
/// repeats), vynlib_sensor_ok with 1 or 0 for every sensor, and vynlib_board_info with the model.
std::string MetricsText(const std::vector<Value>& sensors, const std::string& model);

}  // namespace vynctl
