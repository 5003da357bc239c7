// SPDX-License-Identifier: MIT
// Statements, blocks and loops, run.
#include "tests/unit/script/Machine.h"

using scripttest::kUntouched;
using scripttest::Machine;
using sim::In8;
using sim::Out8;
using sim::Sleep;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

const char* const kStatusWait = "Delay 10; Wait{2,0x8000,Local1=i(Local0); BkIf1(And(Local1,4)); And(Local1,2)}";

/// A machine whose port 0xC00, named by LOCAL0, answers with the given values in turn.
struct Controller : Machine {
  explicit Controller(std::vector<uint32_t> status) {
    support::Answer(&board, 0xC00, std::move(status));
    interpreter.Locals[0] = 0xC00;
    board.Log().clear();
  }
};

}  // namespace

TEST(InterpreterCreation, StartsWithZeroedLocals) {
  Machine machine;
  EXPECT_THAT(machine.interpreter.Locals, testing::Each(0u));
  EXPECT_EQ(machine.interpreter.Target, 16);
  EXPECT_EQ(machine.interpreter.Hardware, TReadWrite::g_Instance);
  EXPECT_EQ(machine.interpreter.Arguments, nullptr);
}

TEST(Interpret, AWaitEndsAtItsValue) {
  Controller machine({1, 1, 2});
  EXPECT_TRUE(machine.Run(kStatusWait));
  EXPECT_EQ(machine.result, 2u);
  EXPECT_THAT(machine.board.PortLog(), ElementsAre(Sleep(10), In8(0xC00, 1), In8(0xC00, 1), In8(0xC00, 2)));
  EXPECT_EQ(machine.interpreter.Locals[1], 2u);
}

TEST(Interpret, ABreakEndsTheWaitAroundIt) {
  Controller machine({1, 5, 2});
  EXPECT_TRUE(machine.Run(kStatusWait));
  EXPECT_EQ(machine.result, 4u);
  EXPECT_THAT(machine.board.PortLog(), ElementsAre(Sleep(10), In8(0xC00, 1), In8(0xC00, 5)));
}

TEST(Interpret, AWaitThatRunsOutOfRoundsSucceeds) {
  Controller machine({1});
  EXPECT_TRUE(machine.Run(kStatusWait));
  EXPECT_EQ(machine.result, 0u);
  EXPECT_THAT(machine.board.PortLog(), SizeIs(1 + 0x8000));
}

TEST(Interpret, FindsADeviceAsDetectionDoes) {
  const char* const script = "LocalF=Fpci(0x156310b9); Local0=Xor(LocalF,0xFFFF); Cmz(Local0)";
  Machine without;
  EXPECT_TRUE(without.Run(script));
  EXPECT_EQ(without.interpreter.Locals[0xF], 0xFFFFu);
  EXPECT_EQ(without.result, 0xFFFFFFFFu);
  Machine with;
  with.board.Pci(0, 2, 0).Set(0, 4, 0x156310B9);
  EXPECT_TRUE(with.Run(script));
  EXPECT_EQ(with.interpreter.Locals[0xF], 0x0010u);
  EXPECT_EQ(with.interpreter.Locals[0], 0xFFEFu);
  EXPECT_EQ(with.result, 0u);
}

TEST(Interpret, IgnoresTheCaseOfLetters) {
  Machine machine;
  EXPECT_TRUE(machine.Run("local1=5; LOCAL2=5; lOcAlf=aDd(local1,LOCAL2)"));
  EXPECT_EQ(machine.interpreter.Locals[1], 5u);
  EXPECT_EQ(machine.interpreter.Locals[2], 5u);
  EXPECT_EQ(machine.interpreter.Locals[15], 10u);
  EXPECT_EQ(machine.result, 10u);
}

TEST(Interpret, AnEmptyScriptSucceedsWithoutAResult) {
  for (const char* script : {"", "   ", ";;;", "()", "( ; )"}) {
    Machine machine;
    EXPECT_TRUE(machine.Run(script)) << script;
    EXPECT_EQ(machine.result, kUntouched) << script;
  }
}

