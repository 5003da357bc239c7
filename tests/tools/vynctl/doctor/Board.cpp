// SPDX-License-Identifier: MIT
// Tables and files of machines, written byte by byte.
#include "Board.h"

#include <fstream>
#include <iterator>

namespace vynctl::doctor {
namespace {

constexpr uint32_t kFadt = kRootTable + 0x100, kFacs = kRootTable + 0x300, kDsdt = kRootTable + 0x400;
/// Reads, with the AND mask.
constexpr uint64_t kRead = 0x00A0;

std::string Padded(std::string text, size_t bytes) {
  text.resize(bytes);
  return text;
}

/// Behind the address fields: AND, OR, expected, argument, each of 4 bytes.
std::string Masks(uint32_t mask, uint32_t expected) {
  return Little(mask, 4) + Little(0, 4) + Little(expected, 4) + Little(0, 4);
}

std::string RootPointer() {
  return Summed("RSD PTR " + std::string(1, '\0') + "BOARD " + std::string(1, '\0') + Little(kRootTable, 4), 8);
}

std::string FadtBody() { return Little(kFacs, 4) + Little(kDsdt, 4) + std::string(72, '\0'); }

/// One record of type 0 and 55 bytes, with the chip identifier 94D2 at byte 29.
std::string IamtBody() {
  std::string body(55, '\0');
  body[3] = 55;
  return body.replace(29, 2, Little(0x94D2, 2));
}

std::string BiosRecord() { return Summed(Padded("$CN1368$" + std::string(2, '\0') + "VYN-R900 Reference", 64), 8); }

}  // namespace

std::string IadtRecord(uint8_t type, uint8_t value, const std::string& name, const std::string& body) {
  return Little(type, 1) + Little(0, 1) + Little(value, 1) + Little(27 + body.size(), 4) + Padded(name, 20) + body;
}

std::string IndexCommand(uint32_t indexPort, uint32_t dataPort) {
  const std::string places = Little(indexPort, 4) + Little(dataPort, 4) + Little(0x20, 4);
  return Padded("\x06" + Little(kRead, 2) + places + Masks(0xFF, 0), 36);
}

std::string SmbusCommand(uint8_t slave) {
  return Padded("\x0D" + Little(kRead, 2) + Little(slave, 1) + Little(0, 2) + Little(0xFF, 2), 21);
}

std::string MemoryCommand(uint32_t address) {
  return Padded("\x81" + Little(kRead, 2) + Little(address, 4) + Masks(1, 1), 28);
}

std::string MsrCommand(uint32_t number) {
  return Padded("\xC9" + Little(kRead, 2) + Little(number, 4) + Little(0x7F0000, 8), 35);
}

std::string BoardRecords() {
  return IadtRecord(2, 2, "+12V", "\x0A\x01" + IndexCommand(0x295, 0x296)) +
         IadtRecord(3, 4, "System", SmbusCommand(0x90) + SmbusCommand(0x90)) +
         IadtRecord(15, 1, "", MemoryCommand(0xFED1F410)) +
         IadtRecord(3, 3, "CPU", "\x10\x07" + Padded(MsrCommand(0x19C), 82));
}

Board::Board() {
  Write("/proc/self/status", "Name:\tvynctl\nUid:\t0\t0\t0\t0\nCapEff:\t000001ffffffffff\nSeccomp:\t0\n");
  Write("/proc/self/uid_map", "         0          0 4294967295\n");
  Write("/proc/cpuinfo", "processor\t: 0\nflags\t\t: fpu msr tsc\n");
  Write("/proc/modules", "msr 16384 0 - Live 0x0000000000000000\n");
  Write("/proc/version", "Linux version 6.1.0-30-amd64 (debian-kernel@lists.example.org)\n");
  Write("/proc/sys/kernel/osrelease", "6.1.0-30-amd64\n");
  Write("/proc/ioports", "0000-0cf7 : PCI Bus 0000:00\n  0290-0297 : pnp 00:03\n");
  Write("/proc/iomem", "07fe0000-07ffffff : Reserved\nfed1c000-fed1ffff : Reserved\n");
  Write("/sys/kernel/security/lockdown", "[none] integrity confidentiality\n");
  for (const auto& [function, device, code] :
       {std::array{"1f.0", "0x2918", "0x060100"}, std::array{"1f.3", "0x2930", "0x0c0500"}}) {
    const std::string folder = std::string("/sys/bus/pci/devices/0000:00:") + function;
    Write(folder + "/vendor", "0x8086\n");
    Write(folder + "/device", std::string(device) + '\n');
    Write(folder + "/class", std::string(code) + '\n');
  }
  Write("/dev/cpu/0/msr", "");
  Write("/dev/kmsg", "");
  Write("/run/lock/vynlib.lock", "");
  Poke(kRootPointer, RootPointer());
  Poke(kRecord, BiosRecord());
  Poke(kRootTable, AcpiTable("RSDT", Little(kFadt, 4) + Little(kIadt, 4) + Little(kIamt, 4)));
  Poke(kFadt, AcpiTable("FACP", FadtBody()));
  Poke(kFacs, AcpiTable("FACS", ""));
  Poke(kDsdt, AcpiTable("DSDT", ""));
  SetIadt(AcpiTable("IADT", BoardRecords()));
  Poke(kIamt, AcpiTable("IAMT", IamtBody()));
  Write("/sys/firmware/acpi/tables/IAMT", AcpiTable("IAMT", IamtBody()));
  Poke(kIamt + 0x1000, "end");
}

void Board::SetIadt(const std::string& table) const {
  Poke(kIadt, table);
  Write("/sys/firmware/acpi/tables/IADT", table);
}

void Board::Field(const std::string& file, const std::string& from, const std::string& to) const {
  std::string bytes = Read(file).bytes;
  const size_t at = bytes.find(from);
  ASSERT_NE(at, std::string::npos) << file << " holds no " << from;
  Write(file, bytes.replace(at, from.size(), to));
}

}  // namespace vynctl::doctor
