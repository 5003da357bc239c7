// SPDX-License-Identifier: MIT
/// The records of the function description table (IADT): one row per type, and per sub-type where these differ, with
/// everything that is known of it. The library, the table builders, board files and vyntable read it, and nobody else
/// knows an offset, a list or a length.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace layout {

/// Places in the table and in each of its records.
namespace iadt {

inline constexpr char kSignature[] = "IADT";
inline constexpr size_t kRecords = 36;
inline constexpr size_t kType = 0, kIndex = 1, kValue = 2, kLength = 3, kName = 7, kBody = 27;
inline constexpr size_t kNameBytes = 20;
/// Bytes up to and including the length field.
inline constexpr size_t kLengthEnd = 7;
inline constexpr unsigned kLists = 42;  ///< numbered from 1
inline constexpr uint8_t kLastType = 35;
/// The value of watchdog and fan entries whose commands read which chip serves them, low byte first.
inline constexpr uint8_t kIdValue = 240;

}  // namespace iadt

/// Values of watchdog entries.
enum WatchdogOperation : uint8_t {
  kWatchdogActivate = 1,
  kWatchdogDeactivate = 2,
  kWatchdogInterval = 3,
  kWatchdogStart = 4,
  kWatchdogStop = 5,
  kWatchdogCountMode0 = 6,
  kWatchdogCountMode1 = 7,
};

/// Values of fan entries are modes, 0 to 2; their names hold the word.
inline constexpr uint8_t kFanModes = 3;
inline constexpr std::string_view kFanModeWord = "Mode";

/// A number in a sensor record, little-endian.
struct RecordParameter {
  std::string_view name;  ///< as in board files
  uint8_t offset;
  uint8_t bytes = 1;
};

/// The raw values that a sensor's reading is worked out from.
enum class RawValue : uint8_t {
  kFirst,   ///< the only value, the integer part or the high byte
  kSecond,  ///< the fraction, the subtrahend or the low byte
};

/// Where a sensor record has room for one access command.
struct CommandPlace {
  uint8_t offset, bytes;
  RawValue value = RawValue::kFirst;  ///< what the command reads, after an earlier one for the same value
};

/// A sub-type that stands for every value of record byte 2.
inline constexpr uint8_t kAnySubType = 0xFF;

/// An ordinary record carries commands one after another from byte 27 on; the last four fields are empty.
struct RecordType {
  std::string_view name;  ///< as in board files: "LVDSState"; of sensors the quantity, "voltage"
  uint8_t type;
  uint8_t subType;        ///< record byte 2 of sensors
  uint8_t list;           ///< where the library files it
  bool used = true;       ///< a function of the library reads the list
  uint8_t bytes = 0;      ///< of sensors: length of the record
  uint8_t keptBytes = 0;  ///< of sensors: leading bytes that the library keeps
  std::span<const RecordParameter> parameters = {};
  std::span<const CommandPlace> places = {};

  constexpr bool IsSensor() const { return bytes != 0; }
  constexpr bool Fits(uint8_t recordType, uint8_t recordSubType) const {
    return type == recordType && (subType == kAnySubType || subType == recordSubType);
  }
  /// The parameter of this name; null when the record has none.
  constexpr const RecordParameter* Parameter(std::string_view parameter) const {
    for (const RecordParameter& row : parameters)
      if (row.name == parameter) return &row;
    return nullptr;
  }
};

namespace detail {

inline constexpr RawValue kA = RawValue::kFirst, kB = RawValue::kSecond;

inline constexpr RecordParameter kDivider[] = {{"r1", 27}, {"r2", 28}};
inline constexpr RecordParameter kStepDivider[] = {{"step", 27}, {"r1", 28}, {"r2", 29}};
inline constexpr RecordParameter kDivisors[] = {
    {"divisor", 27}, {"shift", 28}, {"fraction_divisor", 101}, {"fraction_shift", 102}};
inline constexpr RecordParameter kFields[] = {
    {"shift", 27}, {"width", 28}, {"subtrahend_shift", 69}, {"subtrahend_width", 70}};

inline constexpr CommandPlace kVoltage1[] = {{29, 36, kA}, {65, 36, kA}};
inline constexpr CommandPlace kVoltage2[] = {{29, 36, kA}};
inline constexpr CommandPlace kVoltage3[] = {{30, 21, kA}};
inline constexpr CommandPlace kTemperature1[] = {{29, 36, kA}, {65, 36, kA}, {103, 36, kB}, {139, 36, kB}};
inline constexpr CommandPlace kTemperature2[] = {{27, 36, kA}};
inline constexpr CommandPlace kTemperature3[] = {{29, 40, kA}, {71, 40, kB}};
inline constexpr CommandPlace kTemperature4[] = {{27, 21, kA}, {48, 21, kB}};
inline constexpr CommandPlace kFan1[] = {{27, 36, kA}, {63, 36, kA}, {99, 36, kB}, {135, 36, kB}};
inline constexpr CommandPlace kFan2[] = {{31, 36, kA}, {67, 36, kB}};
inline constexpr CommandPlace kFan3[] = {{31, 21, kA}, {52, 21, kB}};
inline constexpr CommandPlace kCurrent[] = {{27, 21, kA}};

inline constexpr uint8_t kAny = kAnySubType;

}  // namespace detail

