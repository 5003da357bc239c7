// SPDX-License-Identifier: MIT
// The library's own classes over the real platform: what the C interface does not show.
#include <gtest/gtest.h>

#include "Machine.h"
#include "hw/TReadWrite.h"
#include "smbus/TSMBus.h"
#include "tables/TAcpiBase.h"

namespace {

constexpr unsigned char kEeprom = 0xA6;

class RealSmbus : public ::testing::Test {
 protected:
  void SetUp() override {
    guest::AllowPorts();
    bus = TSMBus::GetInstance();
  }
  void TearDown() override { TSMBus::FreeInstance(); }
  TSMBus* bus = nullptr;
};

}  // namespace

TEST_F(RealSmbus, DetectsTheIch9ByItsRecord) {
  ASSERT_NE(nullptr, bus->GetSMBusConfig());
  EXPECT_STREQ("Intel ICH7/ICH8/ICH9/ICH10", bus->GetSMBusConfig()->Name.c_str());
}

TEST_F(RealSmbus, ReadsConsecutiveRegisters) {
  for (unsigned char i = 0; i < 3; i++)
    guest::SetSmbus(kEeprom, static_cast<uint8_t>(0x10 + i), static_cast<uint8_t>(0xA1 + i));
  unsigned char bytes[4] = {0, 0, 0, 0xEE};
  EXPECT_EQ(1, bus->ReadSmbusByte(kEeprom, bytes, 0x10, 3));
  EXPECT_EQ(0xA1, bytes[0]);
  EXPECT_EQ(0xA2, bytes[1]);
  EXPECT_EQ(0xA3, bytes[2]);
  EXPECT_EQ(0xEE, bytes[3]);
}

TEST_F(RealSmbus, WritesConsecutiveRegisters) {
  unsigned char bytes[] = {0x51, 0x52, 0x53};
  EXPECT_EQ(1, bus->WriteSmbusByte(kEeprom, bytes, 0x40, 3));
  EXPECT_EQ(0x51, guest::Smbus(kEeprom, 0x40));
  EXPECT_EQ(0x52, guest::Smbus(kEeprom, 0x41));
  EXPECT_EQ(0x53, guest::Smbus(kEeprom, 0x42));
}

TEST_F(RealSmbus, FailsWithoutASlave) {
  unsigned char byte = 0;
  EXPECT_EQ(0, bus->ReadSmbusByte(0xC0, &byte, 0, 1));
}

TEST(RealPci, FindsTheSmbusControllerByItsClass) {
  EXPECT_EQ(0x00FBu, TReadWrite::GetInstance()->FindPciClass(0x0C0500));  // 0:1f.3
  TReadWrite::FreeInstance();
}

TEST(RealMsr, ReadsTheLocalApicBase) {
  EXPECT_EQ(0xFEE00900u, TReadWrite::GetInstance()->rdmsr_on_cpu(0x1B));
  TReadWrite::FreeInstance();
}

TEST(RealAcpi, TakesThePciExpressBaseFromTheFirmwaresMcfg) {
  EXPECT_EQ(0xB0000000u, TAcpiBase::GetInstance()->GetPcieBaseAddress());
  TAcpiBase::FreeInstance();
  TReadWrite::FreeInstance();
}

TEST(RealAcpi, FindsAPublishedTableBySignature) {
  char signature[] = "APIC", absent[] = "IAXT";
  EXPECT_EQ(1, TAcpiBase::GetInstance()->GetAcpiTable(signature));
  EXPECT_EQ(0, TAcpiBase::GetInstance()->GetAcpiTable(absent));
  TAcpiBase::FreeInstance();
  TReadWrite::FreeInstance();
}
