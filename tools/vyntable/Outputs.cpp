// SPDX-License-Identifier: MIT
// New files are written beside the old ones, then renamed; what was renamed before a failure is renamed back.
#include "vyntable/Outputs.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "vyntable/Files.h"

namespace vyntable {
namespace {

namespace fs = std::filesystem;

void Rename(const std::string& from, const std::string& to) {
  if (std::rename(from.c_str(), to.c_str()) != 0) throw BadInput(to + ": " + std::strerror(errno));
}

bool Exists(const std::string& path) { return fs::exists(fs::symlink_status(path)); }

}  // namespace

Outputs::~Outputs() {
  for (auto step = steps_.rbegin(); step != steps_.rend(); ++step) {
    if (!step->fresh.empty() && !step->done) std::remove(step->fresh.c_str());
    if (committed_) {
      if (step->kept) std::remove(step->old.c_str());
      continue;
    }
    if (step->done && !step->fresh.empty()) std::remove(step->path.c_str());
    if (step->kept) (void)std::rename(step->old.c_str(), step->path.c_str());
  }
}

Outputs::Step& Outputs::Add(const std::string& path) {
  if (Exists(path) && !fs::is_regular_file(path)) throw BadInput(path + ": not a file that could be replaced");
  const std::string own = path + "." + std::to_string(getpid());
  return steps_.emplace_back(Step{path, "", own + ".old"});
}

void Outputs::Write(const std::string& path, std::string_view content) {
  Step& step = Add(path);
  step.fresh = path + "." + std::to_string(getpid()) + ".new";
  WriteFile(step.fresh, content);
}

bool Outputs::Remove(const std::string& path) {
  if (!Exists(path)) return false;
  Add(path);
  return true;
}

void Outputs::Do(Step* step) {
  if (Exists(step->path)) {
    Rename(step->path, step->old);
    step->kept = true;
  }
  if (!step->fresh.empty()) Rename(step->fresh, step->path);
  step->done = true;
}

void Outputs::Commit() {
  for (Step& step : steps_) Do(&step);
  committed_ = true;
}

}  // namespace vyntable
