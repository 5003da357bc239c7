#include "Sensors.h"

#include "Names.h"
#include "Text.h"

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

}  // namespace vynctl
