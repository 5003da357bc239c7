// SPDX-License-Identifier: MIT
// Sensors whose registers are SMBus EEPROM bytes and NVRAM bytes; the tests put the raw values there themselves.
#include "BoardEnvironment.h"

namespace {
constexpr uint8_t kMonitor = 0xA4;

float Volts(const char* name) {
  float value = -1;
  EXPECT_EQ(1, VynLibGetVoltage(name, &value, 2)) << name;
  return value;
}

float Celsius(const char* name) {
  float value = -1000;
  EXPECT_EQ(1, VynLibGetTemperature(name, &value, 2)) << name;
  return value;
}

uint16_t Rpm(const char* name) {
  uint16_t value = 1;
  EXPECT_EQ(1, VynLibGetFanSpeed(name, &value, 2)) << name;
  return value;
}
}  // namespace

TEST(Voltage, IndexDataWithABankSelect) {
  guest::SetNvram(0x66, 0x00);
  guest::SetNvram(0x67, 250);
  EXPECT_FLOAT_EQ(12.0f, Volts("+12V"));  // divider (100 + 20) / 20 = 6; 6 x 250 x 8 mV
  EXPECT_EQ(0x04, guest::Nvram(0x66));    // the bank that the record selects
}

TEST(Voltage, SmbusWithADivider) {
  guest::SetSmbus(kMonitor, 0x20, 100);
  EXPECT_FLOAT_EQ(1.6f, Volts("+VCORE"));  // divider (10 + 10) / 10 = 2; 2 x 100 x 8 mV
}

TEST(Voltage, SmbusWithAStep) {
  guest::SetSmbus(kMonitor, 0x21, 250);
  EXPECT_FLOAT_EQ(4.0f, Volts("+VBAT"));  // 250 x 16 mV
}

TEST(Voltage, ARawZeroIsNoReading) {
  guest::SetSmbus(kMonitor, 0x20, 0);
  float volts = 5;
  EXPECT_EQ(0, VynLibGetVoltage("+VCORE", &volts, 2));
  EXPECT_EQ(0x302u, Code());
  EXPECT_EQ(0.0f, volts);
}

TEST(Temperature, IndexDataTwosComplement) {
  guest::SetNvram(0x68, 0x2D);
  EXPECT_FLOAT_EQ(45.0f, Celsius("System"));
  guest::SetNvram(0x68, 0xF6);
  EXPECT_FLOAT_EQ(-10.0f, Celsius("System"));
}

TEST(Temperature, IndexDataIntegerAndFraction) {
  guest::SetNvram(0x69, 41);
  guest::SetNvram(0x6A, 0x80);
  EXPECT_FLOAT_EQ(41.5f, Celsius("CPU"));  // (0x80 >> 6) / 4
}

TEST(Temperature, SmbusDifferenceOfTwoFields) {
  guest::SetSmbus(kMonitor, 0x06, 100);
  guest::SetSmbus(kMonitor, 0x07, 55);
  EXPECT_FLOAT_EQ(45.0f, Celsius("DTS"));
}

TEST(Temperature, SmbusHundredths) {
  guest::SetSmbus(kMonitor, 0x00, 0x0B);
  guest::SetSmbus(kMonitor, 0x01, 0xB8);
  EXPECT_FLOAT_EQ(30.0f, Celsius("Board"));  // 0x0BB8 = 3000
  guest::SetSmbus(kMonitor, 0x00, 0xFF);
  guest::SetSmbus(kMonitor, 0x01, 0x9C);
  EXPECT_FLOAT_EQ(-1.0f, Celsius("Board"));  // 0xFF9C = -100
}

TEST(FanSpeed, SmbusRevolutions) {
  guest::SetSmbus(kMonitor, 0x02, 0x05);
  guest::SetSmbus(kMonitor, 0x03, 0xDC);
  EXPECT_EQ(1500, Rpm("System Fan"));
}

TEST(FanSpeed, IndexDataCount) {
  guest::SetNvram(0x6B, 0x05);
  guest::SetNvram(0x6C, 0xDC);
  EXPECT_EQ(1000, Rpm("CPU Fan"));  // 1,500,000 / 1500
}

TEST(FanSpeed, AStalledFanReadsZero) {
  guest::SetNvram(0x6B, 0x0F);
  guest::SetNvram(0x6C, 0xFF);
  EXPECT_EQ(0, Rpm("CPU Fan"));
}

TEST(Current, SmbusTenths) {
  guest::SetSmbus(kMonitor, 0x04, 25);
  float value = 0;
  EXPECT_EQ(1, VynLibGetCurrent("+12V", &value, 2));
  EXPECT_FLOAT_EQ(2.5f, value);
}

TEST(SensorNames, AreThoseOfTheTableInItsOrderByKind) {
  uint8_t count = 0;
  ASSERT_EQ(1, VynLibGetTemperatureNames(nullptr, &count, 2));
  ASSERT_EQ(4, count);
  char buffers[4][VYNLIB_NAME_BYTES];
  char* names[] = {buffers[0], buffers[1], buffers[2], buffers[3]};
  ASSERT_EQ(1, VynLibGetTemperatureNames(names, &count, 2));
  EXPECT_STREQ("CPU", buffers[0]);
  EXPECT_STREQ("System", buffers[1]);
  EXPECT_STREQ("DTS", buffers[2]);
  EXPECT_STREQ("Board", buffers[3]);
}
