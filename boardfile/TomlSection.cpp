// SPDX-License-Identifier: MIT
// Values of TOML tables, checked.
#include "boardfile/TomlSection.h"

#include <algorithm>
#include <charconv>
#include <set>

#include <toml++/toml.h>

namespace boardfile {

using firmware::Bytes;

namespace {

constexpr size_t kListLimit = size_t{1} << 20;

/// Whole texts and tables that headers imply have no place of their own: they begin where the text does.
Spot SpotOf(const toml::source_region& source) {
  return {.file = source.path ? *source.path : "",
          .line = std::max(1u, static_cast<unsigned>(source.begin.line)),
          .column = std::max(1u, static_cast<unsigned>(source.begin.column))};
}
Spot SpotOf(const toml::node& node) { return SpotOf(node.source()); }

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '_'; }

std::string UpTo(uint64_t max) {
  char text[24];
  const auto end = std::to_chars(text, text + sizeof text, max, 16).ptr;
  return "a number from 0 to 0x" + std::string(text, end);
}

std::optional<uint64_t> NumberOf(const toml::node& node, uint64_t max) {
  std::optional<uint64_t> value;
  if (const auto* integer = node.as_integer()) {
    if (integer->get() >= 0) value = static_cast<uint64_t>(integer->get());
  } else if (const auto* text = node.as_string()) {
    value = ParseNumber(text->get());
  }
  return value && *value <= max ? value : std::nullopt;
}

}  // namespace

std::optional<uint64_t> ParseNumber(std::string_view text) {
  const bool hex = text.starts_with("0x") || text.starts_with("0X");
  if (hex) text.remove_prefix(2);
  uint64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, hex ? 16 : 10);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::optional<Bytes> ParseHex(std::string_view text) {
  Bytes bytes;
  int high = -1;
  for (char c : text) {
    if (IsBlank(c) && high < 0) continue;
    const int digit = HexDigit(c);
    if (digit < 0) return std::nullopt;
    if (high >= 0) bytes.push_back(static_cast<uint8_t>(high << 4 | digit));
    high = high >= 0 ? -1 : digit;
  }
  return high < 0 ? std::optional(bytes) : std::nullopt;
}

struct TomlSection::Content {
  /// What all sections of one text share.
  struct Whole {
    toml::table table;
    std::vector<Complaint> complaints = {};
  };

  Content(std::shared_ptr<Whole> text, const toml::table& part, std::string what)
      : whole(std::move(text)), table(part), name(std::move(what)) {}

  const toml::node* Ask(std::string_view key) {
    asked.emplace(key);
    return table.get(key);
  }
  TomlSection Part(const toml::table& part, std::string what) const {
    return TomlSection(std::make_shared<Content>(whole, part, std::move(what)));
  }

  std::shared_ptr<Whole> whole;  ///< lives as long as any of its parts
  const toml::table& table;
  std::string name;
  std::set<std::string, std::less<>> asked;
};

TomlSection TomlSection::Parse(std::string_view text, std::string_view source, std::string name) {
  try {
    const auto whole = std::make_shared<Content::Whole>(Content::Whole{toml::parse(text, source)});
    return TomlSection(std::make_shared<Content>(whole, whole->table, std::move(name)));
  } catch (const toml::parse_error& error) {
    throw BoardFileError(SpotOf(error.source()), std::string(error.description()));
  }
}

void TomlSection::Skip(std::string_view key) { content_->Ask(key); }

Spot TomlSection::Where() const { return SpotOf(content_->table); }

bool TomlSection::Has(std::string_view key) const { return content_->table.contains(key); }

Spot TomlSection::WhereOf(std::string_view key) const {
  const toml::node* node = content_->table.get(key);
  return node && node->source().begin ? SpotOf(*node) : Where();
}

bool TomlSection::IsList(std::string_view key) const {
  const toml::node* node = content_->table.get(key);
  return node && !node->is_integer();
}

bool TomlSection::IsText(std::string_view key) const {
  const toml::node* node = content_->table.get(key);
  return node && node->is_string();
}

bool TomlSection::IsTable(std::string_view key) const {
  const toml::node* node = content_->table.get(key);
  return node && node->is_table();
}

void TomlSection::Fail(std::string_view key, const std::string& expected) const { Fail(key, expected, "", {}); }

void TomlSection::Fail(std::string_view key, const std::string& expected, std::string word,
                       std::vector<std::string> candidates) const {
  throw BoardFileError({.spot = WhereOf(key),
                        .text = "\"" + std::string(key) + "\" of " + content_->name + " must be " + expected,
                        .word = std::move(word),
                        .candidates = std::move(candidates)});
}

void TomlSection::Complain(Complaint complaint) const { content_->whole->complaints.push_back(std::move(complaint)); }

std::vector<Complaint> TomlSection::Complaints() const {
  std::vector<Complaint> complaints = content_->whole->complaints;
  std::ranges::stable_sort(complaints, {}, &Complaint::spot);
  const auto isAgain = [](const Complaint& one, const Complaint& other) { return one.spot == other.spot; };
  complaints.erase(std::unique(complaints.begin(), complaints.end(), isAgain), complaints.end());
  return complaints;
}

