#pragma once

#include <cstddef>
#include <cstdint>

/// Offsets within the IAMT and its board information record.
namespace iamt {
inline constexpr size_t kRecords = 36;
inline constexpr size_t kTypeOffset = 0, kLengthOffset = 3, kRecordHeaderBytes = 4;
inline constexpr uint8_t kBoardRecordType = 0;
inline constexpr size_t kBoardRecordBytes = 55;     ///< what the library keeps of it
inline constexpr size_t kChipIds[] = {29, 31, 33};  ///< 16 bits each
}  // namespace iamt

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

  /// Keeps the header and the last board information record of a whole table. A record of length 0 or one that does
  /// not fit its own header ends the walk.
  void Fill(const unsigned char* table, uint32_t length);

 private:
  void KeepBoardRecord(const unsigned char* record, int64_t available);
};
