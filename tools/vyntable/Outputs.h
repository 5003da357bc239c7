// SPDX-License-Identifier: MIT
/// Files that come to a folder all together or not at all.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vyntable {

/// Until Commit has returned, the folder is as it was.
class Outputs {
 public:
  Outputs() = default;
  Outputs(const Outputs&) = delete;
  Outputs& operator=(const Outputs&) = delete;
  /// Takes back what was not committed.
  ~Outputs();

  /// Throws BadInput when the file cannot be written, or something else than a file stands there.
  void Write(const std::string& path, std::string_view content);
  /// The file will be gone. Whether there was one.
  bool Remove(const std::string& path);
  /// Throws BadInput when a file cannot be put into its place; then none was.
  void Commit();

 private:
  struct Step {
    std::string path, fresh, old;  ///< the new file beside it, empty for a removal; where the one of before goes
    bool kept = false;             ///< the one of before is in `old`
    bool done = false;
  };

  Step& Add(const std::string& path);
  void Do(Step* step);

  std::vector<Step> steps_;
  bool committed_ = false;
};

}  // namespace vyntable
