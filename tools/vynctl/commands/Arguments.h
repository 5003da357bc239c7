// SPDX-License-Identifier: MIT
/// What subcommands make of their arguments: features, bytes, sensors, and limits in the range notation of monitoring
/// plugins.
#pragma once

#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "board/Features.h"
#include "board/Value.h"
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

/// Keeps the values whose name, identifier or quantity is among `wanted` (all when that is empty).
/// @return "" or a sentence about the first word that fits nothing, or that is a name in several quantities
std::string Choose(std::vector<Value>& values, const std::vector<std::string>& wanted);

/// Why `word` names no sensor for certain: there is none ("did you mean 'Y'?"), or sensors of several quantities have
/// this name. Empty when it is an identifier or a name of one quantity.
std::string Misnamed(const std::vector<Value>& values, const std::string& word);

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
