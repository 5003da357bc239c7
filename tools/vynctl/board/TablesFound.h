/// Which of the two firmware tables the library has found, and where they were looked for.
#pragma once

#include <string>

#include "Context.h"
#include "doctor/Machine.h"

namespace vynctl {

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
std::optional<Refusal> RefuseWithoutTables(const Library& library, const Options& options);

}  // namespace vynctl
