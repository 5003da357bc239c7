/// Why the library does not start on this machine: what it says itself ("Please run as root!") is the same for every
/// cause.
#pragma once

#include <string>

#include "doctor/Privilege.h"

namespace vynctl {

/// What keeps this process from the board's hardware, and what to do first; empty when nothing does.
std::string WhyNoPrivilege(const doctor::Privilege& privilege);

}  // namespace vynctl
