// SPDX-License-Identifier: MIT
// Strings as numbers, and numbers as strings.
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

#include <safe_mem_lib.h>

#include "text/VynString.h"

namespace {

constexpr char kSpace = ' ';
constexpr double kTwoTo63 = 9223372036854775808.0;

/// A character as a text of its own.
struct CharText {
  char text[2];
  explicit CharText(char character) : text{character, 0} {}
};

/// Defined for every double, see ToInt.
long Truncated(double value) {
  if (std::isnan(value)) return 0;
  if (value >= 2 * kTwoTo63) return -1;
  if (value >= kTwoTo63) return static_cast<long>(static_cast<unsigned long>(value));
  if (value < -kTwoTo63) return std::numeric_limits<long>::min();
  return static_cast<long>(value);
}

/// -1 for no digit. Contract: a 9 is none.
int HexDigit(char character) {
  const int upper = std::toupper(static_cast<unsigned char>(character));
  if (upper >= '0' && upper <= '8') return upper - '0';
  if (upper >= 'A' && upper <= 'F') return upper - 'A' + 10;
  return -1;
}

}  // namespace

VynString VynString::TrimLeft() const {
  const char* from = buffer_ ? buffer_ : "";
  while (*from == kSpace) ++from;
  return VynString(from);
}

VynString VynString::TrimRight() const {
  const char* text = buffer_ ? buffer_ : "";
  size_t length = std::strlen(text);
  while (length > 0 && text[length - 1] == kSpace) --length;
  return Piece(text, static_cast<int>(length));
}

VynString VynString::Trim() const { return TrimRight().TrimLeft(); }

VynString VynString::AfterDelimiter(const char* text, const char* delimiters) {
  if (!text || !delimiters) return {};
  const char* found = std::strpbrk(text, delimiters);
  if (!found) return {};
  // Contract: as many characters are skipped as there are delimiters, whatever follows the first.
  const size_t skipped = std::strlen(delimiters);
  return VynString(found + strnlen(found, skipped));
}
VynString VynString::AfterDelimiter(const char* text, char delimiter) {
  return AfterDelimiter(text, CharText(delimiter).text);
}
VynString VynString::AfterDelimiter(char delimiter) const { return AfterDelimiter(buffer_, delimiter); }
VynString VynString::AfterDelimiter(const char* delimiters) const { return AfterDelimiter(buffer_, delimiters); }
VynString VynString::AfterDelimiter(const VynString& delimiters) const {
  return AfterDelimiter(buffer_, delimiters.buffer_);
}

VynString VynString::BeforeDelimiter(const char* text, const char* delimiter) {
  if (!text) return {};
  // Contract: the delimiter counts as a whole here, unlike in AfterDelimiter.
  const char* found = delimiter ? std::strstr(text, delimiter) : nullptr;
  return found ? Piece(text, static_cast<int>(found - text)) : VynString(text);
}
VynString VynString::BeforeDelimiter(const char* text, char delimiter) {
  return BeforeDelimiter(text, CharText(delimiter).text);
}
VynString VynString::BeforeDelimiter(char delimiter) const { return BeforeDelimiter(buffer_, delimiter); }
VynString VynString::BeforeDelimiter(const char* delimiter) const { return BeforeDelimiter(buffer_, delimiter); }
VynString VynString::BeforeDelimiter(const VynString& delimiter) const {
  return BeforeDelimiter(buffer_, delimiter.buffer_);
}

VynString VynString::GetStringInsideMarks(const char* open, const char* close) const {
  if (!buffer_ || !open || !close) return {};
  const int start = Pos(open) + static_cast<int>(std::strlen(open));
  // Contract: the close mark is searched from the start, so that a mark equal to the open mark finds that one.
  return SubString(start, Pos(close) - start);
}
VynString VynString::GetStringInsideMarks(const VynString& open, const VynString& close) const {
  return GetStringInsideMarks(open.buffer_, close.buffer_);
}
VynString VynString::GetStringInsideMarks(char open, char close) const {
  return GetStringInsideMarks(CharText(open).text, CharText(close).text);
}
VynString VynString::GetStringInsideMarks(const char* text, const char* open, const char* close) {
  return VynString(text).GetStringInsideMarks(open, close);
}
VynString VynString::GetStringInsideMarks(const char* text, char open, char close) {
  return VynString(text).GetStringInsideMarks(open, close);
}
VynString VynString::GetStringInsideQutotes() const { return GetStringInsideMarks('"', '"'); }
VynString VynString::GetStringInsideQutotes(const char* text) { return VynString(text).GetStringInsideQutotes(); }
VynString VynString::GetStringInsideBrackets() const { return GetStringInsideMarks('(', ')'); }
VynString VynString::GetStringInsideBrackets(const char* text) { return VynString(text).GetStringInsideBrackets(); }

