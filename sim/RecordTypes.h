/// What firmware can say in a function description record: one row per record type (and, for sensors, per sub-type).
/// The board loader, the table builder and vyntable read it; names are those that board files use.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace sim {

inline constexpr unsigned kRecordHeaderBytes = 27;
inline constexpr unsigned kRecordNameOffset = 7;
inline constexpr unsigned kRecordNameBytes = 20;
inline constexpr uint8_t kLastRecordType = 35;

/// A one-byte sensor parameter at a fixed place of the record.
struct SensorParameter {
  std::string_view name;
  uint8_t offset;
};

/// A place for one access command in a sensor record.
struct CommandPlace {
  uint8_t offset, bytes;
};

/// Ordinary record: commands one after another from byte 27 on; `subType`, `bytes`, `parameters` and `places` are
/// empty.
struct RecordType {
  std::string_view name;  ///< as in board files: "LVDSState"; sensors: the quantity, "voltage"
  uint8_t type;
  uint8_t subType = 0;  ///< of sensors: record byte 2
  uint8_t bytes = 0;    ///< of sensors: record length
  std::span<const SensorParameter> parameters = {};
  std::span<const CommandPlace> places = {};
  bool IsSensor() const { return bytes != 0; }
};

std::span<const RecordType> RecordTypes();
/// The ordinary record type of this name; null when there is none.
const RecordType* FindFeature(std::string_view name);
/// The row of a record with this type and byte 2; null when the library would pass the record over.
const RecordType* FindRecordType(uint8_t type, uint8_t subType);
const RecordType* FindSensor(std::string_view quantity, uint8_t subType);

}  // namespace sim
