// SPDX-License-Identifier: MIT
// The sensor readers and their names.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string_view>

#include <safe_str_lib.h>

#include "api/Guard.h"
#include "api/Library.h"
#include "hw/Platform.h"
#include "layout/RecordLayout.h"
#include "tables/EntryRun.h"
#include "vynlib/vynlib.h"

using namespace api;
using namespace layout;

namespace {

constexpr size_t kNameBytes = VYNLIB_NAME_BYTES;
static_assert(kNameBytes == iadt::kNameBytes);

constexpr uint32_t kSettleMicroseconds = 5000;

/// The raw values of one call; a record that reads neither leaves what an earlier one read.
struct Raw {
  unsigned long long a = 0;  ///< the only value, the integer part or the high byte
  unsigned long long b = 0;  ///< the fraction or the low byte
};

/// How the records of one type are read: the commands stand where the type has its places, then comes the formula. A
/// formula stores the result; it returns a sub-code when the reading does not count, and the search goes on.
template <typename T>
struct SensorList {
  const RecordType& type;
  uint8_t (*convert)(const uint8_t* record, const Raw& raw, T* result);
  uint32_t settleMicroseconds = 0;
};

/// Offset of a parameter in the records of a type; a name that the type does not have does not compile.
consteval uint8_t At(const RecordType& type, std::string_view parameter) {
  const RecordParameter& row = *type.Parameter(parameter);
  return row.bytes == 1 ? row.offset : throw "not a byte";
}

constexpr uint8_t kReadingCounts = 0;

bool NameMatches(IadtEntry entry, const char* name) { return std::strncmp(entry.Name(), name, kNameBytes) == 0; }

unsigned long long ShiftRight(unsigned long long value, uint8_t bits) { return bits < 64 ? value >> bits : 0; }

unsigned long long LowBits(uint8_t width) { return width < 64 ? (1ull << width) - 1 : ~0ull; }

bool IsNegative(unsigned long long raw) { return (raw & 0x80) != 0; }

// ---- Voltage ----

constexpr const RecordType& kVoltage1 = Sensor("voltage", 1);
constexpr const RecordType& kVoltage2 = Sensor("voltage", 2);
constexpr const RecordType& kVoltage3 = Sensor("voltage", 3);

/// Volts of a raw value behind a divider; without one (a resistor of 0) the raw value is scaled as it is. The divider
/// is worked out in float, the step to volts in double.
float Volts(unsigned long long raw, uint8_t upper, uint8_t lower, uint8_t millivoltsPerCount) {
  constexpr double kVoltsPerMillivolt = 0.001;
  if (upper == 0 || lower == 0)
    return static_cast<float>(static_cast<double>(raw) * millivoltsPerCount * kVoltsPerMillivolt);
  const float ratio = static_cast<float>(upper + lower) / static_cast<float>(lower);
  const float millivolts = ratio * static_cast<float>(raw) * static_cast<float>(millivoltsPerCount);
  return static_cast<float>(static_cast<double>(millivolts) * kVoltsPerMillivolt);
}

/// Contract: a raw 0 means no reading, so a true 0 V is never reported.
template <uint8_t upper, uint8_t lower, uint8_t noReading>
uint8_t VoltageBy8(const uint8_t* record, const Raw& raw, float* volts) {
  if (raw.a == 0) return noReading;
  *volts = Volts(raw.a, record[upper], record[lower], 8);
  return kReadingCounts;
}

uint8_t VoltageByStep(const uint8_t* record, const Raw& raw, float* volts) {
  if (raw.a == 0) return 0x06;
  *volts = Volts(raw.a, record[At(kVoltage3, "r1")], record[At(kVoltage3, "r2")], record[At(kVoltage3, "step")]);
  return kReadingCounts;
}

constexpr SensorList<float> kVoltages[] = {
    {kVoltage1, VoltageBy8<At(kVoltage1, "r1"), At(kVoltage1, "r2"), 0x01>},
    {kVoltage2, VoltageBy8<At(kVoltage2, "r1"), At(kVoltage2, "r2"), 0x02>},
    {kVoltage3, VoltageByStep},
};

// ---- Temperature ----

constexpr const RecordType& kTemperature1 = Sensor("temperature", 1);
constexpr const RecordType& kTemperature3 = Sensor("temperature", 3);

/// Contract: the fraction is added to a negative integer part too: -10 and 0.5 give -9.5.
uint8_t WholeAndFraction(const uint8_t* record, const Raw& raw, float* celsius) {
  const uint8_t divisor = record[At(kTemperature1, "divisor")];
  const unsigned long long whole = ShiftRight(raw.a, record[At(kTemperature1, "shift")]);
  const float fraction = static_cast<float>(ShiftRight(raw.b, record[At(kTemperature1, "fraction_shift")])) /
                         static_cast<float>(record[At(kTemperature1, "fraction_divisor")]);
  if (IsNegative(raw.a)) {
    const unsigned long long quotient = divisor == 0 ? 0 : whole / divisor;
    *celsius = fraction + static_cast<float>(static_cast<long long>(quotient - 256));
  } else {
    *celsius = fraction + static_cast<float>(whole) / static_cast<float>(divisor);
  }
  return kReadingCounts;
}

uint8_t SignedByte(const uint8_t*, const Raw& raw, float* celsius) {
  *celsius = IsNegative(raw.a) ? -static_cast<float>(256 - (raw.a & 0xFF)) : static_cast<float>(raw.a);
  return kReadingCounts;
}

/// Contract: the difference is unsigned: a larger second field wraps to about 1.8e19.
uint8_t FieldDifference(const uint8_t* record, const Raw& raw, float* celsius) {
  const auto field = [=](unsigned long long value, uint8_t shift, uint8_t width) {
    return ShiftRight(value, record[shift]) & LowBits(record[width]);
  };
  const unsigned long long first = field(raw.a, At(kTemperature3, "shift"), At(kTemperature3, "width"));
  const unsigned long long second =
      field(raw.b, At(kTemperature3, "subtrahend_shift"), At(kTemperature3, "subtrahend_width"));
  *celsius = static_cast<float>(first - second);
  return kReadingCounts;
}

uint8_t Hundredths(const uint8_t*, const Raw& raw, float* celsius) {
  constexpr double kPerDegree = 100.0;
  if (IsNegative(raw.a)) {
    *celsius = static_cast<float>(-(static_cast<uint32_t>(65536 - raw.b - raw.a * 256) / kPerDegree));
    return kReadingCounts;
  }
  if (raw.a == 0 && raw.b == 0) return 0x07;
  *celsius = static_cast<float>(static_cast<double>(raw.a * 256 + raw.b) / kPerDegree);
  return kReadingCounts;
}

constexpr SensorList<float> kTemperatures[] = {
    {kTemperature1, WholeAndFraction},
    {Sensor("temperature", 2), SignedByte},
    {kTemperature3, FieldDifference},
    {Sensor("temperature", 4), Hundredths, kSettleMicroseconds},
};

// ---- Fan speed ----

/// What a missing or a stalled fan reads.
bool IsStalled(uint32_t count) { return count == 0xFFFF || count == 0x0FFF || count == 0; }

uint32_t Count(const Raw& raw) { return static_cast<uint32_t>(raw.a * 256 + raw.b); }

uint8_t PlainSpeed(const uint8_t*, const Raw& raw, uint16_t* rpm) {
  if (raw.a == 0xFF && raw.b == 0xFF) return 0x01;
  *rpm = static_cast<uint16_t>(Count(raw));
  return kReadingCounts;
}

/// Contract: counts below 23 give speeds that wrap in 16 bits.
uint8_t SpeedOfPeriod(const uint8_t*, const Raw& raw, uint16_t* rpm) {
  constexpr uint32_t kCountsPerMinute = 1500000;
  const uint32_t count = Count(raw);
  *rpm = IsStalled(count) ? uint16_t{0} : static_cast<uint16_t>(kCountsPerMinute / count);
  return kReadingCounts;
}

uint8_t SpeedUnlessStalled(const uint8_t*, const Raw& raw, uint16_t* rpm) {
  const uint32_t count = Count(raw);
  *rpm = IsStalled(count) ? uint16_t{0} : static_cast<uint16_t>(count);
  return kReadingCounts;
}

constexpr SensorList<uint16_t> kFanSpeeds[] = {
    {Sensor("fan", 1), PlainSpeed},
    {Sensor("fan", 2), SpeedOfPeriod},
    {Sensor("fan", 3), SpeedUnlessStalled},
};

// ---- Current ----

uint8_t Tenths(const uint8_t*, const Raw& raw, float* value) {
  if (raw.a == 0) return 0x04;
  *value = static_cast<float>(static_cast<double>(raw.a) * 0.1);
  return kReadingCounts;
}

constexpr SensorList<float> kCurrents[] = {{Sensor("current", 1), Tenths}};

// ---- One algorithm for all ----

template <typename T>
struct Quantity {
  uint8_t family;
  uint8_t noSuchName;  ///< sub-codes
  uint8_t nullBuffer;
  const SensorList<T>* lists;
  size_t count;

