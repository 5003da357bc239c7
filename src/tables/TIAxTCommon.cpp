// SPDX-License-Identifier: MIT
// The executor: one runner per kind and form of access command, chosen by its opcode.
#include "tables/TIAxTCommon.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <utility>

#include "hw/Platform.h"
#include "hw/TReadWrite.h"
#include "layout/LittleEndian.h"
#include "smbus/TSMBus.h"

using namespace layout;

namespace {

/// A field of a command: the offset is known when the kind and form are.
template <CommandField field>
uint64_t LoadField(const unsigned char* bytes) {
  if constexpr (field.bytes == 1) return bytes[field.offset];
  if constexpr (field.bytes == 2) return Load16(bytes + field.offset);
  if constexpr (field.bytes == 4) return Load32(bytes + field.offset);
  if constexpr (field.bytes == 8) return Load64(bytes + field.offset);
  if constexpr (field.bytes == 0) return 0;
}

/// The AND, then the OR step, as far as the control word asks for them in the direction.
uint64_t Masked(uint64_t value, uint16_t control, uint64_t andMask, uint64_t orMask, uint8_t direction) {
  if ((control & (direction == 0 ? kGetAnd : kSetAnd)) != 0) value &= andMask;
  if ((control & (direction == 0 ? kGetOr : kSetOr)) != 0) value |= orMask;
  return value;
}

void Wait(uint64_t microseconds) {
  constexpr uint64_t kLongestSleep = 0xFFFFFFFF;
  for (; microseconds > kLongestSleep; microseconds -= kLongestSleep) platform::SleepMicroseconds(kLongestSleep);
  platform::SleepMicroseconds(static_cast<uint32_t>(microseconds));
}

/// One command of a known kind and form: the bytes, read by that row of the layouts.
template <size_t row>
class Command {
 public:
  static constexpr CommandLayout kLayout = kCommandLayouts[row];
  static constexpr bool kIsIndexed = kLayout.form == kFormIndexData;
  static constexpr bool kIsDelay = kLayout.kind == kCommandDelay;

  explicit Command(unsigned char* bytes) : bytes_(bytes) {}

  bool ArgumentMode() const { return (Control() & kArgumentMode) != 0; }
  uint32_t Argument() const { return static_cast<uint32_t>(LoadField<kLayout.argument>(bytes_)); }
  bool NamesArgument(unsigned count) const { return ArgumentMode() && Argument() < count; }
  bool IsExpected(uint64_t value) const {
    const uint64_t expected = LoadField<kLayout.expected>(bytes_);
    if constexpr (kLayout.valueBytes == sizeof(uint16_t)) return static_cast<uint16_t>(value) == expected;
    return static_cast<uint32_t>(value) == expected;
  }
  uint64_t Masked(uint64_t value, uint8_t direction) const {
    return ::Masked(value, Control(), LoadField<kLayout.andMask>(bytes_), LoadField<kLayout.orMask>(bytes_), direction);
  }
  /// The argument with itself as the OR mask, which the table keeps from then on.
  uint64_t KeepAndMask(uint64_t argument, uint8_t direction) const {
    Store32(bytes_ + kLayout.orMask.offset, static_cast<uint32_t>(argument));
    return ::Masked(argument, Control(), LoadField<kLayout.andMask>(bytes_), argument, direction);
  }

  /// What is read is in the low bytes of `value`; the rest, and all of it after a failure, is 0.
  void Fetch(TReadWrite& rw, TSMBus& smbus, unsigned long long& value) const {
    value = 0;
    if constexpr (kLayout.kind == kCommandMemory) rw.MemoryReadBlock(Address(), &value, Width());
    if constexpr (kLayout.kind == kCommandPort && !kIsIndexed) rw.IoBaseReadBlock(Port(), &value, Width());
    if constexpr (kIsIndexed) rw.IoIndexReadBlock(Port(), DataPort(), Register(), &value, EndRegister());
    if constexpr (kLayout.kind == kCommandMsr) value = rw.rdmsr_on_cpu(Address());
    if constexpr (kLayout.kind == kCommandSmbus) {
      if (Width() == 1) smbus.ReadSmbusByte(Slave(), Bytes(&value), CommandByte(), 1);
      if (Width() == 2) smbus.ReadSmbusWord(Slave(), Bytes(&value), CommandByte(), 1);
    }
    // Contract: what is read from configuration space is not taken; the value stays 0.
    if constexpr (kLayout.kind == kCommandPci) rw.PciReadDword(Bus(), Device(), Function(), PciRegister());
  }

