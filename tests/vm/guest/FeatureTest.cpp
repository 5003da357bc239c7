// SPDX-License-Identifier: MIT
// Feature states over the machine's real registers, one access kind after another. The tests look at the same registers
// by ways of their own, and at memory through the host.
#include "BoardEnvironment.h"

using ::testing::ElementsAre;

namespace {

constexpr uint16_t kFirstPortScratch = 0x3FF, kSecondPortScratch = 0x2FF;  // scratch registers of the serial ports
constexpr uint16_t kTestPort = 0xE0;                                       // four bytes of a device for tests
constexpr uint32_t kTestMemory = 0xFF000000;                               // 64 KiB of a device for tests
constexpr const char* kTestDevice = "0000:00:10.0";
constexpr unsigned kInterruptLine = 0x3C;

}  // namespace

TEST(PortByte, SetChangesTheMaskedBitsOnly) {
  guest::Out8(kFirstPortScratch, 0xA0);
  EXPECT_EQ(1, VynLibSetComType(0, 2, 2));
  EXPECT_EQ(0u, Code());
  EXPECT_EQ(0xA2, guest::In8(kFirstPortScratch));
}

TEST(PortByte, GetComparesTheMaskedBitsOnly) {
  guest::Out8(kFirstPortScratch, 0x5D);
  uint8_t type = 0;
  EXPECT_EQ(1, VynLibGetComType(0, &type, 2));
  EXPECT_EQ(1, type);
}

TEST(PortByte, GetReportsAStateThatNoEntryKnows) {
  guest::Out8(kFirstPortScratch, 0x03);
  uint8_t type = 0;
  EXPECT_EQ(0, VynLibGetComType(0, &type, 2));
  EXPECT_EQ(0x201u, Code());
  EXPECT_EQ(0xFF, type);
}

TEST(PortByte, EachInstanceHasItsOwnPort) {
  guest::Out8(kFirstPortScratch, 0x00);
  guest::Out8(kSecondPortScratch, 0x00);
  EXPECT_EQ(1, VynLibSetComType(1, 1, 2));
  EXPECT_EQ(0x00, guest::In8(kFirstPortScratch));
  EXPECT_EQ(0x01, guest::In8(kSecondPortScratch));
}

TEST(PortByte, AnUnknownInstanceTouchesNothing) {
  guest::Out8(kFirstPortScratch, 0x77);
  EXPECT_EQ(0, VynLibSetComType(7, 1, 2));
  EXPECT_EQ(0x204u, Code());
  EXPECT_EQ(0x77, guest::In8(kFirstPortScratch));
}

TEST(PortWord, SetWritesTwoPortsLowByteFirst) {
  guest::Out32(kTestPort, 0x77777777);
  EXPECT_EQ(1, VynLibSetUsbPwrState(1, 2));
  EXPECT_EQ(0x77770005u, guest::In32(kTestPort));
}

TEST(PortWord, GetReadsTwoPorts) {
  guest::Out32(kTestPort, 0x77770003);
  uint8_t state = 0xFF;
  EXPECT_EQ(1, VynLibGetUsbPwrState(&state, 2));
  EXPECT_EQ(0, state);
}

TEST(PortDword, SetWritesFourPortsLowByteFirst) {
  guest::Out32(kTestPort, 0);
  EXPECT_EQ(1, VynLibSetBTState(1, 2));
  EXPECT_EQ(0x89ABCDEFu, guest::In32(kTestPort));
}

TEST(PortDword, GetReadsFourPorts) {
  guest::Out32(kTestPort, 0x89ABCDEF);
  uint8_t state = 0xFF;
  EXPECT_EQ(1, VynLibGetBTState(&state, 2));
  EXPECT_EQ(1, state);
  guest::Out32(kTestPort, 0x09ABCDEF);
  EXPECT_EQ(0, VynLibGetBTState(&state, 2));
  EXPECT_EQ(0xD01u, Code());
}

TEST(IndexData, SetChangesTheMaskedBitsOnly) {
  guest::SetNvram(0x60, 0xF0);
  EXPECT_EQ(1, VynLibSetLVDSState(1, 2));
  EXPECT_EQ(0u, Code());
  EXPECT_EQ(0xF1, guest::Nvram(0x60));
}

