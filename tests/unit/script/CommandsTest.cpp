// SPDX-License-Identifier: MIT
// Every word of the script language: operands, limits, accesses, results.
#include "script/Commands.h"

#include <algorithm>
#include <cctype>
#include <set>

#include "script/Program.h"
#include "tests/unit/script/Machine.h"

using scripttest::kUntouched;
using scripttest::Machine;
using sim::Access;
using sim::In16;
using sim::In32;
using sim::In8;
using sim::Out16;
using sim::Out32;
using sim::Out8;
using sim::Sleep;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

constexpr uint32_t kBase = 0xE0000000;  // of the enhanced configuration space, where a test makes it known

struct Case {
  const char* script;
  std::vector<Access> accesses;
  unsigned result;
};

/// Ports 0x80..0x83, registers 5..8 of an index/data pair at 0x70/0x71, and function 0:1f.3, each with 11 22 33 44.
struct Board : Machine {
  std::shared_ptr<std::array<uint8_t, 256>> registers;
  Board() {
    board.Ports(0x80, {0x11, 0x22, 0x33, 0x44});
    registers = board.IndexData(0x70, 0x71);
    for (unsigned i = 0; i < 4; ++i) (*registers)[5 + i] = static_cast<uint8_t>(0x11 * (i + 1));
    board.Pci(0, 0x1F, 3).Set(0x20, 4, 0x44332211);
  }
};

void ExpectEach(const std::vector<Case>& cases) {
  for (const Case& c : cases) {
    Board machine;
    machine.board.Log().clear();
    EXPECT_TRUE(machine.Run(c.script)) << c.script;
    EXPECT_EQ(machine.result, c.result) << c.script;
    EXPECT_THAT(machine.board.PortLog(), ElementsAreArray(c.accesses)) << c.script;
  }
}

/// The script fails without an access and without a result.
void ExpectRefused(std::initializer_list<const char*> scripts) {
  for (const char* script : scripts) {
    Board machine;
    machine.board.Log().clear();
    EXPECT_FALSE(machine.Run(script)) << script;
    EXPECT_EQ(machine.result, kUntouched) << script;
    EXPECT_THAT(machine.board.Log(), IsEmpty()) << script;
  }
}

std::vector<uint8_t> MemoryOf(const Machine& machine, uint64_t address, size_t count) {
  std::vector<uint8_t> bytes;
  for (size_t i = 0; i < count; ++i) bytes.push_back(machine.board.MemoryByte(address + i));
  return bytes;
}

/// The lengths of all mappings made.
std::vector<uint64_t> MappedBytes(Machine& machine) {
  std::vector<uint64_t> lengths;
  for (const Access& access : machine.board.Log())
    if (access.kind == Access::kMap) lengths.push_back(access.value);
  return lengths;
}

}  // namespace

TEST(Vocabulary, HasNoWordTwice) {
  std::set<std::string_view> words;
  for (const script::Command& command : script::Commands())
    EXPECT_TRUE(words.insert(command.word).second) << command.word;
  EXPECT_EQ(words.size(), 67u);
}

TEST(Vocabulary, IsWrittenAsNormalisedTextIs) {
  for (const script::Command& command : script::Commands())
    EXPECT_TRUE(std::all_of(command.word.begin(), command.word.end(), [](unsigned char c) {
      return std::isupper(c) || std::isdigit(c);
    })) << command.word;
}

TEST(Vocabulary, EveryRowRunsAndFitsTheOperandSlots) {
  for (const script::Command& command : script::Commands()) {
    EXPECT_NE(command.run, nullptr) << command.word;
    EXPECT_LE(command.operands + (command.extras.hasOptional ? 1 : 0), TInterpreter::kOperands) << command.word;
  }
}

TEST(Vocabulary, EveryRowIsFoundByItsWordWithItsOperands) {
  for (const script::Command& command : script::Commands()) {
    std::string text(command.word);
    for (int i = 0; i < command.operands; ++i) text += " 1";
    const script::Statement statement = script::ParseStatement(text + " ");
    EXPECT_NE(statement.kind, script::Statement::Kind::kFails) << text;
    EXPECT_EQ(statement.command, &command) << text;
  }
}

