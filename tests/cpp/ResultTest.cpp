// SPDX-License-Identifier: MIT
// vynlib/result.hpp: a value or an error.
#include "vynlib/result.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

using testing::ElementsAre;
using vynlib::Error;
using vynlib::Exception;
using vynlib::Result;

namespace {

Result<std::vector<int>> SomeNumbers() { return std::vector<int>{1, 2, 3}; }

}  // namespace

TEST(Result, HoldsAValue) {
  const Result<std::string> result = std::string("on");
  ASSERT_TRUE(result);
  EXPECT_EQ(*result, "on");
  EXPECT_EQ(result->size(), 2u);
  EXPECT_EQ(result.value(), "on");
}

TEST(Result, HoldsAnErrorInstead) {
  const Result<int> result = Error{0xE00, "Wi-Fi: the board does not offer it"};
  ASSERT_FALSE(result);
  EXPECT_EQ(result.error().code, 0xE00u);
  EXPECT_EQ(result.error().words, "Wi-Fi: the board does not offer it");
  EXPECT_EQ(result.value_or(7), 7);
}

TEST(Result, ThrowsForThoseWhoAskForTheValue) {
  const Result<int> result = Error{0x305, "no such sensor"};
  try {
    static_cast<void>(result.value());
    FAIL() << "nothing was thrown";
  } catch (const Exception& exception) {
    EXPECT_EQ(exception.error().code, 0x305u);
    EXPECT_STREQ(exception.what(), "no such sensor");
  }
}

TEST(Result, OfNothingIsDoneOrAnError) {
  const Result<void> done, failed = Error{12, "wrong selector"};
  EXPECT_TRUE(done);
  EXPECT_NO_THROW(done.value());
  EXPECT_FALSE(failed);
  EXPECT_EQ(failed.error().code, 12u);
  EXPECT_THROW(failed.value(), Exception);
}

TEST(Result, ThatAFunctionReturnsOutlivesALoop) {
  std::vector<int> seen;
  for (int number : *SomeNumbers()) seen.push_back(number);
  for (int number : SomeNumbers().value()) seen.push_back(number);
  EXPECT_THAT(seen, ElementsAre(1, 2, 3, 1, 2, 3));
}

TEST(Result, MovesWhatCannotBeCopied) {
  Result<std::unique_ptr<int>> result = std::make_unique<int>(5);
  const std::unique_ptr<int> taken = *std::move(result);
  EXPECT_EQ(*taken, 5);
}
