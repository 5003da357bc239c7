// SPDX-License-Identifier: MIT
// What single records do on their chips beyond what all have in common.
#include <string>

#include "SMBusBoard.h"
#include "sim/chips/SmbusPlatforms.h"

using sim::In8;
using sim::Out8;
using testing::ElementsAre;

namespace {

constexpr unsigned char kSlave = 0xA0;

class SMBusChipset : public SMBusBoard {
 protected:
  static constexpr uint16_t kPciPorts = 0xCF8, kPciEnd = 0xCFF;

  void Attach(const char* platform, std::map<std::string, uint64_t, std::less<>> options = {}) {
    sim::SmbusSetup setup;
    slave = std::make_shared<sim::SmbusSlave>();
    slave->registers[0x10] = 0x73;
    setup.slaves[kSlave] = slave;
    setup.options = std::move(options);
    host = sim::AttachSmbus(board, *sim::FindSmbusPlatform(platform), setup);
  }

  /// One byte read; 0x173 is what it should give, a failure gives 0.
  int Read() {
    TSMBus& bus = *TSMBus::GetInstance();
    board.Log().clear();
    unsigned char byte = 0;
    return bus.ReadSmbusByte(kSlave, &byte, 0x10, 1) != 0 ? 0x100 | byte : 0;
  }
  static constexpr int kRead = 0x173;

  /// All but the accesses to configuration space.
  std::vector<sim::Access> PortLog() const {
    std::vector<sim::Access> log;
    for (const sim::Access& access : board.PortLog())
      if (access.address < kPciPorts || access.address > kPciEnd) log.push_back(access);
    return log;
  }
  bool Wrote() {
    for (const sim::Access& access : board.Log())
      if ((access.kind == sim::Access::kOut && access.address != kPciPorts) || access.kind == sim::Access::kMemWrite)
        return true;
    return false;
  }

