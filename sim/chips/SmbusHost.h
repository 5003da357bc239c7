// SPDX-License-Identifier: MIT
/// What the SMBus host controller models share: the bus with its devices, the time a transfer takes, what can go wrong,
/// and other users. Each register family is a class of its own behind a Make function.
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "sim/Board.h"
#include "sim/chips/SmbusSlave.h"

namespace sim {

inline constexpr unsigned kSmbusBlockBytes = 32;

/// One transfer as it goes over the wire. A block in a slave is its byte count followed by its bytes.
struct SmbusTransfer {
  enum Kind { kQuick, kByte, kByteData, kWordData, kBlock };
  Kind kind = kQuick;
  bool read = false;
  uint8_t address = 0;  ///< bit 0 is ignored
  uint8_t command = 0;
  std::vector<uint8_t> data;  ///< to write, or what was read: 1 byte, 2 for a word, 1 to 32 for a block
  uint8_t count = 0;          ///< of a block that was read, as the slave gave it
};

/// The protocol numbers of most families; process calls and what has no number count as quick commands.
inline constexpr unsigned kSmbusProtocolMask = 7;
constexpr SmbusTransfer::Kind SmbusProtocol(unsigned number) {
  constexpr SmbusTransfer::Kind kKinds[kSmbusProtocolMask + 1] = {SmbusTransfer::kQuick,    SmbusTransfer::kByte,
                                                                  SmbusTransfer::kByteData, SmbusTransfer::kWordData,
                                                                  SmbusTransfer::kQuick,    SmbusTransfer::kBlock};
  return kKinds[number & kSmbusProtocolMask];
}

/// Where a family keeps what every driver of it needs.
struct SmbusLayout {
  struct Bits {
    unsigned offset;
    uint8_t mask;
  };
  unsigned status, control, address, command, data;
  uint8_t startByteRead;  ///< control
  Bits busy;              ///< while a transfer runs
  uint8_t done, errors;   ///< status; written as 1 to clear
  uint8_t next = 0;       ///< status: clearing it moves a block on
  uint8_t inUse = 0;      ///< status: semaphore that reading takes and writing 1 gives back; 0: none
  uint64_t settling = 0;  ///< microseconds from a start during which the status says nothing
};

/// A register that the program under test wrote.
struct SmbusWrite {
  uint64_t at;  ///< microseconds
  unsigned offset;
  uint8_t value;
  bool running;  ///< a transfer was on the wires
  bool foreign;  ///< another user owned the host, or the transfer was another's
};

/// The transfers of the program under test, added up.
struct SmbusTiming {
  uint64_t wire = 0;      ///< microseconds on the wires
  uint64_t late = 0;      ///< microseconds from the end of a transfer to the next look at the host
  uint64_t accesses = 0;  ///< port accesses, whatever the port, while they were on the wires
};

class SmbusHost : public PortDevice {
 public:
  enum class Outcome { kDone, kNoAnswer, kCollision, kFailed };

  explicit SmbusHost(const SmbusSetup& setup) : slaves(setup.slaves) {}

  // --- what goes wrong; tests set these at any time ---
  bool held = false;                  ///< another master keeps the host busy; it takes no command
  bool stuck = false;                 ///< a slave holds the clock: transfers begin and do not end
  Outcome fault = Outcome::kDone;     ///< how transfers end that would otherwise be done
  uint64_t timeOut = 0;               ///< microseconds until a transfer ends by itself, as kFailed; 0: never
  uint64_t microsecondsPerByte = 90;  ///< 9 clocks at 100 kHz
  uint64_t microsecondsPerStart = 0;  ///< each start and stop condition
  uint64_t microsecondsToStop = 0;    ///< from the request to stop a transfer until that has ended
  uint64_t controllerUntil = 0;       ///< time until which the embedded controller owns a host that it shares
  unsigned segment = 0;               ///< that a multiplexer selects; the slaves are on 0

  // --- how the program under test behaves ---
  bool owned = false;  ///< another user has the host to itself; changes nothing but `onWrite`
  std::function<void(const SmbusWrite&)> onWrite;  ///< before a write through the ports takes effect
  SmbusTiming timing;

  std::map<uint8_t, std::shared_ptr<SmbusSlave>> slaves;
  uint16_t base = 0;  ///< port of register 0

  /// Registers that configure the host rather than describe a transfer. They outlast transactions.
  virtual std::vector<uint8_t> Settings() const { return {}; }

  uint32_t Read(Board& board, uint16_t port, unsigned width) final;
  void Write(Board& board, uint16_t port, unsigned width, uint32_t value) final;

  virtual const SmbusLayout& Layout() const = 0;
  /// How another user reaches the registers: nothing is logged and no time passes.
  uint8_t Peek(Board& board, unsigned offset);
  void Poke(Board& board, unsigned offset, uint8_t value);
  bool Busy() const { return Running() || held; }