TEST(Vocabulary, EveryRowNeedsItsOperands) {
  for (const script::Command& command : script::Commands()) {
    if (command.operands == 0) continue;
    std::string text(command.word);
    text += " ";
    for (int i = 1; i < command.operands; ++i) text += "1 ";
    EXPECT_EQ(script::ParseStatement(text).kind, script::Statement::Kind::kFails) << text;
  }
}

/// Each word with the operands that it needs and may have; FMEM, which takes text, and the words that the interpreter
/// knows but cannot run are not here.
struct Word {
  const char* word;
  int least, most;
};
constexpr Word kWords[] = {
    {"I", 1, 1},      {"I16", 1, 1},       {"I32", 1, 1},      {"O", 2, 2},      {"O16", 2, 2},      {"O32", 2, 2},
    {"IID", 3, 3},    {"IID16", 3, 3},     {"IID32", 3, 3},    {"OID", 4, 4},    {"OID16", 4, 4},    {"OID32", 4, 4},
    {"RPCI", 4, 4},   {"RPCI16", 4, 4},    {"RPCI32", 4, 4},   {"WPCI", 5, 5},   {"WPCI16", 5, 5},   {"WPCI32", 5, 5},
    {"RPCIE", 4, 4},  {"RPCIE16", 4, 4},   {"RPCIE32", 4, 4},  {"WPCIE", 5, 5},  {"WPCIE16", 5, 5},  {"WPCIE32", 5, 5},
    {"ERPCI", 2, 2},  {"ERPCI16", 2, 2},   {"ERPCI32", 2, 2},  {"EWPCI", 3, 3},  {"EWPCI16", 3, 3},  {"EWPCI32", 3, 3},
    {"ERPCIE", 2, 2}, {"ERPCIE16", 2, 2},  {"ERPCIE32", 2, 2}, {"EWPCIE", 3, 3}, {"EWPCIE16", 3, 3}, {"EWPCIE32", 3, 3},
    {"FPCI", 1, 2},   {"FPCICLASS", 1, 2}, {"R", 1, 1},        {"R16", 1, 1},    {"R32", 1, 1},      {"W", 2, 2},
    {"W16", 2, 2},    {"W32", 2, 2},       {"DMEM", 1, 2},     {"ADD", 2, 2},    {"SUB", 2, 2},      {"MUL", 2, 2},
    {"DIV", 2, 2},    {"MOD", 2, 2},       {"AND", 2, 2},      {"OR", 2, 2},     {"XOR", 2, 2},      {"NOT", 2, 2},
    {"SHR", 2, 2},    {"SHL", 2, 2},       {"CMZ", 1, 1},      {"DELAY", 1, 1},
};

/// What a statement does: whether it runs, its result, and every access.
struct Done {
  bool ran;
  unsigned result;
  std::vector<Access> accesses;
};
Done Do(const char* word, int operands) {
  std::string script(word);
  script += "(";
  for (int i = 0; i < operands; ++i) script += i == 0 ? "1" : ",1";
  script += ")";
  Board machine;
  machine.board.Log().clear();
  const bool ran = machine.Run(script);
  return {ran, machine.result, machine.board.Log()};
}

TEST(Vocabulary, NamesTheWordsThatRunAndEightThatDoNot) { EXPECT_EQ(std::size(kWords) + 1 + 8, 67u); }

TEST(Vocabulary, RunsFromTheLeastOperandsOnAndLeavesOutOneTooMany) {
  for (const Word& each : kWords)
    for (int operands = 0; operands <= each.most + 1; ++operands) {
      const Done done = Do(each.word, operands);
      EXPECT_EQ(done.ran, operands >= each.least) << each.word << " " << operands;
      if (operands < each.least) {
        EXPECT_EQ(done.result, kUntouched) << each.word << " " << operands;
        EXPECT_THAT(done.accesses, IsEmpty()) << each.word << " " << operands;
      }
      if (operands > each.most) {
        const Done with = Do(each.word, each.most);
        EXPECT_EQ(done.result, with.result) << each.word;
        EXPECT_EQ(done.accesses, with.accesses) << each.word;
      }
    }
}

