/// Files that are replaced in one step, in folders that others may write to.
#pragma once

#include <string>

namespace vynctl {

/// Writes `text` to a file of a random name beside `path` and moves that there, so that a reader never meets half a
/// file; both the file and its folder are flushed to the disk. No link is followed, neither one at `path` nor one in
/// the place of its folder. What killed runs left behind is removed.
/// @throws std::runtime_error when that fails, or when something that is no regular file stands at `path`
void ReplaceFile(const std::string& path, const std::string& text);

}  // namespace vynctl