  const SensorList<T>* begin() const { return lists; }
  const SensorList<T>* end() const { return lists + count; }
  bool IsOffered() const {
    for (const SensorList<T>& list : *this)
      if (Has(list.type.list)) return true;
    return false;
  }
};

constexpr Quantity<float> kVoltageQuantity{VYNLIB_FAMILY_VOLTAGE, 0x05, 0x04, kVoltages, std::size(kVoltages)};
constexpr Quantity<float> kTemperatureQuantity{VYNLIB_FAMILY_TEMPERATURE, 0x05, 0x04, kTemperatures,
                                               std::size(kTemperatures)};
constexpr Quantity<uint16_t> kFanSpeedQuantity{VYNLIB_FAMILY_FAN_SPEED, 0x06, 0x05, kFanSpeeds, std::size(kFanSpeeds)};
constexpr Quantity<float> kCurrentQuantity{VYNLIB_FAMILY_CURRENT, 0x05, 0x03, kCurrents, std::size(kCurrents)};

/// The results of the commands are not looked at: failures show through the raw values alone.
void ReadRaw(IadtEntry entry, const RecordType& type, Raw* raw) {
  for (const CommandPlace& place : type.places)
    tables::RunSensorCommand(*IAxTCommon, entry, place.offset, place.value == RawValue::kFirst ? &raw->a : &raw->b);
}

/// The first record of the name whose reading counts; every other leaves its code.
template <typename T>
int ReadLists(const Quantity<T>& quantity, const char* name, T* target) {
  T value{};
  Raw raw;
  for (const SensorList<T>& list : quantity) {
    if (!Has(list.type.list)) continue;
    for (const IadtEntry entry : Entries(list.type.list)) {
      if (!NameMatches(entry, Text(name))) continue;
      if (list.settleMicroseconds != 0) platform::SleepMicroseconds(list.settleMicroseconds);
      ReadRaw(entry, list.type, &raw);
      const uint8_t subCode = list.convert(entry.Record(), raw, &value);
      if (subCode != kReadingCounts) {
        LastErrorCode = Code(quantity.family, subCode);
        continue;
      }
      StoreResult(target, value);
      return Succeed();
    }
  }
  return 0;
}

template <typename T>
int ReadSensor(const Quantity<T>& quantity, const char* name, T* target, uint8_t selector) {
  if (!IsPerform(selector)) return Fail(VYNLIB_ERROR_SELECTOR);
  StoreResult(target, T{});
  if (!quantity.IsOffered()) return Fail(Code(quantity.family, kAbsent));
  LastErrorCode = Code(quantity.family, quantity.noSuchName);
  return Guarded([&] { return ReadLists(quantity, name, target); });
}

template <typename T>
int GetSensor(const Quantity<T>& quantity, const char* name, T* result, uint8_t selector) {
  if (!VynLibCheckAvailabled()) return 0;
  if (selector == kQuery) return Answer(quantity.IsOffered(), quantity.family);
  return ReadSensor(quantity, name, result, selector);
}

template <typename T>
uint8_t CountSensors(const Quantity<T>& quantity) {
  uint8_t count = 0;
  for (const SensorList<T>& list : quantity)
    if (Has(list.type.list))
      for ([[maybe_unused]] const IadtEntry entry : Entries(list.type.list)) ++count;
  return count;
}

template <typename T>
int CopyNames(const Quantity<T>& quantity, char** names, uint8_t count) {
  size_t i = 0;
  for (const SensorList<T>& list : quantity) {
    if (!Has(list.type.list)) continue;
    for (const IadtEntry entry : Entries(list.type.list)) {
      if (i >= count) return InitOk;
      if (names[i] == nullptr) return Fail(Code(quantity.family, quantity.nullBuffer));
      strncpy_s(names[i], kNameBytes, entry.Name(), kNameBytes);  // a name without a terminator comes out empty
      ++i;
    }
  }
  return InitOk;
}

template <typename T>
int GetNames(const Quantity<T>& quantity, char** names, uint8_t* count, uint8_t selector) {
  if (!VynLibCheckAvailabled()) return 0;
  if (selector == kQuery) return Answer(quantity.IsOffered(), quantity.family);
  if (!IsPerform(selector)) return Fail(VYNLIB_ERROR_SELECTOR);
  if (!quantity.IsOffered()) return Fail(Code(quantity.family, kAbsent));
  const uint8_t sensors = CountSensors(quantity);
  if (names == nullptr) {
    StoreResult(count, sensors);
    return Succeed();
  }
  // Contract: success without a copy, and the last error left alone, for a count that differs.
  if (count == nullptr || *count != sensors) return InitOk;
  return CopyNames(quantity, names, sensors);
}

}  // namespace

