/// What `get` and `set` share: feature names and byte arguments.
#pragma once

#include "Features.h"

namespace vynctl {

/// The feature named on the command line.
/// @throws UsageError, with the nearest name, when there is none
const Feature& NamedFeature(const std::string& name);

/// A number from 0 to 255.
/// @throws UsageError naming `what` when `text` is not one
uint8_t ByteArgument(const char* what, const std::string& text);

}  // namespace vynctl
