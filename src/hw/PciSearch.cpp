// SPDX-License-Identifier: MIT
// Finds PCI functions by identifier, class or capability.
#include <array>
#include <cstddef>
#include <cstdint>

#include "hw/TReadWrite.h"

namespace {

enum SearchMode : uint8_t { kByDevice = 0, kByClass = 1 };

constexpr uint32_t kAbsent = 0xFFFFFFFF;
constexpr uint16_t kIdRegister = 0x00;
constexpr uint16_t kStatusRegister = 0x06;
constexpr uint16_t kClassRegister = 0x08;
constexpr uint16_t kHeaderTypeRegister = 0x0E;
constexpr uint8_t kMultiFunction = 0x80;
constexpr uint8_t kHasCapabilities = 0x10;
/// The register before the capability pointer, so that "the byte after" is the pointer.
constexpr uint8_t kBeforeCapabilityPointer = 0x33;
/// Registers in which a capability can start: a list that matches nothing in that many steps runs in a circle.
constexpr unsigned kMostCapabilities = 256;

/// What may be ORed into a register value for the wanted one to match: the wildcards. All three class bytes at once
/// are not a wildcard.
constexpr std::array<uint32_t, 3> kDeviceWildcards = {0, 0x0000FFFF, 0xFFFF0000};
constexpr std::array<uint32_t, 7> kClassWildcards = {0, 0x0000FF, 0x00FF00, 0xFF0000, 0x00FFFF, 0xFF00FF, 0xFFFF00};

template <size_t n>
bool MatchesAny(uint32_t wanted, uint32_t value, const std::array<uint32_t, n>& wildcards) {
  for (const uint32_t wildcard : wildcards)
    if (wanted == (value | wildcard)) return true;
  return false;
}

bool Matches(TReadWrite& rw, uint8_t bus, uint8_t device, uint8_t function, uint32_t wanted, uint8_t mode) {
  if (mode == kByDevice)
    return MatchesAny(wanted, rw.PciReadDword(bus, device, function, kIdRegister), kDeviceWildcards);
  if (mode == kByClass)
    return MatchesAny(wanted, rw.PciReadDword(bus, device, function, kClassRegister) >> 8, kClassWildcards);
  return false;
}

constexpr uint32_t Word(unsigned bus, unsigned device, unsigned function) { return (bus * 32 + device) * 8 + function; }

/// Calls `wanted(bus, device, function)` for every function of every present device until it says true.
template <typename Wanted>
uint32_t WalkFunctions(TReadWrite& rw, Wanted wanted) {
  for (unsigned bus = 0; bus < 256; ++bus) {
    for (unsigned device = 0; device < 32; ++device) {
      const auto b = static_cast<uint8_t>(bus);
      const auto d = static_cast<uint8_t>(device);
      if (rw.PciReadDword(b, d, 0, kIdRegister) == kAbsent) continue;
      const unsigned functions = (rw.PciReadByte(b, d, 0, kHeaderTypeRegister) & kMultiFunction) != 0 ? 8 : 1;
      for (unsigned function = 0; function < functions; ++function)
        if (wanted(b, d, static_cast<uint8_t>(function))) return Word(bus, device, function);
    }
  }
  return TReadWrite::kNotFound;
}

/// Walks one capability list, leaving the offset last read in `*offset`; `*index` matches are passed over.
bool FindCapability(TReadWrite& rw, uint8_t bus, uint8_t device, uint8_t function, uint8_t id, uint8_t* offset,
                    uint8_t* index) {
  *offset = kBeforeCapabilityPointer;
  for (unsigned unmatched = 0; unmatched < kMostCapabilities; ++unmatched) {
    *offset = rw.PciReadByte(bus, device, function, static_cast<uint16_t>(*offset + 1));
    if (*offset == 0) return false;
    if (rw.PciReadByte(bus, device, function, *offset) != id) continue;
    if (*index == 0) return true;
    --*index;
    unmatched = 0;
  }
  return false;
}

}  // namespace

unsigned int TReadWrite::FindPci(unsigned int id, unsigned char index, unsigned char mode) {
  // Contract: functions above 0 are compared without being tested for presence.
  return WalkFunctions(*this, [&](uint8_t bus, uint8_t device, uint8_t function) {
    return Matches(*this, bus, device, function, id, mode) && index-- == 0;
  });
}

unsigned int TReadWrite::FindPciDevice(unsigned int id, unsigned char index) { return FindPci(id, index, kByDevice); }
unsigned int TReadWrite::FindPciDevice(unsigned int id) { return FindPci(id, 0, kByDevice); }
unsigned int TReadWrite::FindPciClass(unsigned int classCode, unsigned char index) {
  return FindPci(classCode, index, kByClass);
}
unsigned int TReadWrite::FindPciClass(unsigned int classCode) { return FindPci(classCode, 0, kByClass); }

unsigned int TReadWrite::FindPciCapabilityDevice(unsigned char capabilityId, unsigned char* capabilityOffset,
                                                 unsigned char index) {
  return WalkFunctions(*this, [&](uint8_t bus, uint8_t device, uint8_t function) {
    if (PciReadDword(bus, device, function, kIdRegister) == kAbsent) return false;
    if ((PciReadByte(bus, device, function, kStatusRegister) & kHasCapabilities) == 0) return false;
    return FindCapability(*this, bus, device, function, capabilityId, capabilityOffset, &index);
  });
}

bool TReadWrite::FindPciCheckId(unsigned char bus, unsigned char device, unsigned char function, unsigned int id,
                                unsigned char mode) {
  // All ones that were not read match nothing, not even themselves.
  return Matches(*this, bus, device, function, id, mode) && IoplFailed == 0;
}

void TReadWrite::PciSequence(_PCI_SEQ_INFO*) {}
