// SPDX-License-Identifier: MIT
// What another user of an SMBus host does, step by step.
#include "sim/chips/SmbusUser.h"

#include <algorithm>

namespace sim {
namespace {

constexpr uint64_t kPause = 100;  // microseconds between two looks at the host

}  // namespace

std::shared_ptr<SmbusUser> SmbusUser::Start(Board& board, std::shared_ptr<SmbusHost> host, const Plan& plan) {
  const std::shared_ptr<SmbusUser> user(new SmbusUser(std::move(host), plan));
  user->Act(board);
  board.OnTick([user](Board& now) { user->Act(now); });
  return user;
}

void SmbusUser::Act(Board& board) {
  if (stage_ == Stage::kOver || board.Microseconds() < next_) return;
  next_ = board.Microseconds() + kPause;
  if (stage_ == Stage::kAsking)
    Ask(board);
  else if (!HostBusy(board))
    TakeResult(board);
}

bool SmbusUser::HostBusy(Board& board) {
  const SmbusLayout& layout = host_->Layout();
  const uint8_t value = layout.busy.offset == layout.status ? Status(board) : host_->Peek(board, layout.busy.offset);
  return (value & layout.busy.mask) != 0;
}

/// Whoever does not ask leaves the semaphore as it was.
uint8_t SmbusUser::Status(Board& board) {
  const SmbusLayout& layout = host_->Layout();
  const uint8_t status = host_->Peek(board, layout.status);
  const bool took = layout.inUse != 0 && (status & layout.inUse) == 0;
  if (took && !plan_.asks) host_->Poke(board, layout.status, layout.inUse);
  return status;
}

void SmbusUser::Ask(Board& board) {
  const SmbusLayout& layout = host_->Layout();
  const bool asks = plan_.asks && layout.inUse != 0;
  if (asks && !owns_) {
    if ((Status(board) & layout.inUse) != 0) return;
    owns_ = host_->owned = true;
  }
  if (!HostBusy(board)) StartRead(board);
}

void SmbusUser::StartRead(Board& board) {
  constexpr uint8_t kReadBit = 1;
  const SmbusLayout& layout = host_->Layout();
  host_->Poke(board, layout.status, layout.done | layout.errors);
  host_->Poke(board, layout.address, plan_.address | kReadBit);
  host_->Poke(board, layout.command, plan_.command);
  host_->Poke(board, layout.control, layout.startByteRead);
  stage_ = Stage::kWaiting;
  next_ = board.Microseconds() + std::max(kPause, layout.settling);
}

void SmbusUser::TakeResult(Board& board) {
  const SmbusLayout& layout = host_->Layout();
  const uint8_t status = Status(board);
  if ((status & layout.errors) != 0)
    ++tally_.errors;
  else if ((status & layout.done) == 0)
    ++tally_.lost;
  else
    ++(host_->Peek(board, layout.data) == plan_.expected ? tally_.right : tally_.wrong);
  host_->Poke(board, layout.status, status & (layout.done | layout.errors));
  if (board.Microseconds() < plan_.until)
    StartRead(board);
  else
    GiveBack(board);
}

void SmbusUser::GiveBack(Board& board) {
  const SmbusLayout& layout = host_->Layout();
  if (owns_) {
    host_->Poke(board, layout.status, layout.inUse);
    owns_ = host_->owned = false;
  }
  stage_ = Stage::kOver;
}

}  // namespace sim
