/// The two-step way in which the library hands out lists of names.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Guarded.h"

namespace vynctl {

using NamesFunction = Guarded<int(char** names, uint8_t* count, uint8_t selector)>;

/// Asks `getNames` for the count and then for that many names, as they stand in the firmware. Empty when the board has
/// none; the library's last error then says why.
std::vector<std::string> ListNames(const NamesFunction& getNames);

}  // namespace vynctl
