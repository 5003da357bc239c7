// SPDX-License-Identifier: MIT
// A sensor by name, the last of as many as there are.
#include <cstring>
#include <memory>

#include "bench/Case.h"
#include "bench/Fixture.h"
#include "firmware/IadtBuilder.h"
#include "hw/Platform.h"

namespace bench {

namespace {

volatile float sink;

std::string SensorName(unsigned number) { return "Sensor " + std::to_string(number); }

/// The names in an array, compared one after another, and the one command.
void ReadByHand(const std::vector<std::array<char, 20>>& names, const char* wanted) {
  for (const auto& name : names) {
    if (std::strncmp(name.data(), wanted, name.size()) != 0) continue;
    platform::Out8(kIndexPort, 0x20);
    sink = static_cast<float>(platform::In8(kDataPort) * 8 * 0.001);
    return;
  }
}

Case Voltage(unsigned count) {
  firmware::IadtBuilder builder;
  auto names = std::make_shared<std::vector<std::array<char, 20>>>(count);
  for (unsigned i = 0; i < count; ++i) {
    builder.Add(firmware::Record::Sensor("voltage", 2)
                    .Name(SensorName(i))
                    .Commands({firmware::Command::IndexData(kIndexPort, kDataPort, 0x20).Get()}));
    SensorName(i).copy((*names)[i].data(), 20);
  }
  const std::string wanted = SensorName(count - 1);
  return {.name = "sensor/" + std::to_string(count),
          .setUp = [builder] { StartLibrary(builder); },
          .library =
              [wanted] {
                float volts;
                VynLibGetVoltage(wanted.c_str(), &volts, 2);
                sink = volts;
              },
          .baseline = [names, wanted] { ReadByHand(*names, wanted.c_str()); },
          .target = 4.0};
}

}  // namespace

std::vector<Case> SensorCases() {
  std::vector<Case> cases;
  for (const unsigned count : {1, 10, 100, 500}) cases.push_back(Voltage(count));
  return cases;
}

}  // namespace bench
