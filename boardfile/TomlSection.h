// SPDX-License-Identifier: MIT
/// Reads the values of one TOML table with the checks that board files need: every complaint names its place, and what
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

/// A place in a text, counted from 1.
struct Spot {
  std::string file = {};
  unsigned line = 1, column = 1;

  // The 0 that clang-tidy would have as a pointer is the compiler's own.
  friend auto operator<=>(const Spot&, const Spot&) = default;  // NOLINT(modernize-use-nullptr)
};

/// What is wrong with a board file, and where.
struct Complaint {
  Spot spot;
  std::string text;
  std::string word = {};                     ///< what stands there in place of one of the candidates
  std::vector<std::string> candidates = {};  ///< none where any word may stand
};

/// A complaint that ends the reading of what it is about.
struct BoardFileError : std::runtime_error {
  explicit BoardFileError(Complaint why) : std::runtime_error(why.text), complaint(std::move(why)) {}
  BoardFileError(Spot spot, std::string text) : BoardFileError(Complaint{std::move(spot), std::move(text)}) {}
  Complaint complaint;
};

/// "0x2E", "46" or a TOML integer; nothing when it is not a number from 0 to 2^64 - 1.
std::optional<uint64_t> ParseNumber(std::string_view text);
/// "06 A0 00" or "06a000"; nothing when it is not pairs of hexadecimal digits.
std::optional<firmware::Bytes> ParseHex(std::string_view text);

/// Copies are the same section. A value that is wrong is complained about once, and counts as absent from then on.
class TomlSection {
 public:
  /// The whole of a TOML text, from the file `source`; `name` is how complaints call it.
  /// @throws BoardFileError when it is no TOML
  static TomlSection Parse(std::string_view text, std::string_view source, std::string name);

  Spot Where() const;
  /// Of a key's value; the section's own when the key is absent.
  Spot WhereOf(std::string_view key) const;
  bool Has(std::string_view key) const;
  /// Whether the key's value is something for ByteList and not a single number.
  bool IsList(std::string_view key) const;
  bool IsText(std::string_view key) const;
  bool IsTable(std::string_view key) const;
  [[noreturn]] void Fail(std::string_view key, const std::string& expected) const;
  /// The same where the value is `word` and should be one of `candidates`.
  [[noreturn]] void Fail(std::string_view key, const std::string& expected, std::string word,
                         std::vector<std::string> candidates) const;

  /// Notes a complaint; reading goes on.
  void Complain(Complaint complaint) const;
  /// All that was complained about in the whole text, in its order, one of each place.
  std::vector<Complaint> Complaints() const;
  /// Does something that may throw BoardFileError, which is noted: what comes behind is read all the same.
  template <typename Action>
  void Try(Action action) const {
    try {
      action();
    } catch (const BoardFileError& error) {
      Complain(error.complaint);
    }
  }

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
  /// A list of texts; none when the key is absent.
  std::vector<std::string> Texts(std::string_view key, size_t maxLength);
  std::optional<TomlSection> Sub(std::string_view key);
  /// The tables of a list of tables, in order; none when the key is absent.
  std::vector<TomlSection> List(std::string_view key);
  /// All keys, for sections whose keys are data; they all count as asked for.
  std::vector<std::string> Keys();

  /// Complains about every key that nobody asked for.
  void Finish() const;

 private:
  /// The parsed table; the source alone knows the parser.
  struct Content;

  explicit TomlSection(std::shared_ptr<Content> content) : content_(std::move(content)) {}

  std::shared_ptr<Content> content_;
};

}  // namespace boardfile
