// SPDX-License-Identifier: MIT
// Metrics as text.
#include "view/Metrics.h"

#include <gtest/gtest.h>

namespace vynctl {
namespace {

TEST(MetricsText, GivesEachQuantityOneHeadAndASamplePerReadableSensor) {
  const std::vector<Value> sensors = {
      {.id = "voltage/+12V", .name = "+12V", .quantity = "voltage", .unit = "V", .data = 12.0},
      Failed({.id = "voltage/VDEAD", .name = "VDEAD", .quantity = "voltage", .unit = "V"}, 0x302),
      {.id = "fan-speed/CPU",
       .name = "CPU",
       .quantity = "fan-speed",
       .unit = "rpm",
       .data = int64_t{0},
       .state = State::kDoubtful},
  };
  EXPECT_EQ(
      "# HELP vynlib_up 1 when the sensors could be asked.\n"
      "# TYPE vynlib_up gauge\n"
      "vynlib_up 1\n"
      "# HELP vynlib_tables_found 1 when both firmware tables were found.\n"
      "# TYPE vynlib_tables_found gauge\n"
      "vynlib_tables_found 0\n"
      "# HELP vynlib_board_info The board's model; always 1.\n"
      "# TYPE vynlib_board_info gauge\n"
      "vynlib_board_info{model=\"M\"} 1\n"
      "# HELP vynlib_voltage_volts Voltages in V.\n"
      "# TYPE vynlib_voltage_volts gauge\n"
      "vynlib_voltage_volts{sensor=\"+12V\"} 12\n"
      "# HELP vynlib_fan_speed_rpm Fan speeds in rpm.\n"
      "# TYPE vynlib_fan_speed_rpm gauge\n"
      "vynlib_fan_speed_rpm{sensor=\"CPU\"} 0\n"
      "# HELP vynlib_sensor_ok 1 when the sensor could be read and nothing casts doubt on it.\n"
      "# TYPE vynlib_sensor_ok gauge\n"
      "vynlib_sensor_ok{quantity=\"voltage\",sensor=\"+12V\"} 1\n"
      "vynlib_sensor_ok{quantity=\"voltage\",sensor=\"VDEAD\"} 0\n"
      "vynlib_sensor_ok{quantity=\"fan-speed\",sensor=\"CPU\"} 0\n"
      "# HELP vynlib_sensor_doubtful 1 when the reading may be that of a failed access.\n"
      "# TYPE vynlib_sensor_doubtful gauge\n"
      "vynlib_sensor_doubtful{quantity=\"voltage\",sensor=\"+12V\"} 0\n"
      "vynlib_sensor_doubtful{quantity=\"voltage\",sensor=\"VDEAD\"} 0\n"
      "vynlib_sensor_doubtful{quantity=\"fan-speed\",sensor=\"CPU\"} 1\n",
      MetricsText(sensors, "M", false));
}

TEST(MetricsText, EscapesQuotesAndBackslashesInLabels) {
  const std::vector<Value> sensors = {{.id = "voltage/x", .name = "a\"b\\xFC", .quantity = "voltage", .data = 1.0}};
  EXPECT_NE(std::string::npos,
            MetricsText(sensors, "", true).find("vynlib_voltage_volts{sensor=\"a\\\"b\\\\xFC\"} 1\n"));
}

TEST(MetricsText, TellsSensorsOfOneNameApart) {
  std::vector<Value> sensors(2, Value{.id = "voltage/V", .name = "V", .quantity = "voltage", .data = 1.0});
  MakeIdsUnique(sensors);
  const std::string text = MetricsText(sensors, "", true);
  EXPECT_NE(std::string::npos, text.find("{sensor=\"V\"} 1\n"));
  EXPECT_NE(std::string::npos, text.find("{sensor=\"V#2\"} 1\n"));
}

}  // namespace
}  // namespace vynctl
