// SPDX-License-Identifier: MIT
// What the cache keeps, and prefixes with their values.
#include "script/ScriptCache.h"

#include "tests/unit/script/Machine.h"

using namespace scripttest;
using testing::ElementsAre;

namespace {

/// Runs what the cache gives for a prefix and a value.
bool RunWith(Machine* machine, script::ScriptCache* cache, const char* prefix, unsigned value) {
  return machine->interpreter.Interpret(cache->GetWith(prefix, value), &machine->result);
}

}  // namespace

TEST(ScriptCacheGet, GivesTheSameProgramForTheSameText) {
  script::ScriptCache cache;
  const script::Program* first = &cache.Get("Local1=1");
  EXPECT_EQ(first, &cache.Get("Local1=1"));
  EXPECT_NE(first, &cache.Get("Local1=2"));
}

TEST(ScriptCacheGet, TakesMoreTextsThanItKeeps) {
  Machine machine;
  script::ScriptCache cache;
  for (unsigned round = 0; round < 2; ++round)
    for (unsigned i = 0; i < 600; ++i) {
      const std::string text = "Local1=" + std::to_string(i);
      EXPECT_TRUE(machine.interpreter.Interpret(cache.Get(text.c_str()), &machine.result));
      EXPECT_EQ(machine.interpreter.Locals[1], i);
    }
}

TEST(ScriptCacheGetWith, PutsEachValueInItsPlace) {
  Machine machine;
  machine.board.Ports(0x300, {0});
  script::ScriptCache cache;
  for (const unsigned value : {0u, 1u, 7u, 255u, 7u, 0u})
    EXPECT_TRUE(RunWith(&machine, &cache, "Local2=3; O(0x300,", value));
  EXPECT_THAT(machine.board.PortLog(), ElementsAre(sim::Out8(0x300, 0), sim::Out8(0x300, 1), sim::Out8(0x300, 7),
                                                   sim::Out8(0x300, 255), sim::Out8(0x300, 7), sim::Out8(0x300, 0)));
}

TEST(ScriptCacheGetWith, PutsAValueBehindAnEqualsSign) {
  Machine machine;
  script::ScriptCache cache;
  for (const unsigned value : {5u, 0u, 0xFFFFFFFFu}) {
    EXPECT_TRUE(RunWith(&machine, &cache, "Local3=", value));
    EXPECT_EQ(machine.interpreter.Locals[3], value);
    EXPECT_EQ(machine.result, value);
  }
}

TEST(ScriptCacheGetWith, FailsForEveryValueWhereTheTextDoes) {
  Machine machine;
  script::ScriptCache cache;
  for (const char* prefix : {"nonsense", "O(0x10000,", "Wait{1,", "Cmds{Local1=1"})
    for (const unsigned value : {0u, 1u, 9u}) {
      EXPECT_FALSE(machine.Run(std::string(prefix) + " " + std::to_string(value))) << prefix << " " << value;
      EXPECT_FALSE(RunWith(&machine, &cache, prefix, value)) << prefix << " " << value;
    }
}

TEST(ScriptCacheGetWith, ParsesATextAnewWhereTheValueIsOneOfItsWords) {
  // Searches for the byte that is the value; byte n lies at 0x1000 + n.
  Machine machine;
  machine.board.Memory(0x1000, {0, 1, 2, 3, 4, 5, 6, 7});
  script::ScriptCache cache;
  for (const unsigned value : {0u, 1u, 5u, 3u}) {
    EXPECT_TRUE(RunWith(&machine, &cache, "Fmem(0x1000,0x1008,1,0,", value));
    EXPECT_EQ(machine.result, 0x1000 + value);
  }
}

TEST(ScriptCacheGetWith, IsTheSameAsTheTextWhereverTheValueStands) {
  Machine machine;
  script::ScriptCache cache;
  for (const char* prefix :
       {"Dmem(0x1000, 1, 0x12", "Local1=Add(1,", "Local1=3; BkIf0(Sub(3,", "Loop{2,Local1=1};Delay", "O(0x300)", ""})
    for (const unsigned value : {0u, 1u, 3u, 12u}) {
      machine.result = kUntouched;
      const bool expected = machine.Run(std::string(prefix) + " " + std::to_string(value));
      const unsigned result = machine.result;
      machine.result = kUntouched;
      EXPECT_EQ(RunWith(&machine, &cache, prefix, value), expected) << prefix << " " << value;
      EXPECT_EQ(machine.result, result) << prefix << " " << value;
    }
}
