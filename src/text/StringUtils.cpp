// SPDX-License-Identifier: MIT
// Case, blanks at the ends, and tolerant numbers.
#include "text/StringUtils.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <limits>

namespace {

template <int (*Convert)(int)>
std::string Converted(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char character) { return static_cast<char>(Convert(character)); });
  return text;
}

int DigitValue(char character) {
  if (character >= '0' && character <= '9') return character - '0';
  if (character >= 'A' && character <= 'F') return character - 'A' + 10;
  return std::numeric_limits<int>::max();
}

unsigned long Saturated(double value) {
  // 2^64 itself is the first double that does not fit.
  constexpr double kLimit = 18446744073709551616.0;
  return value < kLimit ? static_cast<unsigned long>(value) : std::numeric_limits<unsigned long>::max();
}

unsigned long FromDigits(const std::string& digits, int base, unsigned long otherwise) {
  double sum = 0;
  for (size_t i = 0; i < digits.size(); ++i) {
    const int digit = DigitValue(digits[i]);
    if (digit >= base) return otherwise;
    // Zeros are passed over: their places may lie beyond the largest double.
    if (digit > 0) sum += digit * std::pow(base, static_cast<double>(digits.size() - 1 - i));
  }
  return Saturated(sum);
}

}  // namespace

namespace StringUtils {

const std::string WHITESPACE = " \n\r\t";

std::string UpperCase(std::string text) { return Converted<std::toupper>(std::move(text)); }
std::string LowerCase(std::string text) { return Converted<std::tolower>(std::move(text)); }

std::string TrimLeft(const std::string& text) {
  const size_t first = text.find_first_not_of(WHITESPACE);
  return first == std::string::npos ? std::string() : text.substr(first);
}

std::string TrimRight(const std::string& text) { return text.substr(0, text.find_last_not_of(WHITESPACE) + 1); }

std::string Trim(const std::string& text) { return TrimRight(TrimLeft(text)); }

unsigned long Hex2Dec(std::string text, unsigned long otherwise) {
  const std::string upper = Trim(UpperCase(std::move(text)));
  const size_t prefix = upper.find("0X");
  return FromDigits(prefix == std::string::npos ? upper : upper.substr(prefix + 2), 16, otherwise);
}

unsigned long Str2Dec(std::string text, unsigned long otherwise) {
  return FromDigits(Trim(UpperCase(std::move(text))), 10, otherwise);
}

}  // namespace StringUtils
