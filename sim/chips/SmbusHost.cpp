// SPDX-License-Identifier: MIT
// What the models of SMBus hosts share: bytes of registers, and transfers that take their time.
#include "sim/chips/SmbusHost.h"

#include <algorithm>

namespace sim {
namespace {

constexpr uint8_t kAddressMask = 0xFE;

constexpr uint64_t Later(uint64_t time, uint64_t by) { return time > kSmbusForever - by ? kSmbusForever : time + by; }

/// Start and stop, and a second start between the command and what is read.
unsigned Conditions(const SmbusTransfer& transfer) {
  const bool turns = transfer.kind != SmbusTransfer::kQuick && transfer.kind != SmbusTransfer::kByte && transfer.read;
  return turns ? 3 : 2;
}

}  // namespace

uint32_t SmbusHost::Read(Board& board, uint16_t port, unsigned width) {
  uint32_t value = 0;
  for (unsigned i = 0; i < width; ++i) {
    ++accesses_;
    Advance(board);
    value |= uint32_t{ReadRegister(board, port - base + i)} << (8 * i);
  }
  return value;
}

void SmbusHost::Write(Board& board, uint16_t port, unsigned width, uint32_t value) {
  for (unsigned i = 0; i < width; ++i) {
    ++accesses_;
    Advance(board);
    const unsigned offset = port - base + i;
    const auto byte = static_cast<uint8_t>(value >> (8 * i));
    const bool anothers = owned || held || (wire_ && wire_->foreign) || now_ < controllerUntil;
    if (onWrite) onWrite({now_, offset, byte, Busy(), anothers && !AsksForHost(offset)});
    WriteRegister(board, offset, byte);
  }
}

uint8_t SmbusHost::Peek(Board& board, unsigned offset) {
  foreign_ = true;
  Advance(board);
  const uint8_t value = ReadRegister(board, offset);
  foreign_ = false;
  return value;
}

void SmbusHost::Poke(Board& board, unsigned offset, uint8_t value) {
  foreign_ = true;
  Advance(board);
  WriteRegister(board, offset, value);
  foreign_ = false;
}

// --- time ---

void SmbusHost::Put(Board& board, uint64_t takes, std::optional<uint8_t> address, std::shared_ptr<SmbusSlave> slave) {
  expired_ = announced_ = false;
  stopAt_.reset();
  wire_ = {Now(board), takes, address, std::move(slave), foreign_, board.PortAccesses()};
}

void SmbusHost::Begin(Board& board, const SmbusTransfer& transfer, unsigned wireBytes) {
  const auto slave = slaves.find(transfer.address & kAddressMask);
  Put(board, wireBytes * microsecondsPerByte + Conditions(transfer) * microsecondsPerStart, transfer.address,
      slave == slaves.end() || segment != 0 ? nullptr : slave->second);
}

void SmbusHost::Continue(Board& board, unsigned wireBytes) { Put(board, wireBytes * microsecondsPerByte, {}, nullptr); }

/// Not while a slave still holds the clock from before.
uint64_t SmbusHost::WireBegins() const {
  return std::max(wire_->began, hold_.slave ? Later(hold_.since, hold_.slave->stretch) : 0);
}

uint64_t SmbusHost::Due() const {
  const uint64_t stretch = wire_->slave ? wire_->slave->stretch : 0;
  return stuck ? kSmbusForever : Later(Later(WireBegins(), stretch), wire_->takes);
}

uint64_t SmbusHost::Expires() const { return timeOut == 0 ? kSmbusForever : Later(wire_->began, timeOut); }

void SmbusHost::Stop(Board& board) {
  stopAt_ = Now(board) + microsecondsToStop;
  if (microsecondsToStop == 0) Advance(board);
}

void SmbusHost::Abort() {
  if (wire_ && wire_->slave) {
    const uint64_t since = WireBegins();
    if (since <= now_ && now_ < Later(since, wire_->slave->stretch)) hold_ = {since, wire_->slave};
  }
  wire_.reset();
}

void SmbusHost::End(Board& board, uint64_t due) {
  if (!wire_->foreign) {
    timing.wire += due - wire_->began;
    timing.late += now_ - due;
    timing.accesses += board.PortAccesses() - wire_->accesses - 1;
  }
  stopAt_.reset();
  expired_ = due < Due();
  Abort();
  Finish(board);
}

/// Chips show an error as soon as they know, with the stop condition still to come.
void SmbusHost::Foresee(uint64_t due) {
  if (announced_ || !wire_->address || microsecondsPerStart == 0 || due > Later(now_, microsecondsPerByte)) return;
  const Outcome outcome = Probe(*wire_->address);
  if (outcome == Outcome::kDone) return;
  announced_ = true;
  Announce(outcome);
}

void SmbusHost::Advance(Board& board) {
  now_ = Now(board);
  const uint64_t due = wire_ ? std::min(Due(), Expires()) : kSmbusForever;
  if (wire_) Foresee(due);
  const uint64_t stop = stopAt_.value_or(kSmbusForever);
  if (due <= now_ && due <= stop) return End(board, due);
  if (stop > now_) return;
  stopAt_.reset();
  Stopped();
}

// --- data ---

unsigned SmbusHost::WireBytes(const SmbusTransfer& transfer) {
  constexpr unsigned kAddressByte = 1, kCommandByte = 1, kCountByte = 1;
  const auto data = static_cast<unsigned>(transfer.data.size());
  switch (transfer.kind) {
    case SmbusTransfer::kQuick:
      return kAddressByte;
    case SmbusTransfer::kByte:
      return kAddressByte + 1;
    case SmbusTransfer::kByteData:
    case SmbusTransfer::kWordData:
      return kAddressByte + kCommandByte + (transfer.read ? kAddressByte : 0) + data;
    case SmbusTransfer::kBlock:
      return kAddressByte + kCommandByte + kCountByte + (transfer.read ? kAddressByte + kSmbusBlockBytes : data);
  }
  return 0;
}

void SmbusHost::ReadSlave(Board& board, SmbusSlave& slave, SmbusTransfer& transfer) {
  const auto at = [&](unsigned offset) {
    return slave.ReadByte(board, static_cast<uint8_t>(transfer.command + offset));
  };
  switch (transfer.kind) {
    case SmbusTransfer::kQuick:
      return;
    case SmbusTransfer::kByte:
      transfer.data = {slave.ReadByte(board, pointer_++)};
      return;
    case SmbusTransfer::kByteData:
      transfer.data = {at(0)};
      return;
    case SmbusTransfer::kWordData:
      transfer.data = {at(0), at(1)};
      return;
    case SmbusTransfer::kBlock:
      transfer.count = at(0);
      transfer.data.clear();
      for (unsigned i = 1; i <= std::min<unsigned>(transfer.count, kSmbusBlockBytes); ++i)
        transfer.data.push_back(at(i));
  }
}

void SmbusHost::WriteSlave(Board& board, SmbusSlave& slave, const SmbusTransfer& transfer) {
  uint8_t command = transfer.command;
  if (transfer.kind == SmbusTransfer::kQuick) return;
  if (transfer.kind == SmbusTransfer::kByte) {
    pointer_ = command;
    return;
  }
  if (transfer.kind == SmbusTransfer::kBlock)
    slave.WriteByte(board, command++, static_cast<uint8_t>(transfer.data.size()));
  for (const uint8_t value : transfer.data) slave.WriteByte(board, command++, value);
}

SmbusHost::Outcome SmbusHost::Probe(uint8_t address) const {
  if (expired_) return Outcome::kFailed;
  return segment == 0 && slaves.contains(address & kAddressMask) ? fault : Outcome::kNoAnswer;
}

SmbusHost::Outcome SmbusHost::Execute(Board& board, SmbusTransfer& transfer) {
  const Outcome outcome = Probe(transfer.address);
  if (outcome != Outcome::kDone) return outcome;
  SmbusSlave& slave = *slaves.at(transfer.address & kAddressMask);
  if (transfer.read)
    ReadSlave(board, slave, transfer);
  else
    WriteSlave(board, slave, transfer);
  return Outcome::kDone;
}

}  // namespace sim
