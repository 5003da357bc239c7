// SPDX-License-Identifier: MIT
// Hosts with status 0, control 2, command 3, address 4, data 5 and 6, block window 7: Intel ICH and PCH, the PIIX4 and
// what took over its registers (ServerWorks, VIA, ATI, AMD), ULi.
#include <algorithm>

#include "sim/chips/SmbusHost.h"

namespace sim {
namespace {

enum Register : unsigned { kStatus = 0, kControl = 2, kCommand, kAddress, kData0, kData1, kWindow, kLock, kAux = 0xD };
enum Status : uint8_t {
  kBusy = 1,
  kDone = 2,
  kDeviceError = 4,
  kBusError = 8,
  kFailed = 0x10,
  kInUse = 0x40,
  kByteDone = 0x80,
};
constexpr uint8_t kErrors = kDeviceError | kBusError | kFailed;
constexpr uint8_t kOutcomeBits[] = {kDone, kDeviceError, kBusError, kFailed};
constexpr uint8_t kStart = 0x40;
constexpr uint8_t kLastByte = 0x20;
constexpr uint8_t kAuxBuffer = 2;
constexpr uint8_t kLockRequest = 0x10, kLockRelease = 0x20, kLockOthers = 0x0F;
constexpr unsigned kRegisters = 0x20;

/// What the families differ in.
struct Family {
  enum Blocks {
    kWindowOrBuffer,  ///< auxiliary control bit 1 chooses; the window moves a byte when kByteDone is cleared
    kBuffer,          ///< 32 bytes behind the window
    kStartPerByte,    ///< the window moves a byte at every start
  } blocks;
  unsigned protocolShift;  ///< of the protocol number in the control register
  uint8_t kill;            ///< control bit
  bool semaphore;          ///< reading the status takes kInUse
  bool lock;               ///< kLock shares the host with an embedded controller
  SmbusLayout layout;
};

class ClassicHost : public SmbusHost {
 public:
  ClassicHost(const SmbusSetup& setup, const Family& family) : SmbusHost(setup), family_(family) {}
  std::vector<uint8_t> Settings() const override { return {registers_[kAux], registers_[kLock]}; }
  const SmbusLayout& Layout() const override { return family_.layout; }

 protected:
  uint8_t ReadRegister(Board& board, unsigned offset) override;
  void WriteRegister(Board& board, unsigned offset, uint8_t value) override;
  void Finish(Board& board) override;
  void Announce(Outcome outcome) override { status_ |= kOutcomeBits[static_cast<size_t>(outcome)]; }
  void Stopped() override;
  bool AsksForHost(unsigned offset) const override { return family_.lock && offset == kLock; }

 private:
  bool Buffered() const {
    return family_.blocks == Family::kBuffer ||
           (family_.blocks == Family::kWindowOrBuffer && (registers_[kAux] & kAuxBuffer) != 0);
  }
  bool HeldBetweenBytes() const { return bytewise_ && family_.blocks == Family::kWindowOrBuffer; }
  uint8_t ReadStatus(const Board& board);
  void ClearStatus(Board& board, uint8_t bits);
  void WriteControl(Board& board, uint8_t value);
  void WriteLock(Board& board, uint8_t value);
  void Start(Board& board);
  void StartBytewise(Board& board);
  void NextByte(Board& board);
  void FinishByte(Board& board);
  bool FirstByte(Board& board);
  void EndBytewise(Board& board);
  void Received();
  void Report(Outcome outcome);
  uint8_t& FromBuffer() { return buffer_[index_++ % kSmbusBlockBytes]; }

