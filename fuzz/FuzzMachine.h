// SPDX-License-Identifier: MIT
/// The machine of the fuzz targets: it answers every question with bytes of the input, and keeps account.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>

namespace fuzz {

/// Thrown out of a platform call when a run has made more of them than any honest one.
struct Exhausted : std::runtime_error {
  Exhausted() : std::runtime_error("the run has made too many accesses") {}
};

/// Takes values from the front of the input; zeros behind its end.
class Input {
 public:
  explicit Input(std::span<const uint8_t> bytes) : bytes_(bytes) {}
  uint8_t Byte() { return static_cast<uint8_t>(Number(1)); }
  uint32_t Dword() { return static_cast<uint32_t>(Number(4)); }
  bool Flag() { return (Byte() & 1) != 0; }
  std::span<const uint8_t> Bytes(size_t count);
  std::span<const uint8_t> Rest() { return Bytes(bytes_.size()); }
  bool Empty() const { return bytes_.empty(); }

 private:
  uint64_t Number(size_t count);
  std::span<const uint8_t> bytes_;
};

struct Machine {
  std::span<const uint8_t> answers;  ///< what ports, configuration registers and MSRs answer, over and over
  /// Physical memory, repeated over the address space from 0xE0000 on; a root pointer without tables when empty.
  std::span<const uint8_t> memory;
  bool hasController = false;  ///< an SMBus controller that is found at once is there; otherwise no PCI function is
  uint64_t callsLeft = 200000;
  uint64_t bytesLeft = 8u << 20;  ///< of physical memory that can be mapped; once they are used up, mapping fails
};

/// Where the BIOS area, and so `Machine::memory`, begins.
inline constexpr uint64_t kBiosArea = 0xE0000;

/// Makes the first 20 bytes of a root pointer sum to 0, and puts its signature there.
void SealRootPointer(uint8_t* rsdp);

/// Starts a run on a fresh machine: frees the library's singletons and checks that the run before left nothing open.
void Start(const Machine& machine);
/// Ends it the same way.
void Finish();

}  // namespace fuzz
