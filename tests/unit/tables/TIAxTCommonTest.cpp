// SPDX-License-Identifier: MIT
// The executor: life, helpers, and every kind swept by width, direction and control.
#include "tables/TIAxTCommon.h"

#include <cstddef>

#include "smbus/TSMBus.h"
#include "tests/unit/tables/Machine.h"

using namespace tabletest;
using sim::In8;
using sim::Out8;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr auto kUntouched = Execution::kUntouched;

class TIAxTCommonGetInstance : public Executor {};
class TIAxTCommonFreeInstance : public Executor {};
class AndOrProcess : public Executor {};
class Helpers : public Executor {};
class IAxTRW : public Executor {};

}  // namespace

TEST_F(TIAxTCommonGetInstance, TakesBothSingletons) {
  EXPECT_EQ(executor->ReadWrite, TReadWrite::g_Instance);
  EXPECT_EQ(executor->SMBus, TSMBus::g_Instance);
  EXPECT_NE(executor->ReadWrite, nullptr);
  EXPECT_NE(executor->SMBus, nullptr);
}

TEST_F(TIAxTCommonGetInstance, HoldsThePortsAndThenTheSmbus) {
  EXPECT_EQ(static_cast<void*>(&executor->ReadWrite), executor);
  EXPECT_EQ(reinterpret_cast<char*>(&executor->SMBus) - reinterpret_cast<char*>(executor),
            static_cast<std::ptrdiff_t>(sizeof(void*)));
  EXPECT_EQ(sizeof(TIAxTCommon), 2 * sizeof(void*));
}

TEST_F(TIAxTCommonGetInstance, ReturnsTheSameObjectAgain) { EXPECT_EQ(TIAxTCommon::GetInstance(), executor); }

TEST_F(TIAxTCommonFreeInstance, FreesTheSmbusSingletonToo) {
  TIAxTCommon::FreeInstance();
  EXPECT_EQ(TIAxTCommon::g_Instance, nullptr);
  EXPECT_EQ(TSMBus::g_Instance, nullptr);
}

TEST_F(TIAxTCommonFreeInstance, LeavesTheSmbusSingletonWhenItHasNone) {
  executor->SMBus = nullptr;
  TIAxTCommon::FreeInstance();
  EXPECT_NE(TSMBus::g_Instance, nullptr);
  TSMBus::FreeInstance();
}

TEST_F(TIAxTCommonFreeInstance, DoesNothingWithoutAnInstance) {
  TIAxTCommon::FreeInstance();
  TIAxTCommon::FreeInstance();
  EXPECT_EQ(TIAxTCommon::g_Instance, nullptr);
}

TEST_F(AndOrProcess, AppliesTheAndThenTheOrOfTheDirection) {
  struct Case {
    unsigned short control;
    unsigned char direction;
    unsigned long long result;
  };
  // 0xA5 AND 0x0F is 0x05; 0xA5 OR 0x30 is 0xB5; 0x05 OR 0x30 is 0x35.
  for (const Case& each : {Case{0x0000, 0, 0xA5}, Case{0x0010, 0, 0xB5}, Case{0x0020, 0, 0x05}, Case{0x0030, 0, 0x35},
                           Case{0x00C0, 0, 0xA5}, Case{0x000F, 0, 0xA5}, Case{0x0000, 1, 0xA5}, Case{0x0001, 1, 0xB5},
                           Case{0x0002, 1, 0x05}, Case{0x0003, 1, 0x35}, Case{0x000C, 1, 0xA5}, Case{0x00F0, 1, 0xA5},
                           Case{0x0003, 2, 0x35}, Case{0x0003, 255, 0x35}}) {
    unsigned long long value = 0xA5;
    EXPECT_EQ(executor->AndOrProcess(each.control, 0x0F, 0x30, each.direction, &value), each.result) << each.control;
    EXPECT_EQ(value, each.result);
  }
}

TEST_F(AndOrProcess, KeepsAll64Bits) {
  unsigned long long value = 0x8000000000000001;
  EXPECT_EQ(executor->AndOrProcess(0x0003, 0x8000000000000000, 0x4000000000000000, 1, &value), 0xC000000000000000);
}

TEST_F(Helpers, GetFunInterfaceTakesBits2To5) {
  EXPECT_EQ(executor->GetFunInterface(0xFF), 0x3C);
  EXPECT_EQ(executor->GetFunInterface(0xC3), 0x00);
  EXPECT_EQ(executor->GetFunInterface(0x46), 0x04);
  EXPECT_EQ(executor->GetFunInterface(0x14), 0x14);
}