  void Store(TReadWrite& rw, TSMBus& smbus, unsigned long long value) const {
    if constexpr (kLayout.kind == kCommandMemory) rw.MemoryWriteBlock(Address(), &value, Width());
    if constexpr (kLayout.kind == kCommandPort && !kIsIndexed) rw.IoBaseWriteBlock(Port(), &value, Width());
    if constexpr (kIsIndexed) rw.IoIndexWriteBlock(Port(), DataPort(), Register(), &value, EndRegister());
    if constexpr (kLayout.kind == kCommandSmbus) {
      if (Width() == 1) smbus.WriteSmbusByte(Slave(), Bytes(&value), CommandByte(), 1);
      if (Width() == 2) smbus.WriteSmbusWord(Slave(), Bytes(&value), CommandByte(), 1);
    }
    if constexpr (kLayout.kind == kCommandPci)
      rw.PciWriteDword(Bus(), Device(), Function(), PciRegister(), static_cast<uint32_t>(value));
  }

  void Delay(unsigned count) const {
    // Contract: in argument mode the index is the time, not the content of the slot.
    const uint64_t time = NamesArgument(count) ? Argument() : LoadField<kLayout.count>(bytes_);
    switch (LoadField<kLayout.unit>(bytes_)) {
      case kMicroseconds:
        return Wait(time);
      case kMilliseconds:
        return Wait(time * 1000);
      case kSeconds:
        return Wait(time * 1000000);
      default:
        return;
    }
  }

 private:
  unsigned Width() const { return WidthOf(bytes_[0]); }
  uint16_t Control() const { return Load16(bytes_ + kControlOffset); }
  uint32_t Address() const { return static_cast<uint32_t>(LoadField<kLayout.address>(bytes_)); }
  uint16_t Port() const { return static_cast<uint16_t>(Address()); }
  uint16_t DataPort() const { return static_cast<uint16_t>(LoadField<kLayout.second>(bytes_)); }
  uint8_t Register() const { return static_cast<uint8_t>(LoadField<kLayout.third>(bytes_)); }
  /// One past the last register, in 16 bits: beyond 255 the pair goes on with register 0.
  uint16_t EndRegister() const { return static_cast<uint16_t>(Width() + Register()); }
  uint8_t Slave() const { return static_cast<uint8_t>(Address()); }
  uint8_t CommandByte() const { return static_cast<uint8_t>(LoadField<kLayout.second>(bytes_)); }
  uint8_t Bus() const { return static_cast<uint8_t>(Address()); }
  uint8_t Device() const { return static_cast<uint8_t>(LoadField<kLayout.second>(bytes_)); }
  uint8_t Function() const { return static_cast<uint8_t>(LoadField<kLayout.third>(bytes_)); }
  uint16_t PciRegister() const { return static_cast<uint16_t>(LoadField<kLayout.reg>(bytes_)); }
  static unsigned char* Bytes(unsigned long long* value) { return reinterpret_cast<unsigned char*>(value); }