TEST(Vocabulary, RefusesOtherWords) {
  EXPECT_EQ(script::FindCommand("INP"), nullptr);
  EXPECT_EQ(script::FindCommand(""), nullptr);
  EXPECT_EQ(script::FindCommand("i"), nullptr);
  ExpectRefused({"Inp(0x80)", "I64(0x80)", "nonsense 1 2 3", "Local1=nonsense(1)"});
}

TEST(Vocabulary, RecognisesUnsupportedWordsAndFails) {
  ExpectRefused({"Cpu(0)", "Rdmsr(0x10)", "Wrmsr(0x10,1)", "Rdpmc(0)", "Rdcr(0)", "Wrcr(0,1)", "Cpuid(0)", "Rdtsc(0)",
                 "Cpu ", "Cpu()"});
}

TEST(PortCommands, AccessOnePortInTheirWidth) {
  ExpectEach({
      {"i(0x80)", {In8(0x80, 0x11)}, 0x11},
      {"i16(0x80)", {In16(0x80, 0x2211)}, 0x2211},
      {"i32(0x80)", {In32(0x80, 0x44332211)}, 0x44332211},
      {"o(0x80,0x87654321)", {Out8(0x80, 0x21)}, kUntouched},
      {"o16(0x80,0x87654321)", {Out16(0x80, 0x4321)}, kUntouched},
      {"o32(0x80,0x87654321)", {Out32(0x80, 0x87654321)}, kUntouched},
      {"o(0xFFFF,1)", {Out8(0xFFFF, 1)}, kUntouched},
  });
}

TEST(PortCommands, RefusePortsAbove65535) {
  ExpectRefused({"O 0x10000 1", "i(0x10000)", "i16(65536)", "i32(0xFFFFFFFF)", "o16(0x10000,1)", "o32(0x10000,1)"});
}

TEST(IndexDataCommands, ReadTheHighestRegisterFirstAndWriteTheLowestFirst) {
  ExpectEach({
      {"iid(0x70,0x71,5)", {Out8(0x70, 5), In8(0x71, 0x11)}, 0x11},
      {"iid16(0x70,0x71,5)", {Out8(0x70, 6), In8(0x71, 0x22), Out8(0x70, 5), In8(0x71, 0x11)}, 0x2211},
      {"iid32(0x70,0x71,5)",
       {Out8(0x70, 8), In8(0x71, 0x44), Out8(0x70, 7), In8(0x71, 0x33), Out8(0x70, 6), In8(0x71, 0x22), Out8(0x70, 5),
        In8(0x71, 0x11)},
       0x44332211},
      {"oid(0x70,0x71,5,0x87654321)", {Out8(0x70, 5), Out8(0x71, 0x21)}, kUntouched},
      {"oid16(0x70,0x71,5,0x87654321)", {Out8(0x70, 5), Out8(0x71, 0x21), Out8(0x70, 6), Out8(0x71, 0x43)}, kUntouched},
  });
}

TEST(IndexDataCommands, Oid32WritesTheLowWordOnly) {
  ExpectEach({
      {"oid32(0x70,0x71,5,0x87654321)", {Out8(0x70, 5), Out8(0x71, 0x21), Out8(0x70, 6), Out8(0x71, 0x43)}, kUntouched},
  });
}

TEST(IndexDataCommands, RefusePortsAbove65535AndIndexesAbove255) {
  ExpectRefused({"iid(0x10000,0x71,5)", "iid(0x70,0x10000,5)", "iid(0x70,0x71,256)", "iid16(0x70,0x71,256)",
                 "iid32(0x70,0x71,256)", "oid(0x10000,0x71,5,1)", "oid16(0x70,0x10000,5,1)", "oid32(0x70,0x71,256,1)"});
}

