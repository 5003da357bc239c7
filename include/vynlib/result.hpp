// SPDX-License-Identifier: MIT
/// A value of type Value, or why there is none. Part of vynlib/vynlib.hpp.
#ifndef VYNLIB_RESULT_HPP
#define VYNLIB_RESULT_HPP

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <variant>

namespace vynlib {

/// Why something was not done.
struct Error {
  std::uint64_t code;  ///< the library's; 0 when it was not even asked, for example because others had the hardware
  std::string words;   ///< "voltage: the board has no sensor of that name"
};

/// For those who ask for exceptions, by Result::value().
class Exception : public std::runtime_error {
 public:
  explicit Exception(Error error) : std::runtime_error(error.words), error_(std::move(error)) {}
  const Error& error() const noexcept { return error_; }

 private:
  Error error_;
};

/// A value, or why there is none. `*` and `->` want a value, error() wants an error.
template <typename Value>
class [[nodiscard]] Result {
 public:
  Result(Value value) : content_(std::in_place_index<0>, std::move(value)) {}
  Result(Error error) : content_(std::in_place_index<1>, std::move(error)) {}

  explicit operator bool() const { return content_.index() == 0; }
  const Value& operator*() const& { return std::get<0>(content_); }
  Value& operator*() & { return std::get<0>(content_); }
  /// By value, so that a loop over what a function returned has something to hold on to.
  Value operator*() && { return std::move(std::get<0>(content_)); }
  const Value* operator->() const { return &std::get<0>(content_); }
  Value* operator->() { return &std::get<0>(content_); }
  const Error& error() const { return std::get<1>(content_); }

  /// @throws Exception
  const Value& value() const& {
    if (!*this) throw Exception(error());
    return **this;
  }
  Value value() && {
    if (!*this) throw Exception(error());
    return *std::move(*this);
  }
  Value value_or(Value other) const { return *this ? **this : std::move(other); }

 private:
  std::variant<Value, Error> content_;
};

/// Done, or why not.
template <>
class [[nodiscard]] Result<void> {
 public:
  Result() = default;
  Result(Error error) : error_(std::move(error)) {}

  explicit operator bool() const { return !error_; }
  const Error& error() const { return error_.value(); }
  /// @throws Exception
  void value() const {
    if (error_) throw Exception(*error_);
  }

 private:
  std::optional<Error> error_;
};

}  // namespace vynlib

#endif