int VynString::Pos(const char* pattern) const {
  if (!buffer_ || !pattern) return 0;
  const char* found = std::strstr(buffer_, pattern);
  return found ? static_cast<int>(found - buffer_) + 1 : 0;
}
int VynString::Pos(const VynString& pattern) const { return Pos(pattern.buffer_); }

VynString VynString::SubString(int start, int count) const {
  const int skipped = start < 1 ? 0 : start - 1;
  if (!buffer_ || skipped >= length_ || count < 1) return {};
  const int left = length_ - skipped;
  return Piece(buffer_ + skipped, count < left ? count : left);
}
VynString VynString::SubString(int start) const { return SubString(start, length_); }

VynString VynString::Delete(int index, int count) {
  const int start = index > 1 ? index - 1 : 0;
  if (start >= length_) return *this;
  const int64_t end = int64_t{start} + (count > 0 ? count : 0);
  if (end >= length_ - 1) return Delete(index);
  const int tail = length_ - static_cast<int>(end);
  // Contract: the tail moves to the beginning, over the text before the gap.
  memmove_s(buffer_, static_cast<size_t>(capacity_), buffer_ + end, static_cast<size_t>(tail));
  std::memset(buffer_ + tail + start, 0, static_cast<size_t>(end - start));
  length_ = static_cast<int>(std::strlen(buffer_));
  return *this;
}

VynString VynString::Delete(int index) {
  const int kept = index > 1 ? index : 0;
  if (kept >= length_) return *this;
  std::memset(buffer_ + kept, 0, static_cast<size_t>(capacity_ - kept));
  length_ = static_cast<int>(std::strlen(buffer_));
  return *this;
}
VynString VynString::SetLength(int length) { return Delete(length); }

int VynString::CheckHexString(unsigned long* value) const {
  const char* text = buffer_ ? buffer_ : "";
  if (text[0] != '0' || (text[1] != 'x' && text[1] != 'X') || text[2] == 0) return 0;
  unsigned long sum = 0;
  for (const char* digit = text + 2; *digit; ++digit) {
    if (HexDigit(*digit) < 0) return 0;
    sum = sum << 4 | static_cast<unsigned long>(HexDigit(*digit));
  }
  if (value) *value = sum;
  return 1;
}

bool VynString::IsHex() const { return CheckHexString(nullptr) != 0; }

int VynString::CheckNumericString(double* value) const {
  if (!buffer_) return 0;
  char* end = nullptr;
  const double number = std::strtod(buffer_, &end);
  if (*end != 0) return 0;
  if (value) *value = number;
  return 1;
}

bool VynString::IsNumeric() const { return IsHex() || CheckNumericString(nullptr) != 0; }

double VynString::ToDouble(double otherwise) const {
  double number = 0;
  if (CheckNumericString(&number)) return number;
  unsigned long value = 0;
  return CheckHexString(&value) ? static_cast<double>(value) : otherwise;
}

long VynString::ToInt(long otherwise) const {
  double number = 0;
  if (CheckNumericString(&number)) return Truncated(number);
  unsigned long value = 0;
  return CheckHexString(&value) ? static_cast<long>(value) : otherwise;
}
long VynString::ToIntDef(long otherwise) const { return ToInt(otherwise); }

double VynString::ToDouble(const char* text, double otherwise) {
  return text ? VynString(text).ToDouble(otherwise) : otherwise;
}
long VynString::ToInt(const char* text, long otherwise) { return text ? VynString(text).ToInt(otherwise) : otherwise; }
long VynString::ToIntDef(const char* text, long otherwise) { return ToInt(text, otherwise); }

bool VynString::ToBool(bool otherwise) const {
  const VynString upper = UpperCase();
  if (upper == "1" || upper == "TRUE") return true;
  if (upper == "0" || upper == "FALSE") return false;
  return otherwise;
}