TEST(PciCommands, AccessTheConfigurationPorts) {
  ExpectEach({
      {"Rpci(0,0x1f,3,0x21)", {Out32(0xCF8, 0x8000FB20), In8(0xCFD, 0x22)}, 0x22},
      {"Rpci16(0,0x1f,3,0x20)", {Out32(0xCF8, 0x8000FB20), In16(0xCFC, 0x2211)}, 0x2211},
      {"Rpci32(0,0x1f,3,0x20)", {Out32(0xCF8, 0x8000FB20), In32(0xCFC, 0x44332211)}, 0x44332211},
      {"Wpci(0,0x1f,3,0x21,0x87654321)", {Out32(0xCF8, 0x8000FB20), Out8(0xCFD, 0x21)}, kUntouched},
      {"Wpci16(0,0x1f,3,0x20,0x87654321)", {Out32(0xCF8, 0x8000FB20), Out16(0xCFC, 0x4321)}, kUntouched},
      {"Wpci32(0,0x1f,3,0x20,0x87654321)", {Out32(0xCF8, 0x8000FB20), Out32(0xCFC, 0x87654321)}, kUntouched},
      {"Wpci(255,31,7,255,1)", {Out32(0xCF8, 0x80FFFFFC), Out8(0xCFF, 1)}, kUntouched},
  });
}

TEST(PciCommands, TakeEncodedAddressesCutTo16BitsAndRegistersCutTo8) {
  ExpectEach({
      {"Erpci(0xFB,0x21)", {Out32(0xCF8, 0x8000FB20), In8(0xCFD, 0x22)}, 0x22},
      {"Erpci16(0x100FB,0x20)", {Out32(0xCF8, 0x8000FB20), In16(0xCFC, 0x2211)}, 0x2211},
      {"Erpci32(0xFB,0x120)", {Out32(0xCF8, 0x8000FB20), In32(0xCFC, 0x44332211)}, 0x44332211},
      {"Ewpci(0xFB,0x121,0x87654321)", {Out32(0xCF8, 0x8000FB20), Out8(0xCFD, 0x21)}, kUntouched},
      {"Ewpci16(0x100FB,0x20,0x87654321)", {Out32(0xCF8, 0x8000FB20), Out16(0xCFC, 0x4321)}, kUntouched},
      {"Ewpci32(0xFB,0x20,0x87654321)", {Out32(0xCF8, 0x8000FB20), Out32(0xCFC, 0x87654321)}, kUntouched},
  });
}

TEST(PciCommands, RefuseLocationsOutsideTheLimits) {
  for (const char* word : {"Rpci", "Rpci16", "Rpci32", "Rpcie", "Rpcie16", "Rpcie32"})
    for (const char* location : {"(256,0,0,0)", "(0,32,0,0)", "(0,0,8,0)", "(0,0,0,256)"})
      ExpectRefused({(std::string(word) + location).c_str()});
  for (const char* word : {"Wpci", "Wpci16", "Wpci32", "Wpcie", "Wpcie16", "Wpcie32"})
    for (const char* location : {"(256,0,0,0,1)", "(0,32,0,0,1)", "(0,0,8,0,1)", "(0,0,0,256,1)"})
      ExpectRefused({(std::string(word) + location).c_str()});
}

TEST(PcieCommands, UseThePortsWithoutABase) {
  ExpectEach({
      {"Rpcie(0,0x1f,3,0x21)", {Out32(0xCF8, 0x8000FB20), In8(0xCFD, 0x22)}, 0x22},
      {"Rpcie16(0,0x1f,3,0x20)", {Out32(0xCF8, 0x8000FB20), In16(0xCFC, 0x2211)}, 0x2211},
      {"Rpcie32(0,0x1f,3,0x20)", {Out32(0xCF8, 0x8000FB20), In32(0xCFC, 0x44332211)}, 0x44332211},
      {"Erpcie(0xFB,0x21)", {Out32(0xCF8, 0x8000FB20), In8(0xCFD, 0x22)}, 0x22},
      {"Ewpcie16(0x100FB,0x20,0x87654321)", {Out32(0xCF8, 0x8000FB20), Out16(0xCFC, 0x4321)}, kUntouched},
  });
}

