// SPDX-License-Identifier: MIT
/// Transfers on the SMBus by the scripts of the controller that the board has.
#pragma once

#include <array>
#include <memory>

#include "script/ScriptCache.h"
#include "script/TInterpreter.h"
#include "smbus/TSMBusCfg.h"

struct SMBusProtocol;

/// What TSMBus holds besides the fields of the chosen record.
class TSMBusHost {
 public:
  virtual ~TSMBusHost() = default;

  TSMBusCfg* Config = nullptr;                ///< the chosen record, in the registry; null without a controller
  std::unique_ptr<TInterpreter> Interpreter;  ///< that of the last transaction
  int Value = -1;
};

/// The SMBus host controller of this machine: which one it is, and transfers to and from the devices behind it.
///
/// Slave addresses are bytes as they go over the wire (0xD2, not 0x69); bit 0 is set to read and cleared to write,
/// whatever the caller passes. Every transfer returns 1, or 0 when it failed: no controller, host not idle, no answer,
/// an error status. Data read before a failure stays in the buffer.
///
/// One transaction, on an interpreter of its own: DetectScript, EnableScript, a base script; WaitIdleScript, and
/// RestoreScript with result 0 when the host is not idle; the transfers; WaitIdleScript, RestoreScript. A form without
/// `baseScript` runs a transaction with each base script of the record that is not empty, in order, until one succeeds.
/// Results of scripts are compared by their low 8 bits (0xFF when a script yields none), the one of detection by
/// all 32.
///
/// The fields of the chosen record are copies, all empty or 0 without a controller.
///
/// Not for use by several threads at once.
class TSMBus : public TSMBusHost, public TSMBusCfg {
 public:
  static constexpr int kBlockBytes = 32;  ///< the most a block carries

  static TSMBus* g_Instance;

  /// The instance, created on first use.
  static TSMBus* GetInstance();
  /// Destroys the instance, if there is one.
  static void FreeInstance();

  /// Detects at once: whoever makes the instance first, as the executor does in VynLibDllInit, runs the detection.
  TSMBus();

  /// Takes the first record of the registry, in its order, whose DetectScript gives 0. None without I/O privilege.
  void DetectSMBus();
  TSMBusCfg* GetSMBusConfig() { return Config; }
  unsigned char GetClockGenAddress() { return ClockGenAddress; }

  // --- bytes: `count` registers from `command` (default 0) on, one byte each ---
  //
  // For each register: WaitIdleScript; address; command; when writing DataWritePrefix; ByteReadStartScript or
  // ByteWriteStartScript; ByteWaitScript. A wait result equal to a nonzero RetryValue runs RetryScript and begins the
  // register again, without a limit; one with a bit of ErrorMask runs WaitIdleScript and fails. When reading,
  // ByteReadScript. A count of 0 or less moves nothing and succeeds when the host is idle.

  int ReadSmbusByte(unsigned char address, unsigned char* buffer, unsigned char command, int count,
                    VynString baseScript);
  int ReadSmbusByte(unsigned char address, unsigned char* buffer, unsigned char command, int count);
  int ReadSmbusByte(unsigned char address, unsigned char* buffer, int count);
  int WriteSmbusByte(unsigned char address, unsigned char* buffer, unsigned char command, int count,
                     VynString baseScript);
  int WriteSmbusByte(unsigned char address, unsigned char* buffer, unsigned char command, int count);
  int WriteSmbusByte(unsigned char address, unsigned char* buffer, int count);
  int WriteSmbusByte(unsigned char address, unsigned char command, char value);

  // --- words: as bytes, with the word scripts; `count` words of two bytes, the low byte first ---
  //
  // The command goes up by 1 from word to word. Writing runs WordWriteLowPrefix, then WordWriteHighPrefix before the
  // start; reading runs WordReadLowScript, then WordReadHighScript after the wait.

  int ReadSmbusWord(unsigned char address, unsigned char* buffer, unsigned char command, int count,
                    VynString baseScript);
  int ReadSmbusWord(unsigned char address, unsigned char* buffer, unsigned char command, int count);
  int ReadSmbusWord(unsigned char address, unsigned char* buffer, int count);
  int WriteSmbusWord(unsigned char address, unsigned char* buffer, unsigned char command, int count,
                     VynString baseScript);
  int WriteSmbusWord(unsigned char address, unsigned char* buffer, unsigned char command, int count);
  int WriteSmbusWord(unsigned char address, unsigned char* buffer, int count);
  int WriteSmbusWord(unsigned char address, unsigned char command, unsigned short value);

