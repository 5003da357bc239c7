/// Picking sensors by what the user calls them.
#pragma once

#include <string>
#include <vector>

#include "Value.h"

namespace vynctl {

/// Keeps the values whose name, identifier or quantity is among `wanted` (all when that is empty).
/// @return "" or a sentence about the first word that fits nothing, or that is a name in several quantities
std::string Choose(std::vector<Value>& values, const std::vector<std::string>& wanted);

/// Why `word` names no sensor for certain: there is none ("did you mean 'Y'?"), or sensors of several quantities have
/// this name. Empty when it is an identifier or a name of one quantity.
std::string Misnamed(const std::vector<Value>& values, const std::string& word);

}  // namespace vynctl
