// SPDX-License-Identifier: MIT
// Blocks and command-style transfers.
#include "smbus/SMBusProtocol.h"
#include "smbus/TSMBus.h"

// --- blocks ---

bool TSMBus::Handshake(const VynString& script, bool mayEnd) {
  const unsigned char result = RunForResult(script);
  if ((result & ErrorMask) != 0) return false;
  return result != 0 || mayEnd;
}

bool TSMBus::WindowEnds(int bytes) const { return BlockMode != 0 && bytes % BlockMode == 0; }

bool TSMBus::ReceiveBlock(unsigned char address, unsigned char* buffer, unsigned char command, int* count) {
  if (!Idle()) return false;
  Select(address, true, command);
  Run(BlockReadStartScript);
  if (!Handshake(BlockWaitScript, BlockMode == 0)) return Failed();
  const int length = RunForResult(DataReadPrefix);
  if (length < 1 || length > kBlockBytes) return Failed();
  Run(BlockSetupScript);
  for (int received = 0; received < length;) {
    buffer[received++] = RunForResult(BlockReadScript);
    Run(BlockStepScript);
    if (received < length && WindowEnds(received) && !Handshake(BlockNextScript, false)) return Failed();
  }
  *count = length;
  return true;
}

void TSMBus::FillWindow(const unsigned char* buffer, int* sent, int count) {
  do {
    RunWith(BlockWritePrefix, buffer[(*sent)++]);
    Run(BlockStepScript);
  } while (*sent < count && !WindowEnds(*sent));
}

bool TSMBus::SendBlock(unsigned char address, const unsigned char* buffer, unsigned char command, int count) {
  if (!Idle()) return false;
  Select(address, false, command);
  RunWith(ByteWritePrefix, static_cast<unsigned int>(count));
  Run(BlockSetupScript);
  int sent = 0;
  FillWindow(buffer, &sent, count);
  Run(BlockWriteStartScript);
  if (!Handshake(BlockWaitScript, BlockMode == 0)) return Failed();
  while (sent < count) {
    FillWindow(buffer, &sent, count);
    if (!Handshake(BlockNextScript, false)) return Failed();
  }
  if (BlockMode != 0 && !Handshake(BlockNextScript, true)) return Failed();
  return true;
}

int TSMBus::ReadSmbusBlock(unsigned char address, unsigned char* buffer, unsigned char command, int* count,
                           VynString baseScript) {
  int received = 0;
  const int done = Transact(baseScript, [&] { return ReceiveBlock(address, buffer, command, &received); });
  if (count) *count = received;
  return done;
}
int TSMBus::ReadSmbusBlock(unsigned char address, unsigned char* buffer, unsigned char command, int* count) {
  if (count) *count = 0;
  for (const VynString* base : BaseScripts())
    if (!base->IsEmpty() && ReadSmbusBlock(address, buffer, command, count, *base) != 0) return 1;
  return 0;
}
int TSMBus::ReadSmbusBlock(unsigned char address, unsigned char* buffer, int* count) {
  return ReadSmbusBlock(address, buffer, 0, count);
}
int TSMBus::ReadSmbusBlock(unsigned char address, unsigned char* buffer, unsigned char command) {
  return ReadSmbusBlock(address, buffer, command, nullptr);
}
int TSMBus::ReadSmbusBlock(unsigned char address, unsigned char* buffer) {
  return ReadSmbusBlock(address, buffer, 0, nullptr);
}

int TSMBus::WriteSmbusBlock(unsigned char address, unsigned char* buffer, unsigned char command, int count,
                            VynString baseScript) {
  if (count < 1 || count > kBlockBytes) return 0;
  return Transact(baseScript, [&] { return SendBlock(address, buffer, command, count); });
}
int TSMBus::WriteSmbusBlock(unsigned char address, unsigned char* buffer, unsigned char command, int count) {
  for (const VynString* base : BaseScripts())
    if (!base->IsEmpty() && WriteSmbusBlock(address, buffer, command, count, *base) != 0) return 1;
  return 0;
}
int TSMBus::WriteSmbusBlock(unsigned char address, unsigned char* buffer, int count) {
  return WriteSmbusBlock(address, buffer, 0, count);
}
int TSMBus::WriteSmbusBlock(unsigned char address, unsigned char* buffer) {
  return WriteSmbusBlock(address, buffer, 0, kBlockBytes);
}

// --- command-style transfers ---

int TSMBus::ReadSmbusByteCmd(unsigned char address, unsigned char command, unsigned char* buffer, int count) {
  return MoveAnywhere(kSMBusByteRead, {address, buffer, command, count, 0});
}
int TSMBus::WriteSmbusByteCmd(unsigned char address, unsigned char command, unsigned char* buffer, int count) {
  return MoveAnywhere(kSMBusByteWrite, {address, buffer, command, count, 0});
}
int TSMBus::ReadSmbusWordCmd(unsigned char address, unsigned char command, unsigned char* buffer, int count) {
  return MoveAnywhere(kSMBusWordRead, {address, buffer, command, count, 0});
}
int TSMBus::WriteSmbusWordCmd(unsigned char address, unsigned char command, unsigned char* buffer, int count) {
  return MoveAnywhere(kSMBusWordWrite, {address, buffer, command, count, 0});
}

int TSMBus::SelectAndMove(const SMBusProtocol& protocol, const Span& span, unsigned char value) {
  const Span selection = {span.address, &value, span.command, 1, 0};
  for (const VynString* base : BaseScripts()) {
    const auto transfers = [&] { return Move(kSMBusByteWrite, selection) && Move(protocol, span); };
    if (!base->IsEmpty() && Transact(*base, transfers) != 0) return 1;
  }
  return 0;
}
int TSMBus::ReadSmbusCmd(unsigned char address, unsigned char command, unsigned char value, unsigned char* buffer,
                         int count) {
  return SelectAndMove(kSMBusByteRead, {address, buffer, command, count, 0}, value);
}
int TSMBus::WriteSmbusCmd(unsigned char address, unsigned char command, unsigned char value, unsigned char* buffer,
                          int count) {
  return SelectAndMove(kSMBusByteWrite, {address, buffer, command, count, 0}, value);
}