TEST_F(Helpers, CommandLengthIsTwoToThePowerOfBits6And7) {
  EXPECT_EQ(executor->CommandLength(0x3F), 1);
  EXPECT_EQ(executor->CommandLength(0x40), 2);
  EXPECT_EQ(executor->CommandLength(0x85), 4);
  EXPECT_EQ(executor->CommandLength(0xC6), 8);
}

TEST_F(Helpers, CompareGetValueIsTrueForEqualNumbersOrByForce) {
  EXPECT_TRUE(executor->CompareGetValue(5, 5, false));
  EXPECT_FALSE(executor->CompareGetValue(5, 6, false));
  EXPECT_TRUE(executor->CompareGetValue(5, 6, true));
  EXPECT_TRUE(executor->CompareGetValue(0xFFFFFFFF, 0xFFFFFFFF, false));
}

namespace {

// Bit 0 of register 0xF0 behind ports 0x2E and 0x2F must be 1.
const Bytes kWorkedExample = {0x06, 0xA0, 0x00, 0x2E, 0x00, 0x00, 0x00, 0x2F, 0x00, 0x00, 0x00, 0xF0,
                              0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x01,
                              0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};

}  // namespace

TEST_F(IAxTRW, ReadsTheWorkedExampleAsTrueWhenBit0Is1) {
  (*board.IndexData(0x2E, 0x2F))[0xF0] = 0x83;
  const Execution done = Run(Bytes(kWorkedExample), kGetting);
  EXPECT_TRUE(done.result);
  EXPECT_EQ(done.args[0], 1u);
  EXPECT_THAT(board.PortLog(), ElementsAre(Out8(0x2E, 0xF0), In8(0x2F, 0x83)));
}

TEST_F(IAxTRW, ReadsTheWorkedExampleAsFalseWhenBit0Is0) {
  (*board.IndexData(0x2E, 0x2F))[0xF0] = 0x82;
  const Execution done = Run(Bytes(kWorkedExample), kGetting);
  EXPECT_FALSE(done.result);
  EXPECT_EQ(done.args[0], 0u);
  EXPECT_THAT(board.PortLog(), ElementsAre(Out8(0x2E, 0xF0), In8(0x2F, 0x82)));
}

TEST_F(IAxTRW, DoesNothingWithTheWorkedExampleWhenSetting) {
  const Execution done = Run(Bytes(kWorkedExample), kSetting);
  EXPECT_TRUE(done.result);
  EXPECT_EQ(done.args[0], kUntouched);
  EXPECT_THAT(board.Log(), IsEmpty());
}

TEST_F(IAxTRW, TakesEveryNonzeroDirectionAsSetting) {
  board.Ports(0x300, {0x11});
  for (const int direction : {1, 2, 0x80, 0xFF}) {
    board.Log().clear();
    EXPECT_TRUE(
        Run(Direct(0x05, 0x300, {.control = 0x0008, .expected = 0x11}), static_cast<uint8_t>(direction)).result);
    EXPECT_THAT(board.PortLog(), ElementsAre(In8(0x300, 0x11))) << direction;
  }
}

namespace {

/// What each nibble of the control word does to bytes 0xA5 under the AND mask 0x0F0F0F0F and the OR mask 0x30303030.
/// Bytes of the value from the fifth on meet an AND and an OR mask of 0.
struct NibbleCase {
  uint16_t nibble;
  bool reads, writes;  ///< what the outcome is used for: comparison or writing back
  uint8_t low;         ///< bytes 0 to 3 that were read
  uint8_t high;        ///< bytes 4 to 7 that were read
  uint8_t beyond;      ///< bytes 0 to 3 that were not read
};

constexpr NibbleCase kNibbles[] = {
    {0x0, false, false, 0x00, 0x00, 0x00}, {0x1, false, false, 0x00, 0x00, 0x00}, {0x2, false, false, 0x00, 0x00, 0x00},
    {0x3, false, false, 0x00, 0x00, 0x00}, {0x4, false, true, 0xA5, 0xA5, 0x00},  {0x5, false, true, 0xB5, 0xA5, 0x30},
    {0x6, false, true, 0x05, 0x00, 0x00},  {0x7, false, true, 0x35, 0x00, 0x30},  {0x8, true, false, 0xA5, 0xA5, 0x00},
    {0x9, true, false, 0xB5, 0xA5, 0x30},  {0xA, true, false, 0x05, 0x00, 0x00},  {0xB, true, false, 0x35, 0x00, 0x30},
    {0xC, false, true, 0xA5, 0xA5, 0x00},  {0xD, false, true, 0xB5, 0xA5, 0x30},  {0xE, false, true, 0x05, 0x00, 0x00},
    {0xF, false, true, 0x35, 0x00, 0x30},
};

struct Sweep {
  NibbleCase nibble;
  unsigned width;  ///< 1, 2, 4 or 8
  uint8_t opcodeWidth;
  unsigned char direction;
  uint16_t control;

