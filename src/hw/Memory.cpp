// SPDX-License-Identifier: MIT
// Physical memory: values, blocks, and the search for bytes.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "hw/DeviceFile.h"
#include "hw/PortWidth.h"
#include "hw/TReadWrite.h"

namespace {

enum AccessWidth : unsigned { kBytes = 0, kWords = 1, kDwords = 2 };

constexpr unsigned kPageBytes = 256;
constexpr uint32_t kSpanBytes = 4096;

template <typename T>
T ReadValue(TReadWrite& rw, uint64_t address) {
  if (!rw.CheckPrivilege()) return hw::kAllOnes<T>;
  const hw::MemoryMapping memory(address, sizeof(T), false);
  return memory.IsMapped() ? *memory.Elements<T>() : hw::kAllOnes<T>;
}

template <typename T>
bool WriteValue(TReadWrite& rw, uint64_t address, T value) {
  if (!rw.CheckPrivilege()) return false;
  const hw::MemoryMapping memory(address, sizeof(T), true);
  if (!memory.IsMapped()) return false;
  *memory.Elements<T>() = value;
  return true;
}

/// Calls `move` for 0 to `count` - 1, eight to a round of the loop.
template <typename Move>
void ForEach(size_t count, Move move) {
  constexpr auto kRound = std::make_index_sequence<8>();
  const auto round = [&]<size_t... k>(size_t first, std::index_sequence<k...>) { (move(first + k), ...); };
  size_t i = 0;
  for (; i + kRound.size() <= count; i += kRound.size()) round(i, kRound);
  for (; i < count; ++i) move(i);
}

/// Each element moves with an access of its own width; the caller's buffer may have any alignment.
template <typename T>
void CopyOut(const hw::MemoryMapping& memory, uint8_t* buffer, unsigned count) {
  const volatile T* elements = memory.Elements<T>();
  ForEach(count / sizeof(T), [=](size_t i) {
    const T value = elements[i];
    std::memcpy(buffer + i * sizeof(T), &value, sizeof(T));
  });
}

template <typename T>
void CopyIn(const hw::MemoryMapping& memory, const uint8_t* buffer, unsigned count) {
  volatile T* elements = memory.Elements<T>();
  ForEach(count / sizeof(T), [=](size_t i) {
    T value;
    std::memcpy(&value, buffer + i * sizeof(T), sizeof(T));
    elements[i] = value;
  });
}

bool ReadBlock(TReadWrite& rw, uint64_t address, void* buffer, unsigned count, unsigned width) {
  if (!rw.CheckPrivilege()) return false;
  const hw::MemoryMapping memory(address, count, false);
  if (!memory.IsMapped()) return false;
  auto* bytes = static_cast<uint8_t*>(buffer);
  if (width == kBytes) CopyOut<uint8_t>(memory, bytes, count);
  if (width == kWords) CopyOut<uint16_t>(memory, bytes, count);
  if (width == kDwords) CopyOut<uint32_t>(memory, bytes, count);
  return true;
}

/// Contract: any other width moves nothing and succeeds.
bool WriteBlock(TReadWrite& rw, uint64_t address, const void* buffer, unsigned count, unsigned width) {
  if (!rw.CheckPrivilege()) return false;
  const hw::MemoryMapping memory(address, count, true);
  if (!memory.IsMapped()) return false;
  const auto* bytes = static_cast<const uint8_t*>(buffer);
  if (width == kBytes) CopyIn<uint8_t>(memory, bytes, count);
  if (width == kWords) CopyIn<uint16_t>(memory, bytes, count);
  if (width == kDwords) CopyIn<uint32_t>(memory, bytes, count);
  return true;
}

/// The state of one search. `remaining` wraps in 32 bits when a step overshoots it, and the scan then goes on through
/// the 4 GiB that follow; a second wrap has nothing new to find and ends it.
struct Search {
  uint32_t remaining;
  uint32_t step;
  uint32_t occurrence;
  const uint8_t* pattern;
  uint32_t patternLength;
  unsigned wraps = 0;

  bool Exhausted() const { return patternLength > remaining || wraps > 1; }

  /// Steps of 1 go on to the next byte that a match can begin with; the number of bytes passed over before it.
  uint32_t Skip(const uint8_t* from, uint64_t candidates) const {
    if (step != 1 || patternLength == 0) return 0;
    const void* next = std::memchr(from, *pattern, candidates);
    if (next == nullptr) return static_cast<uint32_t>(candidates - 1);
    return static_cast<uint32_t>(static_cast<const uint8_t*>(next) - from);
  }

