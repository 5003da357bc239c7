// SPDX-License-Identifier: MIT
/// Physical memory with the firmware's tables in it, on kernels that hide the real ones and on firmware that leaves no
/// root pointer below 1 MiB.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "hw/KernelTables.h"
#include "layout/AcpiLayout.h"

namespace platform {

/// Maps "/dev/mem" for reading, as it is. Where the search for firmware tables cannot succeed on it, the kernel's
/// copies of the tables appear in private memory in its stead:
///
///   - once a root table or table that the root pointer leads to was refused, at the addresses that were refused;
///   - once the BIOS area was read and holds no sound root pointer, at addresses in System RAM, with a root pointer in
///     free bytes of the BIOS area that leads there.
///
/// Nothing is looked at before that, and nothing is served unless one of the two vendor tables is among the copies. The
/// files are read once and forgotten by Forget(). Not for overlapping calls.
class FirmwareMemory {
 public:
  /// As platform::Map() for reading.
  void* Map(int descriptor, uint64_t offset, size_t length);
  void Forget() { *this = FirmwareMemory(); }

 private:
  /// Addresses from `begin` up to, without, `end`.
  struct Range {
    uint64_t begin, end;
  };
  enum class Place {
    kOverMemory,  ///< shows through what is mapped there
    kInvented,    ///< at an address that this class has made up
    kRefused,     ///< where "/dev/mem" refuses the real bytes
  };
  struct Patch {
    uint64_t address;
    std::vector<uint8_t> bytes;
    Place place;
    std::string signature = {};  ///< of a table
  };
  /// An address that firmware gives a table, and the signature that follows from its role: "FACS", "DSDT" or "".
  struct Named {
    uint32_t address;
    std::string signature;
  };
  enum class RootPointer { kUnknown, kSound, kMissing };

  void LookForRootPointer(int descriptor, const uint8_t* memory, Range asked);
  void ServeWithoutRootPointer(int descriptor);
  bool ServeRefused(int descriptor, Range asked);
  void LearnNamedTables(int descriptor);
  void ServeRefusedTables(int descriptor);
  uint32_t ServeAllTables(std::vector<KernelTable> tables, uint32_t rootTable);
  static uint32_t Invent(std::vector<KernelTable> tables, std::vector<Patch>* served);
  void ServeTables(std::vector<Patch> tables);

  bool Serves(Range asked, Place place) const;
  bool ShowsThrough(Range asked) const;
  void* Compose(Range asked, const uint8_t* memory) const;

  RootPointer rootPointer_ = RootPointer::kUnknown;
  uint64_t searchedTo_ = layout::acpi::kBiosArea;  ///< no root pointer below this address of the BIOS area
  uint32_t rootTable_ = 0;                         ///< address in the sound root pointer
  bool learnt_ = false;                            ///< whether `named_` holds what the root table leads to
  bool looked_ = false;                            ///< whether the copies were read after a refusal
  std::vector<Named> named_;
  std::vector<Patch> patches_;
};

}  // namespace platform
