// SPDX-License-Identifier: MIT
// PCI configuration mechanism #1: the address goes to port 0xCF8, the data moves through 0xCFC + (register AND 3).
#include <cstdint>

#include "hw/PciLocation.h"
#include "hw/PortWidth.h"
#include "hw/TReadWrite.h"

namespace {

using hw::Decode;
using hw::Location;

constexpr uint16_t kAddressPort = 0xCF8;
constexpr uint16_t kDataPort = 0xCFC;
constexpr uint32_t kEnable = 0x80000000;
/// Register bits 8-11 travel in address bits 24-27, for chipsets that honour them.
constexpr uint32_t kExtendedRegisterBits = 0x0F000000;
constexpr unsigned kHeaderDwords = 64;

/// Composes the address and the data port, into the scratch fields.
void Translate(TReadWrite& rw, Location at, uint16_t reg) {
  // Contract: added, not ORed, and unmasked: a device above 31 or a function above 7 carries into its neighbour.
  rw.PciAddress = kEnable + (uint32_t{at.bus} << 16) + (uint32_t{at.device} << 11) + (uint32_t{at.function} << 8) +
                  (reg & 0xFCu) + (uint32_t{reg} << 16 & kExtendedRegisterBits);
  rw.PciDataPort = static_cast<uint16_t>(kDataPort + (reg & 3));
}

uint16_t Address(TReadWrite& rw, Location at, uint16_t reg) {
  Translate(rw, at, reg);
  platform::Out32(kAddressPort, rw.PciAddress);
  return rw.PciDataPort;
}

/// Contract: the width is not reconciled with the alignment: a word at register 3 is read at port 0xCFF.
template <typename T>
T Read(TReadWrite& rw, Location at, uint16_t reg) {
  return rw.CheckPrivilege() ? hw::In<T>(Address(rw, at, reg)) : hw::kAllOnes<T>;
}

template <typename T>
bool Write(TReadWrite& rw, Location at, uint16_t reg, T value) {
  if (!rw.CheckPrivilege()) return false;
  hw::Out<T>(Address(rw, at, reg), value);
  return true;
}

/// Contract: the whole-header operations move one byte per dword register. Unprivileged entries read as 0xFF.
bool ReadHeader(TReadWrite& rw, Location at, void* buffer, const Set<unsigned char, 0, 255>& skip) {
  auto* bytes = static_cast<uint8_t*>(buffer);
  for (unsigned i = 0; i < kHeaderDwords; ++i) {
    const auto reg = static_cast<uint8_t>(4 * i);
    bytes[i] = skip.Contains(reg) ? 0 : static_cast<uint8_t>(Read<uint32_t>(rw, at, reg));
  }
  return true;
}

bool WriteHeader(TReadWrite& rw, Location at, void* buffer, const Set<unsigned char, 0, 255>& skip) {
  const auto* bytes = static_cast<const uint8_t*>(buffer);
  for (unsigned i = 0; i < kHeaderDwords; ++i) {
    const auto reg = static_cast<uint8_t>(4 * i);
    if (!skip.Contains(reg) && !Write<uint32_t>(rw, at, reg, bytes[i])) return false;
  }
  return true;
}

bool ReadBlock(TReadWrite& rw, Location at, uint16_t start, void* buffer, uint16_t count) {
  if (!rw.CheckPrivilege()) return false;
  auto* bytes = static_cast<uint8_t*>(buffer);
  for (unsigned i = 0; i < count; ++i) bytes[i] = Read<uint8_t>(rw, at, static_cast<uint16_t>(start + i));
  return true;
}

bool WriteBlock(TReadWrite& rw, Location at, uint16_t start, void* buffer, uint16_t count) {
  if (!rw.CheckPrivilege()) return false;
  const auto* bytes = static_cast<const uint8_t*>(buffer);
  for (unsigned i = 0; i < count; ++i) Write<uint8_t>(rw, at, static_cast<uint16_t>(start + i), bytes[i]);
  return true;
}

}  // namespace

unsigned int TReadWrite::TranslatePciAddress(unsigned char bus, unsigned char device, unsigned char function,
                                             unsigned short reg) {
  Translate(*this, {bus, device, function}, reg);
  return PciAddress;
}

unsigned int TReadWrite::TranslatePciAddress(unsigned char bus, unsigned char device, unsigned char function,
                                             unsigned short reg, unsigned int* address, unsigned short* port) {
  TranslatePciAddress(bus, device, function, reg);
  *address = PciAddress;
  *port = PciDataPort;
  return PciAddress;
}

