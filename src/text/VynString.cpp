// SPDX-License-Identifier: MIT
// The string's buffer: growing, copying, comparing, cutting.
#include "text/VynString.h"

#include <algorithm>
#include <cctype>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <utility>

#include <safe_mem_lib.h>
#include <safe_str_lib.h>

namespace {

constexpr int kGranule = 32;
/// Keeps every capacity within what memcpy_s copies at once.
constexpr size_t kLongest = RSIZE_MAX_MEM - size_t{2} * kGranule;

int TextLength(const char* text) { return text ? static_cast<int>(strnlen(text, kLongest)) : 0; }

int Granules(int bytes) { return bytes / kGranule * kGranule + kGranule; }

/// One byte more than the capacity, so that a text without its terminator still ends inside the buffer.
char* Allocate(int capacity) { return new char[static_cast<size_t>(capacity) + 1](); }

void CopyBytes(char* destination, int room, const char* source, int count) {
  if (count > 0) memcpy_s(destination, static_cast<size_t>(room), source, static_cast<size_t>(count));
}

void Clear(char* from, int count) {
  if (count > 0) std::memset(from, 0, static_cast<size_t>(count));
}

template <int (*Convert)(int)>
VynString Converted(const char* text) {
  VynString result(text);
  for (int i = 0; i < result.length_; ++i)
    result.buffer_[i] = static_cast<char>(Convert(static_cast<unsigned char>(result.buffer_[i])));
  return result;
}

}  // namespace

VynString::VynString() { Initialize(kGranule); }

VynString::VynString(int capacity) { Initialize(capacity); }

VynString::VynString(const VynString& other) {
  // Contract: a string without a buffer is copied without one.
  if (!other.buffer_) return;
  Initialize(Granules(TextLength(other.buffer_) + 1));
  CopyBuffer(other.buffer_);
}

VynString::VynString(const char* text) {
  Initialize(Granules(TextLength(text) + 1));
  CopyBuffer(text);
}

VynString::VynString(const char* text, int count) : VynString() { CopyBuffer(text, count); }

VynString::~VynString() { delete[] buffer_; }

void VynString::Initialize(int capacity) {
  capacity_ = capacity > 0 ? capacity : 0;
  // Contract: an earlier buffer stays allocated.
  buffer_ = Allocate(capacity_);
  length_ = 0;
}

void VynString::Terminated() {
  delete[] buffer_;
  buffer_ = nullptr;
  capacity_ = 0;
  length_ = 0;
}

/// Whether `text` points into the own buffer, which copying clears first.
bool VynString::Holds(const char* text) const {
  return buffer_ && !std::less<>{}(text, buffer_) && std::less_equal<>{}(text, buffer_ + capacity_);
}

/// A zeroed buffer for that many characters; the present one when it is large enough.
void VynString::Reserve(int characters) {
  if (buffer_ && capacity_ > characters) return Clear(buffer_, capacity_ + 1);
  delete[] buffer_;
  buffer_ = nullptr;
  Initialize(Granules(characters + 1));
}

/// Both lengths are below 2^28, so that their sum fits.
VynString VynString::Joined(const char* left, int leftLength, const char* right, int rightLength) {
  VynString result(Granules(leftLength + rightLength + 1));
  CopyBytes(result.buffer_, result.capacity_, left, leftLength);
  CopyBytes(result.buffer_ + leftLength, result.capacity_ - leftLength, right, rightLength);
  result.length_ = leftLength + rightLength;
  return result;
}

int VynString::CopyBuffer(const char* text) { return CopyBuffer(text, TextLength(text)); }

int VynString::CopyBuffer(const char* text, int count) {
  if (!text) return 0;
  if (Holds(text)) return CopyBuffer(VynString(text).buffer_, count);
  const int available = TextLength(text);
  const int length = std::clamp(count, 0, static_cast<int>(kLongest));
  Reserve(std::max(available, length));
  CopyBytes(buffer_, capacity_, text, std::min(length, available));
  length_ = length;
  return 1;
}

int VynString::CopyBuffer(const char* source, int count, char*& destination, int size) {
  if (!source || !destination || count < 1) return 0;
  CopyBytes(destination, size, source, count < size ? count : size);
  return 1;
}

