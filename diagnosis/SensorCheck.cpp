// SPDX-License-Identifier: MIT
// Sensor records: their size, name and parameters, and whether their commands read anything.
#include <algorithm>
#include <set>

#include <fmt/core.h>

#include "diagnosis/CommandCheck.h"
#include "diagnosis/RecordChecks.h"
#include "diagnosis/Words.h"

namespace diagnosis {

using namespace layout;
namespace {

constexpr const RecordType& kVoltageByStep = Sensor("voltage", 3);
constexpr const RecordType& kWholeAndFraction = Sensor("temperature", 1);
constexpr const RecordType& kFieldDifference = Sensor("temperature", 3);

constexpr unsigned kAccumulatorBits = 64;

bool IsZero(View bytes) {
  return std::ranges::all_of(bytes, [](uint8_t byte) { return byte == 0; });
}

/// A sensor record and what the checks ask of it.
class SensorRecord {
 public:
  SensorRecord(const RecordView& record, const RecordType& type, Findings* findings)
      : record_(record), type_(type), commands_(SensorCommands(record)), findings_(findings) {}

  void Check() {
    CheckName();
    CheckLength();
    for (const CommandView& command : commands_)
      if (!IsZero(command.bytes)) CheckCommand(record_, command, findings_);
    if (record_.length < type_.bytes) return;  // what it lacks is not known
    CheckValues();
    CheckParameters();
  }

 private:
  void Add(size_t place, Rule rule, const std::string& text) { findings_->Add(record_, place, rule, text); }
  bool Is(const RecordType& type) const { return &type == &type_; }

  void CheckName() {
    if (std::ranges::count(record_.Name(), uint8_t{0}) == 0)
      Add(iadt::kName, "name-unterminated", "the name has no terminator: it is reported as an empty name");
    if (NameText(record_).empty()) Add(iadt::kName, "name-missing", "the record is found by name and has none");
  }

  void CheckLength() {
    if (record_.length < type_.bytes)
      Add(iadt::kLength, "sensor-short",
          fmt::format("{} bytes where this sensor record has {}", record_.length, type_.bytes));
    if (LosesBytes()) Add(type_.keptBytes, "bytes-lost", "bytes beyond the sensor record are not kept");
  }

  /// Zeros up to the record's own length say nothing that would be lost.
  bool LosesBytes() const {
    if (record_.length <= type_.keptBytes) return false;
    return record_.length > type_.bytes || !IsZero(record_.Bytes().subspan(type_.keptBytes));
  }

  /// The most bits that a command reads into a raw value; 0 when none reads.
  unsigned BitsRead(RawValue value) const {
    unsigned bits = 0;
    for (size_t i = 0; i < commands_.size(); ++i) {
      const CommandView& command = commands_[i];
      if (type_.places[i].value != value || !command.layout || command.layout->kind == kCommandDelay) continue;
      if ((command.Control() & (kGetReads | kGetWrites)) != kGetReads) continue;
      bits = std::max(bits, command.layout->kind == kCommandMsr ? kAccumulatorBits : 8 * WidthOf(command.Opcode()));
    }
    return bits;
  }

  bool HasCommand(RawValue value) const {
    for (size_t i = 0; i < commands_.size(); ++i)
      if (type_.places[i].value == value && !IsZero(commands_[i].bytes)) return true;
    return false;
  }

  size_t PlaceOf(RawValue value) const { return std::ranges::find(type_.places, value, &CommandPlace::value)->offset; }

  void CheckValues() {
    if (BitsRead(RawValue::kFirst) == 0)
      Add(PlaceOf(RawValue::kFirst), "sensor-silent",
          HasCommand(RawValue::kFirst) ? "none of its commands reads: the raw value stays 0"
                                       : "it has no command: the raw value stays 0");
    const bool second = std::ranges::count(type_.places, RawValue::kSecond, &CommandPlace::value) != 0;
    if (second && BitsRead(RawValue::kSecond) == 0 && HasCommand(RawValue::kSecond))
      Add(PlaceOf(RawValue::kSecond), "sensor-silent", "none of its second commands reads: their value stays 0");
    else if (second && BitsRead(RawValue::kSecond) == 0 && NeedsSecond())
      Add(PlaceOf(RawValue::kSecond), "sensor-half", "it has no second command: its low byte or subtrahend is 0");
  }

  /// A fraction may be left out, and a subtrahend of no bits.
  bool NeedsSecond() const {
    return !Is(kWholeAndFraction) && !(Is(kFieldDifference) && Value("subtrahend_width") == 0);
  }

  uint64_t Value(std::string_view name) const {
    const RecordParameter* row = type_.Parameter(name);
    return Load(record_.Bytes(), row->offset, row->bytes);
  }
  size_t Offset(std::string_view name) const { return type_.Parameter(name)->offset; }

  void CheckParameters() {
    if (type_.Parameter("r1") && (Value("r1") == 0) != (Value("r2") == 0))
      Add(Offset("r1"), "sensor-divider",
          fmt::format("r1 is {} and r2 is {}: with one of 0 there is no divider", Value("r1"), Value("r2")));
    if (Is(kVoltageByStep) && Value("step") == 0)
      Add(Offset("step"), "sensor-step", "a step of 0 mV: it is always 0 V");
    if (Is(kWholeAndFraction)) {
      CheckDivisor("divisor");
      CheckDivisor("fraction_divisor");
      CheckShift("shift", RawValue::kFirst);
      CheckShift("fraction_shift", RawValue::kSecond);
    }
    if (Is(kFieldDifference)) {
      if (Value("width") == 0) Add(Offset("width"), "sensor-width", "a field of 0 bits: it is always 0");
      CheckShift("shift", RawValue::kFirst);
      CheckShift("subtrahend_shift", RawValue::kSecond);
    }
  }

  void CheckDivisor(std::string_view name) {
    if (Value(name) == 0) Add(Offset(name), "sensor-divisor", fmt::format("{} is 0: the reading is no number", name));
  }

  void CheckShift(std::string_view name, RawValue value) {
    const unsigned bits = BitsRead(value);
    if (bits != 0 && Value(name) >= bits)
      Add(Offset(name), "sensor-shift",
          fmt::format("{} is {} where {} bits are read: 0 is left", name, Value(name), bits));
  }

  const RecordView& record_;
  const RecordType& type_;
  const std::vector<CommandView> commands_;
  Findings* findings_;
};

}  // namespace

void CheckSensors(const Records& records, Findings* findings) {
  std::set<std::pair<std::string_view, std::string>> names;
  for (const RecordView& record : records) {
    const RecordType* type = record.Row();
    if (!type || !type->IsSensor()) continue;
    SensorRecord(record, *type, findings).Check();
    if (!names.emplace(type->name, NameText(record)).second)
      findings->Add(record, iadt::kName, "sensor-twice", "a sensor of this quantity has the same name");
  }
}

}  // namespace diagnosis
