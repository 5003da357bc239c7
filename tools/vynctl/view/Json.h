// SPDX-License-Identifier: MIT
/// JSON values, and their text, in which bytes that are no UTF-8 have become U+FFFD.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace vynctl {

/// A value; null when made of nothing. Objects keep the order of their members.
struct Json {
  using Array = std::vector<Json>;
  using Member = std::pair<std::string, Json>;
  using Object = std::vector<Member>;

  Json() = default;
  Json(bool flag) : data(flag) {}
  Json(int number) : data(int64_t{number}) {}
  Json(int64_t number) : data(number) {}
  Json(uint64_t number) : data(number) {}
  Json(double number) : data(number) {}
  Json(const char* text) : data(std::string(text)) {}
  Json(std::string text) : data(std::move(text)) {}
  Json(Array array) : data(std::move(array)) {}
  Json(Object object) : data(std::move(object)) {}

  std::variant<std::monostate, bool, int64_t, uint64_t, double, std::string, Array, Object> data;
};

/// On one line.
std::string CompactText(const Json& json);
/// A line per member and element, indented by two.
std::string IndentedText(const Json& json);

}  // namespace vynctl
