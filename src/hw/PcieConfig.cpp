// SPDX-License-Identifier: MIT
// The 4096-byte configuration space of PCI Express functions, as whole dwords of the enhanced configuration area.
#include <cstdint>

#include "hw/PciLocation.h"
#include "hw/PortWidth.h"
#include "hw/TReadWrite.h"

namespace {

using hw::Decode;
using hw::Location;

/// Registers below this one can be reached through the ports.
constexpr unsigned kPortRegisters = 0x100;
constexpr unsigned kDwords = 1024;
constexpr unsigned kPageDwords = 64;
constexpr unsigned kExtendedBufferOffset = 256;

bool Translate(TReadWrite& rw, Location at, unsigned reg) {
  return rw.TranslatePciEAddress(at.bus, at.device, at.function, static_cast<uint16_t>(reg));
}

template <typename T>
T ReadThroughPorts(TReadWrite& rw, Location at, unsigned reg) {
  const auto number = static_cast<uint16_t>(reg);
  if constexpr (sizeof(T) == 1) return rw.PciReadByte(at.bus, at.device, at.function, number);
  if constexpr (sizeof(T) == 2) return rw.PciReadWord(at.bus, at.device, at.function, number);
  if constexpr (sizeof(T) == 4) return rw.PciReadDword(at.bus, at.device, at.function, number);
}

template <typename T>
bool WriteThroughPorts(TReadWrite& rw, Location at, unsigned reg, T value) {
  const auto number = static_cast<uint16_t>(reg);
  if constexpr (sizeof(T) == 1) return rw.PciWriteByte(at.bus, at.device, at.function, number, value);
  if constexpr (sizeof(T) == 2) return rw.PciWriteWord(at.bus, at.device, at.function, number, value);
  if constexpr (sizeof(T) == 4) return rw.PciWriteDword(at.bus, at.device, at.function, number, value);
}

/// Where in its dword a value of type T lies, in bits. A word at any nonzero byte offset is the upper half.
template <typename T>
unsigned Shift(const TReadWrite& rw) {
  if constexpr (sizeof(T) == 1) return 8 * rw.PcieByteOffset;
  if constexpr (sizeof(T) == 2) return rw.PcieByteOffset == 0 ? 0 : 16;
  if constexpr (sizeof(T) == 4) return 0;
}

template <typename T>
T Read(TReadWrite& rw, Location at, unsigned reg) {
  if (Translate(rw, at, reg)) return static_cast<T>(rw.MemoryReadDword(rw.PcieAddress) >> Shift<T>(rw));
  return reg < kPortRegisters ? ReadThroughPorts<T>(rw, at, reg) : hw::kAllOnes<T>;
}

/// A part of a dword is replaced by reading, merging and writing the whole one.
template <typename T>
bool WriteThroughMemory(TReadWrite& rw, T value) {
  uint32_t dword = value;
  if constexpr (sizeof(T) < sizeof dword) {
    const unsigned shift = Shift<T>(rw);
    const uint32_t others = ~(uint32_t{hw::kAllOnes<T>} << shift);
    dword = (rw.MemoryReadDword(rw.PcieAddress) & others) | uint32_t{value} << shift;
  }
  return rw.MemoryWriteDword(rw.PcieAddress, dword);
}

/// Contract: registers below 0x100 always go through the ports, even with the base known; without a base the others go
/// to the address of the last translation.
template <typename T>
bool Write(TReadWrite& rw, Location at, unsigned reg, T value) {
  Translate(rw, at, reg);
  return reg < kPortRegisters ? WriteThroughPorts<T>(rw, at, reg, value) : WriteThroughMemory<T>(rw, value);
}

/// Contract: the whole-space operations move the low byte of each dword register.
bool ReadSpace(TReadWrite& rw, Location at, void* buffer, unsigned dwords, const Set<unsigned short, 0, 255>& skip) {
  auto* bytes = static_cast<uint8_t*>(buffer);
  for (unsigned i = 0; i < dwords; ++i)
    bytes[i] = skip.Contains(static_cast<uint16_t>(4 * i)) ? 0 : static_cast<uint8_t>(Read<uint32_t>(rw, at, 4 * i));
  return true;
}

bool ReadExtendedSpace(TReadWrite& rw, Location at, void* buffer) {
  auto* bytes = static_cast<uint8_t*>(buffer) + kExtendedBufferOffset;
  for (unsigned reg = kPortRegisters; reg < 4 * kDwords; reg += 4)
    *bytes++ = static_cast<uint8_t>(Read<uint32_t>(rw, at, reg));
  return true;
}

bool WriteSpace(TReadWrite& rw, Location at, void* buffer, const Set<unsigned short, 0, 255>& skip) {
  const auto* bytes = static_cast<const uint8_t*>(buffer);
  for (unsigned i = 0; i < kDwords; ++i)
    if (!skip.Contains(static_cast<uint16_t>(4 * i)) && !Write<uint32_t>(rw, at, 4 * i, bytes[i])) return false;
  return true;
}

}  // namespace

