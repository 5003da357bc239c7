/// Messages beside the output, which must not hold up the tool.
#pragma once

#include <string>
#include <string_view>

namespace vynctl {

/// Writes what fits at once: a paused terminal, a full pipe or a hung journal lose the text and do not delay the
/// caller.
void WriteWithoutWaiting(int descriptor, std::string_view text);

/// "vynctl: TEXT" and a line feed on standard error, in that way.
void Notice(const std::string& text);

}  // namespace vynctl
