// SPDX-License-Identifier: MIT
// The simulated hosts by themselves, register by register.
#include "sim/chips/SmbusHost.h"

#include <gmock/gmock.h>

#include "sim/chips/SmbusPlatforms.h"

namespace {

constexpr uint16_t kBase = 0x1000;
constexpr uint8_t kSlave = 0xA0;

class SmbusHostTest : public ::testing::Test {
 protected:
  void Make(sim::SmbusMaker make) {
    sim::SmbusSetup setup;
    slave = std::make_shared<sim::SmbusSlave>();
    slave->registers[0x10] = 0x73;
    setup.slaves[kSlave] = slave;
    host = make(setup);
    host->base = kBase;
    board.Attach(kBase, 0x40, host);
  }
  uint32_t In(unsigned offset) { return board.In(static_cast<uint16_t>(kBase + offset), 1); }
  void Out(unsigned offset, uint32_t value) { board.Out(static_cast<uint16_t>(kBase + offset), 1, value); }
  /// A byte read at command 0x10 of a host with classic registers.
  void StartClassic(uint8_t address = kSlave | 1) {
    Out(4, address);
    Out(3, 0x10);
    Out(2, 0x48);
  }
  void Wait() { board.Sleep(10000); }

  sim::Board board;
  std::shared_ptr<sim::SmbusSlave> slave;
  std::shared_ptr<sim::SmbusHost> host;
};

using IchHost = SmbusHostTest;

TEST_F(IchHost, IsBusyUntilTheTransferHasTakenItsTime) {
  Make(sim::MakeSmbusIch);
  StartClassic();
  EXPECT_EQ(In(0) & 0x1F, 1u);
  // Address, command, address, data: 4 bytes of 90 us; each port access takes 1.
  board.Sleep(350);
  EXPECT_EQ(In(0) & 0x1F, 1u);
  board.Sleep(10);
  EXPECT_EQ(In(0) & 0x1F, 2u);
  EXPECT_EQ(In(5), 0x73u);
}

TEST_F(IchHost, ClearsStatusBitsThatAreWrittenAsOnes) {
  Make(sim::MakeSmbusIch);
  StartClassic();
  Wait();
  Out(0, 0x04);
  EXPECT_EQ(In(0) & 0x1F, 2u);
  Out(0, 0x02);
  EXPECT_EQ(In(0) & 0x1F, 0u);
}

TEST_F(IchHost, TakesTheSemaphoreOnReadingAndReleasesItOnWriting) {
  Make(sim::MakeSmbusIch);
  EXPECT_EQ(In(0), 0u);
  EXPECT_EQ(In(0), 0x40u);
  Out(0, 0x40);
  EXPECT_EQ(In(0), 0u);
}

TEST_F(IchHost, ReportsAMissingSlaveAndStartsNothingUntilThatIsCleared) {
  Make(sim::MakeSmbusIch);
  StartClassic(0xA3);
  Wait();
  EXPECT_EQ(In(0) & 0x1F, 4u);
  StartClassic();
  EXPECT_EQ(In(0) & 0x1F, 4u);
  Out(0, 0x1E);
  StartClassic();
  Wait();
  EXPECT_EQ(In(0) & 0x1F, 2u);
}

TEST_F(IchHost, IsFreedByAKillWhenAStretchedClockKeepsIt) {
  Make(sim::MakeSmbusIch);
  host->stuck = true;
  StartClassic();
  Wait();
  EXPECT_EQ(In(0) & 0x1F, 1u);
  Out(2, 2);
  Out(2, 0);
  EXPECT_EQ(In(0) & 0x1F, 0x10u);
}

TEST_F(IchHost, TakesNoCommandWhileAnotherMasterHoldsIt) {
  Make(sim::MakeSmbusIch);
  host->held = true;
  StartClassic();
  Wait();
  EXPECT_EQ(In(0) & 0x1F, 1u);
  host->held = false;
  EXPECT_EQ(In(0) & 0x1F, 0u);
}

TEST_F(IchHost, SetsTheBlockBufferBackWhenTheControlRegisterIsRead) {
  Make(sim::MakeSmbusIch);
  Out(0xD, 2);
  Out(7, 0x11);
  Out(7, 0x22);
  In(2);
  EXPECT_EQ(In(7), 0x11u);
  EXPECT_EQ(In(7), 0x22u);
}

TEST_F(IchHost, EndsABlockAfterTheByteThatIsCalledTheLast) {
  Make(sim::MakeSmbusIch);
  slave->registers[0x10] = 5;
  Out(4, kSlave | 1);
  Out(3, 0x10);
  Out(2, 0x54);
  Wait();
  EXPECT_EQ(In(0) & 0x83, 0x81u);
  Out(2, 0x34);
  Out(0, 0x80);
  Wait();
  EXPECT_EQ(In(0) & 0x83, 0x81u);
  Out(0, 0x80);
  Wait();
  EXPECT_EQ(In(0) & 0x83, 0x02u);
}

using Piix4Host = SmbusHostTest;

TEST_F(Piix4Host, HasNoSemaphoreInItsStatus) {
  Make(sim::MakeSmbusPiix4);
  In(0);
  EXPECT_EQ(In(0), 0u);
}

TEST_F(Piix4Host, OfServerWorksShowsAnOldStatusForTwoMilliseconds) {
  Make(sim::MakeSmbusServerWorks);
  StartClassic(0xA3);
  board.Sleep(1900);
  EXPECT_EQ(In(0), 2u);
  board.Sleep(200);
  EXPECT_EQ(In(0), 4u);
}

using UliHost = SmbusHostTest;

TEST_F(UliHost, HasItsProtocolsThreeBitsUp) {
  Make(sim::MakeSmbusAli);
  Out(4, kSlave | 1);
  Out(3, 0x10);
  Out(2, 0x50);
  Wait();
  EXPECT_EQ(In(0), 2u);
  EXPECT_EQ(In(5), 0x73u);
}

TEST_F(UliHost, IsKilledByBit2) {
  Make(sim::MakeSmbusAli);
  host->stuck = true;
  Out(4, kSlave | 1);
  Out(2, 0x50);
  EXPECT_EQ(In(0), 1u);
  Out(2, 4);
  EXPECT_EQ(In(0), 0x10u);
}

using SisHost = SmbusHostTest;

TEST_F(SisHost, ShowsBusyInRegister2AndDoneInRegister0) {
  Make(sim::MakeSmbusSis96x);
  Out(4, kSlave | 1);
  Out(5, 0x10);
  Out(3, 0x12);
  EXPECT_EQ(In(2), 1u);
  EXPECT_EQ(In(0), 0u);
  Wait();
  EXPECT_EQ(In(0), 8u);
  EXPECT_EQ(In(2), 0u);
  EXPECT_EQ(In(8), 0x73u);
}

TEST_F(SisHost, HandsOverABlockInWindowsOfEightBytes) {
  Make(sim::MakeSmbusSis964);
  slave->registers[0x10] = 10;
  for (uint8_t i = 1; i <= 10; ++i) slave->registers[0x10u + i] = i;
  Out(4, kSlave | 1);
  Out(5, 0x10);
  Out(3, 0x15);
  Wait();
  EXPECT_EQ(In(0), 0x10u);
  EXPECT_EQ(In(7), 10u);
  EXPECT_EQ(In(8), 1u);
  EXPECT_EQ(In(0xF), 8u);
  EXPECT_EQ(In(0x14), 8u);
  Out(0, 0x10);
  Wait();
  EXPECT_EQ(In(0), 8u);
  EXPECT_EQ(In(8), 9u);
  EXPECT_EQ(In(0x14), 10u);
}

TEST_F(SisHost, GivesUpAtAKill) {
  Make(sim::MakeSmbusSis965);
  host->stuck = true;
  Out(4, kSlave | 1);
  Out(3, 0x12);
  Out(3, 0x20);
  EXPECT_EQ(In(2), 0u);
}

using NforceHost = SmbusHostTest;

TEST_F(NforceHost, TakesTheDirectionFromTheProtocol) {
  Make(sim::MakeSmbusNforce);
  Out(2, kSlave);
  Out(3, 0x10);
  Out(0, 7);
  EXPECT_EQ(In(0), 7u);
  EXPECT_EQ(In(1), 0u);
  Wait();
  EXPECT_EQ(In(0), 0u);
  EXPECT_EQ(In(1), 0x80u);
  EXPECT_EQ(In(4), 0x73u);
}

TEST_F(NforceHost, ReportsAMissingSlaveAsCode0x10AndClearsItAtTheNextProtocol) {
  Make(sim::MakeSmbusNforce);
  Out(2, 0xA2);
  Out(0, 7);
  Wait();
  EXPECT_EQ(In(1), 0x90u);
  Out(2, kSlave);
  Out(0, 7);
  EXPECT_EQ(In(1), 0u);
}

TEST_F(NforceHost, Aborts) {
  Make(sim::MakeSmbusNforce);
  host->stuck = true;
  Out(2, kSlave);
  Out(0, 7);
  Out(0x3E, 0x20);
  EXPECT_EQ(In(0), 0u);
  EXPECT_EQ(In(0x3C), 1u);
}

using SchHost = SmbusHostTest;

TEST_F(SchHost, KeepsDoneErrorAndBusyInRegister1) {
  Make(sim::MakeSmbusSch);
  Out(4, kSlave | 1);
  Out(5, 0x10);
  Out(0, 0x12);
  EXPECT_EQ(In(1), 8u);
  Wait();
  EXPECT_EQ(In(1), 1u);
  EXPECT_EQ(In(6), 0x73u);
  Out(1, 1);
  Out(4, 0xA3);
  Out(0, 0x12);
  Wait();
  EXPECT_EQ(In(1), 2u);
}

TEST_F(SchHost, NeverFinishesWithoutAClock) {
  Make(sim::MakeSmbusSch);
  Out(2, 0);
  Out(4, kSlave | 1);
  Out(0, 0x12);
  Wait();
  EXPECT_EQ(In(1), 8u);
  Out(0, 2);
  EXPECT_EQ(In(1), 0u);
}

TEST(SmbusPlatforms, AreAttachedByTheirName) {
  sim::Board board;
  sim::AttachSmbus(board, *sim::FindSmbusPlatform("ich9"), {});
  EXPECT_EQ(sim::FindSmbusPlatform("ich99"), nullptr);
  EXPECT_EQ(board.Pci(0, 0x1f, 3).Get(0, 4), 0x29308086u);
  EXPECT_EQ(board.Pci(0, 0x1f, 3).Get(0x20, 4), 0xEFA1u);
  EXPECT_EQ(board.In(0xEFA0, 1), 0u);
}

}  // namespace