TEST(Interpret, AcceptsAnOpenArgumentListAtTheEnd) {
  Machine machine;
  machine.interpreter.Locals[0] = 0xC00;
  machine.board.Log().clear();
  EXPECT_TRUE(machine.Run("Local1=Add(Local0,4); o(Local1, 211"));
  EXPECT_THAT(machine.board.PortLog(), ElementsAre(Out8(0xC04, 211)));
  EXPECT_EQ(machine.result, 0xC04u);
}

TEST(Interpret, StopsAtTheFirstFailingStatement) {
  Machine machine;
  machine.board.Log().clear();
  EXPECT_FALSE(machine.Run("o(0x80,1); Local2=7; LocalG=1; o(0x80,2)"));
  EXPECT_THAT(machine.board.PortLog(), ElementsAre(Out8(0x80, 1)));
  EXPECT_EQ(machine.interpreter.Locals[2], 7u);
  EXPECT_EQ(machine.result, 7u);
}

TEST(Interpret, KeepsLocalsFromOneScriptToTheNext) {
  Machine machine;
  EXPECT_TRUE(machine.Run("Local5=9"));
  EXPECT_TRUE(machine.Run("Add(Local5,1)"));
  EXPECT_EQ(machine.result, 10u);
}

TEST(Interpret, WithoutAPlaceForTheResultUsesItsOwnFromZero) {
  Machine machine;
  machine.interpreter.Result = 77;
  EXPECT_TRUE(machine.interpreter.Interpret("o(0x80,1)"));
  EXPECT_EQ(machine.interpreter.Result, 0u);
  EXPECT_TRUE(machine.interpreter.Interpret("Add(2,3)"));
  EXPECT_EQ(machine.interpreter.Result, 5u);
  EXPECT_TRUE(machine.interpreter.Interpret("Add(2,4)", nullptr));
  EXPECT_EQ(machine.interpreter.Result, 6u);
}

TEST(Interpret, TakesAScriptWithoutABuffer) {
  Machine machine;
  VynString none;
  none.Terminated();
  EXPECT_TRUE(machine.interpreter.Interpret(none));
  EXPECT_TRUE(machine.interpreter.ExecuteCmds(none, &machine.result));
  EXPECT_FALSE(machine.interpreter.ExecuteCmd(none, &machine.result));
}

TEST(InterpretCmds, RunsItsBodyOnceAndGoesOn) {
  Machine machine;
  EXPECT_TRUE(machine.Run("Local1=1; Cmds{Local2=2; Local3=3} Local4=4; CMDS{Local5=5}"));
  for (unsigned i = 1; i <= 5; ++i) EXPECT_EQ(machine.interpreter.Locals[i], i);
}

TEST(InterpretCmds, FailsAtAFailingStatementAfterThoseBeforeIt) {
  Machine machine;
  EXPECT_FALSE(machine.Run("Cmds{Local1=1; bad(1); Local2=2}"));
  EXPECT_FALSE(machine.Run("CMDS{a}"));
  EXPECT_EQ(machine.interpreter.Locals[1], 1u);
  EXPECT_EQ(machine.interpreter.Locals[2], 0u);
}

TEST(InterpretCmds, AnEmptyBodyRunsNothing) {
  Machine machine;
  EXPECT_TRUE(machine.Run("Cmds{}; Cmds{ ; }"));
  EXPECT_EQ(machine.result, kUntouched);
}

TEST(InterpretCmds, ABreakEndsTheBodyOnly) {
  Machine machine;
  EXPECT_TRUE(machine.Run("Cmds{Local1=1; BkIf1(Add(1,0)); Local2=2} Local3=3"));
  EXPECT_EQ(machine.interpreter.Locals[1], 1u);
  EXPECT_EQ(machine.interpreter.Locals[2], 0u);
  EXPECT_EQ(machine.interpreter.Locals[3], 3u);
}

TEST(InterpretWait, TakesValueAndCountFromVariables) {
  Controller machine({9, 9, 9, 9});
  EXPECT_TRUE(machine.Run("Local8=0x77; Local9=3; Wait{Local8,Local9,i(0xC00)}"));
  EXPECT_THAT(machine.board.PortLog(), SizeIs(3));
  EXPECT_EQ(machine.interpreter.WaitValue, 0x77u);
  EXPECT_EQ(machine.interpreter.LoopCount, 0u);
}

