// SPDX-License-Identifier: MIT
// The list of strings, operation by operation.
#include "text/VynStringList.h"

#include <string>
#include <type_traits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::vector<std::string> Items(const VynStringList& list) {
  std::vector<std::string> items;
  for (int i = 0; i < list.Count(); ++i) items.emplace_back(list[i].c_str());
  return items;
}

VynStringList List(std::initializer_list<const char*> items) {
  VynStringList list;
  for (const char* item : items) list.Add(item);
  return list;
}

std::vector<std::string> Split(const char* text, const char* delimiters) {
  VynStringList list;
  list.SetCommaText(text, delimiters);
  return Items(list);
}

}  // namespace

TEST(VynStringListCreation, IsEmpty) {
  const VynStringList list;
  EXPECT_TRUE(std::is_polymorphic_v<VynStringList>);
  EXPECT_EQ(list.Count(), 0);
  EXPECT_TRUE(list.commaText_.IsEmpty());
}

TEST(VynStringListAdd, AppendsACopy) {
  VynStringList list;
  VynString text("a");
  list.Add(text);
  text = "changed";
  list.Add("b");
  EXPECT_THAT(Items(list), ElementsAre("a", "b"));
}

TEST(VynStringListClear, RemovesEveryItem) {
  VynStringList list = List({"a", "b"});
  list.Clear();
  EXPECT_EQ(list.Count(), 0);
}

TEST(VynStringListInsert, PutsTheItemBeforeTheIndex) {
  VynStringList list = List({"a", "b"});
  list.Insert(1, "x");
  EXPECT_THAT(Items(list), ElementsAre("a", "x", "b"));
}

TEST(VynStringListInsert, AnIndexOutsideGoesToTheNearerEnd) {
  VynStringList list = List({"a", "b"});
  list.Insert(99, "end");
  list.Insert(-5, "front");
  list.Insert(4, "last");
  EXPECT_THAT(Items(list), ElementsAre("front", "a", "b", "end", "last"));
}

TEST(VynStringListDelete, MovesTheFollowingItemsDown) {
  VynStringList list = List({"a", "b", "c"});
  list.Delete(1);
  EXPECT_THAT(Items(list), ElementsAre("a", "c"));
}

TEST(VynStringListDelete, DoesNothingOutsideTheList) {
  VynStringList list = List({"a", "b"});
  for (int index : {-1, 2, 3, 99}) list.Delete(index);
  EXPECT_THAT(Items(list), ElementsAre("a", "b"));
}

TEST(VynStringListIndex, GivesACopyAndNothingOutside) {
  const VynStringList list = List({"a", "b"});
  VynString item = list[1];
  item = "changed";
  EXPECT_STREQ(list[1].c_str(), "b");
  for (int index : {-1, 2, 3}) EXPECT_STREQ(list[index].c_str(), "");
}

TEST(VynStringListFind, GivesTheFirstExactMatch) {
  const VynStringList list = List({"a", "B", "b", "b"});
  int index = 99;
  EXPECT_TRUE(list.Find("b", index));
  EXPECT_EQ(index, 2);
  EXPECT_FALSE(list.Find("c", index));
  EXPECT_EQ(index, -1);
  EXPECT_EQ(list.IndexOf("B"), 1);
  EXPECT_EQ(list.IndexOf("bb"), -1);
}

TEST(VynStringListSetCommaText, SplitsTrimsAndAppends) {
  VynStringList list;
  list.SetCommaText("a,,b , c", ",");
  EXPECT_THAT(Items(list), ElementsAre("a", "b", "c"));
  list.SetCommaText("d", ",");
  EXPECT_THAT(Items(list), ElementsAre("a", "b", "c", "d"));
}

TEST(VynStringListSetCommaText, SkipsDelimitersAtTheEnds) {
  EXPECT_THAT(Split(",,a,b,,", ","), ElementsAre("a", "b"));
  EXPECT_THAT(Split(",,,", ","), IsEmpty());
  EXPECT_THAT(Split("", ","), IsEmpty());
}

TEST(VynStringListSetCommaText, TakesEveryDelimiterCharacter) {
  EXPECT_THAT(Split("a;b,c;,d", ",;"), ElementsAre("a", "b", "c", "d"));
}

TEST(VynStringListSetCommaText, KeepsAFieldOfSpacesAsAnEmptyItem) {
  EXPECT_THAT(Split("a, ,b", ","), ElementsAre("a", "", "b"));
}

TEST(VynStringListSetCommaText, WithoutDelimitersTheTextIsOneField) {
  EXPECT_THAT(Split("a,b", ""), ElementsAre("a,b"));
}

TEST(VynStringListSetCommaText, OverwritesTheDelimitersInTheCommaText) {
  VynStringList list;
  list.SetCommaText("ab,cd", ",");
  EXPECT_STREQ(list.commaText_.c_str(), "ab");
  EXPECT_STREQ(list.commaText_.c_str() + 3, "cd");
}

TEST(VynStringListSetCommaText, TakesTextsOfAnyLengthAndManyDelimiters) {
  for (size_t count : {16383u, 16384u, 16385u, 500000u}) {
    std::string text;
    for (size_t i = 0; i < count; ++i) text += i % 2 ? "a," : "b,";
    VynStringList list;
    list.SetCommaText(text.c_str(), ",");
    ASSERT_EQ(list.Count(), static_cast<int>(count));
    EXPECT_STREQ(list[0].c_str(), "b");
    EXPECT_STREQ(list[1].c_str(), "a");
  }
  EXPECT_THAT(Split("a~b", "!\"#$%&'()*+,-./:;<=>?@~"), ElementsAre("a", "b"));
}

TEST(VynStringListSetCommaText, AStringWithoutABufferAddsNothing) {
  VynString none;
  none.Terminated();
  VynStringList list;
  list.SetCommaText(none, ",");
  list.SetCommaText("a", none);
  EXPECT_EQ(list.Count(), 0);
}

TEST(VynStringListSetCommaText, AStringWithoutABufferDoesNotSplitTheTextBeforeAgain) {
  VynString none;
  none.Terminated();
  VynStringList list;
  list.SetCommaText("a,b", ",");
  list.SetCommaText(none, ",");
  EXPECT_THAT(Items(list), ElementsAre("a", "b"));
  EXPECT_TRUE(list.commaText_.IsEmpty());
}
