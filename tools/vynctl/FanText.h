/// Fans as a table.
#pragma once

#include <vector>

#include "Fans.h"

namespace vynctl {

/// Name, modes, current mode and parameters per fan, with a heading.
std::string FanTable(const std::vector<Fan>& fans, const Style& style, size_t indent = 0);

}  // namespace vynctl
