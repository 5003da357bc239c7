#include "Metrics.h"

#include <gtest/gtest.h>

namespace vynctl {
namespace {

TEST(MetricsText, GivesEachQuantityOneHeadAndASamplePerReadableSensor) {
  const std::vector<Value> sensors = {
      {.id = "voltage/+12V", .name = "+12V", .quantity = "voltage", .unit = "V", .data = 12.0},
      Failed({.id = "voltage/VDEAD", .name = "VDEAD", .quantity = "voltage", .unit = "V"}, 0x302),
      {.id = "fan-speed/CPU", .name = "CPU", .quantity = "fan-speed", .unit = "rpm", .data = int64_t{1000}},
  };
  EXPECT_EQ(
      "# HELP vynlib_board_info The board's model; always 1.\n"
      "# TYPE vynlib_board_info gauge\n"
      "vynlib_board_info{model=\"M\"} 1\n"
      "# HELP vynlib_voltage_volts Voltages in V.\n"
      "# TYPE vynlib_voltage_volts gauge\n"
      "vynlib_voltage_volts{sensor=\"+12V\"} 12\n"
      "# HELP vynlib_fan_speed_rpm Fan speeds in rpm.\n"
      "# TYPE vynlib_fan_speed_rpm gauge\n"
      "vynlib_fan_speed_rpm{sensor=\"CPU\"} 1000\n"
      "# HELP vynlib_sensor_ok 1 when the sensor could be read.\n"
      "# TYPE vynlib_sensor_ok gauge\n"
      "vynlib_sensor_ok{quantity=\"voltage\",sensor=\"+12V\"} 1\n"
      "vynlib_sensor_ok{quantity=\"voltage\",sensor=\"VDEAD\"} 0\n"
      "vynlib_sensor_ok{quantity=\"fan-speed\",sensor=\"CPU\"} 1\n",
      MetricsText(sensors, "M"));
}

TEST(MetricsText, EscapesQuotesAndBackslashesInLabels) {
  const std::vector<Value> sensors = {{.id = "voltage/x", .name = "a\"b\\xFC", .quantity = "voltage", .data = 1.0}};
  EXPECT_NE(std::string::npos, MetricsText(sensors, "").find("vynlib_voltage_volts{sensor=\"a\\\"b\\\\xFC\"} 1\n"));
}

TEST(MetricsText, TellsSensorsOfOneNameApart) {
  std::vector<Value> sensors(2, Value{.id = "voltage/V", .name = "V", .quantity = "voltage", .data = 1.0});
  MakeIdsUnique(sensors);
  const std::string text = MetricsText(sensors, "");
  EXPECT_NE(std::string::npos, text.find("{sensor=\"V\"} 1\n"));
  EXPECT_NE(std::string::npos, text.find("{sensor=\"V#2\"} 1\n"));
}

}  // namespace
}  // namespace vynctl