  uint8_t Byte(unsigned i) const {
    if (i >= width) return i < 4 ? nibble.beyond : uint8_t{0};
    return i < 4 ? nibble.low : nibble.high;
  }
  unsigned long long Value() const {
    unsigned long long value = 0;
    for (unsigned i = 0; i < 8; ++i) value |= static_cast<unsigned long long>(Byte(i)) << (8 * i);
    return value;
  }
  Fields Masks(bool matching) const {
    const auto low = static_cast<uint32_t>(Value());
    return {control, 0x0F0F0F0F, 0x30303030, matching ? low : ~low, kNobody};
  }
};

/// Every width, direction and nibble, the other direction's nibble all 0 and all 1.
std::vector<Sweep> Sweeps() {
  std::vector<Sweep> sweeps;
  for (unsigned exponent = 0; exponent < 4; ++exponent)
    for (const unsigned char direction : {kGetting, kSetting})
      for (const NibbleCase& nibble : kNibbles)
        for (const unsigned other : {0x0u, 0xFu}) {
          const unsigned control =
              direction == kGetting ? unsigned{nibble.nibble} << 4 | other : nibble.nibble | other << 4;
          sweeps.push_back(
              {nibble, 1u << exponent, static_cast<uint8_t>(exponent << 6), direction, static_cast<uint16_t>(control)});
        }
  return sweeps;
}

std::string Name(const Sweep& sweep) {
  return "width " + std::to_string(sweep.width) + " direction " + std::to_string(sweep.direction) + " control " +
         std::to_string(sweep.control);
}

void ExpectOutcome(const Sweep& sweep, const Execution& matching, const Execution& differing) {
  EXPECT_TRUE(matching.result);
  EXPECT_EQ(matching.args[0], sweep.nibble.reads ? sweep.Value() : kUntouched);
  EXPECT_EQ(differing.result, !sweep.nibble.reads);
  EXPECT_EQ(matching.args[1], kUntouched);
}

}  // namespace

TEST_F(IAxTRW, SweepsPortsByWidthDirectionAndControl) {
  for (const Sweep& sweep : Sweeps()) {
    SCOPED_TRACE(Name(sweep));
    board.Ports(0x300, Bytes(9, 0xA5));
    const Execution differing = Run(Direct(0x05 | sweep.opcodeWidth, 0x300, sweep.Masks(false)), sweep.direction);
    board.Ports(0x300, Bytes(9, 0xA5));
    board.Log().clear();
    ExpectOutcome(sweep, Run(Direct(0x05 | sweep.opcodeWidth, 0x300, sweep.Masks(true)), sweep.direction), differing);
    std::vector<sim::Access> expected;
    if (sweep.nibble.reads || sweep.nibble.writes)
      for (unsigned i = 0; i < sweep.width; ++i) expected.push_back(In8(static_cast<uint16_t>(0x300 + i), 0xA5));
    if (sweep.nibble.writes)
      for (unsigned i = 0; i < sweep.width; ++i)
        expected.push_back(Out8(static_cast<uint16_t>(0x300 + i), sweep.Byte(i)));
    EXPECT_EQ(board.PortLog(), expected);
  }
}

TEST_F(IAxTRW, SweepsIndexDataPairsByWidthDirectionAndControl) {
  const auto registers = board.IndexData(0x2E, 0x2F);
  for (const Sweep& sweep : Sweeps()) {
    SCOPED_TRACE(Name(sweep));
    registers->fill(0xA5);
    const Execution differing =
        Run(Pair(0x06 | sweep.opcodeWidth, 0x2E, 0x2F, 0x40, sweep.Masks(false)), sweep.direction);
    registers->fill(0xA5);
    board.Log().clear();
    ExpectOutcome(sweep, Run(Pair(0x06 | sweep.opcodeWidth, 0x2E, 0x2F, 0x40, sweep.Masks(true)), sweep.direction),
                  differing);
    std::vector<sim::Access> expected;
    if (sweep.nibble.reads || sweep.nibble.writes)
      for (unsigned i = 0; i < sweep.width; ++i) {
        expected.push_back(Out8(0x2E, static_cast<uint8_t>(0x40 + i)));
        expected.push_back(In8(0x2F, 0xA5));
      }
    if (sweep.nibble.writes)
      for (unsigned i = 0; i < sweep.width; ++i) {
        expected.push_back(Out8(0x2E, static_cast<uint8_t>(0x40 + i)));
        expected.push_back(Out8(0x2F, sweep.Byte(i)));
      }
    EXPECT_EQ(board.PortLog(), expected);
  }
}

