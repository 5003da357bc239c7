// SPDX-License-Identifier: MIT
// Reading sensors, and telling which are read through a processor register or the SMBus, and what that says of them.
#include "board/Sensors.h"

#include <fcntl.h>
#include <fmt/core.h>

#include "board/BoardTables.h"
#include "doctor/Machine.h"
#include "layout/Walk.h"
#include "view/Text.h"

namespace vynctl {
namespace {

template <auto reader, typename Result>
bool Read(const Api& api, const char* sensor, float* reading) {
  Result result{};
  const bool done = (api.*reader)(sensor, &result, VYNLIB_PERFORM) != 0;
  *reading = static_cast<float>(result);
  return done;
}

Value ReadSensor(const Library& library, const Quantity& quantity, const std::string& name) {
  Value value;
  value.name = name.empty() ? "(unnamed)" : Printable(name);
  value.id = std::string(quantity.name) + '/' + IdPart(name.empty() ? "" : value.name);
  value.quantity = quantity.name;
  value.unit = quantity.unit;
  float reading = 0;
  if (!quantity.read(library.Functions(), name.c_str(), &reading)) return Failed(value, library.LastError());
  value = Measured(value, reading);
  const double* number = std::get_if<double>(&value.data);
  if (number != nullptr && value.unit == "rpm") value.data = static_cast<int64_t>(*number);
  return value;
}

}  // namespace

const std::vector<Quantity>& Quantities() {
  static const std::vector<Quantity> kQuantities = {
      {"voltage", "Voltages", "V", "vynlib_voltage_volts", &Api::GetVoltageNames, Read<&Api::GetVoltage, float>},
      {"temperature", "Temperatures", "C", "vynlib_temperature_celsius", &Api::GetTemperatureNames,
       Read<&Api::GetTemperature, float>},
      {"fan-speed", "Fan speeds", "rpm", "vynlib_fan_speed_rpm", &Api::GetFanSpeedNames,
       Read<&Api::GetFanSpeed, uint16_t>},
      {"current", "Currents", "A", "vynlib_current_amperes", &Api::GetCurrentNames, Read<&Api::GetCurrent, float>},
  };
  return kQuantities;
}

std::vector<Value> ReadSensors(const Library& library, const Doubts& doubts) {
  std::vector<Value> values;
  for (const Quantity& quantity : Quantities()) {
    for (const std::string& name : ListNames(library.Functions().*quantity.names))
      values.push_back(ReadSensor(library, quantity, name));
  }
  MakeIdsUnique(values);
  doubts.Mark(values);
  return values;
}

size_t CountSensors(const Library& library, const Quantity& quantity) {
  return ListNames(library.Functions().*quantity.names).size();
}

bool IsCalled(const Value& value, const std::string& word) { return word == value.id || word == value.name; }

namespace {

constexpr char kMsrDevice[] = "/dev/cpu/0/msr";
// What the table calls by another word than the tool.
constexpr char kTableFan[] = "fan";
constexpr char kToolFan[] = "fan-speed";

std::string Key(std::string_view quantity, std::string_view name) { return fmt::format("{}/{}", quantity, name); }

std::string KeyOf(const layout::RecordView& record) {
  const layout::View bytes = record.Name();
  const std::string_view padded(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  const std::string_view quantity = record.Row()->name == kTableFan ? kToolFan : record.Row()->name;
  return Key(quantity, Printable(padded.substr(0, padded.find('\0'))));
}

bool IsZero(const Value& value) {
  const int64_t* whole = std::get_if<int64_t>(&value.data);
  const double* number = std::get_if<double>(&value.data);
  return whole != nullptr ? *whole == 0 : number != nullptr && *number == 0;
}

bool MachineOpensMsr() { return doctor::Machine().Open(kMsrDevice, O_RDONLY | O_CLOEXEC).IsOpen(); }

}  // namespace

Doubts::Doubts(const std::vector<uint8_t>& iadt, std::function<bool()> msrOpens) : msrOpens_(std::move(msrOpens)) {
  for (layout::RecordCursor cursor(layout::Covered(iadt)); cursor.Valid(); cursor.Next()) {
    const layout::RecordView record = cursor.Current();
    if (record.Row() == nullptr || !record.Row()->IsSensor()) continue;
    Source source;
    for (const layout::CommandView& command : layout::SensorCommands(record)) {
      if (command.layout == nullptr || (command.Control() & layout::kGetReads) == 0) continue;
      source.msr |= command.layout->kind == layout::kCommandMsr;
      source.smbus |= command.layout->kind == layout::kCommandSmbus;
    }
    if (!source.msr && !source.smbus) continue;
    Source& known = sources_[KeyOf(record)];
    known.msr |= source.msr;
    known.smbus |= source.smbus;
  }
}

Doubts Doubts::About(const LoadOptions& options) {
  if (options.board.empty()) return {IadtOf(options), MachineOpensMsr};
  return {IadtOf(options), [opens = BoardTables(options.board).HasMsrDevice()] { return opens; }};
}

std::string Doubts::Reason(const Source& source, const Value& value) const {
  if (source.msr && !msrOpens_())
    return fmt::format("read from a processor register, but {} does not open", kMsrDevice);
  if (!IsZero(value)) return "";
  return fmt::format("exactly 0, read from {}, is also what a failed read gives",
                     source.msr ? "a processor register" : "the SMBus");
}

void Doubts::Mark(std::vector<Value>& sensors) const {
  for (Value& value : sensors) {
    const auto found = sources_.find(Key(value.quantity, value.name));
    if (found == sources_.end() || value.state != State::kOk) continue;
    value.words = Reason(found->second, value);
    if (!value.words.empty()) value.state = State::kDoubtful;
  }
}

}  // namespace vynctl
