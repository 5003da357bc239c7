// SPDX-License-Identifier: MIT
// The simulated hosts in a world where accesses and transfers take time and others use the bus.
#include <gmock/gmock.h>

#include "sim/chips/SmbusPlatforms.h"
#include "sim/chips/SmbusUser.h"

namespace {

using sim::SmbusUser;

constexpr uint16_t kBase = 0x1000;
constexpr uint8_t kSlave = 0xA0, kCommand = 0x10, kValue = 0x73;

class SharedHost : public ::testing::Test {
 protected:
  void Make(sim::SmbusMaker make) {
    sim::SmbusSetup setup;
    slave->registers[kCommand] = kValue;
    setup.slaves[kSlave] = slave;
    host = make(setup);
    host->base = kBase;
    host->microsecondsPerStart = 10;
    board.pace = {.portAccess = 1, .sleepExtra = 0, .step = 10};
    board.Attach(kBase, 0x40, host);
  }
  uint32_t In(unsigned offset) { return board.In(static_cast<uint16_t>(kBase + offset), 1); }
  void Out(unsigned offset, uint32_t value) { board.Out(static_cast<uint16_t>(kBase + offset), 1, value); }
  void StartByteRead() {
    const sim::SmbusLayout& layout = host->Layout();
    Out(layout.address, kSlave | 1);
    Out(layout.command, kCommand);
    Out(layout.control, layout.startByteRead);
  }

