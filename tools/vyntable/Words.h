/// Records and access commands in words.
#pragma once

#include <string>
#include <vector>

#include "layout/Walk.h"

namespace vyntable {

/// The name up to its terminator.
std::string NameText(const layout::RecordView& record);
/// "LVDSState index 0 value 1" or "voltage 2.1 \"+12V\"".
std::string Title(const layout::RecordView& record);
/// What the command reaches, then what it does when reading and when setting, one phrase each.
std::vector<std::string> Words(const layout::CommandView& command);

}  // namespace vyntable