TEST_F(IAxTRW, SweepsMemoryByWidthDirectionAndControl) {
  for (const Sweep& sweep : Sweeps()) {
    SCOPED_TRACE(Name(sweep));
    board.Memory(0x20000FFC, Bytes(9, 0xA5));
    const Execution differing = Run(Direct(0x01 | sweep.opcodeWidth, 0x20000FFC, sweep.Masks(false)), sweep.direction);
    board.Memory(0x20000FFC, Bytes(9, 0xA5));
    board.Log().clear();
    ExpectOutcome(sweep, Run(Direct(0x01 | sweep.opcodeWidth, 0x20000FFC, sweep.Masks(true)), sweep.direction),
                  differing);
    for (unsigned i = 0; i < 9; ++i)
      EXPECT_EQ(board.MemoryByte(0x20000FFC + i), sweep.nibble.writes && i < sweep.width ? sweep.Byte(i) : 0xA5) << i;
    std::vector<bool> writableMappings;
    for (const sim::Access& access : board.Log())
      if (access.kind == sim::Access::kMap) writableMappings.push_back(access.width != 0);
    std::vector<bool> expected;
    if (sweep.nibble.reads || sweep.nibble.writes) expected.push_back(false);
    if (sweep.nibble.writes) expected.push_back(true);
    EXPECT_EQ(writableMappings, expected);
    EXPECT_THAT(board.PortLog(), IsEmpty());
  }
}

TEST_F(IAxTRW, SweepsPciByDirectionAndControlOnAValueOf0) {
  // 0 AND 0x0F0F0F0F is 0; 0 OR 0x30303030 is 0x30303030: the OR bit alone decides.
  constexpr uint32_t kAddress = 0x8002FD44;  // bus 2, device 31, function 5, register 0x44
  board.Pci(2, 31, 5).Set(0x44, 4, 0x12345678);
  for (const Sweep& sweep : Sweeps()) {
    SCOPED_TRACE(Name(sweep));
    const uint32_t value = (sweep.nibble.nibble & 1) != 0 ? 0x30303030 : 0;
    const Fields fields{sweep.control, 0x0F0F0F0F, 0x30303030, value, kNobody};
    board.Pci(2, 31, 5).Set(0x44, 4, 0x12345678);
    board.Log().clear();
    const Execution done = Run(Pci(0x11 | sweep.opcodeWidth, 2, 31, 5, 0x44, fields), sweep.direction);
    EXPECT_TRUE(done.result);
    EXPECT_EQ(done.args[0], sweep.nibble.reads ? value : kUntouched);
    std::vector<sim::Access> expected;
    if (sweep.nibble.reads || sweep.nibble.writes) {
      expected.push_back(sim::Out32(0xCF8, kAddress));
      expected.push_back(sim::In32(0xCFC, 0x12345678));
    }
    if (sweep.nibble.writes) {
      expected.push_back(sim::Out32(0xCF8, kAddress));
      expected.push_back(sim::Out32(0xCFC, value));
    }
    EXPECT_EQ(board.PortLog(), expected);
  }
}

TEST_F(IAxTRW, YieldsTrueForAnyWriteEvenOfAnUnknownKind) {
  Execution done;
  EXPECT_EQ(Printed([&] { done = Run(Bytes{0x19, 0x04, 0x00}, kSetting); }), "IAxTWrite::UNKNOWN INTERFACE !!\n");
  EXPECT_TRUE(done.result);
  EXPECT_EQ(Printed([&] { done = Run(Bytes{0x19, 0x40, 0x00}, kGetting); }), "IAxTWrite::UNKNOWN INTERFACE !!\n");
  EXPECT_TRUE(done.result);
}

TEST_F(IAxTRW, YieldsTrueWithoutAMessageForAnUnknownKindThatIsNotFlagged) {
  Execution done;
  EXPECT_EQ(Printed([&] { done = Run(Bytes{0x19, 0x0F, 0x00}, kGetting); }), "");
  EXPECT_TRUE(done.result);
}
