// SPDX-License-Identifier: MIT
/// Sensor values in the text exposition format that Prometheus scrapes.
#pragma once

#include <string>
#include <vector>

#include "board/Value.h"

namespace vynctl {

/// vynlib_up 1, vynlib_tables_found, vynlib_board_info with the model, a gauge per quantity with one sample per reading
/// (label "sensor": its name, with "#2" and so on where a name repeats), and for every sensor vynlib_sensor_ok and
/// vynlib_sensor_doubtful with 1 or 0.
/// @param tables  both firmware tables were found
std::string MetricsText(const std::vector<Value>& sensors, const std::string& model, bool tables);

/// What a run that could read nothing says: vynlib_up 0 and vynlib_tables_found 0.
std::string MetricsOfNothing();

}  // namespace vynctl