/// In the order of their types; list numbers follow an order of their own.
// clang-format off
inline constexpr RecordType kRecordTypes[] = {
  // name                   type sub-type      list  used  bytes kept  parameters            places
  {"ComType",                1, detail::kAny,   1},
  {"voltage",                2, 1,              2, true,  101, 101, detail::kDivider,     detail::kVoltage1},
  {"voltage",                2, 2,              3, true,   65,  65, detail::kDivider,     detail::kVoltage2},
  {"voltage",                2, 3,              4, true,   51,  51, detail::kStepDivider, detail::kVoltage3},
  {"temperature",            3, 1,              5, true,  175, 175, detail::kDivisors,    detail::kTemperature1},
  {"temperature",            3, 2,              6, true,   63,  63, {},                   detail::kTemperature2},
  {"temperature",            3, 3,              7, true,  111, 111, detail::kFields,      detail::kTemperature3},
  {"temperature",            3, 4,              8, true,   69,  69, {},                   detail::kTemperature4},
  {"fan",                    4, 1,              9, true,  171, 171, {},                   detail::kFan1},
  {"fan",                    4, 2,             10, true,  103, 103, {},                   detail::kFan2},
  {"fan",                    4, 3,             11, true,   73,  73, {},                   detail::kFan3},
  {"LVDSState",              5, detail::kAny,  13},
  {"LVDSType",               6, detail::kAny,  14},
  {"MFGState",               7, detail::kAny,  16},
  {"OnboardTPMState",        8, detail::kAny,  17},
  {"Type9",                  9, detail::kAny,  18, false},
  {"MEDescriptorState",     10, detail::kAny,  19},
  {"Type11",                11, detail::kAny,  20, false},
  {"Type12",                12, detail::kAny,  21, false},
  {"PcieBandwidthMode",     13, detail::kAny,  22},
  {"UsbPwrState",           14, detail::kAny,  23},
  {"BTState",               15, detail::kAny,  24},
  {"WifiState",             16, detail::kAny,  25},
  {"OTPState",              17, detail::kAny,  26},
  {"Type18",                18, detail::kAny,  27, false},
  {"ATModeState",           19, detail::kAny,  28},
  {"IntelPwrSolutionState", 20, detail::kAny,  29},
  {"TbCIOPlug",             21, detail::kAny,  30},
  {"TbFRCPowerState",       22, detail::kAny,  31},
  {"MBVersionState",        23, detail::kAny,  32},
  {"DigitalIOState",        24, detail::kAny,  33},
  {"Watchdog",              25, detail::kAny,  36},
  {"FanConfig",             26, detail::kAny,  37},
  {"Backlight",             27, detail::kAny,  15},
  {"UserLEDState",          28, detail::kAny,  38},
  {"JGPIOPowerState",       29, detail::kAny,  40},
  {"COMPowerState",         30, detail::kAny,  41},
  {"current",               31, 1,             12, true,   56,  48, {},                   detail::kCurrent},
  {"DbgLedColor",           32, detail::kAny,  42},
  {"UserLEDColor",          33, detail::kAny,  39},
  {"DioConfig",             34, detail::kAny,  34},
  {"DioEnPin",              35, detail::kAny,  35},
};
// clang-format on

namespace detail {

/// The first row of each type; the number of rows where there is none.
inline constexpr auto kFirstRows = [] {
  std::array<uint8_t, 256> rows{};
  rows.fill(std::size(kRecordTypes));
  for (size_t row = std::size(kRecordTypes); row-- > 0;) rows[kRecordTypes[row].type] = static_cast<uint8_t>(row);
  return rows;
}();

}  // namespace detail

/// The row of a record with this type and byte 2; null when the library would pass the record over.
constexpr const RecordType* FindRecordType(uint8_t type, uint8_t subType) {
  for (size_t row = detail::kFirstRows[type]; row < std::size(kRecordTypes) && kRecordTypes[row].type == type; ++row)
    if (kRecordTypes[row].Fits(type, subType)) return &kRecordTypes[row];
  return nullptr;
}

/// The ordinary record type of this name; null when there is none.
constexpr const RecordType* FindFeature(std::string_view name) {
  for (const RecordType& row : kRecordTypes)
    if (!row.IsSensor() && row.name == name) return &row;
  return nullptr;
}

/// The sensor record type of a quantity; null when there is none.
constexpr const RecordType* FindSensor(std::string_view quantity, uint8_t subType) {
  for (const RecordType& row : kRecordTypes)
    if (row.IsSensor() && row.name == quantity && row.subType == subType) return &row;
  return nullptr;
}

/// The same two where the name stands in the source: one that does not exist does not compile.
consteval const RecordType& Feature(std::string_view name) { return *FindFeature(name); }
consteval const RecordType& Sensor(std::string_view quantity, uint8_t subType) {
  return *FindSensor(quantity, subType);
}

}  // namespace layout
