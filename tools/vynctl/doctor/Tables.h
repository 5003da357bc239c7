// SPDX-License-Identifier: MIT
/// The firmware's tables and records: in memory, as the library reads them, and as the kernel hands them out.
#pragma once

#include <cstdint>
#include <optional>

#include "doctor/Finding.h"
#include "doctor/Machine.h"
#include "doctor/Privilege.h"
#include "layout/BoardRecord.h"
#include "layout/RecordLayout.h"

namespace vynctl::doctor {

/// Where the library takes a table from.
enum class Source { kNone, kMemory, kKernel };

/// One of the two tables, from both sides.
struct FirmwareTable {
  const char* signature = "";
  std::optional<uint32_t> address = {};  ///< physical, where a root table that can be read leads to it
  std::string memory = {};               ///< its bytes there; empty when they cannot be had
  std::string kernel = {};               ///< the kernel's copy; empty when it cannot be had
  int kernelError = 0;                   ///< why it cannot
  Source source = Source::kNone;

  /// The bytes that the library works on; empty when it finds none.
  const std::string& Used() const;
};

struct Tables {
  int deviceError = 0;  ///< of opening /dev/mem for reading
  int writeError = 0;   ///< of opening it for writing as well, which registers in memory need
  int areaError = 0;    ///< of mapping the BIOS area below 1 MiB
  /// /dev/mem shows the BIOS area.
  bool AreaSeen() const { return deviceError == 0 && areaError == 0; }

  std::optional<uint32_t> pointer;  ///< where the first signature of a root pointer stands
  bool pointerSums = false;         ///< its 20 bytes sum to 0
  uint32_t rootTable = 0;           ///< physical address of the RSDT in it; 0 for none
  bool soundBehind = false;         ///< a sound root pointer stands behind one that is not
  bool PointerSound() const { return pointer.has_value() && pointerSums && rootTable != 0; }

  size_t pages = 0;           ///< in which the root table and the tables lie
  uint64_t firstRefused = 0;  ///< physical address of the first table that begins in one of those
  int refusal = 0;            ///< its error number; 0 when every page maps

  /// The walk over the tables in memory met nothing that cannot be read.
  bool Walked() const { return AreaSeen() && PointerSound() && refusal == 0; }

  bool kernelLists = false;  ///< the kernel shows its copies
  FirmwareTable iadt{.signature = layout::iadt::kSignature}, iamt{.signature = layout::iamt::kSignature};
  /// The library works on a copy of the kernel's.
  bool UsesCopies() const { return iadt.source == Source::kKernel || iamt.source == Source::kKernel; }

  std::optional<uint32_t> recordAddress;  ///< of the BIOS information record, sound or not
  std::string record;                     ///< its 64 bytes; empty when there is no sound one
  /// The model in the BIOS information record, printable ASCII; empty without one.
  std::string Model() const;
};

Tables LookAtTables(const Machine& machine);
/// What /dev/mem lets through.
Findings JudgeMemory(const Tables& tables, const Privilege& privilege);
/// What firmware left, and which of it the library finds.
Findings JudgeTables(const Tables& tables, const Privilege& privilege);

}  // namespace vynctl::doctor