 protected:
  virtual uint8_t ReadRegister(Board& board, unsigned offset) = 0;
  virtual void WriteRegister(Board& board, unsigned offset, uint8_t value) = 0;
  /// The time that Begin set has passed.
  virtual void Finish(Board& board) = 0;
  /// A transfer that ends with this error is on its last byte. Finish comes all the same.
  virtual void Announce(Outcome) {}
  /// What Announce told is not to be told again.
  bool Announced() const { return announced_; }
  /// A transfer ends as the program asked; nothing may be running.
  virtual void Stopped() = 0;
  /// A register through which the host is asked for; it may be written at any time.
  virtual bool AsksForHost(unsigned) const { return false; }

  /// Puts the transfer on the wires: all of it, or its first `wireBytes` bytes, address included.
  void Begin(Board& board, const SmbusTransfer& transfer) { Begin(board, transfer, WireBytes(transfer)); }
  void Begin(Board& board, const SmbusTransfer& transfer, unsigned wireBytes);
  /// Another `wireBytes` bytes of it.
  void Continue(Board& board, unsigned wireBytes);
  /// The program asks for the transfer to stop; or no longer does.
  void Stop(Board& board);
  void Unstop() { stopAt_.reset(); }
  /// Takes the transfer off the wires.
  void Abort();
  bool Running() const { return wire_.has_value(); }
  /// How the address byte alone would end.
  Outcome Probe(uint8_t address) const;
  /// Moves the data. On anything but kDone nothing has been written.
  Outcome Execute(Board& board, SmbusTransfer& transfer);
  static unsigned WireBytes(const SmbusTransfer& transfer);
  /// Microseconds. On a board whose accesses take no time each takes one on the bus the host sits on.
  uint64_t Now(const Board& board) const { return board.Microseconds() + (board.pace.portAccess != 0 ? 0 : accesses_); }

 private:
  /// What is on the wires.
  struct Wire {
    uint64_t began, takes;              ///< `takes` without stretching
    std::optional<uint8_t> address;     ///< none when the transfer only goes on
    std::shared_ptr<SmbusSlave> slave;  ///< null: none answers, or the clock was already held in this transfer
    bool foreign;
    uint64_t accesses;  ///< of the board when it began
  };
  /// A slave that held the clock when its transfer was stopped.
  struct Hold {
    uint64_t since = 0;
    std::shared_ptr<SmbusSlave> slave;
  };

  void Put(Board& board, uint64_t takes, std::optional<uint8_t> address, std::shared_ptr<SmbusSlave> slave);
  void Foresee(uint64_t due);
  void Advance(Board& board);
  void End(Board& board, uint64_t due);
  uint64_t WireBegins() const;
  uint64_t Due() const;
  uint64_t Expires() const;
  void ReadSlave(Board& board, SmbusSlave& slave, SmbusTransfer& transfer);
  void WriteSlave(Board& board, SmbusSlave& slave, const SmbusTransfer& transfer);

  uint64_t accesses_ = 0;  ///< each takes a microsecond on the bus the host sits on
  uint64_t now_ = 0;
  std::optional<Wire> wire_;
  std::optional<uint64_t> stopAt_;
  Hold hold_;
  bool announced_ = false;
  bool expired_ = false;  ///< the last transfer ended by itself
  bool foreign_ = false;  ///< another user is at the registers
  uint8_t pointer_ = 0;   ///< register that byte transfers without a command go to
};

using SmbusMaker = std::shared_ptr<SmbusHost> (*)(const SmbusSetup& setup);

std::shared_ptr<SmbusHost> MakeSmbusIch(const SmbusSetup& setup);
std::shared_ptr<SmbusHost> MakeSmbusPiix4(const SmbusSetup& setup);
/// SB800 and later: shares the host with an embedded controller through bits 4 and 5 of register 8.
std::shared_ptr<SmbusHost> MakeSmbusFch(const SmbusSetup& setup);
std::shared_ptr<SmbusHost> MakeSmbusServerWorks(const SmbusSetup& setup);
std::shared_ptr<SmbusHost> MakeSmbusVia(const SmbusSetup& setup);
std::shared_ptr<SmbusHost> MakeSmbusAli(const SmbusSetup& setup);
/// SiS 962, 963: processed bytes at 6. SiS 964: at 0x14. Both move blocks in windows of eight bytes.
std::shared_ptr<SmbusHost> MakeSmbusSis96x(const SmbusSetup& setup);
std::shared_ptr<SmbusHost> MakeSmbusSis964(const SmbusSetup& setup);
/// SiS 965 and later: 32 bytes of block data.
std::shared_ptr<SmbusHost> MakeSmbusSis965(const SmbusSetup& setup);
std::shared_ptr<SmbusHost> MakeSmbusNforce(const SmbusSetup& setup);
std::shared_ptr<SmbusHost> MakeSmbusSch(const SmbusSetup& setup);

}  // namespace sim
