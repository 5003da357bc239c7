// SPDX-License-Identifier: MIT
/// The board's feature states: one table that reading, setting, listing and reporting share, and the values that its
/// firmware lists for them.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "board/Library.h"
#include "board/Value.h"

namespace vynctl {

enum class Shape {
  kPlain,    ///< one state
  kIndexed,  ///< one state per instance
  kVersion,  ///< 16 bits: number of matching entries, version bits
};

struct Feature {
  const char* name;  ///< on the command line and in identifiers
  unsigned family;   ///< VYNLIB_FAMILY_...; its words name the feature
  Shape shape;
  const char* getter;  ///< exported function, or null: the feature can only be set
  const char* setter;  ///< exported function, or null: the feature can only be read
  uint8_t recordType;  ///< of the firmware's entries
  bool grave = false;  ///< setting it cannot be undone from the same prompt on every board
};

const std::vector<Feature>& Features();
std::vector<std::string> FeatureNames();
/// The row named `name`, or null.
const Feature* FindFeature(const std::string& name);

/// Does the board offer it? Touches no hardware; leaves the answer's code in the last error.
bool OffersReading(const Library& library, const Feature& feature);
bool OffersSetting(const Library& library, const Feature& feature);
inline bool Offers(const Library& library, const Feature& feature) {
  return OffersReading(library, feature) || OffersSetting(library, feature);
}

/// The feature's value, one per instance for indexed ones (instances are found by asking for all 256). A feature that
/// the board does not offer, or that cannot be read, is one value that says so.
std::vector<Value> ReadFeature(const Library& library, const Feature& feature);
/// The value of one instance; `index` is used by indexed features alone.
Value ReadFeatureAt(const Library& library, const Feature& feature, uint8_t index);
/// The library's code: 0 when the state was set.
uint64_t SetFeature(const Library& library, const Feature& feature, uint8_t index, uint8_t value);

/// A state without its value, as it is called: `index` counts for indexed features alone.
Value BlankState(const Feature& feature, uint8_t index);

/// The instance number at the end of an indexed feature's identifier, or "".
std::string InstanceOf(const Value& value);

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