TEST(InterpretWait, TakesSpacesBetweenItsWords) {
  Controller machine({9, 2});
  EXPECT_TRUE(machine.Run("Wait{ 2 ,  5 , i(0xC00) }"));
  EXPECT_THAT(machine.board.PortLog(), SizeIs(2));
}

TEST(InterpretWait, WithCountZeroHasNoBound) {
  std::vector<uint32_t> answers(100000, 1);
  answers.push_back(0);
  Controller machine(answers);
  EXPECT_TRUE(machine.Run("Wait{0,0,i(0xC00)}"));
  EXPECT_EQ(machine.result, 0u);
  EXPECT_EQ(machine.interpreter.Endless, 1);
  EXPECT_THAT(machine.board.PortLog(), SizeIs(100001));
}

TEST(InterpretWait, FailsWithItsBody) {
  Controller machine({1});
  EXPECT_FALSE(machine.Run("Wait{0,5,i(0xC00); bad(1)}; Local1=1"));
  EXPECT_THAT(machine.board.PortLog(), SizeIs(1));
  EXPECT_EQ(machine.interpreter.Locals[1], 0u);
}

TEST(InterpretWait, BreaksAtZero) {
  Controller machine({3, 1, 2});
  EXPECT_TRUE(machine.Run("Wait{9,100,Local1=i(0xC00); BkIf0(And(Local1,2)); Or(Local1,0x80)}"));
  EXPECT_EQ(machine.result, 0u);
  EXPECT_THAT(machine.board.PortLog(), ElementsAre(In8(0xC00, 3), In8(0xC00, 1)));
}

TEST(InterpretWait, ComparesTheLastResultWhenItsBodyReportsNone) {
  Machine machine;
  machine.board.Log().clear();
  machine.result = 5;
  EXPECT_TRUE(machine.Run("Wait{5,100,o(0x80,1)}"));
  EXPECT_THAT(machine.board.PortLog(), ElementsAre(Out8(0x80, 1)));
}

TEST(InterpretWait, EndsItsBodyAtTheFirstBrace) {
  Machine machine;
  EXPECT_FALSE(machine.Run("Wait{1,2,Cmds{Add(1,0)} Local1=1}"));
  EXPECT_EQ(machine.interpreter.Locals[1], 0u);
}

TEST(InterpretWait, MalformedHeadsFailBeforeAnythingInTheBlockRuns) {
  for (const char* script :
       {"Local1=1; Wait{2,3,Local2=2", "Local1=1; Wait{", "Local1=1; Wait{}", "Local1=1; Wait{2}",
        "Local1=1; Wait{2,3}", "Local1=1; Wait{x,3,Local2=2}", "Local1=1; Wait{2,x,Local2=2}",
        "Local1=1; Wait{LocalG,3,Local2=2}", "Local1=1; Wait{2,20h,Local2=2}", "Local1=1; Loop{Local2=2}",
        "Local1=1; Loop{}", "Local1=1; Loop{3}", "Local1=1; Loop{3,Local2=2", "Local1=1; Cmds{Local2=2"}) {
    Machine machine;
    EXPECT_FALSE(machine.Run(script)) << script;
    EXPECT_EQ(machine.interpreter.Locals[1], 1u) << script;
    EXPECT_EQ(machine.interpreter.Locals[2], 0u) << script;
  }
}

TEST(InterpretLoop, RunsItsCountOfRounds) {
  Controller machine({1, 2, 3, 4, 5});
  EXPECT_TRUE(machine.Run("Loop{3,Local1=Add(Local1,1); i(0xC00)}; Local2=2"));
  EXPECT_EQ(machine.interpreter.Locals[1], 3u);
  EXPECT_EQ(machine.interpreter.Locals[2], 2u);
  EXPECT_THAT(machine.board.PortLog(), ElementsAre(In8(0xC00, 1), In8(0xC00, 2), In8(0xC00, 3)));
}

