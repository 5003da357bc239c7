/// What the SMBus host controller models share: the bus with its devices, the time a transfer takes, and what can go
/// wrong. Each register family is a class of its own behind a Make function.
#pragma once

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

class SmbusHost : public PortDevice {
 public:
  enum class Outcome { kDone, kNoAnswer, kCollision, kFailed };

  explicit SmbusHost(const SmbusSetup& setup) : slaves(setup.slaves) {}

  // --- what goes wrong; tests set these at any time ---
  bool held = false;                  ///< another master keeps the host busy; it takes no command
  bool stuck = false;                 ///< a slave holds the clock: transfers begin and do not end
  Outcome fault = Outcome::kDone;     ///< how transfers end that would otherwise be done
  uint64_t microsecondsPerByte = 90;  ///< 9 clocks at 100 kHz

  std::map<uint8_t, std::shared_ptr<SmbusSlave>> slaves;
  uint16_t base = 0;  ///< port of register 0

  /// Registers that configure the host rather than describe a transfer. They outlast transactions.
  virtual std::vector<uint8_t> Settings() const { return {}; }

  uint32_t Read(Board& board, uint16_t port, unsigned width) final;
  void Write(Board& board, uint16_t port, unsigned width, uint32_t value) final;

 protected:
  virtual uint8_t ReadRegister(Board& board, unsigned offset) = 0;
  virtual void WriteRegister(Board& board, unsigned offset, uint8_t value) = 0;
  /// The time that Begin set has passed.
  virtual void Finish(Board& board) = 0;

  /// Starts the clock for `wireBytes` bytes on the bus, address included.
  void Begin(Board& board, unsigned wireBytes);
  void Abort() { due_.reset(); }
  bool Running() const { return due_.has_value(); }
  bool Busy() const { return Running() || held; }
  /// How the address byte alone would end.
  Outcome Probe(uint8_t address) const;
  /// Moves the data. On anything but kDone nothing has been written.
  Outcome Execute(Board& board, SmbusTransfer& transfer);
  static unsigned WireBytes(const SmbusTransfer& transfer);
  uint64_t Now(const Board& board) const { return board.Microseconds() + accesses_; }

 private:
  void Advance(Board& board);
  void ReadSlave(Board& board, SmbusSlave& slave, SmbusTransfer& transfer);
  void WriteSlave(Board& board, SmbusSlave& slave, const SmbusTransfer& transfer);

  uint64_t accesses_ = 0;  ///< each takes a microsecond on the bus the host sits on
  std::optional<uint64_t> due_;
  uint8_t pointer_ = 0;  ///< register that byte transfers without a command go to
};

using SmbusMaker = std::shared_ptr<SmbusHost> (*)(const SmbusSetup& setup);

std::shared_ptr<SmbusHost> MakeSmbusIch(const SmbusSetup& setup);
std::shared_ptr<SmbusHost> MakeSmbusPiix4(const SmbusSetup& setup);
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