  bool Matches(const uint8_t* at) const {
    return patternLength == 0 || (*at == *pattern && std::memcmp(at, pattern, patternLength) == 0);
  }

  void Advance(uint64_t* address) {
    *address += step;
    if (step > remaining) ++wraps;
    remaining -= step;
  }

  /// Scans one span upwards from `*address`; true when the wanted match lies at `*address`, which is otherwise moved to
  /// where the scan stopped.
  bool Scan(const uint8_t* span, uint32_t chunk, uint64_t* address) {
    uint64_t i = 0;
    do {
      const uint32_t skipped = Skip(span + i, chunk - patternLength - i + 1);
      i += skipped;
      *address += skipped;
      remaining -= skipped;
      if (Matches(span + i)) {
        if (occurrence == 0) return true;
        --occurrence;
      }
      Advance(address);
      i += step;
    } while (i <= chunk - patternLength && wraps <= 1);
    return false;
  }
};

}  // namespace

unsigned char TReadWrite::MemoryReadByte(unsigned long long address) { return ReadValue<uint8_t>(*this, address); }
unsigned short TReadWrite::MemoryReadWord(unsigned long long address) { return ReadValue<uint16_t>(*this, address); }
unsigned int TReadWrite::MemoryReadDword(unsigned long long address) { return ReadValue<uint32_t>(*this, address); }

bool TReadWrite::MemoryWriteByte(unsigned long long address, unsigned char value) {
  return WriteValue<uint8_t>(*this, address, value);
}
bool TReadWrite::MemoryWriteWord(unsigned long long address, unsigned short value) {
  return WriteValue<uint16_t>(*this, address, value);
}
bool TReadWrite::MemoryWriteDword(unsigned long long address, unsigned int value) {
  return WriteValue<uint32_t>(*this, address, value);
}

bool TReadWrite::MemoryReadBlock(unsigned long long address, void* buffer, unsigned int count) {
  return ReadBlock(*this, address, buffer, count, kBytes);
}
bool TReadWrite::MemoryReadBlock(unsigned long long address, void* buffer, unsigned int count, unsigned int width) {
  return ReadBlock(*this, address, buffer, count, width);
}
bool TReadWrite::MemoryWriteBlock(unsigned long long address, void* buffer, unsigned int count) {
  return WriteBlock(*this, address, buffer, count, kBytes);
}
bool TReadWrite::MemoryWriteBlock(unsigned long long address, void* buffer, unsigned int count, unsigned int width) {
  return WriteBlock(*this, address, buffer, count, width);
}

bool TReadWrite::MemoryReadPage(unsigned int address, void* buffer) {
  return ReadBlock(*this, address, buffer, kPageBytes, kBytes);
}
bool TReadWrite::MemoryReadPage(unsigned int address, void* buffer, int width) {
  return ReadBlock(*this, address, buffer, kPageBytes, static_cast<unsigned>(width));
}
bool TReadWrite::MemoryWritePage(unsigned int address, void* buffer) {
  return WriteBlock(*this, address, buffer, kPageBytes, kBytes);
}
bool TReadWrite::MemoryWritePage(unsigned int address, void* buffer, int width) {
  return WriteBlock(*this, address, buffer, kPageBytes, static_cast<unsigned>(width));
}

unsigned long long TReadWrite::MemoryFindData(unsigned long long start, unsigned int length, unsigned int step,
                                              unsigned int occurrence, unsigned char* pattern,
                                              unsigned int patternLength, bool backward) {
  if (!CheckPrivilege()) return kNotFound;
  if (length < patternLength || patternLength > kSpanBytes) return kNotFound;
  Search search{length, std::max(step, 1u), occurrence, pattern, patternLength};
  uint64_t cursor = start;
  for (;;) {
    const uint32_t chunk = std::min(search.remaining, kSpanBytes);
    const uint64_t spanStart = backward ? cursor - chunk : cursor;
    uint8_t span[kSpanBytes];
    // A span that cannot be read is compared all the same, as bytes that no match begins with.
    std::memset(span, patternLength == 0 ? 0 : ~pattern[0], sizeof span);
    MemoryReadBlock(spanStart, span, chunk, kBytes);
    uint64_t address = spanStart;
    if (search.Scan(span, chunk, &address)) return address;
    if (search.Exhausted()) return kNotFound;
    // Contract: backward, spans do not overlap: a match across two of them is passed over.
    cursor = backward ? address - chunk : address;
  }
}
