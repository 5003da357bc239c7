// SPDX-License-Identifier: MIT
// Ports, index/data pairs behind ports, and blocks of both.
#include <cstddef>
#include <cstdint>

#include "hw/PortWidth.h"
#include "hw/TReadWrite.h"

namespace {

template <typename T>
T ReadPort(TReadWrite& rw, uint16_t port) {
  return rw.CheckPrivilege() ? hw::In<T>(port) : hw::kAllOnes<T>;
}

template <typename T>
bool WritePort(TReadWrite& rw, uint16_t port, T value) {
  if (!rw.CheckPrivilege()) return false;
  hw::Out<T>(port, value);
  return true;
}

/// Contract: highest index first; writes go lowest first.
template <typename T>
T ReadIndexed(TReadWrite& rw, uint16_t indexPort, uint16_t dataPort, uint8_t index) {
  if (!rw.CheckPrivilege()) return hw::kAllOnes<T>;
  uint32_t value = 0;
  for (size_t i = sizeof(T); i-- > 0;) {
    platform::Out8(indexPort, static_cast<uint8_t>(index + i));
    value = value << 8 | platform::In8(dataPort);
  }
  return static_cast<T>(value);
}

template <typename T>
bool WriteIndexed(TReadWrite& rw, uint16_t indexPort, uint16_t dataPort, uint8_t index, T value) {
  if (!rw.CheckPrivilege()) return false;
  for (size_t i = 0; i < sizeof(T); ++i) {
    platform::Out8(indexPort, static_cast<uint8_t>(index + i));
    platform::Out8(dataPort, static_cast<uint8_t>(value >> (8 * i)));
  }
  return true;
}

}  // namespace

unsigned char TReadWrite::IoBaseReadByte(unsigned short port) { return ReadPort<uint8_t>(*this, port); }
unsigned short TReadWrite::IoBaseReadWord(unsigned short port) { return ReadPort<uint16_t>(*this, port); }
unsigned int TReadWrite::IoBaseReadDword(unsigned short port) { return ReadPort<uint32_t>(*this, port); }

bool TReadWrite::IoBaseWriteByte(unsigned short port, unsigned char value) {
  return WritePort<uint8_t>(*this, port, value);
}
bool TReadWrite::IoBaseWriteWord(unsigned short port, unsigned short value) {
  return WritePort<uint16_t>(*this, port, value);
}
bool TReadWrite::IoBaseWriteDword(unsigned short port, unsigned int value) {
  return WritePort<uint32_t>(*this, port, value);
}

bool TReadWrite::IoBaseReadBlock(unsigned short port, void* buffer, unsigned int count) {
  if (!CheckPrivilege()) return false;
  auto* bytes = static_cast<uint8_t*>(buffer);
  for (unsigned int i = 0; i < count; ++i) bytes[i] = platform::In8(static_cast<uint16_t>(port + i));
  return true;
}

bool TReadWrite::IoBaseWriteBlock(unsigned short port, void* buffer, unsigned int count) {
  if (!CheckPrivilege()) return false;
  const auto* bytes = static_cast<const uint8_t*>(buffer);
  for (unsigned int i = 0; i < count; ++i) platform::Out8(static_cast<uint16_t>(port + i), bytes[i]);
  return true;
}

unsigned char TReadWrite::IoIndexReadByte(unsigned short indexPort, unsigned short dataPort, unsigned char index) {
  return ReadIndexed<uint8_t>(*this, indexPort, dataPort, index);
}
unsigned short TReadWrite::IoIndexReadWord(unsigned short indexPort, unsigned short dataPort, unsigned char index) {
  return ReadIndexed<uint16_t>(*this, indexPort, dataPort, index);
}
unsigned int TReadWrite::IoIndexReadDword(unsigned short indexPort, unsigned short dataPort, unsigned char index) {
  return ReadIndexed<uint32_t>(*this, indexPort, dataPort, index);
}

bool TReadWrite::IoIndexWriteByte(unsigned short indexPort, unsigned short dataPort, unsigned char index,
                                  unsigned char value) {
  return WriteIndexed<uint8_t>(*this, indexPort, dataPort, index, value);
}
bool TReadWrite::IoIndexWriteWord(unsigned short indexPort, unsigned short dataPort, unsigned char index,
                                  unsigned short value) {
  return WriteIndexed<uint16_t>(*this, indexPort, dataPort, index, value);
}
bool TReadWrite::IoIndexWriteDword(unsigned short indexPort, unsigned short dataPort, unsigned char index,
                                   unsigned int value) {
  return WriteIndexed<uint32_t>(*this, indexPort, dataPort, index, value);
}

bool TReadWrite::IoIndexReadBlock(unsigned short indexPort, unsigned short dataPort, unsigned char startIndex,
                                  void* buffer, unsigned short endIndex) {
  unsigned int n = startIndex;
  if (n >= endIndex) return CheckPrivilege();
  auto* bytes = static_cast<uint8_t*>(buffer);
  do {
    if (!CheckPrivilege()) return false;  // before each byte
    platform::Out8(indexPort, static_cast<uint8_t>(n));
    *bytes++ = platform::In8(dataPort);
  } while (++n < endIndex);
  return true;
}

bool TReadWrite::IoIndexWriteBlock(unsigned short indexPort, unsigned short dataPort, unsigned char startIndex,
                                   void* buffer, unsigned short endIndex) {
  if (!CheckPrivilege()) return false;
  const auto* bytes = static_cast<const uint8_t*>(buffer);
  for (unsigned int n = startIndex; n < endIndex; ++n) {
    platform::Out8(indexPort, static_cast<uint8_t>(n));
    platform::Out8(dataPort, *bytes++);
  }
  return true;
}
