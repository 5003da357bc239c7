// SPDX-License-Identifier: MIT
// The rows of the feature functions against the public header's order.
#include "api/FeatureTable.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "tables/TIADTable.h"
#include "tests/unit/api/FeatureCases.h"

using apitest::FeatureCase;
using apitest::kFeatureCases;

TEST(FeatureTable, HasARowForEachFunctionInTheOrderOfTheHeader) {
  ASSERT_EQ(std::size(api::kFeatures), std::size(kFeatureCases));
  for (size_t i = 0; i < std::size(api::kFeatures); ++i)
    EXPECT_EQ(std::string(api::kFeatures[i].name), std::string("VynLib") + kFeatureCases[i].name);
}

TEST(FeatureTable, NamesNoFunctionTwice) {
  std::set<std::string_view> names;
  for (const api::FeatureRow& row : api::kFeatures) EXPECT_TRUE(names.insert(row.name).second) << row.name;
}

TEST(FeatureTable, ReadsOnlyListsOfOrdinaryEntries) {
  for (const api::FeatureRow& row : api::kFeatures) EXPECT_EQ(IadtEntry::kKeptBytes[row.list], 0) << row.name;
}

TEST(FeatureTable, GivesAGetAndASetOfOneFeatureTheSameListAndFamily) {
  for (const api::FeatureRow& read : api::kFeatures)
    for (const api::FeatureRow& write : api::kFeatures) EXPECT_EQ(read.list == write.list, read.family == write.family);
}
