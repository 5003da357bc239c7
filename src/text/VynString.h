// SPDX-License-Identifier: MIT
/// The library's counted text: always NUL-terminated, zero-filled beyond the text, passed by value between subsystems.
/// Positions are 1-based; comparisons order by length first.
#pragma once

#include <string>

/// Buffer sizes grow by a rule: n characters need the smallest multiple of 32 strictly greater than n + 1 bytes.
/// No operation fails on bad input: a null pointer, an absent delimiter or a position outside the text gives an empty
/// string, no change, 0 or the caller's default. Texts longer than 256 MB are cut.
class VynString {
 public:
  char spare_ = 0;          ///< what operator[] refers to outside the text
  char* buffer_ = nullptr;  ///< owned; null only after Terminated() and in copies made of such a string
  int capacity_ = 0;        ///< usable bytes of the buffer
  int length_ = 0;          ///< characters of the text, without the terminator

  // --- construction and storage ---

  /// Empty, with a capacity of 32.
  VynString();
  /// Empty, with a capacity of exactly `capacity` bytes (negative counts as 0).
  explicit VynString(int capacity);
  /// A copy of a string without a buffer has none either.
  VynString(const VynString& other);
  VynString(const char* text);
  /// The first `count` characters of `text`, as `CopyBuffer(text, count)` takes them.
  VynString(const char* text, int count);
  virtual ~VynString();

  /// Allocates a zeroed buffer of `capacity` bytes and sets the length to 0. An earlier buffer is not freed.
  void Initialize(int capacity);
  /// Frees the buffer: the string has none until text is copied in.
  void Terminated();

  /// Takes over a text; the buffer is reallocated only when it is too small. @return 1, or 0 for a null text.
  int CopyBuffer(const char* text);
  /// The same with `count` characters of the text; the buffer is large enough for the whole text. Beyond
  /// the end of the text there are zeros, which the length counts; a negative count takes nothing.
  int CopyBuffer(const char* text, int count);
  /// Copies min(count, size) bytes to `destination`. @return 1, or 0 for a null pointer or a count below 1.
  static int CopyBuffer(const char* source, int count, char*& destination, int size);

  /// Appends in place when the capacity suffices, else in a new buffer. Only the latter updates `Length()`.
  void AppendBuffer(const char* text);
  void AppendBuffer(const VynString& text);

  /// Shrinks a buffer of more than 31 bytes to what the length needs. @return the capacity
  int Truncate();

  char* Buffer() const { return buffer_; }
  const char* c_str() const { return buffer_; }
  int Length() const { return length_; }
  int Capacity() const { return capacity_; }
  bool IsEmpty() const { return length_ == 0; }
  /// 0-based; the terminator may be referred to. Outside the text the reference is to a spare character, set to 0.
  char& operator[](int index);

  VynString& operator=(const char* text);
  VynString& operator=(const VynString& other);
  VynString& operator=(const std::string& text);
  VynString& operator+=(const char* text);
  VynString& operator+=(const VynString& text);
  VynString operator+(const char* text) const;
  VynString operator+(const VynString& text) const;

  // --- comparison: length first, then bytes ---

  /// @return -1 when this string is shorter than `text`, 1 when longer, else the result of memcmp
  int CompareBuffer(const char* text) const;
  bool operator==(const char* text) const { return CompareBuffer(text) == 0; }
  bool operator!=(const char* text) const { return CompareBuffer(text) != 0; }
  bool operator<(const char* text) const { return CompareBuffer(text) < 0; }
  bool operator>(const char* text) const { return CompareBuffer(text) > 0; }
  bool operator==(const VynString& other) const { return CompareText(other.buffer_, other.length_) == 0; }
  bool operator!=(const VynString& other) const { return CompareText(other.buffer_, other.length_) != 0; }
  bool operator<(const VynString& other) const { return CompareText(other.buffer_, other.length_) < 0; }
  bool operator>(const VynString& other) const { return CompareText(other.buffer_, other.length_) > 0; }

  // --- formatting ---

  /// The complete result, whatever its length.
  static VynString sprintf(const char* format, ...) __attribute__((format(printf, 1, 2)));
  static VynString IntToStr(long value);

  // --- case and spaces ---

