/// Limits that readings are judged against, in the range notation of monitoring plugins.
#pragma once

#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace vynctl {

/// A range of good values. "10" is 0 to 10, "10:" from 10 upwards, "~:10" up to 10, "10:20" both ends included;
/// "@10:20" is everything but 10 to 20. An empty text or "-" accepts everything.
struct Range {
  double low = -std::numeric_limits<double>::infinity();
  double high = std::numeric_limits<double>::infinity();
  bool inverted = false;
  std::string text = {};  ///< as it was written; empty when everything is accepted

  bool Accepts(double value) const { return (value >= low && value <= high) != inverted; }
};

struct Limit {
  std::string sensor = {};  ///< name or identifier
  Range warning = {};
  Range critical = {};
};

/// @throws UsageError that says what is wrong with `text`
Range ParseRange(std::string_view text);

/// "SENSOR = WARNING, CRITICAL"; the last '=' divides, CRITICAL may be missing.
/// @throws UsageError
Limit ParseLimit(std::string_view text);

/// One limit per line; empty lines and lines that begin with '#' count for nothing.
/// @throws UsageError with file and line, or where the file cannot be read or holds no limit
std::vector<Limit> ReadLimits(const std::string& path);

}  // namespace vynctl