TEST(PcieCommands, ReadMemoryWithABase) {
  const struct {
    const char* script;
    unsigned result;
  } cases[] = {{"Rpcie(0,0x1f,3,0x21)", 0x66},         {"Rpcie16(0,0x1f,3,0x20)", 0x6655},
               {"Rpcie32(0,0x1f,3,0x20)", 0x88776655}, {"Erpcie(0xFB,0x121)", 0xBB},
               {"Erpcie16(0xFB,0x122)", 0xDDCC},       {"Erpcie32(0xFB,0x120)", 0xDDCCBBAA}};
  for (const auto& [script, result] : cases) {
    Board machine;
    machine.interpreter.Hardware->PcieBase = kBase;
    machine.board.Memory(kBase + 0xFB020, {0x55, 0x66, 0x77, 0x88});
    machine.board.Memory(kBase + 0xFB120, {0xAA, 0xBB, 0xCC, 0xDD});
    EXPECT_TRUE(machine.Run(script)) << script;
    EXPECT_EQ(machine.result, result) << script;
    EXPECT_THAT(machine.board.PortLog(), IsEmpty()) << script;
  }
}

TEST(PcieCommands, RefuseRegistersThatOnlyTheExtendedSpaceHas) {
  ExpectRefused({"Rpcie(0,0x1f,0,0x100)", "Wpcie(0,0x1f,0,0x100,1)"});
}

TEST(PcieCommands, WpcieWritesTheOrdinarySpaceEvenWithABase) {
  const std::vector<Case> cases = {
      {"Wpcie(0,0x1f,3,0x21,0x87654321)", {Out32(0xCF8, 0x8000FB20), Out8(0xCFD, 0x21)}, kUntouched},
      {"Wpcie16(0,0x1f,3,0x20,0x87654321)", {Out32(0xCF8, 0x8000FB20), Out16(0xCFC, 0x4321)}, kUntouched},
      {"Wpcie32(0,0x1f,3,0x20,0x87654321)", {Out32(0xCF8, 0x8000FB20), Out32(0xCFC, 0x87654321)}, kUntouched},
  };
  for (const Case& c : cases) {
    Board machine;
    machine.interpreter.Hardware->PcieBase = kBase;
    machine.board.Log().clear();
    EXPECT_TRUE(machine.Run(c.script)) << c.script;
    EXPECT_THAT(machine.board.Log(), ElementsAreArray(c.accesses)) << c.script;
    EXPECT_EQ(machine.interpreter.Hardware->PcieAddress, 0u) << c.script;  // no extended address was composed
  }
}

TEST(PcieCommands, EwpcieWritesTheExtendedSpace) {
  const struct {
    const char* script;
    std::vector<uint8_t> bytes;
  } cases[] = {{"Ewpcie(0xFB,0x121,0x87654321)", {0xAA, 0x21, 0xCC, 0xDD}},
               {"Ewpcie16(0xFB,0x122,0x87654321)", {0xAA, 0xBB, 0x21, 0x43}},
               {"Ewpcie32(0xFB,0x120,0x87654321)", {0x21, 0x43, 0x65, 0x87}}};
  for (const auto& [script, bytes] : cases) {
    Board machine;
    machine.interpreter.Hardware->PcieBase = kBase;
    machine.board.Memory(kBase + 0xFB120, {0xAA, 0xBB, 0xCC, 0xDD});
    EXPECT_TRUE(machine.Run(script)) << script;
    EXPECT_EQ(MemoryOf(machine, kBase + 0xFB120, 4), bytes) << script;
    EXPECT_EQ(machine.result, kUntouched) << script;
  }
}

