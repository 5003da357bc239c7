// SPDX-License-Identifier: MIT
// The record told from identifiers is the one that the library itself detects, on every chipset that can be simulated.
#include "doctor/SmbusRecords.h"

#include <fmt/core.h>
#include <gtest/gtest.h>

#include "FakeMachine.h"
#include "sim/chips/SmbusPlatforms.h"
#include "tests/support/Machine.h"

namespace vynctl::doctor {
namespace {

constexpr unsigned kFunctions = 32 * 8, kIdentifier = 0, kRevision = 8;
constexpr uint32_t kAbsent = 0xFFFFFFFF;

/// A simulated chipset as the library detects it, and the same chipset as the kernel lists it.
class Chipset : support::Machine {
 public:
  Chipset(const sim::SmbusPlatform& platform, uint64_t hidden) {
    board.logging = false;
    sim::SmbusSetup setup;
    setup.options["hidden"] = hidden;
    sim::AttachSmbus(board, platform, setup);
  }
  std::string Detected() const {
    const TSMBusCfg* config = TSMBus::GetInstance()->GetSMBusConfig();
    return config != nullptr ? config->Name.c_str() : "";
  }

  std::string Told() const {
    for (unsigned i = 0; i < kFunctions; ++i) List(static_cast<uint8_t>(i >> 3), static_cast<uint8_t>(i & 7));
    const std::vector<PciFunction> functions = PciFunctions(machine_);
    const SmbusChoice choice = ChooseSmbusRecord(functions);
    return choice.record != nullptr ? choice.record : "";
  }

 private:
  void List(uint8_t device, uint8_t function) const {
    TReadWrite& rw = *TReadWrite::GetInstance();
    const uint32_t identifier = rw.PciReadDword(0, device, function, kIdentifier);
    if (identifier == kAbsent) return;
    const std::string folder = fmt::format("/sys/bus/pci/devices/0000:00:{:02x}.{}/", device, function);
    machine_.Write(folder + "vendor", fmt::format("0x{:04x}\n", identifier & 0xFFFF));
    machine_.Write(folder + "device", fmt::format("0x{:04x}\n", identifier >> 16));
    machine_.Write(folder + "class", fmt::format("0x{:06x}\n", rw.PciReadDword(0, device, function, kRevision) >> 8));
  }

  FakeMachine machine_;
};

void ExpectTheDetectedOnes(uint64_t hidden) {
  for (const sim::SmbusPlatform& platform : sim::SmbusPlatforms()) {
    const Chipset chipset(platform, hidden);
    EXPECT_EQ(chipset.Told(), chipset.Detected()) << platform.name;
  }
}

TEST(SmbusRecords, AreTheDetectedOnes) { ExpectTheDetectedOnes(0); }

TEST(SmbusRecords, AreTheDetectedOnesOfHiddenHosts) { ExpectTheDetectedOnes(1); }

class SmbusHostTest : public testing::Test {
 protected:
  void Function(const std::string& address, const char* vendor, const char* device, const char* code) const {
    const std::string folder = "/sys/bus/pci/devices/" + address + '/';
    machine.Write(folder + "vendor", vendor);
    machine.Write(folder + "device", device);
    machine.Write(folder + "class", code);
  }
  std::string Host() const {
    const std::vector<PciFunction> functions = PciFunctions(machine);
    const SmbusChoice choice = ChooseSmbusRecord(functions);
    return choice.host != nullptr ? choice.host->address : "";
  }

  FakeMachine machine;
};

TEST_F(SmbusHostTest, IsTheFunctionBesideTheBridgeThatTheRecordIsKnownBy) {
  Function("0000:00:1f.0", "0x8086\n", "0x2918\n", "0x060100\n");
  EXPECT_EQ(Host(), "");
  Function("0000:00:1f.3", "0x8086\n", "0x2930\n", "0x0c0500\n");
  EXPECT_EQ(Host(), "0000:00:1f.3");
}

TEST_F(SmbusHostTest, IsTheFirstByClassWhereNoRecordFits) {
  Function("0000:02:00.0", "0x1234\n", "0x5678\n", "0x0c0500\n");
  EXPECT_EQ(Host(), "0000:02:00.0");
}

TEST_F(SmbusHostTest, IsNotOneThatTheConfigurationPortsDoNotReach) {
  Function("0001:00:1f.3", "0x8086\n", "0x2930\n", "0x0c0500\n");
  EXPECT_EQ(Host(), "");
}

}  // namespace
}  // namespace vynctl::doctor
