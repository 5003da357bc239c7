// SPDX-License-Identifier: MIT
// Detection, the transaction around every transfer, bytes and words.
#include "smbus/TSMBus.h"

#include <utility>

#include "smbus/SMBusProtocol.h"
#include "smbus/TSMBusConfig.h"

TSMBus* TSMBus::g_Instance = nullptr;

namespace {

constexpr unsigned int kNoResult = 0xFFFFFFFF;
constexpr unsigned char kReadBit = 1;

/// The bytes of one value given as an argument, for the forms that take a buffer.
constexpr unsigned char LowByte(unsigned int value) { return static_cast<unsigned char>(value); }

}  // namespace

TSMBus* TSMBus::GetInstance() {
  if (!g_Instance) g_Instance = new TSMBus;
  return g_Instance;
}

void TSMBus::FreeInstance() {
  delete g_Instance;
  g_Instance = nullptr;
}

TSMBus::TSMBus() { DetectSMBus(); }

void TSMBus::DetectSMBus() {
  Value = -1;
  Config = nullptr;
  static_cast<TSMBusCfg&>(*this) = TSMBusCfg();
  Interpreter = std::make_unique<TInterpreter>();
  if (!Interpreter->Hardware) return;
  for (auto& [name, config] : TSMBusConfig::GetInstance()->GetConfigs()) {
    unsigned int result = kNoResult;
    Interpreter->Interpret(config.DetectScript, &result);
    // All 32 bits: the low 8 of one controller's result are 0 on boards of many others.
    if (result != 0) continue;
    Config = &config;
    static_cast<TSMBusCfg&>(*this) = config;
    return;
  }
}

// --- scripts ---

void TSMBus::Run(const VynString& script) { Interpreter->Interpret(scripts_.Get(script)); }

unsigned char TSMBus::RunForResult(const VynString& script) {
  unsigned int result = kNoResult;
  Interpreter->Interpret(scripts_.Get(script), &result);
  return LowByte(result);
}

void TSMBus::RunWith(const VynString& prefix, unsigned int value) {
  // The argument list stays open: no closing bracket follows.
  Interpreter->Interpret(scripts_.GetWith(prefix, value));
}

bool TSMBus::Idle() { return RunForResult(WaitIdleScript) == IdleValue; }

bool TSMBus::Failed() {
  Run(WaitIdleScript);
  return false;
}

void TSMBus::Select(unsigned char address, bool read, unsigned int command) {
  RunWith(AddressPrefix, LowByte(read ? address | kReadBit : address & ~kReadBit));
  RunWith(CommandPrefix, command);
}

bool TSMBus::Begin(const VynString& baseScript) {
  Interpreter = std::make_unique<TInterpreter>();
  // What puts the controller back is parsed before it is changed, so that memory cannot run out for it.
  scripts_.Get(WaitIdleScript);
  scripts_.Get(RestoreScript);
  Run(DetectScript);
  const script::Program& enable = scripts_.Get(EnableScript);
  stage_ = Stage::kEnabled;
  Interpreter->Interpret(enable);
  Run(baseScript);
  if (!Idle()) return false;
  stage_ = Stage::kTransferring;
  return true;
}

void TSMBus::End() noexcept {
  const Stage reached = std::exchange(stage_, Stage::kNothingDone);
  try {
    if (reached == Stage::kTransferring) Run(WaitIdleScript);
    if (reached != Stage::kNothingDone) Run(RestoreScript);
  } catch (...) {  // Hundreds of other scripts came in between, and there is no memory to parse these two again.
  }
}

// --- bytes and words ---

TSMBus::Moved TSMBus::MoveElement(const SMBusProtocol& protocol, unsigned char address, unsigned int command,
                                  unsigned char* data) {
  if (!Idle()) return Moved::kFailed;
  Select(address, protocol.read, command);
  if (!protocol.read)
    for (int i = 0; i < protocol.width; ++i) RunWith(this->*protocol.data[i], data[i]);
  Run(this->*protocol.startScript);
  const unsigned char result = RunForResult(this->*protocol.waitScript);
  if (RetryValue != 0 && result == RetryValue) {
    Run(RetryScript);
    return Moved::kAgain;
  }
  if ((result & ErrorMask) != 0) {
    Failed();
    return Moved::kFailed;
  }
  if (protocol.read)
    for (int i = 0; i < protocol.width; ++i) data[i] = RunForResult(this->*protocol.data[i]);
  return Moved::kDone;
}

