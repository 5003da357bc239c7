// SPDX-License-Identifier: MIT
/// The BIOS information record, which firmware leaves anywhere in the BIOS area.
#pragma once

#include <cstddef>

namespace layout::bios {

/// Valid when all bytes of the record sum to 0 modulo 256.
inline constexpr size_t kRecordBytes = 64;
inline constexpr char kSignature[] = "$CN1368$";
inline constexpr size_t kSignatureBytes = sizeof kSignature - 1;
inline constexpr size_t kUnused = 8, kModel = 10, kModelBytes = 54;

}  // namespace layout::bios