void VynString::AppendBuffer(const char* text) {
  if (!text) return;
  if (!buffer_) {
    CopyBuffer(text);
    return;
  }
  if (Holds(text)) return AppendBuffer(VynString(text));
  const int added = TextLength(text);
  const int total = length_ + added;
  if (capacity_ >= Granules(total)) {
    Clear(buffer_ + length_, capacity_ + 1 - length_);
    // Contract: the stored length stays as it was.
    CopyBytes(buffer_ + length_, capacity_ - length_, text, added);
    return;
  }
  VynString joined(Granules(total));
  CopyBytes(joined.buffer_, joined.capacity_, buffer_, length_);
  CopyBytes(joined.buffer_ + length_, joined.capacity_ - length_, text, added);
  std::swap(buffer_, joined.buffer_);
  capacity_ = joined.capacity_;
  length_ = total;
}

void VynString::AppendBuffer(const VynString& text) { AppendBuffer(text.buffer_); }

int VynString::Truncate() {
  if (!buffer_ || capacity_ < kGranule) return capacity_;
  const int kept = Granules(length_);
  char* smaller = Allocate(kept);
  const int characters = TextLength(buffer_);
  CopyBytes(smaller, kept, buffer_, characters < kept ? characters : kept - 1);
  delete[] buffer_;
  buffer_ = smaller;
  capacity_ = kept;
  return capacity_;
}

char& VynString::operator[](int index) {
  if (buffer_ && index >= 0 && index <= length_) return buffer_[index];
  spare_ = 0;
  return spare_;
}

VynString& VynString::operator=(const char* text) {
  CopyBuffer(text);
  return *this;
}
VynString& VynString::operator=(const VynString& other) {
  if (this == &other) return *this = VynString(other);
  return *this = other.buffer_;
}
VynString& VynString::operator=(const std::string& text) { return *this = text.c_str(); }

VynString& VynString::operator+=(const char* text) {
  AppendBuffer(text);
  return *this;
}
VynString& VynString::operator+=(const VynString& text) { return *this += text.buffer_; }

VynString VynString::operator+(const char* text) const {
  return Joined(buffer_, TextLength(buffer_), text, TextLength(text));
}
VynString VynString::operator+(const VynString& text) const { return *this + text.buffer_; }
VynString operator+(const char* text, const VynString& string) { return VynString(text) + string; }

int VynString::CompareBuffer(const char* text) const { return CompareText(text, TextLength(text)); }

int VynString::CompareText(const char* text, int length) const {
  // Contract: shorter texts come first whatever they hold.
  if (length_ != length) return length_ < length ? -1 : 1;
  return length_ == 0 ? 0 : std::memcmp(buffer_, text, static_cast<size_t>(length_));
}

VynString VynString::sprintf(const char* format, ...) {
  if (!format) return {};
  va_list arguments;
  va_start(arguments, format);
  va_list again;
  va_copy(again, arguments);
  char scratch[4096] = {};
  const int length = std::vsnprintf(scratch, sizeof scratch, format, arguments);
  va_end(arguments);
  if (length < 0) {
    va_end(again);
    return {};
  }
  const size_t size = static_cast<size_t>(length) + 1;
  const auto text = std::make_unique<char[]>(size);
  va_list last;
  va_copy(last, again);
  // vsnprintf_s takes no text longer than 32 KB and no null argument of %s.
  if (vsnprintf_s(text.get(), size, format, again) != length) std::vsnprintf(text.get(), size, format, last);
  va_end(last);
  va_end(again);
  return VynString(text.get());
}

VynString VynString::IntToStr(long value) { return sprintf("%ld", value); }

VynString IntToStr(unsigned int value) {
  char scratch[12] = {};
  sprintf_s(scratch, sizeof scratch, "%*u", 8, value);
  return VynString(scratch).TrimLeft();
}

VynString VynString::UpperCase() const { return UpperCase(buffer_); }
VynString VynString::LowerCase() const { return LowerCase(buffer_); }
VynString VynString::UpperCase(const char* text) { return Converted<std::toupper>(text); }
VynString VynString::LowerCase(const char* text) { return Converted<std::tolower>(text); }
