// SPDX-License-Identifier: MIT
// Life, layout and privilege of the hardware object.
#include "hw/TReadWrite.h"

#include <cstddef>

#include "tests/unit/hw/Hardware.h"

using hwtest::Iopl;
using hwtest::RefusalsPrinted;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

/// A board on which an instance may be created, and no instance left behind.
class TReadWriteInstance : public testing::Test, protected support::Machine {};

using GetInstance = TReadWriteInstance;
using FreeInstance = TReadWriteInstance;

}  // namespace

TEST(TReadWriteConstructor, RaisesThePrivilegeLevelTo3) {
  support::Machine machine;
  sim::Board& board = machine.board;
  const TReadWrite rw;
  EXPECT_EQ(rw.IoplFailed, 0);
  EXPECT_EQ(rw.PcieBase, 0xFFFFFFFFu);
  EXPECT_THAT(board.Log(), ElementsAre(Iopl(3)));
}

TEST(TReadWriteConstructor, RemembersThatTheLevelWasRefused) {
  support::Machine machine;
  sim::Board& board = machine.board;
  board.privileged = false;
  const TReadWrite rw;
  EXPECT_NE(rw.IoplFailed, 0);
  EXPECT_EQ(rw.PcieBase, 0xFFFFFFFFu);
}

TEST(TReadWriteDestructor, DropsThePrivilegeLevelTo0) {
  support::Machine machine;
  sim::Board& board = machine.board;
  { const TReadWrite rw; }
  EXPECT_THAT(board.Log(), ElementsAre(Iopl(3), Iopl(0)));
}

TEST(TReadWriteLayout, HoldsTheFieldsInOrderFromTheFirstByteOn) {
  EXPECT_EQ(offsetof(TReadWrite, IoplFailed), 0u);
  EXPECT_EQ(offsetof(TReadWrite, PcieBase), 4u);
  EXPECT_EQ(offsetof(TReadWrite, PcieAddress), 8u);
  EXPECT_EQ(offsetof(TReadWrite, PcieByteOffset), 12u);
  EXPECT_EQ(offsetof(TReadWrite, PciAddress), 16u);
  EXPECT_EQ(offsetof(TReadWrite, PciDataPort), 20u);
  EXPECT_EQ(sizeof(TReadWrite), 24u);
}

TEST_F(GetInstance, CreatesTheInstanceOnFirstUse) {
  EXPECT_EQ(TReadWrite::g_Instance, nullptr);
  TReadWrite* instance = TReadWrite::GetInstance();
  ASSERT_NE(instance, nullptr);
  EXPECT_EQ(TReadWrite::g_Instance, instance);
}

TEST_F(GetInstance, ReturnsTheSameObjectWithoutAnotherLevelChange) {
  TReadWrite* instance = TReadWrite::GetInstance();
  EXPECT_EQ(TReadWrite::GetInstance(), instance);
  EXPECT_THAT(board.Log(), ElementsAre(Iopl(3)));
}

TEST_F(GetInstance, WithoutPrivilegePrintsOnceAndLeavesNothingBehind) {
  board.privileged = false;
  TReadWrite* instance = nullptr;
  EXPECT_EQ(RefusalsPrinted([&] { instance = TReadWrite::GetInstance(); }), 1);
  EXPECT_EQ(instance, nullptr);
  EXPECT_EQ(TReadWrite::g_Instance, nullptr);
  EXPECT_THAT(board.Log(), ElementsAre(Iopl(3), Iopl(0)));
}

TEST_F(GetInstance, TriesAgainAfterARefusal) {
  board.privileged = false;
  RefusalsPrinted([] { TReadWrite::GetInstance(); });
  board.privileged = true;
  EXPECT_NE(TReadWrite::GetInstance(), nullptr);
}

TEST_F(FreeInstance, DropsThePrivilegeAndForgetsTheInstance) {
  TReadWrite::GetInstance();
  board.Log().clear();
  TReadWrite::FreeInstance();
  EXPECT_EQ(TReadWrite::g_Instance, nullptr);
  EXPECT_THAT(board.Log(), Not(IsEmpty()));
  EXPECT_THAT(board.Log(), Each(Iopl(0)));
}

TEST_F(FreeInstance, WithoutAnInstanceDoesNothing) {
  TReadWrite::FreeInstance();
  EXPECT_THAT(board.Log(), IsEmpty());
}

TEST_F(FreeInstance, MakesRoomForANewInstance) {
  TReadWrite::GetInstance();
  TReadWrite::FreeInstance();
  board.Log().clear();
  EXPECT_NE(TReadWrite::GetInstance(), nullptr);
  EXPECT_THAT(board.Log(), ElementsAre(Iopl(3)));
}

TEST(CheckPrivilege, IsSilentWhenPrivileged) {
  hwtest::Hardware hw;
  bool result = false;
  EXPECT_EQ(RefusalsPrinted([&] { result = hw.rw.CheckPrivilege(); }), 0);
  EXPECT_TRUE(result);
}

TEST(CheckPrivilege, PrintsOneLineForAnyNonzeroFlag) {
  hwtest::Hardware hw;
  hw.rw.IoplFailed = 0x80;
  bool result = true;
  EXPECT_EQ(RefusalsPrinted([&] { result = hw.rw.CheckPrivilege(); }), 1);
  EXPECT_FALSE(result);
}
