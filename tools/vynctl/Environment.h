/// What of the environment may reach the library and the commands that it runs as root.
#pragma once

#include "Library.h"

namespace vynctl {

/// Clears the environment but for the variables that say how output looks, which time and words are meant, and where
/// the service manager listens; sets a safe PATH, and for a simulated board its description.
void PrepareEnvironment(const LoadOptions& options);

}  // namespace vynctl
