/// What `get`, `set` and `values` share: feature names and byte arguments.
#pragma once

#include <optional>

#include "Features.h"
#include "commandline/Command.h"

namespace vynctl {

/// The feature named on the command line.
/// @throws UsageError, with the nearest name, when there is none
const Feature& NamedFeature(const std::string& name);

/// A number from 0 to 255.
/// @throws UsageError naming `what` when `text` is not one
uint8_t ByteArgument(const char* what, const std::string& text);

/// The arguments FEATURE and [INDEX].
std::vector<commandline::Argument> FeatureAndIndex(std::string& feature, std::string& index);

/// The index in `text`, when it is not empty.
/// @throws UsageError when it is no number, or the feature has no instances
std::optional<uint8_t> IndexArgument(const Feature& feature, const std::string& text);

}  // namespace vynctl
