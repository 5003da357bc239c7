/// The values that a feature can take on the board at hand, as its firmware lists them.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "Features.h"

namespace vynctl {

/// What the firmware lists for one instance of a feature.
struct AllowedValues {
  uint8_t index = 0;                 ///< 0 for features without instances
  std::vector<uint8_t> values = {};  ///< ascending
};

/// The entries of the feature in a function description table, by instance; none when it lists none, for example
/// because the table could not be read. Of a version, whose entries are bits, none as well.
std::vector<AllowedValues> FindAllowed(std::span<const uint8_t> iadt, const Feature& feature);

/// The values of one instance; empty when the firmware does not list it.
std::vector<uint8_t> AllowedAt(const std::vector<AllowedValues>& allowed, uint8_t index);

/// "0, 1 or 4 to 7", with `last` before the last one.
std::string NumberWords(const std::vector<uint8_t>& ascending, const char* last);

/// What is wrong with an index, or a value for it: "wifi takes 0 or 1, not 7", "com-type has the instances 1 and 4, not
/// 2"; "" where the firmware lists both or nothing at all.
std::string WrongIndex(const std::vector<AllowedValues>& allowed, const Feature& feature, uint8_t index);
std::string WrongValue(const std::vector<AllowedValues>& allowed, const Feature& feature, uint8_t index, uint8_t value);

}  // namespace vynctl
