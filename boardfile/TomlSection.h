/// Reads the values of one TOML table with the checks that board files need: every complaint names the line, and what
/// nobody asked for is an error.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "firmware/Bytes.h"

namespace boardfile {

/// What is wrong with a board file, and where.
struct BoardFileError : std::runtime_error {
  BoardFileError(unsigned lineNumber, const std::string& text) : std::runtime_error(text), line(lineNumber) {}
  unsigned line;
};

/// "0x2E", "46" or a TOML integer; nothing when it is not a number from 0 to 2^64 - 1.
std::optional<uint64_t> ParseNumber(std::string_view text);
/// "06 A0 00" or "06a000"; nothing when it is not pairs of hexadecimal digits.
std::optional<firmware::Bytes> ParseHex(std::string_view text);

/// Copies are the same section.
class TomlSection {
 public:
  /// The whole of a TOML text, from the file `source`; `name` is how complaints call it.
  /// @throws BoardFileError when it is no TOML
  static TomlSection Parse(std::string_view text, std::string_view source, std::string name);

  unsigned Line() const;
  /// Of a key's value; the section's own when the key is absent.
  unsigned LineOf(std::string_view key) const;
  bool Has(std::string_view key) const;
  /// Whether the key's value is something for ByteList and not a single number.
  bool IsList(std::string_view key) const;
  [[noreturn]] void Fail(std::string_view key, const std::string& expected) const;

  /// Leaves a key to somebody else: it counts as asked for.
  void Skip(std::string_view key);
  std::optional<uint64_t> Number(std::string_view key, uint64_t max);
  uint64_t Number(std::string_view key, uint64_t max, uint64_t otherwise);
  uint64_t Need(std::string_view key, uint64_t max);
  bool Flag(std::string_view key, bool otherwise);
  std::optional<std::string> Text(std::string_view key, size_t maxLength);
  std::string NeedText(std::string_view key, size_t maxLength);
  /// A list of bytes, or hexadecimal text.
  std::optional<firmware::Bytes> ByteList(std::string_view key);
  /// A list of numbers up to `max`.
  std::vector<uint64_t> Numbers(std::string_view key, uint64_t max);
  std::optional<TomlSection> Sub(std::string_view key);
  /// The tables of a list of tables, in order; none when the key is absent.
  std::vector<TomlSection> List(std::string_view key);
  /// All keys, for sections whose keys are data; they all count as asked for.
  std::vector<std::string> Keys();

  /// Complains about the first key that nobody asked for.
  void Finish() const;

  /// Position in the file, for keeping the order of the text.
  std::pair<unsigned, unsigned> Position() const;

 private:
  /// The parsed table; the source alone knows the parser.
  struct Content;

  explicit TomlSection(std::shared_ptr<Content> content) : content_(std::move(content)) {}

  std::shared_ptr<Content> content_;
};

}  // namespace boardfile