TEST(IndexData, GetFindsTheStateTheRegisterIsIn) {
  guest::SetNvram(0x60, 0xAA);
  uint8_t state = 0;
  EXPECT_EQ(1, VynLibGetLVDSState(&state, 2));
  EXPECT_EQ(2, state);
}

TEST(IndexData, AnEntryOfTwoCommandsMatchesWhenBothDo) {
  guest::SetNvram(0x61, 0x11);
  guest::SetNvram(0x62, 0x23);
  uint8_t type = 0;
  EXPECT_EQ(1, VynLibGetLVDSType(&type, 2));
  EXPECT_EQ(3, type);
  guest::SetNvram(0x62, 0x24);
  EXPECT_EQ(0, VynLibGetLVDSType(&type, 2));
  EXPECT_EQ(0x701u, Code());
  EXPECT_EQ(0xFF, type);
}

TEST(IndexData, AnEntryOfTwoCommandsSetsBoth) {
  guest::SetNvram(0x61, 0x00);
  guest::SetNvram(0x62, 0x00);
  EXPECT_EQ(1, VynLibSetLVDSType(4, 2));
  EXPECT_EQ(0x12, guest::Nvram(0x61));
  EXPECT_EQ(0x24, guest::Nvram(0x62));
}

TEST(IndexData, AWordSpansTwoRegisters) {
  guest::SetNvram(0x72, 0x34);
  guest::SetNvram(0x73, 0x12);
  uint8_t state = 0;
  EXPECT_EQ(1, VynLibGetJGPIOPowerState(&state, 2));
  EXPECT_EQ(1, state);
  EXPECT_EQ(1, VynLibSetJGPIOPowerState(0, 2));
  EXPECT_EQ(0xCD, guest::Nvram(0x72));
  EXPECT_EQ(0xAB, guest::Nvram(0x73));
}

TEST(IndexData, BoardVersionCollectsTheBitsOfThreeEntries) {
  guest::SetNvram(0x63, 0x05);
  uint16_t version = 0;
  EXPECT_EQ(1, VynLibMBVersionState(&version, 2));
  EXPECT_EQ(0x0305, version);  // three entries succeed; indexes 0 and 2 carry the value 1
}

TEST(IndexData, BoardVersionFailsWhenNoEntrySucceeds) {
  guest::SetNvram(0x63, 0x02);
  uint16_t version = 0;
  EXPECT_EQ(0, VynLibMBVersionState(&version, 2));
  EXPECT_EQ(0x1501u, Code());
  EXPECT_EQ(0xFFFF, version);
}

TEST(IndexData, DigitalIoReadsEachPinByItsIndex) {
  guest::SetNvram(0x64, 0x02);
  uint8_t level = 0xFF;
  EXPECT_EQ(1, VynLibGetDigitalIOState(0, &level, 2));
  EXPECT_EQ(0, level);
  EXPECT_EQ(1, VynLibGetDigitalIOState(1, &level, 2));
  EXPECT_EQ(1, level);
}

TEST(IndexData, DigitalIoSetsOnePinAndLeavesTheOthers) {
  guest::SetNvram(0x64, 0xF0);
  EXPECT_EQ(1, VynLibSetDigitalIOState(1, 1, 2));
  EXPECT_EQ(0xF2, guest::Nvram(0x64));
  EXPECT_EQ(1, VynLibSetDigitalIOState(1, 0, 2));
  EXPECT_EQ(0xF0, guest::Nvram(0x64));
}

TEST(Memory, SetChangesTheMaskedBitsOnly) {
  EXPECT_EQ(1, VynLibSetOnboardTPMState(0, 2));
  EXPECT_THAT(guest::HostMemory(kTestMemory + 0xF20, 4), ElementsAre(0x78, 0x56, 0x34, 0x12));
  EXPECT_EQ(1, VynLibSetOnboardTPMState(1, 2));
  EXPECT_THAT(guest::HostMemory(kTestMemory + 0xF20, 4), ElementsAre(0x79, 0x56, 0x34, 0x12));
}

