// SPDX-License-Identifier: MIT
// The words of the script language, one row each with the limits of its operands.
#include "script/Commands.h"

#include <functional>
#include <utility>
#include <vector>

#include "script/TInterpreter.h"

namespace script {

namespace {

using Rw = TReadWrite;

constexpr uint32_t kAny = 0xFFFFFFFF;
constexpr uint32_t kMaxPort = 0xFFFF;
constexpr uint32_t kMaxIndex = 0xFF;
constexpr Limits kFree = {kAny, kAny, kAny, kAny, kAny};
constexpr Limits kPort = {kMaxPort, kAny, kAny, kAny, kAny};
constexpr Limits kIndexData = {kMaxPort, kMaxPort, kMaxIndex, kAny, kAny};
constexpr Limits kPciLocation = {255, 31, 7, 255, kAny};

constexpr bool kHardware = true;
constexpr bool kNoHardware = false;

constexpr uint32_t kPageBytes = 256;
constexpr uint32_t kMaxBlockBytes = 1u << 20;
constexpr const char* kTextSearch = "/S";

constexpr Outcome kFailed = {Outcome::kFailed};
constexpr Outcome kDone = {Outcome::kDone};
constexpr Outcome Yield(uint32_t value) { return {Outcome::kValue, value}; }

// --- hardware ---

/// Calls a method with the operands in order, each cut to the width of its parameter.
template <typename T, typename... Parameters, size_t... i>
T Call(TInterpreter& interpreter, T (Rw::*method)(Parameters...), std::index_sequence<i...>) {
  return (interpreter.Hardware->*method)(static_cast<Parameters>(interpreter.Operands[i])...);
}
template <typename T, typename... Parameters>
T Call(TInterpreter& interpreter, T (Rw::*method)(Parameters...)) {
  return Call(interpreter, method, std::index_sequence_for<Parameters...>());
}

template <auto method>
Outcome Read(TInterpreter& interpreter) {
  return Yield(Call(interpreter, method));
}

template <auto method>
Outcome Write(TInterpreter& interpreter) {
  Call(interpreter, method);
  return kDone;
}

/// For encoded addresses in the ordinary configuration space: the register, operand 1, is 8 bits wide.
template <auto access>
Outcome Narrow(TInterpreter& interpreter) {
  interpreter.Operands[1] &= 0xFF;
  return access(interpreter);
}

template <uint32_t (Rw::*find)(uint32_t, uint8_t)>
Outcome Find(TInterpreter& interpreter) {
  return Yield(Call(interpreter, find) & 0xFFFF);
}

Outcome ReadMemoryBlock(TInterpreter& interpreter) {
  const auto& [address, length, c, d, e] = interpreter.Operands;
  if (length > kMaxBlockBytes) return kFailed;
  std::vector<uint8_t> bytes(length + size_t{1});
  interpreter.Hardware->MemoryReadBlock(address, bytes.data(), length);
  return kDone;
}

/// The argument list without its "/S" words. @return whether there was one
bool TakeTextFlag(TInterpreter& interpreter) {
  VynStringList others;
  for (const VynString& word : interpreter.Arguments->items_)
    if (word != kTextSearch) others.Add(word);
  const bool found = interpreter.CheckOps(kTextSearch);
  interpreter.Arguments->items_.swap(others.items_);
  return found;
}

/// The words left in the argument list, one space between two.
VynString RemainingText(const TInterpreter& interpreter) {
  std::string text;
  for (const VynString& word : interpreter.Arguments->items_) (text += text.empty() ? "" : " ") += word.c_str();
  return VynString(text.c_str());
}

/// The bytes to search for; empty when a byte word is bad.
std::vector<uint8_t> Pattern(TInterpreter& interpreter, bool isText) {
  const VynString text = RemainingText(interpreter);
  const auto length = static_cast<size_t>(text.Length());
  if (isText) return {text.c_str(), text.c_str() + length};
  std::vector<uint8_t> bytes(length / 2 + 1);
  int count = 0;
  if (!interpreter.StrToData(text, bytes.data(), &count)) count = 0;
  bytes.resize(static_cast<size_t>(count));
  return bytes;
}

Outcome FindMemory(TInterpreter& interpreter) {
  const bool isText = TakeTextFlag(interpreter);
  if (!interpreter.GetOps(4)) return kFailed;
  const auto& [start, end, step, wanted, e] = interpreter.Operands;
  std::vector<uint8_t> pattern = Pattern(interpreter, isText);
  const auto length = static_cast<uint32_t>(wanted == 0 ? pattern.size() : wanted);
  if (end <= start || length == 0 || length > pattern.size()) return kFailed;
  return Yield(static_cast<uint32_t>(
      interpreter.Hardware->MemoryFindData(start, end - start, step, 0, pattern.data(), length, false)));
}

// --- arithmetic ---

template <typename Operation>
Outcome Compute(TInterpreter& interpreter) {
  return Yield(Operation{}(interpreter.Operands[0], interpreter.Operands[1]));
}

template <typename Operation>
Outcome Divide(TInterpreter& interpreter) {
  return interpreter.Operands[1] == 0 ? kFailed : Compute<Operation>(interpreter);
}

struct ShiftRight {
  uint32_t operator()(uint32_t a, uint32_t n) const { return a >> n % 32; }
};
struct ShiftLeft {
  uint32_t operator()(uint32_t a, uint32_t n) const { return a << n % 32; }
};
struct Complement {
  // Contract: the second operand must be there and is ignored.
  uint32_t operator()(uint32_t a, uint32_t) const { return ~a; }
};

Outcome CompareWithZero(TInterpreter& interpreter) { return Yield(interpreter.Operands[0] == 0 ? kAny : 0); }

// --- the rest ---

Outcome Delay(TInterpreter& interpreter) {
  interpreter.Delayms(static_cast<int>(interpreter.Operands[0]));
  return kDone;
}

Outcome Unsupported(TInterpreter&) { return kFailed; }

constexpr Command kCommands[] = {
    // word, operands, limits, hardware, access
    {"I", 1, kPort, kHardware, Read<&Rw::IoBaseReadByte>},
    {"I16", 1, kPort, kHardware, Read<&Rw::IoBaseReadWord>},
    {"I32", 1, kPort, kHardware, Read<&Rw::IoBaseReadDword>},
    {"O", 2, kPort, kHardware, Write<&Rw::IoBaseWriteByte>},
    {"O16", 2, kPort, kHardware, Write<&Rw::IoBaseWriteWord>},
    {"O32", 2, kPort, kHardware, Write<&Rw::IoBaseWriteDword>},

    {"IID", 3, kIndexData, kHardware, Read<&Rw::IoIndexReadByte>},
    {"IID16", 3, kIndexData, kHardware, Read<&Rw::IoIndexReadWord>},
    {"IID32", 3, kIndexData, kHardware, Read<&Rw::IoIndexReadDword>},
    {"OID", 4, kIndexData, kHardware, Write<&Rw::IoIndexWriteByte>},
    {"OID16", 4, kIndexData, kHardware, Write<&Rw::IoIndexWriteWord>},
    // Contract: writes the low 16 bits only.
    {"OID32", 4, kIndexData, kHardware, Write<&Rw::IoIndexWriteWord>},

    {"RPCI", 4, kPciLocation, kHardware, Read<&Rw::PciReadByte>},
    {"RPCI16", 4, kPciLocation, kHardware, Read<&Rw::PciReadWord>},
    {"RPCI32", 4, kPciLocation, kHardware, Read<&Rw::PciReadDword>},
    {"WPCI", 5, kPciLocation, kHardware, Write<&Rw::PciWriteByte>},
    {"WPCI16", 5, kPciLocation, kHardware, Write<&Rw::PciWriteWord>},
    {"WPCI32", 5, kPciLocation, kHardware, Write<&Rw::PciWriteDword>},
    // Registers end at 255 here too, and writes go to the ordinary space; both are meant.
    {"RPCIE", 4, kPciLocation, kHardware, Read<&Rw::PciEReadByte>},
    {"RPCIE16", 4, kPciLocation, kHardware, Read<&Rw::PciEReadWord>},
    {"RPCIE32", 4, kPciLocation, kHardware, Read<&Rw::PciEReadDword>},
    {"WPCIE", 5, kPciLocation, kHardware, Write<&Rw::PciWriteByte>},
    {"WPCIE16", 5, kPciLocation, kHardware, Write<&Rw::PciWriteWord>},
    {"WPCIE32", 5, kPciLocation, kHardware, Write<&Rw::PciWriteDword>},

    {"ERPCI", 2, kFree, kHardware, Narrow<Read<&Rw::ePciReadByte>>},
    {"ERPCI16", 2, kFree, kHardware, Narrow<Read<&Rw::ePciReadWord>>},
    {"ERPCI32", 2, kFree, kHardware, Narrow<Read<&Rw::ePciReadDword>>},
    {"EWPCI", 3, kFree, kHardware, Narrow<Write<&Rw::ePciWriteByte>>},
    {"EWPCI16", 3, kFree, kHardware, Narrow<Write<&Rw::ePciWriteWord>>},
    {"EWPCI32", 3, kFree, kHardware, Narrow<Write<&Rw::ePciWriteDword>>},
    {"ERPCIE", 2, kFree, kHardware, Read<&Rw::ePciEReadByte>},
    {"ERPCIE16", 2, kFree, kHardware, Read<&Rw::ePciEReadWord>},
    {"ERPCIE32", 2, kFree, kHardware, Read<&Rw::ePciEReadDword>},
    {"EWPCIE", 3, kFree, kHardware, Write<&Rw::ePciEWriteByte>},
    {"EWPCIE16", 3, kFree, kHardware, Write<&Rw::ePciEWriteWord>},
    {"EWPCIE32", 3, kFree, kHardware, Write<&Rw::ePciEWriteDword>},

    {"FPCI", 1, kFree, kHardware, Find<&Rw::FindPciDevice>, {.hasOptional = true}},
    {"FPCICLASS", 1, kFree, kHardware, Find<&Rw::FindPciClass>, {.hasOptional = true}},

    {"R", 1, kFree, kHardware, Read<&Rw::MemoryReadByte>},
    {"R16", 1, kFree, kHardware, Read<&Rw::MemoryReadWord>},
    {"R32", 1, kFree, kHardware, Read<&Rw::MemoryReadDword>},
    {"W", 2, kFree, kHardware, Write<&Rw::MemoryWriteByte>},
    {"W16", 2, kFree, kHardware, Write<&Rw::MemoryWriteWord>},
    {"W32", 2, kFree, kHardware, Write<&Rw::MemoryWriteDword>},
    {"DMEM", 1, kFree, kHardware, ReadMemoryBlock, {.hasOptional = true, .otherwise = kPageBytes}},
    {"FMEM", 0, kFree, kHardware, FindMemory, {.takesWords = true}},

    {"ADD", 2, kFree, kNoHardware, Compute<std::plus<uint32_t>>},
    {"SUB", 2, kFree, kNoHardware, Compute<std::minus<uint32_t>>},
    {"MUL", 2, kFree, kNoHardware, Compute<std::multiplies<uint32_t>>},
    {"DIV", 2, kFree, kNoHardware, Divide<std::divides<uint32_t>>},
    {"MOD", 2, kFree, kNoHardware, Divide<std::modulus<uint32_t>>},
    {"AND", 2, kFree, kNoHardware, Compute<std::bit_and<uint32_t>>},
    {"OR", 2, kFree, kNoHardware, Compute<std::bit_or<uint32_t>>},
    {"XOR", 2, kFree, kNoHardware, Compute<std::bit_xor<uint32_t>>},
    {"NOT", 2, kFree, kNoHardware, Compute<Complement>},
    {"SHR", 2, kFree, kNoHardware, Compute<ShiftRight>},
    {"SHL", 2, kFree, kNoHardware, Compute<ShiftLeft>},
    {"CMZ", 1, kFree, kNoHardware, CompareWithZero},
    {"DELAY", 1, kFree, kNoHardware, Delay},

    {"CPU", 0, kFree, kNoHardware, Unsupported},
    {"RDMSR", 0, kFree, kNoHardware, Unsupported},
    {"WRMSR", 0, kFree, kNoHardware, Unsupported},
    {"RDPMC", 0, kFree, kNoHardware, Unsupported},
    {"RDCR", 0, kFree, kNoHardware, Unsupported},
    {"WRCR", 0, kFree, kNoHardware, Unsupported},
    {"CPUID", 0, kFree, kNoHardware, Unsupported},
    {"RDTSC", 0, kFree, kNoHardware, Unsupported},
};

}  // namespace

std::span<const Command> Commands() { return kCommands; }

const Command* FindCommand(std::string_view word) {
  for (const Command& command : kCommands)
    if (command.word == word) return &command;
  return nullptr;
}

}  // namespace script

bool TInterpreter::CheckPciCmd() {
  bool inside = true;
  for (size_t i = 0; i < 4; ++i) inside = inside && CheckOpValue(Operands[i], script::kPciLocation[i]);
  return inside;
}
