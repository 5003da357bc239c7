// SPDX-License-Identifier: MIT
// Every text operation on arbitrary texts and positions, in any order.
#include <memory>
#include <string>

#include "fuzz/FuzzMachine.h"
#include "text/StringUtils.h"
#include "text/VynString.h"
#include "text/VynStringList.h"

namespace {

std::string Take(fuzz::Input& input) {
  const auto bytes = input.Bytes(input.Byte());
  return {bytes.begin(), bytes.end()};
}

/// Doubling goes no further: what is longer is only slow.
constexpr int kLongest = 1 << 16;

int Position(fuzz::Input& input) { return static_cast<int>(input.Dword()); }

void Query(const VynString& string, const std::string& a, const std::string& b, int position, int count) {
  const VynString other(a.c_str());
  unsigned long hex;
  double number;
  string.CheckHexString(&hex);
  string.CheckNumericString(&number);
  string.ToInt(1);
  string.ToDouble(1);
  string.ToBool(true);
  string.IsNumeric();
  string.UpperCase();
  string.LowerCase();
  string.Trim();
  string.AfterDelimiter(other);
  string.BeforeDelimiter(other);
  string.GetStringInsideMarks(a.c_str(), b.c_str());
  string.GetStringInsideQutotes();
  string.GetStringInsideBrackets();
  string.Pos(other);
  string.SubString(position, count);
  string.SubString(position);
  (void)(string < other);
  (void)(string == a.c_str());
  (void)(string + other + b.c_str());
}

void Change(VynString& string, uint8_t operation, const std::string& text, int position, int count) {
  switch (operation % 10) {
    case 0:
      string = text.c_str();
      break;
    case 1:
      string += text.c_str();
      break;
    case 2:
      if (string.Length() < kLongest) string += VynString(string);
      break;
    case 3:
      string.Delete(position, count);
      break;
    case 4:
      string.Delete(position);
      break;
    case 5:
      string.Truncate();
      break;
    case 6:
      string.CopyBuffer(text.c_str(), count % 100000);
      break;
    case 7:
      string.Terminated();
      break;
    case 8:
      string[position] = 'x';
      break;
    default:
      string = VynString::sprintf("%s%d", text.c_str(), position);
      break;
  }
}

void UseList(VynStringList& list, const std::string& text, int position) {
  list.SetCommaText(text.c_str(), ",; ");
  list.Insert(position, text.c_str());
  list.Delete(position);
  (void)list[position];
  list.IndexOf(text.c_str());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input input({data, size});
  VynString string;
  VynStringList list;
  while (!input.Empty()) {
    const uint8_t operation = input.Byte();
    const std::string a = Take(input);
    const std::string b = Take(input);
    const int position = Position(input);
    const int count = Position(input);
    // The spare character is the only thing outside the text that may be written.
    if (operation % 10 != 8 || position != string.Length()) Change(string, operation, a, position, count);
    Query(string, a, b, position, count);
    UseList(list, a, position);
    StringUtils::Hex2Dec(a, 1);
    StringUtils::Str2Dec(a, 1);
    StringUtils::Trim(b);
    IntToStr(static_cast<unsigned>(position));
  }
  return 0;
}