TEST(InterpretLoop, ComparesWithNoValue) {
  Machine machine;
  machine.interpreter.WaitValue = 1;
  EXPECT_TRUE(machine.Run("Loop{3,Local1=Add(Local1,1)}"));
  EXPECT_EQ(machine.interpreter.Locals[1], 3u);
}

TEST(InterpretLoop, WithCountZeroEndsAtABreak) {
  Machine machine;
  EXPECT_TRUE(machine.Run("Loop{0,Local1=Add(Local1,1); BkIf0(Sub(Local1,1000))}"));
  EXPECT_EQ(machine.interpreter.Locals[1], 1000u);
}

TEST(InterpretBlocks, AnEmptyCountedBodyIsOverAtOnce) {
  Machine machine;
  EXPECT_TRUE(machine.Run("Wait{1,0xFFFFFFFF,}; Loop{0xFFFFFFFF,}; Loop{2,;;}; Local1=1"));
  EXPECT_EQ(machine.interpreter.Locals[1], 1u);
  EXPECT_EQ(machine.interpreter.LoopCount, 0u);
}

TEST(InterpretBlocks, AnEmptyEndlessBodyFailsUnlessItIsOver) {
  Machine machine;
  EXPECT_FALSE(machine.Run("Wait{1,0,}"));
  EXPECT_FALSE(machine.Run("Loop{0,}"));
  EXPECT_TRUE(machine.Run("Local1=1; Wait{1,0,}"));
}

TEST(InterpretBlocks, AnEmptyBodyMeetsTheBreakFlagsThatWereSetBefore) {
  const struct {
    unsigned char ifZero, ifNonzero;
    unsigned result;
    bool ends;
  } cases[] = {{0, 0, 0, false}, {1, 0, 5, false}, {0, 1, 0, false}, {1, 0, 0, true},
               {0, 1, 5, true},  {1, 1, 0, true},  {1, 1, 5, true}};
  // Without a bound and without a break the blocks fail.
  for (const auto& [ifZero, ifNonzero, result, ends] : cases)
    for (const char* script : {"Wait{9,0,}", "Loop{0,}"}) {
      Machine machine;
      machine.interpreter.BreakIfZero = ifZero;
      machine.interpreter.BreakIfNonzero = ifNonzero;
      machine.result = result;
      EXPECT_EQ(machine.Run(script), ends) << script << " " << int{ifZero} << int{ifNonzero} << " " << result;
      EXPECT_EQ(machine.interpreter.BreakIfZero, ifZero);
      EXPECT_EQ(machine.interpreter.BreakIfNonzero, ifNonzero);
    }
}

TEST(InterpretBlocks, ABreakBeforeABlockEndsAnEmptyBody) {
  for (const char* script :
       {"BkIf0(Sub(5,5)); Wait{9,0,}", "BkIf1(Sub(5,4)); Loop{0,}", "Cmds{BkIf0(Sub(5,5))} Wait{9,0,}"}) {
    Machine machine;
    EXPECT_TRUE(machine.Run(script)) << script;
  }
}

TEST(InterpretBlocks, ABreakBeforeABlockEndsNoBodyOfStatements) {
  for (const char* script : {"BkIf0(Sub(5,5)); Loop{3,Local1=Add(Local1,1); Local2=0}",
                             "BkIf1(Sub(5,4)); Loop{3,Local1=Add(Local1,1); Local2=7}"}) {
    Machine machine;
    EXPECT_TRUE(machine.Run(script)) << script;
    EXPECT_EQ(machine.interpreter.Locals[1], 3u) << script;
  }
}

TEST(InterpretBlocks, TheFirstKindThatOccursAnywhereEndsTheRun) {
  Machine machine;
  // The run is cut at the CMDS block, so that the LOOP block before it is taken for statements.
  EXPECT_FALSE(machine.Run("Local1=1; Loop{2,Local2=2}; Cmds{Local3=3}"));
  EXPECT_EQ(machine.interpreter.Locals[1], 1u);
  EXPECT_EQ(machine.interpreter.Locals[2], 0u);
  EXPECT_EQ(machine.interpreter.Locals[3], 0u);
  EXPECT_FALSE(machine.Run("Local1=2; Loop{2,Local2=2}; Wait{3,1,Local3=3}"));
  EXPECT_EQ(machine.interpreter.Locals[1], 2u);
  // In the order of the kinds, and at the beginning of the text, each is a block.
  EXPECT_TRUE(machine.Run("Cmds{Local4=4}; Wait{3,1,Local3=3}; Loop{2,Local2=2}"));
  EXPECT_TRUE(machine.Run("Loop{2,Local2=2} Wait{3,1,Local3=3} Cmds{Local5=5}"));
  EXPECT_EQ(machine.interpreter.Locals[5], 5u);
}