  const Family& family_;
  std::array<uint8_t, kRegisters> registers_{};
  std::array<uint8_t, kSmbusBlockBytes> buffer_{};
  unsigned index_ = 0;
  uint8_t status_ = 0;
  bool inUse_ = false;
  uint64_t settled_ = 0;
  SmbusTransfer transfer_;
  bool bytewise_ = false;  ///< a block is on its way byte by byte
  unsigned moved_ = 0;     ///< its bytes that are over
};

uint8_t ClassicHost::ReadStatus(const Board& board) {
  // Any value would do; this one misleads most.
  if (Now(board) < settled_) return kDone;
  const bool busy = Busy() || HeldBetweenBytes();
  const auto value = static_cast<uint8_t>(status_ | (busy ? kBusy : 0) | (inUse_ ? kInUse : 0));
  inUse_ = family_.semaphore;
  return value;
}

uint8_t ClassicHost::ReadRegister(Board& board, unsigned offset) {
  if (offset >= kRegisters) return 0xFF;
  if (offset == kStatus) return ReadStatus(board);
  if (offset == kControl) index_ = 0;
  if (offset == kWindow && Buffered()) return FromBuffer();
  return registers_[offset];
}

void ClassicHost::WriteRegister(Board& board, unsigned offset, uint8_t value) {
  if (offset >= kRegisters) return;
  if (offset == kStatus) return ClearStatus(board, value);
  if (offset == kControl) return WriteControl(board, value);
  if (offset == kWindow && Buffered()) FromBuffer() = value;
  if (offset == kLock && family_.lock) return WriteLock(board, value);
  registers_[offset] = value;
}

/// A request that comes while the controller owns the host is lost.
void ClassicHost::WriteLock(Board& board, uint8_t value) {
  const bool had = (registers_[kLock] & kLockRequest) != 0;
  const bool asks = (value & kLockRequest) != 0 && Now(board) >= controllerUntil;
  const bool has = (value & kLockRelease) == 0 && (had || asks);
  registers_[kLock] = static_cast<uint8_t>((value & kLockOthers) | (has ? kLockRequest : 0));
}

void ClassicHost::ClearStatus(Board& board, uint8_t bits) {
  if (bits & kInUse) inUse_ = false;
  const bool next = HeldBetweenBytes() && (status_ & bits & kByteDone) != 0;
  status_ = static_cast<uint8_t>(status_ & ~bits);
  if (next) NextByte(board);
}

void ClassicHost::WriteControl(Board& board, uint8_t value) {
  registers_[kControl] = static_cast<uint8_t>(value & ~kStart);
  if (value & family_.kill) return Stop(board);
  Unstop();
  if ((value & kStart) == 0 || Busy() || (status_ & kErrors) != 0) return;
  // A start with another protocol gives up a block that is on its way.
  const bool block = SmbusProtocol(value >> family_.protocolShift) == SmbusTransfer::kBlock;
  if (bytewise_ && block && family_.blocks == Family::kStartPerByte) return NextByte(board);
  if (!HeldBetweenBytes()) Start(board);
}

void ClassicHost::Stopped() {
  if (Running() || bytewise_) status_ |= kFailed;
  Abort();
  bytewise_ = false;
}

void ClassicHost::Start(Board& board) {
  const auto kind = SmbusProtocol(registers_[kControl] >> family_.protocolShift);
  transfer_ = {kind, (registers_[kAddress] & 1) != 0, registers_[kAddress], registers_[kCommand], {}, 0};
  settled_ = Now(board) + family_.layout.settling;
  bytewise_ = false;
  if (kind == SmbusTransfer::kBlock && !Buffered()) return StartBytewise(board);
  if (kind == SmbusTransfer::kByteData) transfer_.data = {registers_[kData0]};
  if (kind == SmbusTransfer::kWordData) transfer_.data = {registers_[kData0], registers_[kData1]};
  if (kind == SmbusTransfer::kBlock)
    transfer_.data.assign(buffer_.begin(), buffer_.begin() + std::min<unsigned>(registers_[kData0], kSmbusBlockBytes));
  Begin(board, transfer_);
}

void ClassicHost::Received() {
  if (transfer_.kind == SmbusTransfer::kBlock) {
    registers_[kData0] = transfer_.count;
    if (Buffered()) std::copy(transfer_.data.begin(), transfer_.data.end(), buffer_.begin());
    return;
  }
  if (!transfer_.data.empty()) registers_[kData0] = transfer_.data[0];
  if (transfer_.data.size() > 1) registers_[kData1] = transfer_.data[1];
}

void ClassicHost::Report(Outcome outcome) {
  if (!Announced()) status_ |= kOutcomeBits[static_cast<size_t>(outcome)];
  bytewise_ = false;
}

void ClassicHost::Finish(Board& board) {
  if (bytewise_) return FinishByte(board);
  const Outcome outcome = Execute(board, transfer_);
  if (outcome == Outcome::kDone && transfer_.read) Received();
  Report(outcome);
}

// --- blocks byte by byte ---

void ClassicHost::StartBytewise(Board& board) {
  constexpr unsigned kAddressCommandCount = 3;
  bytewise_ = true;
  moved_ = 0;
  if (!transfer_.read) transfer_.data = {registers_[kWindow]};
  Begin(board, transfer_, kAddressCommandCount + 1);
}

void ClassicHost::NextByte(Board& board) {
  if (!transfer_.read && moved_ < registers_[kData0]) transfer_.data.push_back(registers_[kWindow]);
  Continue(board, 1);
}

/// Address, command and count.
bool ClassicHost::FirstByte(Board& board) {
  const Outcome outcome = transfer_.read ? Execute(board, transfer_) : Probe(transfer_.address);
  if (outcome == Outcome::kDone && transfer_.read) Received();
  if (outcome != Outcome::kDone) Report(outcome);
  return outcome == Outcome::kDone;
}

void ClassicHost::EndBytewise(Board& board) { Report(transfer_.read ? Outcome::kDone : Execute(board, transfer_)); }

void ClassicHost::FinishByte(Board& board) {
  if (moved_ == 0 && !FirstByte(board)) return;
  const unsigned length = transfer_.read ? static_cast<unsigned>(transfer_.data.size()) : registers_[kData0];
  if (moved_ != 0 && moved_ >= length) return EndBytewise(board);
  if (transfer_.read && moved_ < length) registers_[kWindow] = transfer_.data[moved_];
  ++moved_;
  status_ |= kByteDone;
  if (family_.blocks == Family::kStartPerByte && moved_ >= length) return EndBytewise(board);
  const bool told = transfer_.read && (registers_[kControl] & kLastByte) != 0;
  if (told && family_.blocks == Family::kWindowOrBuffer) transfer_.data.resize(std::min(moved_, length));
}

constexpr SmbusLayout Layout(uint8_t startByteRead, uint8_t next, uint8_t inUse, uint64_t settling = 0) {
  return {.status = kStatus,
          .control = kControl,
          .address = kAddress,
          .command = kCommand,
          .data = kData0,
          .startByteRead = startByteRead,
          .busy = {kStatus, kBusy},
          .done = kDone,
          .errors = kErrors,
          .next = next,
          .inUse = inUse,
          .settling = settling};
}

constexpr Family kIch = {Family::kWindowOrBuffer, 2, 2, true, false, Layout(0x48, kByteDone, kInUse)};
constexpr Family kPiix4 = {Family::kBuffer, 2, 2, false, false, Layout(0x48, 0, 0)};
constexpr Family kFch = {Family::kBuffer, 2, 2, false, true, Layout(0x48, 0, 0)};
constexpr Family kServerWorks = {Family::kBuffer, 2, 2, false, false, Layout(0x48, 0, 0, 2000)};
constexpr Family kVia = {Family::kBuffer, 2, 2, true, false, Layout(0x48, 0, kInUse)};
constexpr Family kUli = {Family::kStartPerByte, 3, 4, false, false, Layout(0x50, kByteDone, 0)};

}  // namespace

std::shared_ptr<SmbusHost> MakeSmbusIch(const SmbusSetup& setup) { return std::make_shared<ClassicHost>(setup, kIch); }
std::shared_ptr<SmbusHost> MakeSmbusPiix4(const SmbusSetup& setup) {
  return std::make_shared<ClassicHost>(setup, kPiix4);
}
std::shared_ptr<SmbusHost> MakeSmbusFch(const SmbusSetup& setup) { return std::make_shared<ClassicHost>(setup, kFch); }
std::shared_ptr<SmbusHost> MakeSmbusServerWorks(const SmbusSetup& setup) {
  return std::make_shared<ClassicHost>(setup, kServerWorks);
}
std::shared_ptr<SmbusHost> MakeSmbusVia(const SmbusSetup& setup) { return std::make_shared<ClassicHost>(setup, kVia); }
std::shared_ptr<SmbusHost> MakeSmbusAli(const SmbusSetup& setup) { return std::make_shared<ClassicHost>(setup, kUli); }

}  // namespace sim