  // --- blocks of 1 to 32 bytes at `command` (default 0), each in one transfer (SMBusBlock.cpp) ---
  //
  // BlockMode is the number of bytes the controller moves per handshake; with 0 it takes the whole block at once.
  // Read: WaitIdleScript; address; command; BlockReadStartScript; BlockWaitScript; DataReadPrefix as it stands, for the
  // byte count, which fails when it is 0 or above 32; BlockSetupScript; for each byte BlockReadScript, BlockStepScript,
  // and after each BlockMode bytes, while bytes remain, BlockNextScript.
  // Write: WaitIdleScript; address; command; ByteWritePrefix with the byte count; BlockSetupScript; for each byte
  // BlockWritePrefix, BlockStepScript; BlockWriteStartScript and BlockWaitScript after the first BlockMode bytes (or
  // after all), BlockNextScript after each BlockMode more; with a BlockMode other than 0 one BlockNextScript at the
  // end. A wait or handshake fails on a bit of ErrorMask. A handshake and, unless BlockMode is 0, the wait fail on 0 as
  // well (the host stopped or never came); only the handshake at the end of a write may give 0. A failure runs
  // WaitIdleScript once more. There is no retry.

  /// @param buffer  32 bytes        @param count  receives the bytes of the block, 0 on failure; may be null
  int ReadSmbusBlock(unsigned char address, unsigned char* buffer, unsigned char command, int* count,
                     VynString baseScript);
  int ReadSmbusBlock(unsigned char address, unsigned char* buffer, unsigned char command, int* count);
  int ReadSmbusBlock(unsigned char address, unsigned char* buffer, int* count);
  int ReadSmbusBlock(unsigned char address, unsigned char* buffer, unsigned char command);
  int ReadSmbusBlock(unsigned char address, unsigned char* buffer);
  /// A count below 1 or above 32 fails without an access. Without a count all 32 bytes are written.
  int WriteSmbusBlock(unsigned char address, unsigned char* buffer, unsigned char command, int count,
                      VynString baseScript);
  int WriteSmbusBlock(unsigned char address, unsigned char* buffer, unsigned char command, int count);
  int WriteSmbusBlock(unsigned char address, unsigned char* buffer, int count);
  int WriteSmbusBlock(unsigned char address, unsigned char* buffer);

  // --- command-style transfers: all `count` bytes or words at the same command (SMBusBlock.cpp) ---

  int ReadSmbusByteCmd(unsigned char address, unsigned char command, unsigned char* buffer, int count);
  int WriteSmbusByteCmd(unsigned char address, unsigned char command, unsigned char* buffer, int count);
  int ReadSmbusWordCmd(unsigned char address, unsigned char command, unsigned char* buffer, int count);
  int WriteSmbusWordCmd(unsigned char address, unsigned char command, unsigned char* buffer, int count);
  /// Writes the byte `value` at the command first, in the same transaction; then `count` bytes.
  int ReadSmbusCmd(unsigned char address, unsigned char command, unsigned char value, unsigned char* buffer, int count);
  int WriteSmbusCmd(unsigned char address, unsigned char command, unsigned char value, unsigned char* buffer,
                    int count);

 private:
  /// `count` elements at `command`, `command` + `step` and so on.
  struct Span {
    unsigned char address;
    unsigned char* buffer;
    unsigned char command;
    int count;
    int step;
  };
  enum class Moved { kDone, kAgain, kFailed };

  void Run(const VynString& script);
  unsigned char RunForResult(const VynString& script);
  void RunWith(const VynString& prefix, unsigned int value);
  bool Idle();
  bool Failed();
  void Select(unsigned char address, bool read, unsigned int command);
  /// One transaction around `transfers()`, whose outcome is the result. The controller is put back on every way out, an
  /// exception for want of memory included.
  template <typename Transfers>
  int Transact(const VynString& baseScript, Transfers transfers) {
    const Ending ending(this);
    return Begin(baseScript) && transfers() ? 1 : 0;
  }
  /// A transaction up to its transfers; false when the host is not idle.
  bool Begin(const VynString& baseScript);
  void End() noexcept;
  class Ending {
   public:
    explicit Ending(TSMBus* bus) : bus_(bus) {}
    ~Ending() { bus_->End(); }
    Ending(const Ending&) = delete;
    Ending& operator=(const Ending&) = delete;

   private:
    TSMBus* bus_;
  };
  std::array<const VynString*, 4> BaseScripts() const {
    return {&BaseScript1, &BaseScript2, &BaseScript3, &BaseScript4};
  }

  Moved MoveElement(const SMBusProtocol& protocol, unsigned char address, unsigned int command, unsigned char* data);
  bool Move(const SMBusProtocol& protocol, const Span& span);
  int MoveThrough(const SMBusProtocol& protocol, const Span& span, const VynString& baseScript);
  int MoveAnywhere(const SMBusProtocol& protocol, const Span& span);
  int SelectAndMove(const SMBusProtocol& protocol, const Span& span, unsigned char value);

  bool Handshake(const VynString& script, bool mayEnd);
  bool WindowEnds(int bytes) const;
  bool ReceiveBlock(unsigned char address, unsigned char* buffer, unsigned char command, int* count);
  bool SendBlock(unsigned char address, const unsigned char* buffer, unsigned char command, int count);
  void FillWindow(const unsigned char* buffer, int* sent, int count);

  script::ScriptCache scripts_;
  enum class Stage { kNothingDone, kEnabled, kTransferring } stage_ = Stage::kNothingDone;
};