  unsigned char* bytes_;
};

/// What runs a command of one kind and form; arguments as those of IAxTRW, but the bytes themselves.
using Runner = int (*)(const TIAxTCommon& executor, unsigned char* bytes, uint8_t direction, unsigned long long* args,
                       uint8_t count);

template <size_t row>
int Read(const TIAxTCommon& executor, unsigned char* bytes, uint8_t direction, unsigned long long* args,
         uint8_t count) {
  const Command<row> command(bytes);
  if constexpr (command.kIsDelay) {
    command.Delay(count);
    return 0;
  }
  if (executor.ReadWrite == nullptr) return 0;
  // Read in place: the slot takes whatever comes of it.
  unsigned long long& value = args[command.NamesArgument(count) ? command.Argument() : 0];
  command.Fetch(*executor.ReadWrite, *executor.SMBus, value);
  value = command.Masked(value, direction);
  return command.ArgumentMode() || command.IsExpected(value);
}

template <size_t row>
int Write(const TIAxTCommon& executor, unsigned char* bytes, uint8_t direction, unsigned long long* args,
          uint8_t count) {
  const Command<row> command(bytes);
  if constexpr (command.kIsDelay) {
    command.Delay(count);
    return 1;
  }
  if (executor.ReadWrite == nullptr) return 1;
  if (!command.NamesArgument(count)) {
    unsigned long long value;
    command.Fetch(*executor.ReadWrite, *executor.SMBus, value);
    command.Store(*executor.ReadWrite, *executor.SMBus, command.Masked(value, direction));
    return 1;
  }
  uint64_t value = args[command.Argument()];
  // Contract: through a pair, the table keeps the last value written as its OR mask.
  if constexpr (command.kIsIndexed) value = command.KeepAndMask(value, direction);
  command.Store(*executor.ReadWrite, *executor.SMBus, value);
  return 1;
}

int ReadUnknown(const TIAxTCommon&, unsigned char* bytes, uint8_t, unsigned long long*, uint8_t) {
  if (FindKind(*bytes) == nullptr) std::puts("IAxTRead::UNKNOWN INTERFACE !!");
  return 0;
}

/// Model-specific registers can only be read.
int WriteUnknown(const TIAxTCommon&, unsigned char* bytes, uint8_t, unsigned long long*, uint8_t) {
  if (FindKind(*bytes) == nullptr || KindOf(*bytes) == kCommandMsr) std::puts("IAxTWrite::UNKNOWN INTERFACE !!");
  return 1;
}

constexpr uint8_t kOpcodeMask = kKindMask | kFormMask;

/// Who runs a command, by the kind and form bits of its opcode.
struct Runners {
  std::array<Runner, kOpcodeMask + 1> read, write;
};
constexpr Runners kRunners = []<size_t... row>(std::index_sequence<row...>) {
  Runners runners{};
  runners.read.fill(ReadUnknown);
  runners.write.fill(WriteUnknown);
  const auto enter = [&](uint8_t opcode, const CommandLayout& layout, Runner read, Runner write) {
    if (!layout.Fits(opcode)) return;
    runners.read[opcode] = read;
    if (layout.kind != kCommandMsr) runners.write[opcode] = write;
  };
  for (uint8_t opcode = 0; opcode <= kOpcodeMask; ++opcode)
    (enter(opcode, kCommandLayouts[row], Read<row>, Write<row>), ...);
  return runners;
}
(std::make_index_sequence<std::size(kCommandLayouts)>());

}  // namespace

TIAxTCommon* TIAxTCommon::g_Instance = nullptr;

TIAxTCommon* TIAxTCommon::GetInstance() {
  if (g_Instance == nullptr) g_Instance = new TIAxTCommon;
  return g_Instance;
}

void TIAxTCommon::FreeInstance() {
  if (g_Instance == nullptr) return;
  if (g_Instance->SMBus != nullptr) TSMBus::FreeInstance();
  delete g_Instance;
  g_Instance = nullptr;
}

TIAxTCommon::TIAxTCommon() : ReadWrite(TReadWrite::GetInstance()), SMBus(TSMBus::GetInstance()) {}

int tables::RunAccess(const TIAxTCommon& executor, unsigned char* command, unsigned char direction,
                      unsigned long long* args, unsigned char count) {
  const uint16_t control = Load16(command + kControlOffset);
  const uint8_t opcode = *command & kOpcodeMask;
  if ((control & (direction == 0 ? kGetWrites : kSetWrites)) != 0)
    return kRunners.write[opcode](executor, command, direction, args, count);
  if ((control & (direction == 0 ? kGetReads : kSetReads)) != 0)
    return kRunners.read[opcode](executor, command, direction, args, count);
  return 1;
}

int TIAxTCommon::IAxTRW(unsigned char** command, unsigned char direction, unsigned long long* args,
                        unsigned char count) {
  return tables::RunAccess(*this, *command, direction, args, count);
}

int TIAxTCommon::IAxTRead(unsigned char** command, unsigned char direction, unsigned long long* args,
                          unsigned char count) {
  return kRunners.read[**command & kOpcodeMask](*this, *command, direction, args, count);
}

void TIAxTCommon::IAxTWrite(unsigned char** command, unsigned char direction, unsigned long long* args,
                            unsigned char count) {
  kRunners.write[**command & kOpcodeMask](*this, *command, direction, args, count);
}

unsigned long long TIAxTCommon::AndOrProcess(unsigned short control, unsigned long long andMask,
                                             unsigned long long orMask, unsigned char direction,
                                             unsigned long long* value) {
  *value = Masked(*value, control, andMask, orMask, direction);
  return *value;
}

unsigned char TIAxTCommon::GetFunInterface(unsigned char opcode) { return KindOf(opcode); }

int TIAxTCommon::CommandLength(unsigned char opcode) { return static_cast<int>(WidthOf(opcode)); }

bool TIAxTCommon::CompareGetValue(unsigned int a, unsigned int b, bool force) { return force || a == b; }
