// SPDX-License-Identifier: MIT
/// The BIOS information record of the board, and the model name in it.
#pragma once

#include <string>

class TReadWrite;

/// The BIOS information record, as firmware places it in the BIOS area of physical memory. Valid when its bytes sum to
/// 0 modulo 256.
struct _VYNMAR_BIOS_INFO {
  char Signature[8];  ///< "$CN1368$", no terminator
  unsigned char Reserved[2];
  char ModelName[54];  ///< ASCII, terminated by a 0 byte
};
static_assert(sizeof(_VYNMAR_BIOS_INFO) == 64);

/// The board-information object. Its constructor looks for the BIOS information record and prints "Is Core8 ... ???"
/// when there is no valid one.
class TVyn {
 public:
  TVyn();
  virtual ~TVyn();
  TVyn(const TVyn&) = delete;
  TVyn& operator=(const TVyn&) = delete;

  unsigned char BiosInfoFound;  ///< 1 when a valid record was read
  _VYNMAR_BIOS_INFO BiosInfo;   ///< the last candidate read; zero when there was none
  std::string Text1, Text2, Text3, Text4;
  TReadWrite* ReadWrite;

  /// Searches into the caller's record, candidate by candidate; 1 when a valid one was copied, else 0.
  int GetVynmarBiosInfo(_VYNMAR_BIOS_INFO* record);
  /// 1 when the first `length` bytes sum to 0 modulo 256, and for a length of 0.
  int BiosInfoChecksum(_VYNMAR_BIOS_INFO* record, int length);
  void RetrieveSmbiosInformation();
  /// Empty, whatever the argument.
  std::string GetProjectName(std::string name);

  /// At most 54 characters, where a record lacks the terminator.
  std::string ModelName() const;
};
