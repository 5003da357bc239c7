// SPDX-License-Identifier: MIT
/// What support needs to help from afar, in one archive.
#pragma once

#include <string>
#include <vector>

#include "doctor/Machine.h"
#include "doctor/Tables.h"

namespace vynctl::doctor {

/// One file of the bundle.
struct BundleFile {
  std::string name;          ///< in the archive
  std::string holds;         ///< in words
  std::string content;       ///< empty when it could not be had
  std::string missing = {};  ///< why; else empty
};

/// @param json  the doctor's findings, as `--json` prints them
std::vector<BundleFile> CollectBundle(const Machine& machine, const Tables& tables, const std::string& json);

/// The archive: every file that could be had.
std::string PackBundle(const std::vector<BundleFile>& files, uint64_t now);

}  // namespace vynctl::doctor
