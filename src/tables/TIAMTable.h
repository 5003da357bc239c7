// SPDX-License-Identifier: MIT
/// The board information table, kept.
#pragma once

#include <cstddef>
#include <cstdint>

/// The board information table: a copy of its header and of its board information record.
class TIAMTable {
 public:
  unsigned char* Header;     ///< 36 bytes, zero until a table was found
  unsigned char* BoardInfo;  ///< 55 bytes, zero until a record was found

  static TIAMTable* g_Instance;

  static TIAMTable* GetInstance();
  static void FreeInstance();

  TIAMTable();
  ~TIAMTable();
  TIAMTable(const TIAMTable&) = delete;
  TIAMTable& operator=(const TIAMTable&) = delete;

  /// Keeps the header and the last board information record of a whole table. The walk ends behind a
  /// record of length 0 and where no record header fits.
  void Fill(const unsigned char* table, uint32_t length);
};