  VynString UpperCase() const;
  VynString LowerCase() const;
  static VynString UpperCase(const char* text);
  static VynString LowerCase(const char* text);
  /// Only the space character is trimmed; tabs and line ends stay.
  VynString TrimLeft() const;
  VynString TrimRight() const;
  VynString Trim() const;

  // --- delimiters ---

  /// Finds the first character that is any of `delimiters`, skips as many characters as there are delimiters from there
  /// and returns the rest; empty when there is none.
  static VynString AfterDelimiter(const char* text, const char* delimiters);
  static VynString AfterDelimiter(const char* text, char delimiter);
  VynString AfterDelimiter(char delimiter) const;
  VynString AfterDelimiter(const char* delimiters) const;
  VynString AfterDelimiter(const VynString& delimiters) const;
  /// The text before the first occurrence of `delimiter` as a whole; all of it when there is none.
  static VynString BeforeDelimiter(const char* text, const char* delimiter);
  static VynString BeforeDelimiter(const char* text, char delimiter);
  VynString BeforeDelimiter(char delimiter) const;
  VynString BeforeDelimiter(const char* delimiter) const;
  VynString BeforeDelimiter(const VynString& delimiter) const;

  // --- marks ---

  /// The text from behind the first `open` to before the first `close`, both searched from the start: with equal marks
  /// the result is always empty. An absent `open` counts as standing at position 0.
  VynString GetStringInsideMarks(const char* open, const char* close) const;
  VynString GetStringInsideMarks(const VynString& open, const VynString& close) const;
  VynString GetStringInsideMarks(char open, char close) const;
  static VynString GetStringInsideMarks(const char* text, const char* open, const char* close);
  static VynString GetStringInsideMarks(const char* text, char open, char close);
  /// Double quotes as both marks.
  VynString GetStringInsideQutotes() const;
  static VynString GetStringInsideQutotes(const char* text);
  /// Round brackets.
  VynString GetStringInsideBrackets() const;
  static VynString GetStringInsideBrackets(const char* text);

  // --- positions and pieces, 1-based ---

  /// Position of the first occurrence; 0 when there is none. An empty pattern stands at 1.
  int Pos(const char* pattern) const;
  int Pos(const VynString& pattern) const;
  /// Up to `count` characters from `start` on; a start below 1 counts as 1.
  VynString SubString(int start, int count) const;
  VynString SubString(int start) const;
  /// Deletes in place and returns a copy of the result. Behind the first character the tail moves to the beginning of
  /// the text, not to the gap; with at most one character left behind the gap, the first `index` characters stay.
  VynString Delete(int index, int count);
  /// Keeps the first `index` characters; an index of 1 or less empties the string.
  VynString Delete(int index);
  VynString SetLength(int length);

  // --- numbers ---

  /// "0x" or "0X" and hexadecimal digits without a 9. @return 1 with the value (modulo 2^64) stored, or 0
  int CheckHexString(unsigned long* value) const;
  bool IsHex() const;
  /// The whole text as strtod reads it; an empty text is 0. @return 1 with the value stored, or 0
  int CheckNumericString(double* value) const;
  bool IsNumeric() const;

  /// The value of `CheckNumericString`, else of `CheckHexString`, else `otherwise`.
  double ToDouble(double otherwise) const;
  /// The same, truncated to 64 bits: from 2^63 up the bits of the unsigned value, from 2^64 up and for infinity all
  /// ones (-1), below -2^63 and for minus infinity -2^63, for not-a-number 0.
  long ToInt(long otherwise) const;
  long ToIntDef(long otherwise) const;
  static double ToDouble(const char* text, double otherwise);
  static long ToInt(const char* text, long otherwise);
  static long ToIntDef(const char* text, long otherwise);
  /// "0" and "FALSE" are false, "1" and "TRUE" true, in any case of letters; anything else is `otherwise`.
  bool ToBool(bool otherwise) const;

 private:
  bool Holds(const char* text) const;
  void Reserve(int characters);
  int CompareText(const char* text, int length) const;
  static VynString Joined(const char* left, int leftLength, const char* right, int rightLength);
  static VynString Piece(const char* text, int length) { return Joined(text, length, nullptr, 0); }
};

VynString operator+(const char* text, const VynString& string);

/// Decimal, without padding.
VynString IntToStr(unsigned int value);
