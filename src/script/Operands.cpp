// SPDX-License-Identifier: MIT
// Operands as text: numbers, locals, and the normal form of a script.
#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>

#include "script/Program.h"
#include "script/TInterpreter.h"

namespace script {

namespace {

bool ParseDigits(std::string_view digits, int base, unsigned int* number) {
  const char* const end = digits.data() + digits.size();
  return std::from_chars(digits.data(), end, *number, base).ptr == end && !digits.empty();
}

/// The usual forms, for which no conversion of text is needed: numbers that fit 32 bits whatever their digits are.
bool ParsePlainNumber(std::string_view text, unsigned int* number) {
  constexpr size_t kDecimalDigits = 9;
  constexpr size_t kHexDigits = 8;
  if (text.starts_with("0X")) return text.size() <= 2 + kHexDigits && ParseDigits(text.substr(2), 16, number);
  return text.size() <= kDecimalDigits && ParseDigits(text, 10, number);
}

/// @return whether the text converts as a whole
bool ParseNumber(std::string_view text, unsigned int* number) {
  if (ParsePlainNumber(text, number)) return true;
  const VynString word(std::string(text).c_str());
  const long value = word.ToIntDef(0);
  // Two defaults tell a conversion from none.
  if (value != word.ToIntDef(1)) return false;
  *number = static_cast<unsigned int>(value);
  return true;
}

}  // namespace

int ParseSlot(std::string_view digits) {
  const std::string_view name = CutBefore(&digits, '=');
  unsigned int plain = 0;
  if (name.size() == 1 && ParseDigits(name, 16, &plain)) return static_cast<int>(plain);
  const long slot = VynString::ToIntDef(("0x" + std::string(name)).c_str(), TInterpreter::kVariables);
  return slot >= 0 && slot < TInterpreter::kVariables ? static_cast<int>(slot) : -1;
}

bool ParseOperand(std::string_view word, Operand* operand, std::string_view open) {
  if (!open.empty() && word == open) {
    *operand = {.isLocal = true, .number = Operand::kOpenSlot};
    return true;
  }
  // Contract: a number with the suffix "H" is none.
  if (!word.starts_with("LOCAL")) return ParseNumber(word, &operand->number);
  const int slot = ParseSlot(word.substr(5));
  operand->isLocal = true;
  operand->number = static_cast<unsigned int>(slot);
  return slot >= 0;
}

}  // namespace script

namespace {

template <typename T>
std::string Bits(T value) {
  std::string bits(8 * sizeof(T), '0');
  for (size_t i = 0; i < bits.size(); ++i)
    if (value >> (bits.size() - 1 - i) & 1) bits[i] = '1';
  return bits;
}

/// "15     8 7      0": the numbers of the outermost bits above each group of eight.
std::string BitHeading(size_t bytes) {
  std::string heading;
  for (size_t i = bytes; i-- > 0;) {
    const std::string high = std::to_string(8 * i + 7);
    const std::string low = std::to_string(8 * i);
    heading += high + std::string(8 - high.size() - low.size(), ' ') + low + (i > 0 ? " " : "");
  }
  return heading;
}

template <typename T>
void AddBitLines(T value, VynStringList* lines) {
  if (!lines) return;
  std::string bits = Bits(value);
  for (size_t at = 8; at < bits.size(); at += 9) bits.insert(at, " ");
  lines->Add(BitHeading(sizeof(T)).c_str());
  lines->Add(bits.c_str());
}

}  // namespace

VynString TInterpreter::AdjustCmdString(VynString script) {
  const VynString upper = script.Trim().UpperCase();
  std::string text = upper.c_str();
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c == ',' || c == '(' || c == ')'; }, ' ');
  text.resize(text.find_last_not_of(';') + 1);
  return VynString(text.c_str());
}

VynString TInterpreter::AdjustPrefixCmdString(VynString statements) {
  const char* from = statements.Buffer() ? statements.c_str() : "";
  while (*from == ' ' || *from == ';') ++from;
  return VynString(from);
}

bool TInterpreter::GetLocalVarNum(VynString text, int* slot) {
  const int number = script::ParseSlot(text.AfterDelimiter("LOCAL").c_str());
  if (number < 0) return false;
  if (slot) *slot = number;
  return true;
}

bool TInterpreter::CmdToOp(VynString word, unsigned int* value) {
  script::Operand operand;
  if (!word.Buffer() || !script::ParseOperand(word.c_str(), &operand)) return false;
  if (value) *value = Value(operand);
  return true;
}

bool TInterpreter::StrToData(VynString text, unsigned char* data, int* count) {
  VynStringList words;
  words.SetCommaText(text, " ");
  int taken = 0;
  bool good = words.Count() > 0;
  for (const VynString& word : words.items_) {
    unsigned int value = 0;
    // Contract: 256 is taken, and stored as 0.
    good = CmdToOp(word, &value) && value <= 256;
    if (!good) break;
    if (data) data[taken] = static_cast<unsigned char>(value);
    ++taken;
  }
  if (count) *count = taken;
  return good;
}

bool TInterpreter::GetOps(int count) {
  if (count < 0 || count > kOperands) return false;
  for (int i = 0; i < count; ++i)
    if (!GetOp(0, i)) return false;
  return true;
}

bool TInterpreter::GetOp(int index, int operand) {
  if (!Arguments || index < 0 || index >= Arguments->Count() || operand < 0 || operand >= kOperands) return false;
  if (!CmdToOp((*Arguments)[index], &Operands[operand])) return false;
  Arguments->Delete(index);
  return true;
}

bool TInterpreter::GetStrOps(int count) {
  if (count < 0 || count > kOperands) return false;
  for (int i = 0; i < count; ++i)
    if (!GetStrOp(0, i)) return false;
  return true;
}

bool TInterpreter::GetStrOp(int index, int operand) {
  if (!Arguments || index < 0 || index >= Arguments->Count() || operand < 0 || operand >= kOperands) return false;
  StringOperands[operand] = (*Arguments)[index];
  Arguments->Delete(index);
  return true;
}

bool TInterpreter::CheckOps(VynString word) { return Arguments && Arguments->IndexOf(word) >= 0; }

VynString TInterpreter::Return8Bits(unsigned char value) { return Bits(value).c_str(); }
VynString TInterpreter::Return16Bits(unsigned short value) { return Bits(value).c_str(); }
VynString TInterpreter::Return32Bits(unsigned int value) { return Bits(value).c_str(); }
VynString TInterpreter::Return64Bits(unsigned long long value) { return Bits(value).c_str(); }

void TInterpreter::ReturnBits(unsigned char value, VynStringList* lines) { AddBitLines(value, lines); }
void TInterpreter::ReturnBits(unsigned short value, VynStringList* lines) { AddBitLines(value, lines); }
void TInterpreter::ReturnBits(unsigned int value, VynStringList* lines) { AddBitLines(value, lines); }
void TInterpreter::ReturnBits(unsigned long long value, VynStringList* lines) { AddBitLines(value, lines); }
