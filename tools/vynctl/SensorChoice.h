/// Picking sensors by what the user calls them.
#pragma once

#include <string>
#include <vector>

#include "Value.h"

namespace vynctl {

/// Keeps the values whose name, identifier or quantity is among `wanted` (all when that is empty).
/// @return "" or a sentence about the first word that fits nothing, with the nearest name
std::string Choose(std::vector<Value>& values, const std::vector<std::string>& wanted);

/// "there is no sensor 'X' (did you mean 'Y'?)"
std::string NoSuchSensor(const std::vector<Value>& values, const std::string& word);

}  // namespace vynctl
