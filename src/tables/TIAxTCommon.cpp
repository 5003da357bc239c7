#include "tables/TIAxTCommon.h"

#include <cstdint>
#include <cstdio>

#include "hw/LittleEndian.h"
#include "hw/Platform.h"
#include "hw/TReadWrite.h"
#include "smbus/TSMBus.h"

namespace {

/// One command's bytes, read by its layout.
class Command {
 public:
  explicit Command(unsigned char* bytes) : bytes_(bytes), layout_(FindLayout(bytes[0])) {}

  /// False for an unknown kind, and for a form that the kind does not have.
  bool HasLayout() const { return layout_ != nullptr; }
  bool IsKnownKind() const { return FindKind(bytes_[0]) != nullptr; }
  uint8_t Kind() const { return KindOf(bytes_[0]); }
  bool IsIndexed() const { return layout_->form == kFormIndexData; }
  unsigned Width() const { return WidthOf(bytes_[0]); }
  uint16_t Control() const { return Load16(bytes_ + kControlOffset); }
  bool ArgumentMode() const { return (Control() & kArgumentMode) != 0; }

  uint32_t Address() const { return Load32Field(layout_->address); }
  uint16_t Port() const { return static_cast<uint16_t>(Address()); }
  uint16_t DataPort() const { return static_cast<uint16_t>(Load32Field(layout_->second)); }
  uint8_t Register() const { return static_cast<uint8_t>(Load32Field(layout_->third)); }
  /// One past the last register, in 16 bits: beyond 255 the pair goes on with register 0.
  uint16_t EndRegister() const { return static_cast<uint16_t>(Width() + Register()); }
  uint8_t SlaveAddress() const { return bytes_[layout_->address.offset]; }
  uint8_t CommandByte() const { return bytes_[layout_->second.offset]; }
  uint8_t Bus() const { return bytes_[layout_->address.offset]; }
  uint8_t Device() const { return bytes_[layout_->second.offset]; }
  uint8_t Function() const { return bytes_[layout_->third.offset]; }
  uint16_t PciRegister() const { return Load16(bytes_ + layout_->reg.offset); }

  uint64_t AndMask() const { return LoadField(layout_->andMask); }
  uint64_t OrMask() const { return LoadField(layout_->orMask); }
  void KeepOrMask(uint64_t value) { Store32(bytes_ + layout_->orMask.offset, static_cast<uint32_t>(value)); }
  uint32_t Expected() const { return Load32Field(layout_->expected); }
  /// The part of a value that is compared with the expected one.
  uint32_t Narrow(uint64_t value) const {
    return layout_->valueBytes == sizeof(uint16_t) ? static_cast<uint16_t>(value) : static_cast<uint32_t>(value);
  }
  uint32_t Argument() const { return Load32Field(layout_->argument); }
  bool NamesArgument(unsigned count) const { return ArgumentMode() && Argument() < count; }

  /// Microseconds to wait: the count, or in argument mode the argument index itself, in the command's unit.
  uint64_t Delay(unsigned count) const {
    // The index is the time, not the content of the slot; this is meant.
    const uint64_t time = NamesArgument(count) ? Argument() : Load32Field(layout_->count);
    switch (bytes_[layout_->unit.offset]) {
      case kMicroseconds:
        return time;
      case kMilliseconds:
        return time * 1000;
      case kSeconds:
        return time * 1000000;
      default:
        return 0;
    }
  }

 private:
  uint32_t Load32Field(CommandField field) const { return static_cast<uint32_t>(LoadField(field)); }
  uint64_t LoadField(CommandField field) const {
    const unsigned char* at = bytes_ + field.offset;
    switch (field.bytes) {
      case 1:
        return *at;
      case 2:
        return Load16(at);
      case 4:
        return Load32(at);
      case 8:
        return Load64(at);
      default:
        return 0;
    }
  }

