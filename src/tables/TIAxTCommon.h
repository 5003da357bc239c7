// SPDX-License-Identifier: MIT
/// The executor of access commands.
#pragma once

#include "layout/AccessCommand.h"

class TReadWrite;
class TSMBus;

/// Executes access commands, one at a time (layouts: AccessCommand.h).
///
/// `command` points at the caller's pointer to the current command, which is never moved. `direction` is 0 to read
/// (Get) and nonzero to set. `args` are the caller's `count` argument slots; results that name no valid slot go to
/// slot 0. Failures of the hardware are not told: a failed read leaves the value at 0.
class TIAxTCommon {
 public:
  TReadWrite* ReadWrite;
  TSMBus* SMBus;

  static TIAxTCommon* g_Instance;

  static TIAxTCommon* GetInstance();
  /// Also frees the TSMBus singleton.
  static void FreeInstance();

  /// Makes the TSMBus singleton where there is none, which detects the SMBus controller.
  TIAxTCommon();
  TIAxTCommon(const TIAxTCommon&) = delete;
  TIAxTCommon& operator=(const TIAxTCommon&) = delete;

  /// Writes when the direction's write bit is set (always true), else reads when its read bit is, else does nothing
  /// (true).
  int IAxTRW(unsigned char** command, unsigned char direction, unsigned long long* args, unsigned char count);
  /// True when the value was stored in the argument slot that the command names, or equals the expected value.
  int IAxTRead(unsigned char** command, unsigned char direction, unsigned long long* args, unsigned char count);
  void IAxTWrite(unsigned char** command, unsigned char direction, unsigned long long* args, unsigned char count);

  /// Applies the AND, then the OR step that the control word asks for in the direction.
  unsigned long long AndOrProcess(unsigned short control, unsigned long long andMask, unsigned long long orMask,
                                  unsigned char direction, unsigned long long* value);
  /// The access kind: the opcode AND 0x3C.
  unsigned char GetFunInterface(unsigned char opcode);
  /// The access width in bytes: 1, 2, 4 or 8.
  int CommandLength(unsigned char opcode);
  bool CompareGetValue(unsigned int a, unsigned int b, bool force);
};

namespace tables {

/// TIAxTCommon::IAxTRW for a command given by its address.
int RunAccess(const TIAxTCommon& executor, unsigned char* command, unsigned char direction, unsigned long long* args,
              unsigned char count);

}  // namespace tables
