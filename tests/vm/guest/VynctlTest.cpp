// SPDX-License-Identifier: MIT
// vynctl over the production library, as an administrator runs it.
#include <nlohmann/json.hpp>

#include "BoardEnvironment.h"
#include "FirmwareKind.h"

using ::testing::HasSubstr;
using ::testing::SizeIs;

namespace {

nlohmann::json Json(const std::string& arguments, int status = 0) {
  const guest::CommandResult result = guest::Run("vynctl --json " + arguments);
  EXPECT_EQ(status, result.status) << result.output;
  return nlohmann::json::parse(result.output, nullptr, false);
}

/// The value of this identifier in the tool's output.
nlohmann::json ValueOf(const nlohmann::json& document, const std::string& id) {
  for (const nlohmann::json& value : document.value("values", nlohmann::json::array()))
    if (value.value("id", "") == id) return value;
  return {};
}

}  // namespace

TEST(Vynctl, SetChangesTheHardware) {
  guest::SetNvram(0x60, 0xF0);
  EXPECT_EQ(0, guest::Run("vynctl set lvds-state 2").status);
  EXPECT_EQ(0xF2, guest::Nvram(0x60));
}

TEST(Vynctl, GetReadsTheHardware) {
  guest::Out8(0x2FF, 0x02);
  EXPECT_EQ(2, ValueOf(Json("get com-type 1"), "feature/com-type/1")["value"]);
}

TEST(Vynctl, GetRefusesWithTheLibrarysCode) {
  guest::SetNvram(0x60, 0x03);
  const nlohmann::json document = Json("get lvds-state", 1);
  EXPECT_EQ(false, document["ok"]);
  EXPECT_EQ(0x601, document["error"]["code"]);
}

TEST(Vynctl, InfoTellsTheModelOfTheRealBoard) {
  const nlohmann::json document = Json("info");
  EXPECT_EQ("VYN-Q35", document["model"]);
  EXPECT_EQ(false, document["simulated"]);
}

TEST(Vynctl, InfoTellsWhereTheTablesComeFrom) {
  const bool reachable = guest::ThisFirmware().tablesReachable;
  EXPECT_EQ(reachable ? "memory (/dev/mem)" : "the kernel's copies (/sys/firmware/acpi/tables)",
            ValueOf(Json("info"), "board/tables-source")["value"]);
}

TEST(Vynctl, SensorsAreThoseOfTheTables) {
  guest::SetNvram(0x68, 0x2D);
  guest::SetSmbus(0xA4, 0x20, 100);
  const nlohmann::json document = Json("sensors");
  EXPECT_THAT(document["values"], SizeIs(10));
  EXPECT_EQ(45.0, ValueOf(document, "temperature/System")["value"]);
  EXPECT_EQ(1.6, ValueOf(document, "voltage/+VCORE")["value"]);
}

TEST(Vynctl, ReportNamesTheBoardAndItsSensors) {
  const guest::CommandResult result = guest::Run("vynctl report");
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.output, HasSubstr("VYN-Q35"));
  EXPECT_THAT(result.output, HasSubstr("System Fan"));
}

TEST(Vynctl, AWrongCommandLineIsRefusedWithStatus2) {
  EXPECT_EQ(2, guest::Run("vynctl get no-such-feature 2>/dev/null").status);
}