bool TSMBus::Move(const SMBusProtocol& protocol, const Span& span) {
  unsigned int command = span.command;
  unsigned char* data = span.buffer;
  for (int done = 0; done < span.count;) {
    const Moved moved = MoveElement(protocol, span.address, command, data);
    if (moved == Moved::kFailed) return false;
    if (moved == Moved::kAgain) continue;
    ++done;
    command += static_cast<unsigned int>(span.step);
    data += protocol.width;
  }
  return true;
}

int TSMBus::MoveThrough(const SMBusProtocol& protocol, const Span& span, const VynString& baseScript) {
  return Transact(baseScript, [&] { return Move(protocol, span); });
}

int TSMBus::MoveAnywhere(const SMBusProtocol& protocol, const Span& span) {
  for (const VynString* base : BaseScripts())
    if (!base->IsEmpty() && MoveThrough(protocol, span, *base) != 0) return 1;
  return 0;
}

int TSMBus::ReadSmbusByte(unsigned char address, unsigned char* buffer, unsigned char command, int count,
                          VynString baseScript) {
  return MoveThrough(kSMBusByteRead, {address, buffer, command, count, 1}, baseScript);
}
int TSMBus::ReadSmbusByte(unsigned char address, unsigned char* buffer, unsigned char command, int count) {
  return MoveAnywhere(kSMBusByteRead, {address, buffer, command, count, 1});
}
int TSMBus::ReadSmbusByte(unsigned char address, unsigned char* buffer, int count) {
  return ReadSmbusByte(address, buffer, 0, count);
}

int TSMBus::WriteSmbusByte(unsigned char address, unsigned char* buffer, unsigned char command, int count,
                           VynString baseScript) {
  return MoveThrough(kSMBusByteWrite, {address, buffer, command, count, 1}, baseScript);
}
int TSMBus::WriteSmbusByte(unsigned char address, unsigned char* buffer, unsigned char command, int count) {
  return MoveAnywhere(kSMBusByteWrite, {address, buffer, command, count, 1});
}
int TSMBus::WriteSmbusByte(unsigned char address, unsigned char* buffer, int count) {
  return WriteSmbusByte(address, buffer, 0, count);
}
int TSMBus::WriteSmbusByte(unsigned char address, unsigned char command, char value) {
  unsigned char data = static_cast<unsigned char>(value);
  return WriteSmbusByte(address, &data, command, 1);
}

int TSMBus::ReadSmbusWord(unsigned char address, unsigned char* buffer, unsigned char command, int count,
                          VynString baseScript) {
  return MoveThrough(kSMBusWordRead, {address, buffer, command, count, 1}, baseScript);
}
int TSMBus::ReadSmbusWord(unsigned char address, unsigned char* buffer, unsigned char command, int count) {
  return MoveAnywhere(kSMBusWordRead, {address, buffer, command, count, 1});
}
int TSMBus::ReadSmbusWord(unsigned char address, unsigned char* buffer, int count) {
  return ReadSmbusWord(address, buffer, 0, count);
}

int TSMBus::WriteSmbusWord(unsigned char address, unsigned char* buffer, unsigned char command, int count,
                           VynString baseScript) {
  return MoveThrough(kSMBusWordWrite, {address, buffer, command, count, 1}, baseScript);
}
int TSMBus::WriteSmbusWord(unsigned char address, unsigned char* buffer, unsigned char command, int count) {
  return MoveAnywhere(kSMBusWordWrite, {address, buffer, command, count, 1});
}
int TSMBus::WriteSmbusWord(unsigned char address, unsigned char* buffer, int count) {
  return WriteSmbusWord(address, buffer, 0, count);
}
int TSMBus::WriteSmbusWord(unsigned char address, unsigned char command, unsigned short value) {
  unsigned char data[] = {LowByte(value), LowByte(value >> 8)};
  return WriteSmbusWord(address, data, command, 1);
}