TEST(Memory, GetFindsTheStateTheMemoryIsIn) {
  EXPECT_EQ(1, VynLibSetOnboardTPMState(0, 2));
  uint8_t state = 0xFF;
  EXPECT_EQ(1, VynLibGetOnboardTPMState(&state, 2));
  EXPECT_EQ(0, state);
}

TEST(Memory, AByteWriteLeavesItsNeighboursAlone) {
  EXPECT_EQ(1, VynLibSetOnboardTPMState(0, 2));
  EXPECT_EQ(1, VynLibBacklightCtrl(1, 2));
  EXPECT_THAT(guest::HostMemory(kTestMemory + 0xF1F, 3), ElementsAre(0x64, 0x78, 0x56));
}

TEST(Memory, ReadsTheRomBelowFourGigabytes) {
  // At 0xFFFFFFF8, behind the reset vector: "23/9" out of a date, or no-operations.
  uint8_t state = 0;
  EXPECT_EQ(1, VynLibGetMFGState(&state, 2));
  EXPECT_EQ(1, state);
}

TEST(Pci, SetWritesTheOrMask) {
  EXPECT_EQ(1, VynLibSetMEDescriptorState(1, 2));
  EXPECT_EQ(0x5Au, guest::PciDword(kTestDevice, kInterruptLine) & 0xFF);
  EXPECT_EQ(1, VynLibSetMEDescriptorState(0, 2));
  EXPECT_EQ(0x0Bu, guest::PciDword(kTestDevice, kInterruptLine) & 0xFF);
}

TEST(Pci, GetComparesWithTheMasksOnZeroWhateverTheRegisterHolds) {
  EXPECT_EQ(1, VynLibSetMEDescriptorState(1, 2));
  uint8_t state = 0xFF;
  EXPECT_EQ(1, VynLibGetMEDescriptorState(&state, 2));
  EXPECT_EQ(0, state);
}

TEST(Delay, MillisecondsPassBeforeTheNextCommandRuns) {
  guest::SetNvram(0x65, 0x00);
  const double before = guest::SecondsSinceBoot();
  EXPECT_EQ(1, VynLibSetWifiState(1, 2));
  const double took = guest::SecondsSinceBoot() - before;
  EXPECT_GE(took, 0.300);
  EXPECT_EQ(0x01, guest::Nvram(0x65));
}

TEST(Delay, MicrosecondsPass) {
  const double before = guest::SecondsSinceBoot();
  EXPECT_EQ(1, VynLibSetWifiState(0, 2));
  EXPECT_GE(guest::SecondsSinceBoot() - before, 0.0015);
}

TEST(Delay, SecondsPass) {
  const double before = guest::SecondsSinceBoot();
  EXPECT_EQ(1, VynLibSetWifiState(2, 2));
  EXPECT_GE(guest::SecondsSinceBoot() - before, 1.0);
}

TEST(Delay, FlaggedAsAReadItWaitsAndFailsTheEntry) {
  const double before = guest::SecondsSinceBoot();
  uint8_t mode = 0;
  EXPECT_EQ(0, VynLibGetPcieBandwidthMode(&mode, 2));
  EXPECT_EQ(0xB01u, Code());
  EXPECT_GE(guest::SecondsSinceBoot() - before, 0.1);
}

TEST(Msr, AMatchingReadEndsTheCallWithCode21) {
  // Local APIC base of the boot processor: 0xFEE00000, enabled (bit 11), boot processor (bit 8).
  uint8_t state = 0;
  EXPECT_EQ(0, VynLibGetOTPState(&state, 2));
  EXPECT_EQ(21u, Code());
  EXPECT_EQ(0xFF, state);
}

TEST(Msr, ARegisterThatIsNotZeroDoesNotMatchZero) {
  uint8_t state = 0;
  EXPECT_EQ(0, VynLibGetATModeState(&state, 2));
  EXPECT_EQ(0x1101u, Code());
  EXPECT_EQ(0xFF, state);
}

TEST(NotOffered, AFeatureWithoutRecordsSaysSo) {
  uint8_t state = 0x5A;
  EXPECT_EQ(0, VynLibGetTbFRCPowerState(&state, 2));
  EXPECT_EQ(0x1400u, Code());
  EXPECT_EQ(0x5A, state);
}
