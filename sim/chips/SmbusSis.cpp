// SPDX-License-Identifier: MIT
// SiS 96x: status 0, busy 2, control 3, address 4, command 5, block count 7, data 8 and up.
#include <algorithm>

#include "sim/chips/SmbusHost.h"

namespace sim {
namespace {

enum Register : unsigned { kStatus = 0, kBusyClock = 2, kControl, kAddress, kCommand, kCount = 7, kData };
enum Status : uint8_t { kDeviceError = 2, kCollision = 4, kDone = 8, kArrayDone = 0x10 };
constexpr uint8_t kOutcomeBits[] = {kDone, kDeviceError, kCollision, kCollision};
constexpr uint8_t kErrors = kDeviceError | kCollision;
constexpr uint8_t kHostBusy = 1;
constexpr uint8_t kStart = 0x10, kKill = 0x20;
constexpr unsigned kRegisters = 0x28;
constexpr SmbusLayout kLayout = {.status = kStatus,
                                 .control = kControl,
                                 .address = kAddress,
                                 .command = kCommand,
                                 .data = kData,
                                 .startByteRead = 0x12,
                                 .busy = {kBusyClock, 3},
                                 .done = kDone,
                                 .errors = kErrors,
                                 .next = kArrayDone};

/// What the chips differ in.
struct Chip {
  unsigned window;     ///< bytes of block data that the registers hold
  unsigned processed;  ///< register that counts the bytes of the block that are over; 0: none
};

class SisHost : public SmbusHost {
 public:
  SisHost(const SmbusSetup& setup, const Chip& chip) : SmbusHost(setup), chip_(chip) {}
  std::vector<uint8_t> Settings() const override { return {registers_[kBusyClock]}; }
  const SmbusLayout& Layout() const override { return kLayout; }

 protected:
  uint8_t ReadRegister(Board&, unsigned offset) override;
  void WriteRegister(Board& board, unsigned offset, uint8_t value) override;
  void Finish(Board& board) override;
  void Announce(Outcome outcome) override { status_ |= kOutcomeBits[static_cast<size_t>(outcome)]; }
  void Stopped() override;

 private:
  void ClearStatus(Board& board, uint8_t bits);
  void Start(Board& board);
  bool Answered(Board& board);
  unsigned Length() const { return transfer_.read ? static_cast<unsigned>(transfer_.data.size()) : registers_[kCount]; }
  void TakeWindow();
  void End(Outcome outcome);

  const Chip& chip_;
  std::array<uint8_t, kRegisters> registers_{};
  uint8_t status_ = 0;
  SmbusTransfer transfer_;
  bool open_ = false;  ///< a transfer is between its start and its end
  unsigned moved_ = 0;
};

uint8_t SisHost::ReadRegister(Board&, unsigned offset) {
  if (offset == kStatus) return status_;
  if (offset == kBusyClock) return static_cast<uint8_t>(registers_[kBusyClock] | (Busy() ? kHostBusy : 0));
  if (chip_.processed != 0 && offset == chip_.processed) return static_cast<uint8_t>(moved_);
  return offset < kRegisters ? registers_[offset] : 0xFF;
}

void SisHost::WriteRegister(Board& board, unsigned offset, uint8_t value) {
  if (offset == kStatus) return ClearStatus(board, value);
  if (offset >= kRegisters) return;
  registers_[offset] = value;
  if (offset != kControl) return;
  if (value & kKill) {
    Stop(board);
  } else if ((value & kStart) != 0 && !Busy() && (status_ & kErrors) == 0) {
    Start(board);
  }
  registers_[kControl] = value & kSmbusProtocolMask;
}

void SisHost::Stopped() {
  Abort();
  open_ = false;
}

void SisHost::ClearStatus(Board& board, uint8_t bits) {
  const bool next = open_ && (status_ & bits & kArrayDone) != 0;
  status_ = static_cast<uint8_t>(status_ & ~bits);
  if (!next) return;
  if (!transfer_.read) TakeWindow();
  Continue(board, chip_.window);
}

void SisHost::TakeWindow() {
  const unsigned taken = static_cast<unsigned>(transfer_.data.size());
  const unsigned length = std::min<unsigned>(registers_[kCount], kSmbusBlockBytes);
  for (unsigned i = 0; i < chip_.window && taken + i < length; ++i) transfer_.data.push_back(registers_[kData + i]);
}

void SisHost::Start(Board& board) {
  transfer_ = {SmbusProtocol(registers_[kControl]),
               (registers_[kAddress] & 1) != 0,
               registers_[kAddress],
               registers_[kCommand],
               {},
               0};
  open_ = true;
  moved_ = 0;
  if (transfer_.kind == SmbusTransfer::kByteData) transfer_.data = {registers_[kData]};
  if (transfer_.kind == SmbusTransfer::kWordData) transfer_.data = {registers_[kData], registers_[kData + 1]};
  if (transfer_.kind == SmbusTransfer::kBlock && !transfer_.read) TakeWindow();
  Begin(board, transfer_);
}

void SisHost::End(Outcome outcome) {
  if (!Announced()) status_ |= kOutcomeBits[static_cast<size_t>(outcome)];
  open_ = false;
}

/// Reads at the first window; writes at the last one, once all data is there.
bool SisHost::Answered(Board& board) {
  const bool whole = transfer_.read ? moved_ == 0 : transfer_.data.size() >= Length();
  const bool block = transfer_.kind == SmbusTransfer::kBlock;
  const Outcome outcome = whole || !block ? Execute(board, transfer_) : Probe(transfer_.address);
  if (outcome != Outcome::kDone) End(outcome);
  return outcome == Outcome::kDone;
}

void SisHost::Finish(Board& board) {
  const bool block = transfer_.kind == SmbusTransfer::kBlock;
  if ((!transfer_.read || moved_ == 0) && !Answered(board)) return;
  const unsigned length = block ? Length() : static_cast<unsigned>(transfer_.data.size());
  const unsigned end = std::min(moved_ + chip_.window, length);
  if (transfer_.read) {
    if (block) registers_[kCount] = transfer_.count;
    for (unsigned i = moved_; i < end; ++i) registers_[kData + i - moved_] = transfer_.data[i];
  }
  moved_ = end;
  if (moved_ < length)
    status_ |= kArrayDone;
  else
    End(Outcome::kDone);
}

constexpr Chip kSis96x = {8, 6};
constexpr Chip kSis964 = {8, 0x14};
constexpr Chip kSis965 = {kSmbusBlockBytes, 0};

}  // namespace

std::shared_ptr<SmbusHost> MakeSmbusSis96x(const SmbusSetup& setup) {
  return std::make_shared<SisHost>(setup, kSis96x);
}
std::shared_ptr<SmbusHost> MakeSmbusSis964(const SmbusSetup& setup) {
  return std::make_shared<SisHost>(setup, kSis964);
}
std::shared_ptr<SmbusHost> MakeSmbusSis965(const SmbusSetup& setup) {
  return std::make_shared<SisHost>(setup, kSis965);
}

}  // namespace sim
