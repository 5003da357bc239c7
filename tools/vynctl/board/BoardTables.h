// SPDX-License-Identifier: MIT
/// The two firmware tables of the board at hand: their bytes, which of them the library has found, and where they were
/// looked for.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "board/Library.h"
#include "board/Value.h"
#include "boardfile/Description.h"
#include "doctor/Machine.h"

namespace vynctl {

/// Their bytes: of this machine as the kernel shows it, of a simulated board as its description says. Reads on the
/// first question.
class BoardTables {
 public:
  /// @param board  the description of the simulated board; empty: this machine
  /// @param kernelTables  the folder where the kernel shows the machine's tables
  explicit BoardTables(std::string board, std::string kernelTables = "/sys/firmware/acpi/tables");

  /// The bytes of the function description table (IADT) with its header; empty when the board has none or it cannot be
  /// read.
  const std::vector<uint8_t>& Iadt() { return Read().iadt; }
  /// The bytes of the board information table (IAMT), likewise.
  const std::vector<uint8_t>& Iamt() { return Read().iamt; }
  /// What is wrong with the description of a simulated board, "FILE:LINE: ..."; empty when nothing is.
  const std::string& Trouble() { return Read().error; }
  /// Whether a simulated board has the device file of the processor's registers.
  bool HasMsrDevice() { return Read().msrDevice; }

 private:
  const boardfile::Description& Read();

  std::string board_;
  std::string kernelTables_;
  std::optional<boardfile::Description> description_;
};

/// The library has found the table of the board's functions. Touches no hardware.
bool HasIadt(const Library& library);
/// And the table of its chips, the IAMT, as well.
bool HasBothTables(const Library& library);

/// What the machine, or the board description, has of them, in words.
struct TablesSought {
  std::string source;  ///< where the library takes its tables from
  std::string iadt;    ///< where this one was looked for and what was there
  std::string iamt;
  bool hasIadt = false;  ///< this one can be had there
  bool hasIamt = false;
};
TablesSought SeekTables(const doctor::Machine& machine);
TablesSought SeekTables(const LoadOptions& options);

/// The library has found the IAMT, be it without the other. It does not tell of that one alone; then the machine's word
/// counts, unless the library has missed a table that is there.
bool HasIamt(const Library& library, const TablesSought& sought);

/// The bytes of the two tables; empty when they cannot be had.
std::vector<uint8_t> IadtOf(const LoadOptions& options);
std::vector<uint8_t> IamtOf(const LoadOptions& options);

/// The refusal of whatever needs a board, on a machine where the library has found no IADT.
std::optional<Refusal> RefuseWithoutTables(const Library& library, const LoadOptions& options);

}  // namespace vynctl