TEST(PciSearchCommands, GiveTheLowWordOfTheLocation) {
  const struct {
    const char* script;
    unsigned result;
  } cases[] = {{"Fpci(0x15631022)", 0x0010},      {"Fpci(0x15631022,0)", 0x0010}, {"Fpci(0x15631022,1)", 0x0019},
               {"Fpci(0x15631022,2)", 0xFFFF},    {"Fpci(0x99991022)", 0xFFFF},   {"Fpciclass(0x0C0500)", 0x0010},
               {"Fpciclass(0x0C0500,1)", 0x0019}, {"Fpciclass(0x010203)", 0xFFFF}};
  for (const auto& [script, result] : cases) {
    Machine machine;
    machine.board.Pci(0, 2, 0).Set(0, 4, 0x15631022).Set(8, 4, 0x0C050001);
    machine.board.Pci(0, 3, 0).Set(0, 4, 0x11111022).Set(0x0E, 1, 0x80);
    machine.board.Pci(0, 3, 1).Set(0, 4, 0x15631022).Set(8, 4, 0x0C050001);
    EXPECT_TRUE(machine.Run(script)) << script;
    EXPECT_EQ(machine.result, result) << script;
  }
}

TEST(PciSearchCommands, RefuseAnIndexThatDoesNotEvaluate) { ExpectRefused({"Fpci(0x15631022,1H)", "Fpciclass(1,x)"}); }

TEST(MemoryCommands, ReadInTheirWidth) {
  const struct {
    const char* script;
    unsigned result;
  } cases[] = {{"r(0xFED80301)", 0x66}, {"r16(0xFED80300)", 0x6655}, {"R32(0xFED80300)", 0x88776655}};
  for (const auto& [script, result] : cases) {
    Machine machine;
    machine.board.Memory(0xFED80300, {0x55, 0x66, 0x77, 0x88});
    EXPECT_TRUE(machine.Run(script)) << script;
    EXPECT_EQ(machine.result, result) << script;
  }
}

TEST(MemoryCommands, WriteInTheirWidth) {
  const struct {
    const char* script;
    std::vector<uint8_t> bytes;
  } cases[] = {{"w(0xFED80301,0x87654321)", {0x55, 0x21, 0x77, 0x88}},
               {"w16(0xFED80302,0x87654321)", {0x55, 0x66, 0x21, 0x43}},
               {"w32(0xFED80300,0x87654321)", {0x21, 0x43, 0x65, 0x87}}};
  for (const auto& [script, bytes] : cases) {
    Machine machine;
    machine.board.Memory(0xFED80300, {0x55, 0x66, 0x77, 0x88});
    EXPECT_TRUE(machine.Run(script)) << script;
    EXPECT_EQ(MemoryOf(machine, 0xFED80300, 4), bytes) << script;
    EXPECT_EQ(machine.result, kUntouched) << script;
  }
}

TEST(DmemCommand, ReadsABlockOf256BytesOrTheGivenLength) {
  const struct {
    const char* script;
    uint64_t bytes;
  } cases[] = {{"Dmem(0x1000)", 256}, {"Dmem(0x1000,16)", 16}, {"Dmem(0x1000,0x100000)", 0x100000}};
  for (const auto& [script, bytes] : cases) {
    Machine machine;
    EXPECT_TRUE(machine.Run(script)) << script;
    EXPECT_THAT(MappedBytes(machine), testing::ElementsAre(bytes)) << script;
    EXPECT_EQ(machine.result, kUntouched) << script;
  }
}

TEST(DmemCommand, RefusesMoreThanAMebibyte) { ExpectRefused({"Dmem(0x1000,0x100001)", "Dmem(0,0xFFFFFFFF)"}); }

TEST(FmemCommand, FindsBytesAndText) {
  const struct {
    const char* script;
    unsigned result;
  } cases[] = {
      {"Fmem(0x1000,0x1100,1,0,0x41,0x42)", 0x1022},      // the first "AB"
      {"Fmem(0x1000,0x1100,16,0,0x41,0x42)", 0x1040},     // on a multiple of 16
      {"Fmem(0x1000,0x1100,1,0,0x41,0x42,0)", 0x1040},    // "AB" and a zero byte
      {"Fmem(0x1000,0x1100,1,0,0x41,0x42,256)", 0x1040},  // 256 is stored as 0
      {"Fmem(0x1000,0x1100,1,2,0x41,0x42,0)", 0x1022},    // two of the three bytes
      {"Fmem(0x1000,0x1020,1,0,0x41,0x42)", 0xFFFFFFFF},  // the range ends before it
      {"Fmem(0x1000,0x1100,1,0,/s,ab,cd)", 0x1022},       // upper-cased, one space between two words
      {"Fmem(/s,0x1000,0x1100,1,0,ab)", 0x1022},          // "/S" anywhere
  };
  for (const auto& [script, result] : cases) {
    Machine machine;
    std::vector<uint8_t> bytes(0x100, 0);
    const std::string text = "AB CD";
    std::copy(text.begin(), text.end(), bytes.begin() + 0x22);
    std::copy_n(text.begin(), 2, bytes.begin() + 0x40);
    machine.board.Memory(0x1000, bytes);
    EXPECT_TRUE(machine.Run(script)) << script;
    EXPECT_EQ(machine.result, result) << script;
  }
}

