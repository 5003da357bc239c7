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

unsigned LineOfNode(const toml::node& node) { return static_cast<unsigned>(node.source().begin.line); }

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
  Content(std::shared_ptr<const toml::table> text, const toml::table& part, std::string what)
      : whole(std::move(text)), table(part), name(std::move(what)), line(std::max(1u, LineOfNode(part))) {}

  const toml::node* Ask(std::string_view key) {
    asked.emplace(key);
    return table.get(key);
  }
  TomlSection Part(const toml::table& part, std::string what) const {
    return TomlSection(std::make_shared<Content>(whole, part, std::move(what)));
  }

  std::shared_ptr<const toml::table> whole;  ///< lives as long as any of its parts
  const toml::table& table;
  std::string name;
  unsigned line;
  std::set<std::string, std::less<>> asked;
};

TomlSection TomlSection::Parse(std::string_view text, std::string_view source, std::string name) {
  try {
    const auto whole = std::make_shared<const toml::table>(toml::parse(text, source));
    return TomlSection(std::make_shared<Content>(whole, *whole, std::move(name)));
  } catch (const toml::parse_error& error) {
    throw BoardFileError(static_cast<unsigned>(error.source().begin.line), std::string(error.description()));
  }
}

void TomlSection::Skip(std::string_view key) { content_->Ask(key); }

unsigned TomlSection::Line() const { return content_->line; }

bool TomlSection::Has(std::string_view key) const { return content_->table.contains(key); }

unsigned TomlSection::LineOf(std::string_view key) const {
  const toml::node* node = content_->table.get(key);
  return node && LineOfNode(*node) ? LineOfNode(*node) : content_->line;
}

bool TomlSection::IsList(std::string_view key) const {
  const toml::node* node = content_->table.get(key);
  return node && !node->is_integer();
}

void TomlSection::Fail(std::string_view key, const std::string& expected) const {
  throw BoardFileError(LineOf(key), "\"" + std::string(key) + "\" of " + content_->name + " must be " + expected);
}

std::optional<uint64_t> TomlSection::Number(std::string_view key, uint64_t max) {
  const toml::node* node = content_->Ask(key);
  if (!node) return std::nullopt;
  const auto value = NumberOf(*node, max);
  if (!value) Fail(key, UpTo(max));
  return value;
}

uint64_t TomlSection::Number(std::string_view key, uint64_t max, uint64_t otherwise) {
  return Number(key, max).value_or(otherwise);
}

uint64_t TomlSection::Need(std::string_view key, uint64_t max) {
  const auto value = Number(key, max);
  if (!value)
    throw BoardFileError(content_->line, content_->name + " needs \"" + std::string(key) + "\", " + UpTo(max));
  return *value;
}

bool TomlSection::Flag(std::string_view key, bool otherwise) {
  const toml::node* node = content_->Ask(key);
  if (!node) return otherwise;
  if (!node->is_boolean()) Fail(key, "true or false");
  return node->as_boolean()->get();
}

std::optional<std::string> TomlSection::Text(std::string_view key, size_t maxLength) {
  const toml::node* node = content_->Ask(key);
  if (!node) return std::nullopt;
  const auto* text = node->as_string();
  if (!text || text->get().size() > maxLength)
    Fail(key, "text of at most " + std::to_string(maxLength) + " characters");
  return text->get();
}

std::string TomlSection::NeedText(std::string_view key, size_t maxLength) {
  const auto text = Text(key, maxLength);
  if (!text) throw BoardFileError(content_->line, content_->name + " needs \"" + std::string(key) + "\", a text");
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
      throw BoardFileError(LineOfNode(element), "\"" + std::string(key) + "\" of " + content_->name + " must hold " +
                                                    UpTo(max) + " in each place");
    values.push_back(*value);
  }
  return values;
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
    if (!element.is_table()) throw BoardFileError(LineOfNode(element), "\"" + std::string(key) + "\" must hold tables");
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
  for (const auto& [key, value] : content_->table)
    if (!content_->asked.contains(key.str()))
      throw BoardFileError(std::max(content_->line, LineOfNode(value)),
                           "\"" + std::string(key.str()) + "\" is not a key of " + content_->name);
}

std::pair<unsigned, unsigned> TomlSection::Position() const {
  const auto& begin = content_->table.source().begin;
  return {static_cast<unsigned>(begin.line), static_cast<unsigned>(begin.column)};
}

}  // namespace boardfile