TEST(InterpretBlocks, UnbalancedBracesFail) {
  for (const char* script : {"}", "{", "Local1=1}", "{Local1=1}", "Cmds{Local1=1}}", "Cmds{", "Cmds{{Local1=1}"}) {
    Machine machine;
    EXPECT_FALSE(machine.Run(script)) << script;
  }
}

TEST(ExecuteCmds, RunsEveryStatementInOrder) {
  Machine machine;
  machine.board.Log().clear();
  EXPECT_TRUE(machine.RunCmds(" ;; O 0X80 1; O 0X80 2 ;O 0X80 3;"));
  EXPECT_THAT(machine.board.PortLog(), ElementsAre(Out8(0x80, 1), Out8(0x80, 2), Out8(0x80, 3)));
}

TEST(ExecuteCmds, WithoutStatementsSucceeds) {
  Machine machine;
  EXPECT_TRUE(machine.RunCmds(""));
  EXPECT_TRUE(machine.RunCmds(" ; ;; "));
  EXPECT_EQ(machine.result, kUntouched);
}

TEST(ExecuteCmds, PassesOverEmptyStatements) {
  Machine machine;
  EXPECT_TRUE(machine.RunCmds("LOCAL1=1;; ;LOCAL2=2"));
  EXPECT_EQ(machine.interpreter.Locals[2], 2u);
}

TEST(ExecuteCmds, ABreakEndsTheRunSuccessfullyAndKeepsItsFlag) {
  Machine machine;
  EXPECT_TRUE(machine.RunCmds("BKIF0 SUB 5 5; LOCAL1=1"));
  EXPECT_EQ(machine.interpreter.Locals[1], 0u);
  EXPECT_EQ(machine.interpreter.BreakIfZero, 1);
  EXPECT_EQ(machine.interpreter.BreakIfNonzero, 0);
  EXPECT_TRUE(machine.RunCmds("BKIF1 SUB 5 4; LOCAL1=1"));
  EXPECT_EQ(machine.interpreter.Locals[1], 0u);
  EXPECT_EQ(machine.interpreter.BreakIfZero, 0);
  EXPECT_EQ(machine.interpreter.BreakIfNonzero, 1);
}

TEST(ExecuteCmds, GoesOnWhenABreakDoesNotApply) {
  Machine machine;
  EXPECT_TRUE(machine.RunCmds("BKIF0 SUB 5 4; BKIF1 SUB 5 5; LOCAL1=1"));
  EXPECT_EQ(machine.interpreter.Locals[1], 1u);
  EXPECT_EQ(machine.interpreter.BreakIfZero, 0);
  EXPECT_EQ(machine.interpreter.BreakIfNonzero, 0);
}

TEST(ExecuteCmd, AssignsOperandsAndValues) {
  const struct {
    const char* statement;
    unsigned value;
  } cases[] = {{"LOCAL1=5", 5},     {"LOCAL1=0X19", 25},   {"LOCAL1=LOCAL2", 77},
               {"LOCAL1=  6  ", 6}, {"LOCAL1=ADD 2 3", 5}, {"LOCAL1= ADD 2 3 ", 5},
               {"LOCAL1=", 0},      {"LOCAL1", 99},        {"LOCAL1=ADD LOCAL2 1 IGNORED", 78}};
  for (const auto& [statement, value] : cases) {
    Machine machine;
    machine.interpreter.Locals[1] = 99;
    machine.interpreter.Locals[2] = 77;
    EXPECT_TRUE(machine.RunCmd(statement)) << statement;
    EXPECT_EQ(machine.interpreter.Locals[1], value) << statement;
    EXPECT_EQ(machine.result, value) << statement;
    EXPECT_EQ(machine.interpreter.Target, 1) << statement;
  }
}