  sim::Board board;
  std::shared_ptr<sim::SmbusSlave> slave = std::make_shared<sim::SmbusSlave>();
  std::shared_ptr<sim::SmbusHost> host;
};

// --- time ---

TEST_F(SharedHost, TakesTheTimeOfItsBytesAndConditions) {
  Make(sim::MakeSmbusPiix4);
  StartByteRead();
  // Four bytes of 90 us, start, start and stop of 10 us: over 390 us after the start, which the last access was.
  board.Sleep(388);
  EXPECT_EQ(In(0), 1u);
  EXPECT_EQ(In(0), 2u);
  EXPECT_EQ(In(5), kValue);
}

TEST_F(SharedHost, CountsTheTransfersOfTheProgram) {
  Make(sim::MakeSmbusPiix4);
  StartByteRead();
  for (unsigned i = 0; i < 3; ++i) EXPECT_EQ(In(0), 1u);
  board.Sleep(400);
  EXPECT_EQ(In(0), 2u);
  EXPECT_EQ(host->timing.wire, 390u);
  EXPECT_EQ(host->timing.accesses, 3u);
  EXPECT_EQ(host->timing.late, 3u + 400 + 1 - 390);
}

TEST_F(SharedHost, ShowsAnErrorBeforeItIsIdle) {
  Make(sim::MakeSmbusPiix4);
  host->slaves.clear();
  StartByteRead();
  board.Sleep(290);
  EXPECT_EQ(In(0), 1u);
  board.Sleep(10);
  EXPECT_EQ(In(0), 5u);
  board.Sleep(90);
  EXPECT_EQ(In(0), 4u);
}

TEST_F(SharedHost, LosesAnErrorThatIsClearedBeforeItIsIdle) {
  Make(sim::MakeSmbusPiix4);
  host->slaves.clear();
  StartByteRead();
  board.Sleep(310);
  EXPECT_EQ(In(0), 5u);
  Out(0, 0xFF);
  board.Sleep(90);
  EXPECT_EQ(In(0), 0u);
}

TEST_F(SharedHost, WaitsForASlaveThatHoldsTheClock) {
  Make(sim::MakeSmbusPiix4);
  slave->stretch = 20000;
  StartByteRead();
  board.Sleep(20388);
  EXPECT_EQ(In(0), 1u);
  EXPECT_EQ(In(0), 2u);
}

TEST_F(SharedHost, BeginsNothingWhileAStoppedTransfersSlaveHoldsTheClock) {
  Make(sim::MakeSmbusPiix4);
  slave->stretch = 20000;
  StartByteRead();
  Out(2, 2);
  Out(2, 0);
  EXPECT_EQ(In(0), 0x10u);
  Out(0, 0x10);
  slave->stretch = 20000;
  StartByteRead();
  // 20 ms from the first start, 20 ms of its own.
  board.Sleep(39000);
  EXPECT_EQ(In(0), 1u);
  board.Sleep(2000);
  EXPECT_EQ(In(0), 2u);
}

TEST_F(SharedHost, GoesOnWhenASlaveLetsGo) {
  Make(sim::MakeSmbusPiix4);
  slave->stretch = sim::kSmbusForever;
  StartByteRead();
  board.Sleep(4000000);
  EXPECT_EQ(In(0), 1u);
  slave->stretch = 0;
  EXPECT_EQ(In(0), 2u);
}

TEST_F(SharedHost, EndsByItselfAsFailedAfterItsTimeOut) {
  Make(sim::MakeSmbusPiix4);
  host->timeOut = 25000;
  slave->stretch = sim::kSmbusForever;
  StartByteRead();
  board.Sleep(24990);
  EXPECT_EQ(In(0), 1u);
  board.Sleep(20);
  EXPECT_EQ(In(0), 0x10u);
}

// --- stopping ---

struct Stopping {
  const char* name;
  sim::SmbusMaker make;
  unsigned offset;
  uint8_t value;
  unsigned status;
  uint8_t stopped;  ///< what status reads then
  friend void PrintTo(const Stopping& stopping, std::ostream* stream) { *stream << stopping.name; }
};

class StoppedHost : public SharedHost, public testing::WithParamInterface<Stopping> {
 protected:
  void StartAndStop() {
    Make(GetParam().make);
    host->microsecondsToStop = 500;
    slave->stretch = sim::kSmbusForever;
    StartByteRead();
    Out(GetParam().offset, GetParam().value);
  }
};

TEST_P(StoppedHost, TakesItsTime) {
  StartAndStop();
  board.Sleep(490);
  In(0);
  EXPECT_TRUE(host->Busy());
  board.Sleep(20);
  EXPECT_EQ(In(GetParam().status) & ~uint32_t{host->Layout().inUse}, GetParam().stopped);
  EXPECT_FALSE(host->Busy());
}

TEST_P(StoppedHost, WorksAgain) {
  StartAndStop();
  board.Sleep(510);
  slave->stretch = 0;
  Out(GetParam().status, GetParam().stopped);
  StartByteRead();
  board.Sleep(400);
  EXPECT_NE(In(host->Layout().status) & host->Layout().done, 0u);
  EXPECT_EQ(In(host->Layout().data), kValue);
}

INSTANTIATE_TEST_SUITE_P(Families, StoppedHost,
                         testing::Values(Stopping{"Ich", sim::MakeSmbusIch, 2, 2, 0, 0x10},
                                         Stopping{"Piix4", sim::MakeSmbusPiix4, 2, 2, 0, 0x10},
                                         Stopping{"Ali", sim::MakeSmbusAli, 2, 4, 0, 0x10},
                                         Stopping{"Sis", sim::MakeSmbusSis96x, 3, 0x20, 0, 0},
                                         Stopping{"Nforce", sim::MakeSmbusNforce, 0x3E, 0x20, 0x3C, 1},
                                         Stopping{"Sch", sim::MakeSmbusSch, 0, 0x02, 1, 0}),
                         testing::PrintToStringParamName());

TEST_F(SharedHost, GoesOnWhenTheKillIsTakenBackTooSoon) {
  Make(sim::MakeSmbusPiix4);
  host->microsecondsToStop = 500;
  slave->stretch = sim::kSmbusForever;
  StartByteRead();
  Out(2, 2);
  board.Sleep(100);
  Out(2, 0);
  board.Sleep(1000);
  EXPECT_EQ(In(0), 1u);
}

TEST_F(SharedHost, OfAnSchKeepsTheBitsOfOthersAndShowsItsStart) {
  Make(sim::MakeSmbusSch);
  Out(0, 0xA0);
  Out(4, kSlave | 1);
  Out(0, 0xB2);
  EXPECT_EQ(In(0), 0xB2u);
  board.Sleep(400);
  EXPECT_EQ(In(1), 1u);
  EXPECT_EQ(In(0), 0xA2u);
}

// --- others ---

TEST_F(SharedHost, OfAnFchIsGrantedWhenTheEmbeddedControllerDoesNotHaveIt) {
  Make(sim::MakeSmbusFch);
  host->controllerUntil = 1000;
  Out(8, 0x15);
  EXPECT_EQ(In(8), 5u);
  board.Sleep(1000);
  EXPECT_EQ(In(8), 5u);
  Out(8, 0x15);
  EXPECT_EQ(In(8), 0x15u);
  Out(8, 0x35);
  EXPECT_EQ(In(8), 5u);
}

struct Family {
  const char* name;
  sim::SmbusMaker make;
  friend void PrintTo(const Family& family, std::ostream* stream) { *stream << family.name; }
};

class AnyHost : public SharedHost, public testing::WithParamInterface<Family> {
 protected:
  std::shared_ptr<SmbusUser> Another(uint64_t until, bool asks = true) {
    return SmbusUser::Start(board, host,
                            {.until = until, .address = kSlave, .command = kCommand, .expected = kValue, .asks = asks});
  }
  uint8_t InUse() const { return host->Layout().inUse; }
};

TEST_P(AnyHost, IsReadByAnotherUserOnceAndAgain) {
  Make(GetParam().make);
  const auto once = Another(0);
  board.Sleep(1000);
  EXPECT_EQ(once->Reads(), SmbusUser::Tally{.right = 1});
  EXPECT_TRUE(once->Over());
  // A read and the look at its end take 400 us.
  const auto again = Another(5000);
  board.Sleep(8000);
  EXPECT_EQ(again->Reads(), SmbusUser::Tally{.right = 10});
  EXPECT_EQ(In(host->Layout().status) & (InUse() | host->Layout().done), 0u);
}

TEST_P(AnyHost, TellsWhenAnothersResultIsCleared) {
  Make(GetParam().make);
  const auto another = Another(0);
  board.Sleep(395);
  In(host->Layout().status);
  Out(host->Layout().status, 0xFF);
  board.Sleep(1000);
  EXPECT_EQ(another->Reads(), SmbusUser::Tally{.lost = 1});
}

TEST_P(AnyHost, TellsWhenAnothersDeviceDoesNotAnswer) {
  Make(GetParam().make);
  host->slaves.clear();
  const auto another = Another(0);
  board.Sleep(1000);
  EXPECT_EQ(another->Reads(), SmbusUser::Tally{.errors = 1});
}

TEST_P(AnyHost, TellsOfWritesBesideAnothersTransfer) {
  std::vector<bool> running, foreign;
  Make(GetParam().make);
  host->onWrite = [&](const sim::SmbusWrite& write) {
    running.push_back(write.running);
    foreign.push_back(write.foreign);
  };
  Out(host->Layout().command, 1);
  StartByteRead();
  Out(host->Layout().command, 1);
  board.Sleep(1000);
  In(host->Layout().busy.offset);
  Another(0, false);
  Out(host->Layout().command, 1);
  EXPECT_THAT(running, testing::ElementsAre(false, false, false, false, true, true));
  EXPECT_THAT(foreign, testing::ElementsAre(false, false, false, false, false, true));
}

INSTANTIATE_TEST_SUITE_P(Families, AnyHost,
                         testing::Values(Family{"Ich", sim::MakeSmbusIch}, Family{"Via", sim::MakeSmbusVia},
                                         Family{"Piix4", sim::MakeSmbusPiix4}, Family{"Fch", sim::MakeSmbusFch},
                                         Family{"Ali", sim::MakeSmbusAli}, Family{"Sis", sim::MakeSmbusSis965},
                                         Family{"Nforce", sim::MakeSmbusNforce}, Family{"Sch", sim::MakeSmbusSch}),
                         testing::PrintToStringParamName());

TEST_F(SharedHost, WithASemaphoreIsKeptFromTheFirstTransferToTheLast) {
  Make(sim::MakeSmbusIch);
  const auto another =
      SmbusUser::Start(board, host, {.until = 3000, .address = kSlave, .command = kCommand, .expected = kValue});
  for (board.Sleep(5); !another->Over(); board.Sleep(50)) {
    EXPECT_TRUE(host->owned);
    EXPECT_NE(In(0) & 0x40, 0u);
  }
  EXPECT_FALSE(host->owned);
  EXPECT_EQ(In(0), 0u);
}

TEST_F(SharedHost, WithASemaphoreThatIsTakenIsWaitedFor) {
  Make(sim::MakeSmbusIch);
  EXPECT_EQ(In(0), 0u);
  const auto another =
      SmbusUser::Start(board, host, {.until = 3000, .address = kSlave, .command = kCommand, .expected = kValue});
  board.Sleep(1000);
  EXPECT_FALSE(host->owned);
  Out(0, 0x40);
  board.Sleep(1000);
  EXPECT_TRUE(host->owned);
  EXPECT_GE(another->Reads().right, 1u);
}

// --- AMD's segments ---

struct Segments {
  const char* platform;
  unsigned at;
  uint8_t third;  ///< the register's value for segment 2
};

TEST(SmbusMultiplexer, ChoosesTheSegment) {
  for (const Segments& row : {Segments{"sb800", 0x2C, 4}, {"hudson", 0x2E, 4}, {"carrizo", 2, 0x10}}) {
    sim::Board board;
    const auto host = sim::AttachSmbus(board, *sim::FindSmbusPlatform(row.platform), {});
    board.Out(0xCD6, 1, row.at);
    board.Out(0xCD7, 1, row.third);
    EXPECT_EQ(host->segment, 2u) << row.platform;
    EXPECT_EQ(board.MemoryByte(0xFED80300 + row.at), row.third) << row.platform;
    board.StoreMemoryByte(0xFED80300 + row.at, 0);
    EXPECT_EQ(board.In(0xCD7, 1), 0u) << row.platform;
    EXPECT_EQ(host->segment, 0u) << row.platform;
  }
}

TEST(SmbusMultiplexer, OfSb800MovesToItsOtherRegister) {
  sim::Board board;
  const auto host = sim::AttachSmbus(board, *sim::FindSmbusPlatform("sb800"), {});
  board.Out(0xCD6, 1, 0x2F);
  board.Out(0xCD7, 1, 1);
  board.Out(0xCD6, 1, 0x2E);
  board.Out(0xCD7, 1, 6);
  EXPECT_EQ(host->segment, 3u);
}

}  // namespace