std::optional<uint64_t> TomlSection::Number(std::string_view key, uint64_t max) {
  const toml::node* node = content_->Ask(key);
  if (!node) return std::nullopt;
  const auto value = NumberOf(*node, max);
  if (!value) Try([&] { Fail(key, UpTo(max)); });
  return value;
}

uint64_t TomlSection::Number(std::string_view key, uint64_t max, uint64_t otherwise) {
  return Number(key, max).value_or(otherwise);
}

uint64_t TomlSection::Need(std::string_view key, uint64_t max) {
  if (!Has(key)) throw BoardFileError(Where(), content_->name + " needs \"" + std::string(key) + "\", " + UpTo(max));
  return Number(key, max, 0);
}

bool TomlSection::Flag(std::string_view key, bool otherwise) {
  const toml::node* node = content_->Ask(key);
  if (!node) return otherwise;
  if (!node->is_boolean()) Try([&] { Fail(key, "true or false"); });
  return node->value<bool>().value_or(otherwise);
}

std::optional<std::string> TomlSection::Text(std::string_view key, size_t maxLength) {
  const toml::node* node = content_->Ask(key);
  if (!node) return std::nullopt;
  const auto* text = node->as_string();
  if (text && text->get().size() <= maxLength) return text->get();
  Try([&] { Fail(key, "text of at most " + std::to_string(maxLength) + " characters"); });
  return std::nullopt;
}

std::string TomlSection::NeedText(std::string_view key, size_t maxLength) {
  const auto text = Text(key, maxLength);
  if (!Has(key)) throw BoardFileError(Where(), content_->name + " needs \"" + std::string(key) + "\", a text");
  if (!text) throw BoardFileError(WhereOf(key), "");  // complained about already
  return *text;
}

std::optional<Bytes> TomlSection::ByteList(std::string_view key) {
  const toml::node* node = content_->Ask(key);
  if (!node) return std::nullopt;
  if (const auto* text = node->as_string()) {
    const auto bytes = ParseHex(text->get());
    if (!bytes) Fail(key, "pairs of hexadecimal digits");
    return bytes;
  }
  Bytes bytes;
  for (uint64_t value : Numbers(key, 0xFF)) bytes.push_back(static_cast<uint8_t>(value));
  return bytes;
}

std::vector<uint64_t> TomlSection::Numbers(std::string_view key, uint64_t max) {
  std::vector<uint64_t> values;
  const toml::node* node = content_->Ask(key);
  if (!node) return values;
  const auto* list = node->as_array();
  if (!list || list->size() > kListLimit) Fail(key, "a list of numbers");
  for (const toml::node& element : *list) {
    const auto value = NumberOf(element, max);
    if (!value)
      Complain(
          {.spot = SpotOf(element),
           .text = "\"" + std::string(key) + "\" of " + content_->name + " must hold " + UpTo(max) + " in each place"});
    values.push_back(value.value_or(0));
  }
  return values;
}

std::vector<std::string> TomlSection::Texts(std::string_view key, size_t maxLength) {
  std::vector<std::string> texts;
  const toml::node* node = content_->Ask(key);
  if (!node) return texts;
  const auto* list = node->as_array();
  if (!list || list->size() > kListLimit) Fail(key, "a list of texts");
  for (const toml::node& element : *list) {
    const auto* text = element.as_string();
    if (!text || text->get().size() > maxLength)
      throw BoardFileError(SpotOf(element), "\"" + std::string(key) + "\" must hold texts of at most " +
                                                std::to_string(maxLength) + " characters");
    texts.push_back(text->get());
  }
  return texts;
}

std::optional<TomlSection> TomlSection::Sub(std::string_view key) {
  const toml::node* node = content_->Ask(key);
  if (!node) return std::nullopt;
  if (!node->is_table()) Fail(key, "a table");
  return content_->Part(*node->as_table(), "[" + std::string(key) + "]");
}

std::vector<TomlSection> TomlSection::List(std::string_view key) {
  std::vector<TomlSection> sections;
  const toml::node* node = content_->Ask(key);
  if (!node) return sections;
  const auto* list = node->as_array();
  if (!list || list->size() > kListLimit) Fail(key, "a list of tables");
  for (const toml::node& element : *list) {
    if (!element.is_table()) throw BoardFileError(SpotOf(element), "\"" + std::string(key) + "\" must hold tables");
    sections.push_back(content_->Part(*element.as_table(), "[[" + std::string(key) + "]]"));
  }
  return sections;
}

std::vector<std::string> TomlSection::Keys() {
  std::vector<std::string> keys;
  for (const auto& [key, value] : content_->table) keys.emplace_back(key.str());
  for (const std::string& key : keys) content_->asked.insert(key);
  return keys;
}

void TomlSection::Finish() const {
  const std::vector<std::string> known(content_->asked.begin(), content_->asked.end());
  for (const auto& [key, value] : content_->table)
    if (const std::string word(key.str()); !content_->asked.contains(word))
      Complain({.spot = std::max(Where(), SpotOf(key.source())),
                .text = "\"" + word + "\" is not a key of " + content_->name,
                .word = word,
                .candidates = known});
}

}  // namespace boardfile