TEST(ExecuteCmd, AWriteLeavesTargetAndResult) {
  Machine machine;
  machine.interpreter.Locals[1] = 99;
  EXPECT_TRUE(machine.RunCmd("LOCAL1=O 0X80 5"));
  EXPECT_EQ(machine.interpreter.Locals[1], 99u);
  EXPECT_EQ(machine.result, kUntouched);
}

TEST(ExecuteCmd, WithoutATargetTheValueGoesToTheScratchSlot) {
  Machine machine;
  machine.interpreter.Target = 3;
  EXPECT_TRUE(machine.RunCmd("ADD 2 3"));
  EXPECT_EQ(machine.interpreter.Target, 16);
  EXPECT_EQ(machine.interpreter.Locals[16], 5u);
  EXPECT_EQ(machine.interpreter.Locals[3], 0u);
}

TEST(ExecuteCmd, ResultReportsTheScratchSlot) {
  Machine machine;
  EXPECT_TRUE(machine.RunCmds("ADD 2 3; LOCAL1=9; RESULT"));
  EXPECT_EQ(machine.result, 5u);
}

TEST(ExecuteCmd, KqexitAndLogfileDoNothing) {
  for (const char* statement : {"KQEXIT", "LOGFILE"}) {
    Machine machine;
    machine.board.Log().clear();
    EXPECT_TRUE(machine.RunCmd(statement));
    EXPECT_EQ(machine.result, kUntouched);
    EXPECT_THAT(machine.board.Log(), IsEmpty());
  }
}

TEST(ExecuteCmd, ClearsTheBreakFlagsOfTheStatementBefore) {
  Machine machine;
  machine.interpreter.BreakIfZero = 1;
  machine.interpreter.BreakIfNonzero = 1;
  EXPECT_TRUE(machine.RunCmd("LOCAL1=1"));
  EXPECT_EQ(machine.interpreter.BreakIfZero, 0);
  EXPECT_EQ(machine.interpreter.BreakIfNonzero, 0);
}

TEST(ExecuteCmd, RefusesWhatIsNoStatement) {
  for (const char* statement : {"",
                                " ",
                                "ADD",
                                "NOP",
                                "RESULT 1",
                                "KQEXIT 1",
                                "LOGFILE 1",
                                "LOCALG=1",
                                "LOCAL10=1",
                                "LOCAL1 =5",
                                "LOCAL=5",
                                "LOCAL1=RESULT",
                                "LOCAL1=BKIF0 ADD 1 2",
                                "LOCAL1=X",
                                "LOCAL1=LOCALG",
                                "LOCAL1=20H",
                                "BKIF0",
                                "BKIF1 RESULT",
                                "BKIF0 LOCAL1=1",
                                "ADD 1",
                                "ADD LOCAL0 20H",
                                "ADD LOCALG 1",
                                " ADD 1 2",
                                "add 1 2"}) {
    Machine machine;
    EXPECT_FALSE(machine.RunCmd(statement)) << statement;
    EXPECT_EQ(machine.result, kUntouched) << statement;
  }
}

TEST(ExecuteCmd, TakesHexadecimalWithThePrefixOnly) {
  Machine machine;
  EXPECT_TRUE(machine.Run("Add(Local0,0x20)"));
  EXPECT_EQ(machine.result, 0x20u);
  EXPECT_FALSE(machine.Run("Add(Local0,20H)"));
  EXPECT_FALSE(machine.Run("Wpci(0,2,0,76h,LocalA)"));
}

TEST(ExecuteCmd, MakesTheArgumentListForTheStatementOnly) {
  Machine machine;
  EXPECT_TRUE(machine.RunCmd("FMEM 0X1000 0X1010 1 0 1 2"));
  EXPECT_EQ(machine.interpreter.Arguments, nullptr);
}

TEST(Delayms, SleepsMicroseconds) {
  Machine machine;
  machine.board.Log().clear();
  machine.interpreter.Delayms(1500);
  EXPECT_THAT(machine.board.PortLog(), ElementsAre(Sleep(1500)));
}
