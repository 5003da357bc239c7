// SPDX-License-Identifier: MIT
/// The board information table (IAMT): its records, and which I/O chips the board information record names.
#pragma once

#include <cstddef>
#include <cstdint>

namespace layout::iamt {

inline constexpr char kSignature[] = "IAMT";
inline constexpr size_t kRecords = 36;
/// Offsets in every record, and the bytes up to and including its length.
inline constexpr size_t kType = 0, kLength = 3, kLengthEnd = 4;
inline constexpr uint8_t kBoardRecordType = 0;
inline constexpr size_t kBoardRecordBytes = 55;     ///< what the library keeps of a board information record
inline constexpr size_t kChipIds[] = {29, 31, 33};  ///< 16 bits each
inline constexpr size_t kChipIdsEnd = 35;

}  // namespace layout::iamt
