#include "sim/chips/SmbusHost.h"

#include <algorithm>

namespace sim {
namespace {

constexpr uint8_t kAddressMask = 0xFE;

}  // namespace

uint32_t SmbusHost::Read(Board& board, uint16_t port, unsigned width) {
  uint32_t value = 0;
  for (unsigned i = 0; i < width; ++i) {
    Advance(board);
    value |= uint32_t{ReadRegister(board, port - base + i)} << (8 * i);
  }
  return value;
}

void SmbusHost::Write(Board& board, uint16_t port, unsigned width, uint32_t value) {
  for (unsigned i = 0; i < width; ++i) {
    Advance(board);
    WriteRegister(board, port - base + i, static_cast<uint8_t>(value >> (8 * i)));
  }
}

void SmbusHost::Begin(Board& board, unsigned wireBytes) { due_ = Now(board) + wireBytes * microsecondsPerByte; }

void SmbusHost::Advance(Board& board) {
  ++accesses_;
  if (!due_ || stuck || Now(board) < *due_) return;
  due_.reset();
  Finish(board);
}

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
  return slaves.contains(address & kAddressMask) ? fault : Outcome::kNoAnswer;
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
