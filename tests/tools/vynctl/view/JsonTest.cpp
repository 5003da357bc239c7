// SPDX-License-Identifier: MIT
// JSON values as text.
#include "view/Json.h"

#include <gtest/gtest.h>

namespace vynctl {
namespace {

TEST(Json, WritesEveryKindOfValue) {
  const std::pair<Json, const char*> kCases[] = {
      {{}, "null"},
      {true, "true"},
      {-7, "-7"},
      {INT64_MIN, "-9223372036854775808"},
      {UINT64_MAX, "18446744073709551615"},
      {1.6, "1.6"},
      {12.0, "12.0"},
      {"a\"b\\c\n", R"("a\"b\\c\n")"},
      {Json::Array{}, "[]"},
      {Json::Object{}, "{}"},
      {Json::Array{1, "two", {}, Json::Array{3}}, R"([1,"two",null,[3]])"},
  };
  for (const auto& [json, text] : kCases) EXPECT_EQ(text, CompactText(json));
}

TEST(Json, KeepsTheOrderOfMembers) {
  EXPECT_EQ(R"({"z":1,"a":{"y":2,"b":3}})",
            CompactText(Json::Object{{"z", 1}, {"a", Json::Object{{"y", 2}, {"b", 3}}}}));
}

TEST(Json, IndentsByTwo) {
  EXPECT_EQ("{\n  \"a\": [\n    1,\n    2\n  ],\n  \"b\": []\n}",
            IndentedText(Json::Object{{"a", Json::Array{1, 2}}, {"b", Json::Array{}}}));
}

TEST(Json, ReplacesBytesThatAreNoUtf8) {
  EXPECT_EQ("\"a\xEF\xBF\xBD\xC2\xB0\"", CompactText("a\xFF\xC2\xB0"));
  EXPECT_EQ("\"\xEF\xBF\xBD\"", IndentedText("\xC2"));
}

}  // namespace
}  // namespace vynctl