bool TReadWrite::TranslatePciEAddress(unsigned char bus, unsigned char device, unsigned char function,
                                      unsigned short reg) {
  if (PcieBase == kNoPcieBase) return false;
  PcieByteOffset = reg & 3;
  PcieAddress =
      PcieBase + (uint32_t{bus} << 20) + (uint32_t{device} << 15) + (uint32_t{function} << 12) + (reg & 0xFFCu);
  return true;
}

unsigned char TReadWrite::PciEReadByte(unsigned char bus, unsigned char device, unsigned char function,
                                       unsigned short reg) {
  return Read<uint8_t>(*this, {bus, device, function}, reg);
}
unsigned short TReadWrite::PciEReadWord(unsigned char bus, unsigned char device, unsigned char function,
                                        unsigned short reg) {
  return Read<uint16_t>(*this, {bus, device, function}, reg);
}
unsigned int TReadWrite::PciEReadDword(unsigned char bus, unsigned char device, unsigned char function,
                                       unsigned short reg) {
  return Read<uint32_t>(*this, {bus, device, function}, reg);
}
bool TReadWrite::PciEWriteByte(unsigned char bus, unsigned char device, unsigned char function, unsigned short reg,
                               unsigned char value) {
  return Write<uint8_t>(*this, {bus, device, function}, reg, value);
}
bool TReadWrite::PciEWriteWord(unsigned char bus, unsigned char device, unsigned char function, unsigned short reg,
                               unsigned short value) {
  return Write<uint16_t>(*this, {bus, device, function}, reg, value);
}
bool TReadWrite::PciEWriteDword(unsigned char bus, unsigned char device, unsigned char function, unsigned short reg,
                                unsigned int value) {
  return Write<uint32_t>(*this, {bus, device, function}, reg, value);
}

bool TReadWrite::PciEReadConfig(unsigned char bus, unsigned char device, unsigned char function, void* buffer) {
  return ReadSpace(*this, {bus, device, function}, buffer, kDwords, {});
}
bool TReadWrite::PciEReadPage(unsigned char bus, unsigned char device, unsigned char function, void* buffer) {
  return ReadSpace(*this, {bus, device, function}, buffer, kPageDwords, {});
}
bool TReadWrite::PciEReadConfig100(unsigned char bus, unsigned char device, unsigned char function, void* buffer) {
  return ReadExtendedSpace(*this, {bus, device, function}, buffer);
}
bool TReadWrite::PciEReadConfigEx(unsigned char bus, unsigned char device, unsigned char function, void* buffer,
                                  Set<unsigned short, 0, 255> skip) {
  return ReadSpace(*this, {bus, device, function}, buffer, kDwords, skip);
}
bool TReadWrite::PciEWriteConfig(unsigned char bus, unsigned char device, unsigned char function, void* buffer) {
  return WriteSpace(*this, {bus, device, function}, buffer, {});
}
bool TReadWrite::PciEWriteConfigEx(unsigned char bus, unsigned char device, unsigned char function, void* buffer,
                                   Set<unsigned short, 0, 255> skip) {
  return WriteSpace(*this, {bus, device, function}, buffer, skip);
}

unsigned char TReadWrite::ePciEReadByte(unsigned short bdf, unsigned short reg) {
  return Read<uint8_t>(*this, Decode(bdf), reg);
}
unsigned short TReadWrite::ePciEReadWord(unsigned short bdf, unsigned short reg) {
  return Read<uint16_t>(*this, Decode(bdf), reg);
}
unsigned int TReadWrite::ePciEReadDword(unsigned short bdf, unsigned short reg) {
  return Read<uint32_t>(*this, Decode(bdf), reg);
}
bool TReadWrite::ePciEWriteByte(unsigned short bdf, unsigned short reg, unsigned char value) {
  return Write<uint8_t>(*this, Decode(bdf), reg, value);
}
bool TReadWrite::ePciEWriteWord(unsigned short bdf, unsigned short reg, unsigned short value) {
  return Write<uint16_t>(*this, Decode(bdf), reg, value);
}
bool TReadWrite::ePciEWriteDword(unsigned short bdf, unsigned short reg, unsigned int value) {
  return Write<uint32_t>(*this, Decode(bdf), reg, value);
}
bool TReadWrite::ePciEReadConfig(unsigned short bdf, void* buffer) {
  return ReadSpace(*this, Decode(bdf), buffer, kDwords, {});
}
bool TReadWrite::ePciEReadPage(unsigned short bdf, void* buffer) {
  return ReadSpace(*this, Decode(bdf), buffer, kPageDwords, {});
}
bool TReadWrite::ePciEReadConfig100(unsigned short bdf, void* buffer) {
  return ReadExtendedSpace(*this, Decode(bdf), buffer);
}
bool TReadWrite::ePciEReadConfigEx(unsigned short bdf, void* buffer, Set<unsigned short, 0, 255> skip) {
  return ReadSpace(*this, Decode(bdf), buffer, kDwords, skip);
}
bool TReadWrite::ePciEWriteConfig(unsigned short bdf, void* buffer) {
  return WriteSpace(*this, Decode(bdf), buffer, {});
}
bool TReadWrite::ePciEWriteConfigEx(unsigned short bdf, void* buffer, Set<unsigned short, 0, 255> skip) {
  return WriteSpace(*this, Decode(bdf), buffer, skip);
}
