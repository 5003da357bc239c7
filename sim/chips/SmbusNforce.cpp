// SPDX-License-Identifier: MIT
// nVidia nForce: protocol 0, status 1, address 2, command 3, data 4 and up, block count 0x24, abort 0x3c and 0x3e.
#include <algorithm>

#include "sim/chips/SmbusHost.h"

namespace sim {
namespace {

enum Register : unsigned {
  kProtocol = 0,
  kStatus,
  kAddress,
  kCommand,
  kData,
  kBlockCount = 0x24,
  kAbortStatus = 0x3C,
  kControl = 0x3E,
};
constexpr uint8_t kDone = 0x80;
constexpr uint8_t kRead = 1;
constexpr uint8_t kAbort = 0x20, kAborted = 1;
enum Code : uint8_t { kNoAddressAck = 0x10, kDeviceError = 0x11, kHostBusy = 0x1A };
constexpr unsigned kRegisters = 0x40;
constexpr SmbusLayout kLayout = {.status = kStatus,
                                 .control = kProtocol,
                                 .address = kAddress,
                                 .command = kCommand,
                                 .data = kData,
                                 .startByteRead = 7,
                                 .busy = {kProtocol, 0xFF},
                                 .done = kDone,
                                 .errors = 0x1F};

class NforceHost : public SmbusHost {
 public:
  using SmbusHost::SmbusHost;
  const SmbusLayout& Layout() const override { return kLayout; }

 protected:
  uint8_t ReadRegister(Board&, unsigned offset) override;
  void WriteRegister(Board& board, unsigned offset, uint8_t value) override;
  void Finish(Board& board) override;
  void Stopped() override;

 private:
  void Start(Board& board, uint8_t protocol);

  std::array<uint8_t, kRegisters> registers_{};
  SmbusTransfer transfer_;
};

uint8_t NforceHost::ReadRegister(Board&, unsigned offset) {
  constexpr uint8_t kSomeProtocol = 7;
  if (offset == kProtocol && held) return kSomeProtocol;
  return offset < kRegisters ? registers_[offset] : 0xFF;
}

void NforceHost::WriteRegister(Board& board, unsigned offset, uint8_t value) {
  if (offset >= kRegisters) return;
  if (offset == kStatus) {
    registers_[kStatus] = static_cast<uint8_t>(registers_[kStatus] & ~value);
  } else if (offset == kProtocol) {
    if (!Busy()) Start(board, value);
  } else if (offset == kControl) {
    if ((value & kAbort) != 0 && Running()) Stop(board);
  } else if (offset == kAbortStatus) {
    registers_[kAbortStatus] = static_cast<uint8_t>(registers_[kAbortStatus] & ~value);
  } else {
    registers_[offset] = value;
  }
}

void NforceHost::Stopped() {
  Abort();
  registers_[kProtocol] = 0;
  registers_[kAbortStatus] |= kAborted;
}

void NforceHost::Start(Board& board, uint8_t protocol) {
  constexpr SmbusTransfer::Kind kKinds[] = {SmbusTransfer::kQuick,    SmbusTransfer::kQuick,    SmbusTransfer::kByte,
                                            SmbusTransfer::kByteData, SmbusTransfer::kWordData, SmbusTransfer::kBlock};
  constexpr uint8_t kFirst = 2, kLast = 0xB;
  registers_[kStatus] = 0;
  if (protocol < kFirst || protocol > kLast) return;
  registers_[kProtocol] = protocol;
  // The direction is the protocol's, whatever bit 0 of the address says.
  transfer_ = {kKinds[protocol >> 1], (protocol & kRead) != 0, registers_[kAddress], registers_[kCommand], {}, 0};
  size_t bytes = transfer_.kind == SmbusTransfer::kByteData ? 1 : transfer_.kind == SmbusTransfer::kWordData ? 2 : 0;
  if (transfer_.kind == SmbusTransfer::kBlock) bytes = std::min<size_t>(registers_[kBlockCount], kSmbusBlockBytes);
  transfer_.data.assign(registers_.begin() + kData, registers_.begin() + kData + static_cast<std::ptrdiff_t>(bytes));
  Begin(board, transfer_);
}

void NforceHost::Finish(Board& board) {
  constexpr uint8_t kCodes[] = {0, kNoAddressAck, kHostBusy, kDeviceError};
  const Outcome outcome = Execute(board, transfer_);
  registers_[kProtocol] = 0;
  registers_[kStatus] = static_cast<uint8_t>(kDone | kCodes[static_cast<size_t>(outcome)]);
  if (outcome != Outcome::kDone || !transfer_.read) return;
  if (transfer_.kind == SmbusTransfer::kBlock) registers_[kBlockCount] = transfer_.count;
  std::copy(transfer_.data.begin(), transfer_.data.end(), registers_.begin() + kData);
}

}  // namespace

std::shared_ptr<SmbusHost> MakeSmbusNforce(const SmbusSetup& setup) { return std::make_shared<NforceHost>(setup); }

}  // namespace sim