TEST(FmemCommand, RefusesWhatIsNoSearch) {
  ExpectRefused({"Fmem(0x1000,0x1100,1)", "Fmem(0x1000,0x1100,1,0)", "Fmem(0x1000,0x1100,1,3,1,2)",
                 "Fmem(0x1000,0x1000,1,0,1)", "Fmem(0x1100,0x1000,1,0,1)", "Fmem(0x1000,0x1100,1,0,257)",
                 "Fmem(0x1000,0x1100,1,0,1,zz)", "Fmem(0x1000,0x1100,1,0,/s)"});
}

TEST(Arithmetic, WrapsModulo32Bits) {
  const struct {
    const char* script;
    unsigned result;
  } cases[] = {{"Add(3,4)", 7},
               {"Add(0xFFFFFFFF,2)", 1},
               {"Sub(3,4)", 0xFFFFFFFF},
               {"Mul(0x10001,0x10000)", 0x00010000},
               {"Div(7,2)", 3},
               {"Div(0xFFFFFFFE,2)", 0x7FFFFFFF},  // unsigned
               {"Mod(7,4)", 3},
               {"And(0x0FF0,0xFF00)", 0x0F00},
               {"Or(0x0FF0,0xFF00)", 0xFFF0},
               {"Xor(0x0FF0,0xFF00)", 0xF0F0},
               {"Not(1,0)", 0xFFFFFFFE},
               {"Not(1,99)", 0xFFFFFFFE},
               {"Shr(0x80000000,31)", 1},
               {"Shr(0x10,36)", 1},  // 36 modulo 32
               {"Shl(1,31)", 0x80000000},
               {"Shl(3,32)", 3},
               {"Cmz(0)", 0xFFFFFFFF},
               {"Cmz(5)", 0}};
  for (const auto& [script, result] : cases) {
    Machine machine;
    EXPECT_TRUE(machine.Run(script)) << script;
    EXPECT_EQ(machine.result, result) << script;
    EXPECT_EQ(machine.interpreter.Locals[TInterpreter::kScratch], result) << script;
  }
}

TEST(Arithmetic, AZeroDivisorFails) { ExpectRefused({"Div(1,0)", "Mod(1,0)", "Local1=Div(1,Local2)"}); }

TEST(Arithmetic, NotNeedsASecondOperand) { ExpectRefused({"Not(1)"}); }

TEST(DelayCommand, SleepsMicrosecondsAndReportsNothing) { ExpectEach({{"Delay 10", {Sleep(10)}, kUntouched}}); }

TEST(HardwareCommands, FailWithoutPrivilege) {
  support::Machine machine;
  sim::Board& board = machine.board;
  board.privileged = false;
  testing::internal::CaptureStdout();
  TInterpreter interpreter;
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Please run as root!\n");
  ASSERT_EQ(interpreter.Hardware, nullptr);
  board.Log().clear();
  for (const script::Command& command : script::Commands()) {
    std::string text(command.word);
    for (int i = 0; i < 5; ++i) text += " 1";
    unsigned result = kUntouched;
    const bool supported = !command.needsHardware && command.operands > 0;
    EXPECT_EQ(interpreter.ExecuteCmd(text.c_str(), &result), supported) << text;
  }
  EXPECT_THAT(board.Log(), testing::ElementsAre(Sleep(1)));
}
