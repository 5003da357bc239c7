// SPDX-License-Identifier: MIT
// One state of the whole board, and the text of it. Every boot of the board holds this text, so that the report depends
// on the tables and the registers alone, whatever the firmware.
#include "BoardEnvironment.h"

namespace {

constexpr uint8_t kMonitor = 0xA4, kEeprom = 0xA0;

struct Register {
  uint8_t number, value;
};

constexpr Register kNvram[] = {
    {0x60, 0x01},                            // LVDS state 1
    {0x61, 0x12}, {0x62, 0x24},              // LVDS type 4
    {0x63, 0x05},                            // board version: three entries match, bits 0 and 2 are set
    {0x64, 0x02},                            // digital I/O: pin 1 is high
    {0x67, 250},                             // +12V: 250 x 8 mV x 6
    {0x68, 0xF6},                            // System: -10
    {0x69, 41},   {0x6A, 0x80},              // CPU: 41 and two quarters
    {0x6B, 0x05}, {0x6C, 0xDC},              // CPU Fan: 1,500,000 / 1500
    {0x72, 0xCD}, {0x73, 0xAB},              // JGPIO power 0
    {0x74, 2},    {0x75, 60},   {0x76, 45},  // fan mode 2 and its two parameters
    {0x77, 12},                              // watchdog interval
    {0x78, 1},                               // watchdog count mode
};
constexpr Register kMonitorBytes[] = {
    {0x00, 0x0B}, {0x01, 0xB8},  // Board: 3000 hundredths
    {0x02, 0x05}, {0x03, 0xDC},  // System Fan: 1500
    {0x04, 25},                  // +12V: 25 tenths
    {0x06, 100},  {0x07, 55},    // DTS: the difference
    {0x20, 100},                 // +VCORE: 100 x 8 mV x 2
    {0x21, 250},                 // +VBAT: 250 x 16 mV
};
constexpr Register kEepromBytes[] = {
    {0x10, 0x02},  // Intel power solution 2
    {0x20, 0x34},
    {0x21, 0x12},  // user LED 1
};

void PutTheBoardIntoOneState() {
  guest::Out8(0x3FF, 0x02);
  guest::Out8(0x2FF, 0x01);
  guest::Out32(0xE0, 0x89ABCDEF);  // Bluetooth 1; its low word is no state of the USB power
  for (const Register& row : kNvram) guest::SetNvram(row.number, row.value);
  for (const Register& row : kMonitorBytes) guest::SetSmbus(kMonitor, row.number, row.value);
  for (const Register& row : kEepromBytes) guest::SetSmbus(kEeprom, row.number, row.value);
  EXPECT_EQ(1, VynLibSetOnboardTPMState(0, 2));  // the whole word,
  EXPECT_EQ(1, VynLibSetOnboardTPMState(1, 2));  // and its lowest bit
}

constexpr const char* kReport = R"(VYN-Q35

Voltages
  +12V    12.000  V    +VCORE   1.600  V    +VBAT    4.000  V

Temperatures
  CPU      41.5  C    System  -10.0  C    DTS      45.0  C    Board    30.0  C

Fan speeds
  CPU Fan     1000  rpm    System Fan  1500  rpm

Currents
  +12V  2.5  A

Features
  lvds-state       1             otp              fault
  lvds-type        4             me-descriptor    0
  backlight        can be set    intel-power      2
  usb-power        fault         at-mode          fault
  bluetooth        1             mfg-state        1
  wifi             0             pcie-bandwidth   fault
  user-led         1             tb-cio-plug      fault
  jgpio-power      0             board-version    0x0305
  tpm              1

Features by index
  com-type         0:2  1:1    digital-io       0:0  1:1

Watchdog
  interval 12    mode 1

Fan control
  FAN      MODES  MODE  PARAMETERS
  CPU Fan  0 2    2     60 45

Not readable or in doubt
  USB power             0xC01: the hardware is in none of the listed states
  OTP                   0x15: the firmware lists a command of a kind that cannot be stepped over
  AT mode               0x1101: the hardware is in none of the listed states
  PCIe bandwidth mode   0xB01: the hardware is in none of the listed states
  Thunderbolt CIO plug  0x1301: the hardware is in none of the listed states
)";

}  // namespace

TEST(Report, IsTheTextOfTheBoardsState) {
  PutTheBoardIntoOneState();
  const guest::CommandResult result = guest::Run("vynctl report");
  EXPECT_EQ(0, result.status);
  EXPECT_EQ(kReport, result.output);
}