  unsigned char* bytes_;
  const CommandLayout* layout_;
};

void Wait(uint64_t microseconds) {
  constexpr uint64_t kLongestSleep = 0xFFFFFFFF;
  if (microseconds == 0) return;
  for (; microseconds > kLongestSleep; microseconds -= kLongestSleep) platform::SleepMicroseconds(kLongestSleep);
  platform::SleepMicroseconds(static_cast<uint32_t>(microseconds));
}

void ReadSmbus(TSMBus& smbus, const Command& command, void* value) {
  auto* bytes = static_cast<unsigned char*>(value);
  if (command.Width() == 1) smbus.ReadSmbusByte(command.SlaveAddress(), bytes, command.CommandByte(), 1);
  if (command.Width() == 2) smbus.ReadSmbusWord(command.SlaveAddress(), bytes, command.CommandByte(), 1);
}

void WriteSmbus(TSMBus& smbus, const Command& command, void* value) {
  auto* bytes = static_cast<unsigned char*>(value);
  if (command.Width() == 1) smbus.WriteSmbusByte(command.SlaveAddress(), bytes, command.CommandByte(), 1);
  if (command.Width() == 2) smbus.WriteSmbusWord(command.SlaveAddress(), bytes, command.CommandByte(), 1);
}

/// The one place that reads: the low bytes of the result are what was read, the rest 0.
uint64_t Fetch(TReadWrite& rw, TSMBus& smbus, const Command& command) {
  uint64_t value = 0;
  switch (command.Kind()) {
    case kCommandMemory:
      rw.MemoryReadBlock(command.Address(), &value, command.Width());
      break;
    case kCommandPort:
      if (command.IsIndexed())
        rw.IoIndexReadBlock(command.Port(), command.DataPort(), command.Register(), &value, command.EndRegister());
      else
        rw.IoBaseReadBlock(command.Port(), &value, command.Width());
      break;
    case kCommandMsr:
      value = rw.rdmsr_on_cpu(command.Address());
      break;
    case kCommandSmbus:
      ReadSmbus(smbus, command, &value);
      break;
    case kCommandPci:
      // What is read is not taken; the value stays 0. This is the contract.
      rw.PciReadDword(command.Bus(), command.Device(), command.Function(), command.PciRegister());
      break;
    default:
      break;
  }
  return value;
}

void Store(TReadWrite& rw, TSMBus& smbus, const Command& command, uint64_t value) {
  switch (command.Kind()) {
    case kCommandMemory:
      rw.MemoryWriteBlock(command.Address(), &value, command.Width());
      break;
    case kCommandPort:
      if (command.IsIndexed())
        rw.IoIndexWriteBlock(command.Port(), command.DataPort(), command.Register(), &value, command.EndRegister());
      else
        rw.IoBaseWriteBlock(command.Port(), &value, command.Width());
      break;
    case kCommandSmbus:
      WriteSmbus(smbus, command, &value);
      break;
    case kCommandPci:
      rw.PciWriteDword(command.Bus(), command.Device(), command.Function(), command.PciRegister(),
                       static_cast<uint32_t>(value));
      break;
    default:
      break;
  }
}

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

int TIAxTCommon::IAxTRW(unsigned char** command, unsigned char direction, unsigned long long* args,
                        unsigned char count) {
  const uint16_t control = Load16(*command + kControlOffset);
  if ((control & (direction == 0 ? kGetWrites : kSetWrites)) != 0) {
    IAxTWrite(command, direction, args, count);
    return 1;
  }
  if ((control & (direction == 0 ? kGetReads : kSetReads)) == 0) return 1;
  return IAxTRead(command, direction, args, count);
}

int TIAxTCommon::IAxTRead(unsigned char** command, unsigned char direction, unsigned long long* args,
                          unsigned char count) {
  const Command current(*command);
  if (!current.HasLayout()) {
    if (!current.IsKnownKind()) std::puts("IAxTRead::UNKNOWN INTERFACE !!");
    return 0;
  }
  if (current.Kind() == kCommandDelay) {
    Wait(current.Delay(count));
    return 0;
  }
  if (ReadWrite == nullptr) return 0;
  unsigned long long value = Fetch(*ReadWrite, *SMBus, current);
  AndOrProcess(current.Control(), current.AndMask(), current.OrMask(), direction, &value);
  const bool named = current.NamesArgument(count);
  args[named ? current.Argument() : 0] = value;
  return named || CompareGetValue(current.Narrow(value), current.Expected(), current.ArgumentMode());
}

void TIAxTCommon::IAxTWrite(unsigned char** command, unsigned char direction, unsigned long long* args,
                            unsigned char count) {
  Command current(*command);
  if (!current.IsKnownKind() || current.Kind() == kCommandMsr) {
    std::puts("IAxTWrite::UNKNOWN INTERFACE !!");
    return;
  }
  if (!current.HasLayout() || ReadWrite == nullptr) return;
  if (current.Kind() == kCommandDelay) {
    Wait(current.Delay(count));
    return;
  }
  unsigned long long value;
  if (!current.NamesArgument(count)) {
    value = Fetch(*ReadWrite, *SMBus, current);
    AndOrProcess(current.Control(), current.AndMask(), current.OrMask(), direction, &value);
  } else {
    value = args[current.Argument()];
    if (current.Kind() == kCommandPort && current.IsIndexed()) {
      // The table keeps the last value written through it as its OR mask; this is meant.
      current.KeepOrMask(value);
      AndOrProcess(current.Control(), current.AndMask(), value, direction, &value);
    }
  }
  Store(*ReadWrite, *SMBus, current, value);
}

unsigned long long TIAxTCommon::AndOrProcess(unsigned short control, unsigned long long andMask,
                                             unsigned long long orMask, unsigned char direction,
                                             unsigned long long* value) {
  if ((control & (direction == 0 ? kGetAnd : kSetAnd)) != 0) *value &= andMask;
  if ((control & (direction == 0 ? kGetOr : kSetOr)) != 0) *value |= orMask;
  return *value;
}

unsigned char TIAxTCommon::GetFunInterface(unsigned char opcode) { return KindOf(opcode); }

int TIAxTCommon::CommandLength(unsigned char opcode) { return static_cast<int>(WidthOf(opcode)); }

bool TIAxTCommon::CompareGetValue(unsigned int a, unsigned int b, bool force) { return force || a == b; }