unsigned char TReadWrite::PciReadByte(unsigned char bus, unsigned char device, unsigned char function,
                                      unsigned short reg) {
  return Read<uint8_t>(*this, {bus, device, function}, reg);
}
unsigned short TReadWrite::PciReadWord(unsigned char bus, unsigned char device, unsigned char function,
                                       unsigned short reg) {
  return Read<uint16_t>(*this, {bus, device, function}, reg);
}
unsigned int TReadWrite::PciReadDword(unsigned char bus, unsigned char device, unsigned char function,
                                      unsigned short reg) {
  return Read<uint32_t>(*this, {bus, device, function}, reg);
}

bool TReadWrite::PciWriteByte(unsigned char bus, unsigned char device, unsigned char function, unsigned short reg,
                              unsigned char value) {
  return Write<uint8_t>(*this, {bus, device, function}, reg, value);
}
bool TReadWrite::PciWriteWord(unsigned char bus, unsigned char device, unsigned char function, unsigned short reg,
                              unsigned short value) {
  return Write<uint16_t>(*this, {bus, device, function}, reg, value);
}
bool TReadWrite::PciWriteDword(unsigned char bus, unsigned char device, unsigned char function, unsigned short reg,
                               unsigned int value) {
  return Write<uint32_t>(*this, {bus, device, function}, reg, value);
}

bool TReadWrite::PciReadConfig(unsigned char bus, unsigned char device, unsigned char function, void* buffer) {
  return ReadHeader(*this, {bus, device, function}, buffer, {});
}
bool TReadWrite::PciWriteConfig(unsigned char bus, unsigned char device, unsigned char function, void* buffer) {
  return WriteHeader(*this, {bus, device, function}, buffer, {});
}
bool TReadWrite::PciReadConfigEx(unsigned char bus, unsigned char device, unsigned char function, void* buffer,
                                 Set<unsigned char, 0, 255> skip) {
  return ReadHeader(*this, {bus, device, function}, buffer, skip);
}
bool TReadWrite::PciWriteConfigEx(unsigned char bus, unsigned char device, unsigned char function, void* buffer,
                                  Set<unsigned char, 0, 255> skip) {
  return WriteHeader(*this, {bus, device, function}, buffer, skip);
}
bool TReadWrite::PciReadBlock(unsigned char bus, unsigned char device, unsigned char function, unsigned short start,
                              void* buffer, unsigned short count) {
  return ReadBlock(*this, {bus, device, function}, start, buffer, count);
}
bool TReadWrite::PciWriteBlock(unsigned char bus, unsigned char device, unsigned char function, unsigned short start,
                               void* buffer, unsigned short count) {
  return WriteBlock(*this, {bus, device, function}, start, buffer, count);
}

unsigned char TReadWrite::ePciReadByte(unsigned short bdf, unsigned short reg) {
  return Read<uint8_t>(*this, Decode(bdf), reg);
}
unsigned short TReadWrite::ePciReadWord(unsigned short bdf, unsigned short reg) {
  return Read<uint16_t>(*this, Decode(bdf), reg);
}
unsigned int TReadWrite::ePciReadDword(unsigned short bdf, unsigned short reg) {
  return Read<uint32_t>(*this, Decode(bdf), reg);
}
bool TReadWrite::ePciWriteByte(unsigned short bdf, unsigned short reg, unsigned char value) {
  return Write<uint8_t>(*this, Decode(bdf), reg, value);
}
bool TReadWrite::ePciWriteWord(unsigned short bdf, unsigned short reg, unsigned short value) {
  return Write<uint16_t>(*this, Decode(bdf), reg, value);
}
bool TReadWrite::ePciWriteDword(unsigned short bdf, unsigned short reg, unsigned int value) {
  return Write<uint32_t>(*this, Decode(bdf), reg, value);
}
bool TReadWrite::ePciReadConfig(unsigned short bdf, void* buffer) { return ReadHeader(*this, Decode(bdf), buffer, {}); }
bool TReadWrite::ePciWriteConfig(unsigned short bdf, void* buffer) {
  return WriteHeader(*this, Decode(bdf), buffer, {});
}
bool TReadWrite::ePciReadConfigEx(unsigned short bdf, void* buffer, Set<unsigned char, 0, 255> skip) {
  return ReadHeader(*this, Decode(bdf), buffer, skip);
}
bool TReadWrite::ePciWriteConfigEx(unsigned short bdf, void* buffer, Set<unsigned char, 0, 255> skip) {
  return WriteHeader(*this, Decode(bdf), buffer, skip);
}
bool TReadWrite::ePciReadBlock(unsigned short bdf, unsigned short start, void* buffer, unsigned short count) {
  return ReadBlock(*this, Decode(bdf), start, buffer, count);
}
bool TReadWrite::ePciWriteBlock(unsigned short bdf, unsigned short start, void* buffer, unsigned short count) {
  return WriteBlock(*this, Decode(bdf), start, buffer, count);
}
