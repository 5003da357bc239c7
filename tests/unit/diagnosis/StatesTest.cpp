// SPDX-License-Identifier: MIT
// What is said of states, against trying every value of the bits.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <random>
#include <set>

#include "diagnosis/Check.h"
#include "diagnosis/Satisfy.h"
#include "firmware/IadtBuilder.h"

using namespace layout;

namespace {

using namespace diagnosis;
using firmware::Command;
using firmware::IadtBuilder;

/// An entry on one byte-wide register: what it tests and what setting it writes.
struct Entry {
  uint8_t value, mask, expected, keep, bits;
};

/// The state that is read from a register; none when no entry fits.
std::optional<uint8_t> StateOf(const std::vector<Entry>& entries, unsigned reg) {
  for (const Entry& entry : entries)
    if ((reg & entry.mask) == entry.expected) return entry.value;
  return {};
}

std::set<size_t> Hidden(const std::vector<Entry>& entries) {
  std::set<size_t> hidden;
  for (size_t i = 0; i < entries.size(); ++i) {
    bool reported = false, possible = false;
    for (unsigned reg = 0; reg < 256; ++reg) {
      if ((reg & entries[i].mask) != entries[i].expected) continue;
      possible = true;
      bool earlier = false;
      for (size_t j = 0; j < i; ++j) earlier = earlier || (reg & entries[j].mask) == entries[j].expected;
      reported = reported || !earlier;
    }
    if (possible && !reported) hidden.insert(i);
  }
  return hidden;
}

/// The entries whose setting is not always followed by their own state.
std::set<size_t> Unconfirmed(const std::vector<Entry>& entries) {
  std::set<size_t> unconfirmed;
  for (size_t i = 0; i < entries.size(); ++i) {
    bool first = true;
    for (size_t j = 0; j < i; ++j) first = first && entries[j].value != entries[i].value;
    for (unsigned reg = 0; first && reg < 256; ++reg)
      if (StateOf(entries, (reg & entries[i].keep) | entries[i].bits) != entries[i].value) unconfirmed.insert(i);
  }
  return unconfirmed;
}

struct Said {
  std::set<size_t> hidden, unconfirmed;
};

Said WhatIsSaid(const std::vector<Entry>& entries) {
  IadtBuilder builder;
  std::map<size_t, size_t> numbers;
  for (size_t i = 0; i < entries.size(); ++i) {
    numbers[builder.Build().size()] = i;
    const Entry& entry = entries[i];
    builder.Feature(
        "BTState", entry.value,
        {Command::Port(0x80).Get(entry.mask, entry.expected), Command::Port(0x80).Set(entry.keep, entry.bits)});
  }
  Said said;
  for (const Finding& finding : CheckImage({Kind::kIadt, "x", builder.Build()})) {
    if (finding.rule->id == "state-hidden" || finding.rule->id == "state-twice")
      said.hidden.insert(numbers.at(finding.offset));
    if (finding.rule->id == "state-other" || finding.rule->id == "state-unread")
      said.unconfirmed.insert(numbers.at(finding.offset));
  }
  return said;
}

TEST(States, AreJudgedAsTryingEveryRegisterWould) {
  std::minstd_rand random(1368);
  size_t hidden = 0, unconfirmed = 0;
  for (int round = 0; round < 400; ++round) {
    std::vector<Entry> entries(2 + random() % 5);
    for (Entry& entry : entries) {
      const auto byte = [&] { return static_cast<uint8_t>(random() % 16); };
      entry = {.value = static_cast<uint8_t>(random() % 4), .mask = byte(), .expected = 0, .keep = 0, .bits = 0};
      if (entry.mask == 0) entry.mask = 1;
      entry.expected = byte() & entry.mask;
      entry.keep = static_cast<uint8_t>(0xF0 | byte());
      entry.bits = byte();
    }
    const Said said = WhatIsSaid(entries);
    EXPECT_EQ(said.hidden, Hidden(entries)) << "round " << round;
    EXPECT_EQ(said.unconfirmed, Unconfirmed(entries)) << "round " << round;
    hidden += said.hidden.size();
    unconfirmed += said.unconfirmed.size();
  }
  // Both come up often enough for the comparison to say something.
  EXPECT_GT(hidden, 100u);
  EXPECT_GT(unconfirmed, 100u);
}

TEST(CanAvoid, AgreesWithTryingAllBits) {
  std::minstd_rand random(7);
  constexpr unsigned kBits = 8;
  std::map<Answer, int> answers;
  for (int round = 0; round < 1000; ++round) {
    const auto combination = [&](unsigned bits) {
      Bits chosen;
      for (unsigned i = 0; i < bits; ++i) chosen[static_cast<unsigned>(random() % kBits)] = random() % 2 == 0;
      return chosen;
    };
    const Bits given = combination(static_cast<unsigned>(random() % 3));
    std::vector<Bits> forbidden;
    for (unsigned i = 0; i < 4 + random() % 20; ++i)
      forbidden.push_back(combination(1 + static_cast<unsigned>(random() % 4)));
    bool possible = false;
    for (unsigned all = 0; all < 1u << kBits; ++all) {
      const auto holds = [&](const Bits& bits) {
        for (const auto& [bit, value] : bits)
          if ((all >> bit & 1) != (value ? 1u : 0u)) return false;
        return true;
      };
      bool avoided = holds(given);
      for (const Bits& each : forbidden) avoided = avoided && !holds(each);
      possible = possible || avoided;
    }
    const Answer answer = CanAvoid(given, forbidden);
    EXPECT_EQ(answer, possible ? Answer::kYes : Answer::kNo) << "round " << round;
    ++answers[answer];
  }
  EXPECT_GT(answers[Answer::kYes], 100);
  EXPECT_GT(answers[Answer::kNo], 100);
}

}  // namespace