int VynLibGetVoltage(const char* name, float* volts, uint8_t selector) {
  if (!VynLibCheckAvailabled()) return 0;
  // Contract: yes on a board without any voltage list, no on one with the third alone.
  if (selector == kQuery)
    return Answer(Has(kVoltage1.list) || Has(kVoltage2.list) || !Has(kVoltage3.list), VYNLIB_FAMILY_VOLTAGE);
  return ReadSensor(kVoltageQuantity, name, volts, selector);
}
int VynLibGetTemperature(const char* name, float* celsius, uint8_t selector) {
  return GetSensor(kTemperatureQuantity, name, celsius, selector);
}
int VynLibGetFanSpeed(const char* name, uint16_t* rpm, uint8_t selector) {
  return GetSensor(kFanSpeedQuantity, name, rpm, selector);
}
int VynLibGetCurrent(const char* name, float* value, uint8_t selector) {
  return GetSensor(kCurrentQuantity, name, value, selector);
}

int VynLibGetVoltageNames(char** names, uint8_t* count, uint8_t selector) {
  return GetNames(kVoltageQuantity, names, count, selector);
}
int VynLibGetTemperatureNames(char** names, uint8_t* count, uint8_t selector) {
  return GetNames(kTemperatureQuantity, names, count, selector);
}
int VynLibGetFanSpeedNames(char** names, uint8_t* count, uint8_t selector) {
  return GetNames(kFanSpeedQuantity, names, count, selector);
}
int VynLibGetCurrentNames(char** names, uint8_t* count, uint8_t selector) {
  return GetNames(kCurrentQuantity, names, count, selector);
}