  std::shared_ptr<sim::SmbusSlave> slave;
  std::shared_ptr<sim::SmbusHost> host;
};

class IntelIchx : public SMBusChipset {
 protected:
  /// Base 0xEFA0, power management at 0x400; the auxiliary control register holds 1. Transfers take no time. The idle
  /// wait's read of the status takes the semaphore, bit 0x40, so that later reads show it.
  IntelIchx() {
    Attach("ich5");
    host->microsecondsPerByte = 0;
    host->Write(board, 0xD, 1, 1);
    board.Ports(0x469, {0x55, 0x66});
    TSMBus::GetInstance();
    board.Log().clear();
  }
  static std::vector<sim::Access> Opening() {
    return {In8(0x469, 0x55), Out8(0x469, 8),  In8(0x46A, 0x66),   Out8(0x46A, 8),
            In8(0xEFAD, 1),   Out8(0xEFAD, 0), Out8(0xEFA0, 0xFF), In8(0xEFA0, 0)};
  }
  static std::vector<sim::Access> Closing() {
    return {Out8(0xEFA0, 0xFF), In8(0xEFA0, 0), Out8(0xEFAD, 1), Out8(0x469, 0x55), Out8(0x46A, 0x66)};
  }
};

TEST_F(IntelIchx, ReadsAByteStepByStep) {
  unsigned char byte = 0;
  EXPECT_EQ(TSMBus::GetInstance()->ReadSmbusByte(kSlave, &byte, 0x10, 1), 1);
  EXPECT_EQ(byte, 0x73);
  const std::vector<sim::Access> element = {Out8(0xEFA0, 0xFF), In8(0xEFA0, 0), Out8(0xEFA4, 0xA1), Out8(0xEFA3, 0x10),
                                            Out8(0xEFA2, 0x48), sim::Sleep(10), In8(0xEFA0, 0x42),  In8(0xEFA5, 0x73)};
  EXPECT_THAT(PortLog(), testing::ElementsAreArray(Opening() + element + Closing()));
}

TEST_F(IntelIchx, WritesAByteStepByStep) {
  EXPECT_EQ(TSMBus::GetInstance()->WriteSmbusByte(kSlave, 0x10, 'x'), 1);
  EXPECT_EQ(slave->registers[0x10], 'x');
  const std::vector<sim::Access> element = {Out8(0xEFA0, 0xFF), In8(0xEFA0, 0),    Out8(0xEFA4, 0xA0),
                                            Out8(0xEFA3, 0x10), Out8(0xEFA5, 'x'), Out8(0xEFA2, 0x48),
                                            sim::Sleep(10),     In8(0xEFA0, 0x42)};
  EXPECT_THAT(PortLog(), testing::ElementsAreArray(Opening() + element + Closing()));
}

TEST_F(IntelIchx, RunsConfigurationWritesInThisOrder) {
  Read();
  constexpr uint32_t kLpcHide = 0x8000F8F0, kHostControl = 0x8000FB40, kCommand = 0x8000FB04, kBase = 0x8000FB20;
  std::vector<uint64_t> written;
  uint64_t latch = 0;
  for (const sim::Access& access : board.PortLog()) {
    if (access.kind != sim::Access::kOut || access.address < kPciPorts || access.address > kPciEnd) continue;
    if (access.address == kPciPorts)
      latch = access.value;
    else
      written.push_back(latch);
  }
  EXPECT_THAT(written, ElementsAre(kLpcHide, kHostControl, kCommand, kHostControl, kBase, kCommand, kLpcHide));
}

TEST_F(IntelIchx, GivesAHostWithoutABaseTheOneAt0xC00) {
  board.Pci(0, 0x1f, 3).Set(0x20, 4, 1);
  EXPECT_EQ(Read(), kRead);
  EXPECT_THAT(PortLog(), testing::Contains(Out8(0xC02, 0x48)));
  EXPECT_EQ(board.Pci(0, 0x1f, 3).Get(0x20, 4), 1u);
}

// --- AMD and ATI: the base through memory or through the port pair ---

struct PowerManagement {
  const char* platform;
  uint64_t memory, ports;
  bool found;
};

class SMBusPowerManagement : public SMBusChipset, public testing::WithParamInterface<PowerManagement> {};

TEST_P(SMBusPowerManagement, GivesTheBase) {
  const PowerManagement& given = GetParam();
  Attach(given.platform, {{"pm_memory", given.memory}, {"pm_ports", given.ports}});
  constexpr uint16_t kIndex = 0xCD6;
  board.Out(kIndex, 1, 0x3E);
  EXPECT_EQ(Read(), given.found ? kRead : 0);
  if (given.ports != 0) {
    EXPECT_EQ(board.In(kIndex, 1), 0x3Eu);
  }
}

constexpr PowerManagement kPowerManagement[] = {
    {"sb800", 1, 0, true},      {"sb800", 0, 1, true},       {"sb800", 0, 0, false},    {"hudson", 0, 1, true},
    {"mullins", 1, 0, true},    {"mullins", 0, 1, true},     {"carrizo", 1, 0, true},   {"carrizo", 0, 1, true},
    {"promontory", 1, 0, true}, {"promontory", 0, 1, false}, {"fch-early", 1, 0, true}, {"fch-early", 0, 1, true},
};
INSTANTIATE_TEST_SUITE_P(Ways, SMBusPowerManagement, testing::ValuesIn(kPowerManagement));

using AmdPromontory = SMBusChipset;

TEST_F(AmdPromontory, LeavesThePortPairAloneFromRevision0x51On) {
  Attach("promontory", {{"pm_memory", 0}});
  EXPECT_EQ(Read(), 0);
  EXPECT_THAT(PortLog(), testing::Each(testing::Field(&sim::Access::address, testing::Ne(0xCD6u))));
}

// --- revisions of one function that differ ---

/// Where the base is looked for first, by the last revision of one way and the first of the next.
struct Generation {
  const char* platform;
  uint8_t revision;
  uint64_t mapped;  ///< bytes up to the end of the register in the page at 0xFED80000; 0: another way
};

class SMBusGeneration : public SMBusChipset, public testing::WithParamInterface<Generation> {};

TEST_P(SMBusGeneration, IsToldByTheRevision) {
  Attach(GetParam().platform);
  board.Pci(0, 0x14, 0).Set(8, 1, GetParam().revision);
  Read();
  uint64_t mapped = 0;
  for (const sim::Access& access : board.Log())
    if (mapped == 0 && access.kind == sim::Access::kMap && access.address == 0xFED80000) mapped = access.value;
  EXPECT_EQ(mapped, GetParam().mapped);
}

// 32 bits at 0x32C, or 16 at 0x300.
INSTANTIATE_TEST_SUITE_P(Fch, SMBusGeneration,
                         testing::Values(Generation{"sb800", 0x3F, 0}, Generation{"sb800", 0x40, 0x330},
                                         Generation{"hudson", 0x3F, 0x330}, Generation{"hudson", 0x40, 0x330},
                                         Generation{"hudson", 0x41, 0x302}));

TEST_F(AmdPromontory, TriesThePortPairUpToRevision0x50) {
  Attach("promontory", {{"pm_memory", 0}});
  board.Pci(0, 0x14, 0).Set(8, 1, 0x50);
  Read();
  EXPECT_THAT(PortLog(), testing::Contains(testing::Field(&sim::Access::address, 0xCD6u)));
}

// --- what firmware left off stays off ---

class SMBusCareful : public SMBusChipset, public testing::WithParamInterface<const char*> {};

TEST_P(SMBusCareful, WritesNothingWhenFirmwareLeftTheHostOff) {
  Attach(GetParam(), {{"enabled", 0}, {"pm_ports", 0}});
  EXPECT_EQ(Read(), 0);
  for (const sim::Access& access : board.Log()) {
    if (access.kind == sim::Access::kOut && access.address != kPciPorts) {
      // The index of the power management registers: put back.
      EXPECT_EQ(access.address, 0xCD6u) << sim::ToString(access);
    }
    EXPECT_NE(access.kind, sim::Access::kMemWrite);
  }
}

INSTANTIATE_TEST_SUITE_P(Chipsets, SMBusCareful,
                         testing::Values("m1573", "m1575", "sis968", "sb800", "hudson", "mullins", "carrizo",
                                         "promontory", "fch-early"));

using Sis968 = SMBusChipset;

TEST_F(Sis968, IsNotUsedWhenNothingAnswersAtItsBase) {
  Attach("sis968");
  board.In(0x80, 1);
  board.Detach(host.get());
  EXPECT_EQ(Read(), 0);
  EXPECT_FALSE(Wrote());
}

using UliM1573 = SMBusChipset;

TEST_F(UliM1573, IsNotUsedWithHalfOfItsEnableBits) {
  for (const uint32_t bits : {0u, 1u, 2u}) {
    Attach("m1573");
    board.Pci(0, 0x1e, 0).Set(0x80, 2, 0x0400 | bits);
    EXPECT_EQ(Read(), 0);
    EXPECT_FALSE(Wrote());
  }
}

// --- single chips ---

class NvidiaBuses : public SMBusChipset, public testing::WithParamInterface<const char*> {};

TEST_P(NvidiaBuses, AreTriedOneAfterTheOther) {
  Attach(GetParam(), {{"second_bus", 1}});
  EXPECT_EQ(Read(), kRead);
  EXPECT_EQ(host->base, 0x1C40);
  EXPECT_THAT(PortLog(), testing::IsSupersetOf({Out8(0x1C00, 7), Out8(0x1C40, 7)}));
}

INSTANTIATE_TEST_SUITE_P(Chipsets, NvidiaBuses, testing::Values("nforce2", "nforce3", "ck804"));

using IntelSch = SMBusChipset;

TEST_F(IntelSch, GetsAClockForTheTransaction) {
  Attach("sch", {{"enabled", 0}});
  EXPECT_EQ(Read(), kRead);
  EXPECT_THAT(PortLog(), testing::IsSupersetOf({sim::Out16(0x1042, 0x52), sim::Out16(0x1042, 0)}));
}

TEST_F(IntelSch, KeepsTheClockThatFirmwareSet) {
  Attach("sch");
  EXPECT_EQ(Read(), kRead);
  EXPECT_THAT(PortLog(), testing::Contains(sim::Out16(0x1042, 0x52)).Times(0));
}

using ServerWorksCsb5 = SMBusChipset;

TEST_F(ServerWorksCsb5, IsGivenTwoMillisecondsAfterAStart) {
  Attach("csb5");
  EXPECT_EQ(Read(), kRead);
  EXPECT_THAT(PortLog(), testing::Contains(sim::Sleep(2000)));
}

using IntelByteBlocks = SMBusChipset;

TEST_F(IntelByteBlocks, AreToldTheirLastByteWhenRead) {
  Attach("ich9");
  slave->registers[0x40] = 3;
  unsigned char bytes[32];
  EXPECT_EQ(TSMBus::GetInstance()->ReadSmbusBlock(kSlave, bytes, 0x40, nullptr), 1);
  std::vector<sim::Access> controls;
  int reads = 0, readsBefore = 0;
  for (const sim::Access& access : PortLog()) {
    reads += access.kind == sim::Access::kIn && access.address == 0xEFA7u;
    if (access == Out8(0xEFA2, 0x34)) readsBefore = reads;
    if (access.kind == sim::Access::kOut && access.address == 0xEFA2u) controls.push_back(access);
  }
  EXPECT_THAT(controls, ElementsAre(Out8(0xEFA2, 0x54), Out8(0xEFA2, 0x34)));
  EXPECT_EQ(reads, 3);
  EXPECT_EQ(readsBefore, 2);
}

TEST_F(IntelByteBlocks, AreNotToldWhenWritten) {
  Attach("ich9");
  unsigned char bytes[] = {1, 2, 3};
  EXPECT_EQ(TSMBus::GetInstance()->WriteSmbusBlock(kSlave, bytes, 0x40, 3), 1);
  EXPECT_THAT(PortLog(), testing::Not(testing::Contains(Out8(0xEFA2, 0x34))));
}

// --- Intel's host in I2C mode: configuration 0x40 bit 2 ---

class IntelHostMode : public SMBusChipset {
 protected:
  /// The log without the reads of configuration space; writes to it as "register <- value".
  std::vector<std::string> HostWrites() const {
    std::vector<std::string> writes;
    uint64_t latch = 0;
    for (const sim::Access& access : board.PortLog()) {
      if (access.kind != sim::Access::kOut) continue;
      if (access.address == kPciPorts)
        latch = access.value;
      else if (access.address > kPciPorts && access.address <= kPciEnd)
        writes.push_back("configuration " + std::to_string(latch & 0xFF) + " <- " + std::to_string(access.value));
      else
        writes.push_back("port " + std::to_string(access.address - 0xEFA0) + " <- " + std::to_string(access.value));
    }
    return writes;
  }
};

TEST_F(IntelHostMode, IsSetAndPutBackWhileTheHostIsOurs) {
  Attach("pch8");
  board.Pci(0, 0x1f, 3).Set(0x40, 1, 5);
  EXPECT_EQ(Read(), kRead);
  EXPECT_THAT(HostWrites(),
              ElementsAre("configuration 64 <- 1", "port 13 <- 2", "port 4 <- 161", "port 3 <- 16", "port 2 <- 72",
                          "port 0 <- 2", "port 13 <- 0", "configuration 64 <- 5", "port 0 <- 64"));
}

TEST_F(IntelHostMode, IsPutBackLastWhereTheHostWasOff) {
  Attach("pch8");
  board.Pci(0, 0x1f, 3).Set(0x40, 1, 4);
  EXPECT_EQ(Read(), kRead);
  EXPECT_THAT(HostWrites(), ElementsAre("configuration 64 <- 1", "configuration 4 <- 1", "port 13 <- 2",
                                        "port 4 <- 161", "port 3 <- 16", "port 2 <- 72", "port 0 <- 2", "port 13 <- 0",
                                        "port 0 <- 64", "configuration 64 <- 4", "configuration 4 <- 1"));
}

using Intel6300Esb = SMBusChipset;

// Its registers 0xf0 to 0xf3 decode the firmware hub and disable functions; taken for a root complex base they would
// lead to memory of others.
TEST_F(Intel6300Esb, IsNotTakenToHaveARootComplexBlock) {
  Attach("6300esb");
  board.Pci(0, 0x1f, 0).Set(0xF0, 4, 0x00080001);
  EXPECT_EQ(Read(), kRead);
  for (const sim::Access& access : board.Log())
    EXPECT_TRUE(access.kind == sim::Access::kIn || access.kind == sim::Access::kOut ||
                access.kind == sim::Access::kSleep)
        << sim::ToString(access);
}

using UliBlocks = SMBusChipset;

TEST_F(UliBlocks, AreStartedOncePerByte) {
  Attach("m1563");
  unsigned char bytes[] = {1, 2, 3};
  EXPECT_EQ(TSMBus::GetInstance()->WriteSmbusBlock(kSlave, bytes, 0x40, 3), 1);
  EXPECT_THAT(PortLog(), testing::Contains(Out8(0x402, 0x68)).Times(3));
}

}  // namespace
