// SPDX-License-Identifier: MIT
// Intel SCH: control 0, status 1, clock divider 2 and 3, address 4, command 5, data 6 and 7, block 0x20 and up.
#include <algorithm>

#include "sim/chips/SmbusHost.h"

namespace sim {
namespace {

enum Register : unsigned { kControl = 0, kStatus, kClock, kAddress = 4, kCommand, kData, kBlock = 0x20 };
enum Status : uint8_t { kDone = 1, kDeviceError = 2, kCollision = 4, kBusy = 8 };
constexpr uint8_t kOutcomeBits[] = {kDone, kDeviceError, kCollision, kCollision};
constexpr uint8_t kStart = 0x10;
/// Alert and system management interrupts: settings that have nothing to do with a transfer.
constexpr uint8_t kOthers = 0xE0;
constexpr unsigned kRegisters = 0x40;
constexpr SmbusLayout kLayout = {.status = kStatus,
                                 .control = kControl,
                                 .address = kAddress,
                                 .command = kCommand,
                                 .data = kData,
                                 .startByteRead = 0x12,
                                 .busy = {kStatus, kBusy},
                                 .done = kDone,
                                 .errors = kDeviceError | kCollision};

class SchHost : public SmbusHost {
 public:
  explicit SchHost(const SmbusSetup& setup) : SmbusHost(setup) {
    constexpr uint8_t k100kHz = 0x52;
    registers_[kClock] = setup.Option("enabled", 1) != 0 ? k100kHz : 0;
  }
  std::vector<uint8_t> Settings() const override {
    return {registers_[kClock], registers_[kClock + 1], static_cast<uint8_t>(registers_[kControl] & kOthers)};
  }
  const SmbusLayout& Layout() const override { return kLayout; }

 protected:
  uint8_t ReadRegister(Board&, unsigned offset) override;
  void WriteRegister(Board& board, unsigned offset, uint8_t value) override;
  void Finish(Board& board) override;
  void Announce(Outcome outcome) override { status_ |= kOutcomeBits[static_cast<size_t>(outcome)]; }
  void Stopped() override;

 private:
  void Start(Board& board);

  std::array<uint8_t, kRegisters> registers_{};
  uint8_t status_ = 0;
  bool still_ = false;  ///< a transfer began without a clock
  SmbusTransfer transfer_;
};

uint8_t SchHost::ReadRegister(Board&, unsigned offset) {
  if (offset == kStatus) return static_cast<uint8_t>(status_ | (Busy() || still_ ? kBusy : 0));
  if (offset == kControl) return static_cast<uint8_t>(registers_[kControl] | (Running() || still_ ? kStart : 0));
  return offset < kRegisters ? registers_[offset] : 0xFF;
}

void SchHost::WriteRegister(Board& board, unsigned offset, uint8_t value) {
  if (offset >= kRegisters) return;
  if (offset == kStatus) {
    status_ = static_cast<uint8_t>(status_ & ~value);
    return;
  }
  registers_[offset] = value;
  if (offset != kControl) return;
  registers_[kControl] = static_cast<uint8_t>(value & ~kStart);
  if ((value & kStart) == 0) {
    if (Running() || still_) Stop(board);
  } else if (!Busy() && !still_) {
    Start(board);
  }
}

/// Ends what the start bit began, which is what clearing that bit asks for.
void SchHost::Stopped() {
  Abort();
  still_ = false;
}

void SchHost::Start(Board& board) {
  transfer_ = {SmbusProtocol(registers_[kControl]),
               (registers_[kAddress] & 1) != 0,
               registers_[kAddress],
               registers_[kCommand],
               {},
               0};
  if (transfer_.kind == SmbusTransfer::kByteData) transfer_.data = {registers_[kData]};
  if (transfer_.kind == SmbusTransfer::kWordData) transfer_.data = {registers_[kData], registers_[kData + 1]};
  if (transfer_.kind == SmbusTransfer::kBlock)
    transfer_.data.assign(registers_.begin() + kBlock,
                          registers_.begin() + kBlock + std::min<unsigned>(registers_[kData], kSmbusBlockBytes));
  still_ = registers_[kClock] == 0 && registers_[kClock + 1] == 0;
  if (!still_) Begin(board, transfer_);
}

void SchHost::Finish(Board& board) {
  const Outcome outcome = Execute(board, transfer_);
  if (!Announced()) status_ |= kOutcomeBits[static_cast<size_t>(outcome)];
  if (outcome != Outcome::kDone || !transfer_.read) return;
  const bool block = transfer_.kind == SmbusTransfer::kBlock;
  if (block) registers_[kData] = transfer_.count;
  std::copy(transfer_.data.begin(), transfer_.data.end(), registers_.begin() + (block ? kBlock : kData));
}

}  // namespace

std::shared_ptr<SmbusHost> MakeSmbusSch(const SmbusSetup& setup) { return std::make_shared<SchHost>(setup); }

}  // namespace sim
