// SPDX-License-Identifier: MIT
// The tool as it is run: outputs and exit statuses.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

struct Outcome {
  int status;
  std::string output;  ///< both streams
};

/// Whose tables those of a test are; TOML asks for sections of their own in front.
constexpr char kOwner[] = "[iadt]\noem_id = \"ACME\"\noem_table_id = \"BOARD\"\n";
constexpr char kIamt[] = "[iamt]\noem_id = \"ACME\"\noem_table_id = \"BOARD\"\nchips = [0x94D2]\n";
constexpr char kBios[] = "[bios]\nmodel = \"M\"\n";
constexpr char kFeature[] =
    "[[feature]]\nfunction = \"BTState\"\nvalue = 1\ncommands = [{ port = 0x80, get = \"read\", expected = 5 }]\n";

class Vyntable : public testing::Test {
 protected:
  Vyntable() {
    const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
    directory = fs::path(testing::TempDir()) / (std::string("vyntable.") + test.name());
    fs::remove_all(directory);
    fs::create_directories(directory);
  }
  ~Vyntable() override { fs::remove_all(directory); }

  Outcome Run(const std::string& arguments) const {
    const std::string command =
        std::string("cd '") + directory.string() + "' && { " VYNTABLE " " + arguments + "; } 2>&1";
    FILE* pipe = popen(command.c_str(), "r");
    Outcome outcome;
    char part[4096];
    while (const size_t count = std::fread(part, 1, sizeof part, pipe)) outcome.output.append(part, count);
    outcome.status = WEXITSTATUS(pclose(pipe));
    return outcome;
  }
  std::string Read(const char* file) const {
    std::ifstream stream(directory / file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }
  void Write(const char* file, const std::string& content) const {
    std::ofstream(directory / file, std::ios::binary) << content;
  }
  std::vector<std::string> FilesIn(const char* folder) const {
    std::vector<std::string> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(directory / folder))
      files.push_back(entry.path().filename());
    std::ranges::sort(files);
    return files;
  }
  fs::path directory;
};

TEST_F(Vyntable, CompilesTheThreeFiles) {
  Write("b.toml", std::string(kOwner) + kIamt + kBios + "[[feature]]\nfunction = \"BTState\"\nvalue = 1\n");
  const Outcome outcome = Run("compile b.toml -o out");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.output, "out/iadt.bin: 63 bytes\nout/iamt.bin: 91 bytes\nout/biosinfo.bin: 64 bytes\n");
  EXPECT_EQ(Read("out/iadt.bin").size(), 63u);
  EXPECT_EQ(Read("out/iadt.bin").substr(36, 7), std::string("\x0F\x00\x01\x1B\x00\x00\x00", 7));
  EXPECT_EQ(Read("out/biosinfo.bin").substr(0, 8), "$CN1368$");
}

TEST_F(Vyntable, BringsTheReferenceBoardBackByteForByte) {
  EXPECT_EQ(Run("compile " REFERENCE_BOARD " -o one").status, 0);
  EXPECT_EQ(Run("decompile one -o b.toml").status, 0);
  EXPECT_EQ(Run("compile b.toml -o two").status, 0);
  for (const char* file : {"iadt.bin", "iamt.bin", "biosinfo.bin"}) {
    EXPECT_FALSE(Read((std::string("one/") + file).c_str()).empty());
    EXPECT_EQ(Read((std::string("one/") + file).c_str()), Read((std::string("two/") + file).c_str())) << file;
  }
}

TEST_F(Vyntable, FindsNothingWrongWithTheReferenceBoard) {
  const Outcome outcome = Run("check " REFERENCE_BOARD);
  EXPECT_EQ(outcome.output, "0 errors, 0 warnings, 0 notes\n");
  EXPECT_EQ(outcome.status, 0);
}

TEST_F(Vyntable, ReportsFindingsWithTheirOffsets) {
  Write("b.toml",
        std::string(kOwner) + "[[feature]]\nfunction = \"BTState\"\ncommands = [{ msr = 0x1B, get = \"read\" }]\n");
  EXPECT_EQ(Run("compile b.toml -o . --force").status, 0);
  const Outcome outcome = Run("check iadt.bin");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output,
            "iadt.bin:0x003f: error: no entry can go on behind an MSR command: where it succeeds, the call ends with "
            "code 21 (BTState index 0 value 0) [msr-in-entry]\n"
            "1 error, 0 warnings, 0 notes\n");
}

TEST_F(Vyntable, ShowsNamesOfFirmwareEscapedAndInOneLine) {
  Write(
      "b.toml",
      std::string(kOwner) +
          "[bios]\nmodel = \"M\\u001b[2J\"\n[[feature]]\nfunction = \"BTState\"\nname_bytes = \"1B 5B 32 4A 0A 41\"\n");
  EXPECT_EQ(Run("compile b.toml -o .").status, 0);
  EXPECT_EQ(Run("check iadt.bin").output,
            "iadt.bin:0x0024: warning: an entry without commands always succeeds (BTState index 0 value 0 "
            "\"\\x1B[2J\\x0AA\") [entry-empty]\n0 errors, 1 warning, 0 notes\n");
  const std::string words = Run("explain iadt.bin biosinfo.bin").output;
  EXPECT_THAT(words, HasSubstr("BTState index 0 value 0 \"\\x1B[2J\\x0AA\", 27 bytes\n"));
  EXPECT_THAT(words, HasSubstr("model \"M\\x1B[2J\"\n"));
}

// --- where tables come from ---

/// The lines that show `bytes` in a dump, without and with what they mean as characters.
std::string Dump(const std::string& signature, const std::string& bytes) {
  std::string text = signature + " @ 0x00000000BFFE1000\n";
  char part[24];
  for (size_t at = 0; at < bytes.size(); at += 16) {
    std::snprintf(part, sizeof part, "%04zX", at);
    std::string line = std::string("    ") + part + ": ", characters;
    for (size_t i = at; i < std::min(at + 16, bytes.size()); ++i) {
      std::snprintf(part, sizeof part, "%02X ", static_cast<unsigned char>(bytes[i]));
      line += part;
      characters += bytes[i] > ' ' && bytes[i] <= '~' ? bytes[i] : '.';
    }
    line.resize(58, ' ');
    text += line + " " + characters + "\n";
  }
  return text + "\n";
}

class Sources : public Vyntable {
 protected:
  Sources() {
    Write("b.toml", std::string(kOwner) + kIamt + kBios + kFeature);
    EXPECT_EQ(Run("compile b.toml -o t").status, 0);
    iadt = Read("t/iadt.bin");
    iamt = Read("t/iamt.bin");
    bios = Read("t/biosinfo.bin");
  }
  /// What `decompile` says of the same tables in the folder.
  std::string Expected() const { return Run("decompile t/iadt.bin").output; }
  std::string iadt, iamt, bios;
};

TEST_F(Sources, MayBeTheTextOfADump) {
  Write("dump.txt", Dump("FACP", std::string(244, '\xAA')) + Dump("IADT", iadt) + Dump("IAMT", iamt));
  const Outcome outcome = Run("decompile dump.txt");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.output, Run("decompile t/iamt.bin").output + "\n" + Expected());
  EXPECT_EQ(Run("check dump.txt").output, "0 errors, 0 warnings, 0 notes\n");
}

TEST_F(Sources, ShowWhereADumpLacksLines) {
  std::string text = Dump("IADT", iadt);
  const size_t second = text.find("    0010");
  text.erase(second, text.find('\n', second) + 1 - second);
  Write("dump.txt", text);
  const Outcome outcome = Run("check dump.txt");
  EXPECT_EQ(outcome.output, "vyntable: dump.txt:3: expected the byte at offset 0x10\n");
  EXPECT_EQ(outcome.status, 2);
}

TEST_F(Sources, MayBeAFolderWithTheNamesOfDumpsCompilersAndTheKernel) {
  for (const char* name : {"iadt.dat", "iadt.aml", "IADT"}) {
    fs::create_directories(directory / "d");
    Write((std::string("d/") + name).c_str(), iadt);
    EXPECT_EQ(Run("decompile d").output, Expected()) << name;
    fs::remove_all(directory / "d");
  }
  fs::create_directories(directory / "d");
  Write("d/iadt.bin", iadt);
  Write("d/IADT", iadt);
  EXPECT_EQ(Run("decompile d").output, "vyntable: d/IADT: there is d/iadt.bin as well: name the one that is meant\n");
}

TEST_F(Sources, MayBeStandardInput) { EXPECT_EQ(Run("decompile - <t/iadt.bin").output, Expected()); }

TEST_F(Sources, MayBeAFirmwareImage) {
  // The signature alone, as in the code of a driver, is no table.
  const std::string filler(0x1000, '\xFF');
  Write("rom", filler + "IADT is missing" + filler + iadt + filler + bios + filler);
  EXPECT_THAT(Run("explain rom").output, HasSubstr("rom at 0x200f: IADT table, 91 bytes\n"));
  EXPECT_THAT(Run("explain rom").output, HasSubstr("rom at 0x306a: BIOS information record, 64 bytes\n"));
  EXPECT_EQ(Run("decompile rom").status, 0);
  EXPECT_EQ(Run("decompile rom@0x200f").output, Expected());
  EXPECT_EQ(Run("decompile rom@0x2010").output, "vyntable: rom: no table at offset 0x2010\n");
}

TEST_F(Sources, CountOffsetsFromTheBeginningOfTheFile) {
  const std::string bad = iadt.substr(0, 36 + 2) + '\xF0' + iadt.substr(36 + 3);  // no right checksum any more
  Write("rom", std::string(0x1000, '\xFF') + bad);
  EXPECT_THAT(Run("check rom").output,
              HasSubstr("rom:0x1009: error: the bytes do not sum to 0 modulo 256 [table-checksum]\n"));
}

TEST_F(Sources, WantAChoiceOfDifferentTables) {
  Write("c.toml", std::string(kOwner) + "[[feature]]\nfunction = \"BTState\"\n");
  EXPECT_EQ(Run("compile c.toml -o c.bin").status, 0);
  const std::string filler(0x100, '\xFF');
  Write("rom", filler + iadt + filler + iadt);
  EXPECT_EQ(Run("decompile rom").output, Expected());
  Write("rom", filler + iadt + filler + Read("c.bin"));
  EXPECT_EQ(Run("decompile rom").output, "vyntable: rom:0x025b: another table of the kind of rom:0x0100: name one\n");
}

// --- where tables go ---

TEST_F(Vyntable, LeavesNoTableOfAnEarlierBoard) {
  Write("b.toml", std::string(kOwner) + kIamt + kBios + kFeature);
  EXPECT_EQ(Run("compile b.toml -o out").status, 0);
  Write("c.toml", std::string(kOwner) + kFeature);
  EXPECT_EQ(Run("compile c.toml -o out").output,
            "out/iadt.bin: 91 bytes\nout/iamt.bin: removed\nout/biosinfo.bin: removed\n");
  EXPECT_EQ(FilesIn("out"), std::vector<std::string>{"iadt.bin"});
}

TEST_F(Vyntable, WritesAllTablesOrNone) {
  Write("b.toml", std::string(kOwner) + kIamt + kBios + kFeature);
  EXPECT_EQ(Run("compile b.toml -o out").status, 0);
  const std::string before = Read("out/iadt.bin");
  fs::remove(directory / "out/biosinfo.bin");
  fs::create_directories(directory / "out/biosinfo.bin");
  Write("c.toml", std::string(kOwner) + kIamt + kBios + kFeature + kFeature);
  const Outcome outcome = Run("compile c.toml -o out");
  EXPECT_EQ(outcome.output, "vyntable: out/biosinfo.bin: not a file that could be replaced\n");
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(Read("out/iadt.bin"), before);
  EXPECT_EQ(FilesIn("out"), (std::vector<std::string>{"biosinfo.bin", "iadt.bin", "iamt.bin"}));
}

TEST_F(Vyntable, WritesASingleTableIntoAFile) {
  Write("b.toml", std::string(kOwner) + kIamt + kFeature);
  EXPECT_EQ(Run("compile b.toml -o x.bin").output,
            "vyntable: x.bin: one file for the 2 tables of b.toml: --table says which\n");
  EXPECT_EQ(Run("compile b.toml -o x.aml --table iadt").output, "x.aml: 91 bytes\n");
  EXPECT_EQ(Read("x.aml").substr(0, 4), "IADT");
  EXPECT_EQ(Run("compile b.toml -o x.bin --table biosinfo").output, "vyntable: b.toml: describes no biosinfo\n");
}

TEST_F(Vyntable, RefusesABoardWithoutTables) {
  Write("b.toml", "[board]\nname = \"B\"\n");
  const Outcome outcome = Run("compile b.toml -o out");
  EXPECT_EQ(outcome.output, "vyntable: b.toml: describes no table\n");
  EXPECT_EQ(outcome.status, 2);
}

TEST_F(Vyntable, WritesADependencyFile) {
  fs::create_directories(directory / "a b");
  Write("a b/b$.toml", std::string(kOwner) + kFeature);
  EXPECT_EQ(Run("compile 'a b/b$.toml' -o out -MD").status, 0);
  EXPECT_EQ(Read("out/b$.d"), "out/iadt.bin: \\\n  a\\ b/b$$.toml\n");
  EXPECT_EQ(Run("compile 'a b/b$.toml' -o x.bin -MD -MF deps").status, 0);
  EXPECT_EQ(Read("deps"), "x.bin: \\\n  a\\ b/b$$.toml\n");
}

// --- whose tables they are ---

TEST_F(Vyntable, CompilesNoTableInTheNameOfAnother) {
  Write("b.toml", std::string("[iamt]\nchips = [1]\n") + kFeature);
  const Outcome outcome = Run("compile b.toml -o out");
  EXPECT_EQ(outcome.status, 1);
  const std::string rest =
      " needs \"oem_id\", the name of the board's maker in up to 6 characters: without it the table "
      "says \"VYNMAR\" [oem-missing]\n";
  EXPECT_EQ(outcome.output, "b.toml:1:1: error: [iadt]" + rest + "b.toml:1:1: error: [iamt]" + rest +
                                "vyntable: nothing is written for these errors; --force writes all the same\n");
  EXPECT_FALSE(fs::exists(directory / "out"));
}

TEST_F(Vyntable, FindsEmptyNamesOfMakers) {
  Write("b.toml", std::string("[iadt]\noem_id = \"  \"\n") + kFeature);
  EXPECT_EQ(Run("check b.toml").output,
            "b.toml:1:1: warning: the OEM ID is empty [oem-empty]\nb.toml:1:1: warning: the OEM table ID is empty "
            "[oem-empty]\n"
            "0 errors, 2 warnings, 0 notes\n");
}

// --- places in board files ---

TEST_F(Vyntable, NamesThePlaceInABoardFile) {
  Write("b.toml", std::string(kOwner) +
                      "[[feature]]\nfunction = \"BTState\"\ncommands = [\n  { port = 0x80 },\n"
                      "  { msr = 0x1B, get = \"read\" },\n]\n");
  EXPECT_EQ(
      Run("check b.toml").output,
      "b.toml:7:3: note: neither reads nor writes, in either direction (BTState index 0 value 0) [command-idle]\n"
      "b.toml:8:3: error: no entry can go on behind an MSR command: where it succeeds, the call ends with code 21 "
      "(BTState index 0 value 0) [msr-in-entry]\n"
      "1 error, 0 warnings, 1 note\n");
}

TEST_F(Vyntable, TellsAllMistakesOfABoardFileAtOnce) {
  Write("b.toml",
        "[[feature]]\nfunction = \"BTSate\"\nvalu = 1\n[[feature]]\nfunction = \"BTState\"\nvalue = 300\n"
        "commands = [\n  { port = 0x80, widht = 2 },\n  { use = \"gpoi\" },\n]\n[sequences]\ngpio = []\n");
  const Outcome outcome = Run("compile b.toml -o out");
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(
      outcome.output,
      "vyntable: b.toml:2:12: \"function\" of [[feature]] must be the name of a feature (docs/board-files.md lists "
      "them) (did you mean 'BTState'?)\n"
      "vyntable: b.toml:3:1: \"valu\" is not a key of [[feature]] (did you mean 'value'?)\n"
      "vyntable: b.toml:6:9: \"value\" of [[feature]] must be a number from 0 to 0xff\n"
      "vyntable: b.toml:8:18: \"widht\" is not a key of [[commands]] (did you mean 'width'?)\n"
      "vyntable: b.toml:9:11: \"use\" of [[commands]] must be the name of one of the [sequences] (did you mean "
      "'gpio'?)\n");
}

// --- rules ---

TEST_F(Vyntable, WritesNoTablesWithErrorsUnlessForced) {
  Write("b.toml",
        std::string(kOwner) + "[[feature]]\nfunction = \"BTState\"\ncommands = [{ msr = 0x1B, get = \"read\" }]\n");
  EXPECT_EQ(Run("compile b.toml -o out").status, 1);
  EXPECT_FALSE(fs::exists(directory / "out"));
  EXPECT_EQ(Run("compile b.toml -o out --allow msr-in-entry:b.toml:6").status, 0);
  EXPECT_EQ(Run("compile b.toml -o out --allow msr-in-entry:b.toml:7").status, 1);
  EXPECT_EQ(Run("compile b.toml -o out --force").status, 0);
}

TEST_F(Vyntable, AllowsRulesByNameAndPlace) {
  const std::string warned = std::string(kOwner) + "[[feature]]\nfunction = \"BTState\"\n";
  Write("b.toml", warned);
  EXPECT_EQ(Run("check b.toml").status, 0);
  EXPECT_EQ(Run("check --strict b.toml").status, 1);
  for (const char* place : {"", ":b.toml", ":b.toml:4", ":4", ":4:1"})
    EXPECT_EQ(Run(std::string("check --strict b.toml --allow entry-empty") + place).output,
              "0 errors, 0 warnings, 0 notes; 1 allowed\n")
        << place;
  for (const char* other : {"entry-empty:c.toml", "entry-empty:5", "state-twice"})
    EXPECT_EQ(Run(std::string("check --strict b.toml --allow ") + other).status, 1) << other;
  const Outcome unknown = Run("check b.toml --allow entry-emty");
  EXPECT_EQ(unknown.output, "vyntable: --allow: there is no rule 'entry-emty' (did you mean 'entry-empty'?)\n");
  EXPECT_EQ(unknown.status, 2);
}

TEST_F(Vyntable, TakesExceptionsFromTheBoardFile) {
  const std::string feature = "[[feature]]\nfunction = \"BTState\"\n", other = "[[feature]]\nfunction = \"OTPState\"\n";
  Write("b.toml", kOwner + feature + "allow = [\"entry-empty\"]\n" + other);
  EXPECT_EQ(Run("check b.toml").output,
            "b.toml:7:1: warning: an entry without commands always succeeds (OTPState index 0 value 0) [entry-empty]\n"
            "0 errors, 1 warning, 0 notes; 1 allowed\n");
  Write("b.toml", "allow = [\"entry-empty\"]\n" + (kOwner + feature) + other);
  EXPECT_EQ(Run("check b.toml").output, "0 errors, 0 warnings, 0 notes; 2 allowed\n");
  Write("b.toml", kOwner + feature + "allow = [\"empty\"]\n");
  EXPECT_EQ(Run("check b.toml").output, "vyntable: b.toml:6:9: there is no rule 'empty'\n");
}

TEST_F(Vyntable, NamesEveryRuleWithReasonAndCure) {
  const Outcome outcome = Run("check --rules");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.output, HasSubstr("msr-write (error)\n  Model-specific registers are only read.\n"
                                        "  Take the command out.\n"));
}

// --- new boards ---

TEST_F(Vyntable, BeginsABoardThatIsInOrder) {
  EXPECT_EQ(Run("new --maker ACME --board B1 --model 'ACME Board 1' --chip 0x0215 -o b.toml </dev/null").status, 0);
  EXPECT_EQ(Run("check --strict b.toml").output, "0 errors, 0 warnings, 0 notes\n");
  EXPECT_THAT(Run("test b.toml").output,
              testing::EndsWith("25 tried, 0 failed\n"));  // 8 lines: read, low, high; a voltage
  EXPECT_EQ(Run("compile b.toml -o t").status, 0);
  EXPECT_EQ(Read("t/iamt.bin").substr(10, 10), std::string("ACME\0\0B1\0\0", 10));
  EXPECT_EQ(Run("new --maker ACME --board B1 --model M -o b.toml").output, "vyntable: b.toml: is there already\n");
}

TEST_F(Vyntable, WantsPlainNamesForANewBoard) {
  EXPECT_EQ(Run("new --maker ACME </dev/null").output, "vyntable: new needs --board, or a terminal to ask at\n");
  EXPECT_EQ(Run("new --maker TOOLONG --board B --model M </dev/null").output,
            "vyntable: --maker takes up to 6 characters of plain text, not 'TOOLONG'\n");
  EXPECT_EQ(Run("new --maker 'A\"B' --board B --model M </dev/null").status, 2);
}

// --- included files ---

class Includes : public Vyntable {
 protected:
  Includes() { fs::create_directories(directory / "chips"); }
  void Board(const std::string& include, const std::string& rest) const {
    Write("b.toml", "include = " + include + "\n" + kOwner + rest);
  }
};

TEST_F(Includes, BringSequencesAndRecordsThatComeFirst) {
  Write("chips/io.toml",
        "include = [\"base.toml\"]\n[sequences]\nselect = [{ use = \"unlock\" }, { port = 0x2F, set = \"write\" }]\n"
        "[[feature]]\nfunction = \"OTPState\"\nvalue = 2\ncommands = [{ use = \"select\" }]\n");
  Write("chips/base.toml", "[sequences]\nunlock = [{ port = 0x2E, set = \"write\" }]\n");
  Board("[\"chips/io.toml\"]", "[[feature]]\nfunction = \"BTState\"\nvalue = 1\ncommands = [{ use = \"select\" }]\n");
  Write("whole.toml", std::string(kOwner) +
                          "[sequences]\nselect = [{ port = 0x2E, set = \"write\" }, { port = 0x2F, set = \"write\" }]\n"
                          "[[feature]]\nfunction = \"OTPState\"\nvalue = 2\ncommands = [{ use = \"select\" }]\n"
                          "[[feature]]\nfunction = \"BTState\"\nvalue = 1\ncommands = [{ use = \"select\" }]\n");
  EXPECT_EQ(Run("compile b.toml -o one.bin -MD").status, 0);
  EXPECT_EQ(Run("compile whole.toml -o other.bin").status, 0);
  EXPECT_EQ(Read("one.bin"), Read("other.bin"));
  EXPECT_EQ(Read("one.d"),
            "one.bin: \\\n  b.toml \\\n  chips/base.toml \\\n  chips/io.toml\n\n"
            "chips/base.toml:\n\nchips/io.toml:\n");
}

TEST_F(Includes, AreNamedInFindingsAndMistakes) {
  Write("chips/io.toml", "[[feature]]\nfunction = \"OTPState\"\n");
  Board("[\"chips/io.toml\"]", "");
  EXPECT_THAT(Run("check b.toml").output, HasSubstr("chips/io.toml:1:1: warning: an entry without commands"));
  Write("chips/io.toml", "[[feature]]\nfunction = \"OTPState\"\nvalu = 1\n[board]\n");
  Board("[\"chips/io.toml\"]", "colour = 1\n");
  EXPECT_EQ(Run("check b.toml").output,
            "vyntable: b.toml:5:1: \"colour\" is not a key of [iadt]\n"
            "vyntable: chips/io.toml:3:1: \"valu\" is not a key of [[feature]] (did you mean 'value'?)\n"
            "vyntable: chips/io.toml:4:2: \"board\" is not a key of the board file\n");
}

TEST_F(Includes, StayInTheFolderAndEnd) {
  Write("chips/a.toml", "include = [\"../b.toml\"]\n");
  Board("[\"chips/a.toml\"]", "");
  EXPECT_THAT(Run("check b.toml").output, HasSubstr("files that do not include each other, not \"../b.toml\""));
  for (const char* outside : {"[\"../x.toml\"]", "[\"/etc/hostname\"]", "[\"chips/../../x.toml\"]"}) {
    Board(outside, "");
    EXPECT_THAT(Run("check b.toml").output, HasSubstr("paths of files in the folder of the board file or below"))
        << outside;
  }
  Board("[\"none.toml\"]", "");
  EXPECT_THAT(Run("check b.toml").output, HasSubstr("none.toml:1:1: expected a readable board file"));
  Write("chips/a.toml", "[sequences]\ns = []\n");
  Board("[\"chips/a.toml\", \"chips/a.toml\"]", "[sequences]\ns = []\n");
  EXPECT_THAT(Run("check b.toml").output, HasSubstr("\"s\" of [sequences] must be another name"));
}

// --- differences ---

TEST_F(Vyntable, TellsDifferencesByFeatureInstanceAndState) {
  Write("a.toml", std::string(kOwner) + kBios + kFeature + "[[feature]]\nfunction = \"OTPState\"\nvalue = 2\n");
  Write("b.toml", std::string(kOwner) + "[bios]\nmodel = \"N\"\n" +
                      "[[feature]]\nfunction = \"BTState\"\nvalue = 1\n"
                      "commands = [{ port = 0x80, get = \"read\", expected = 6 }]\n" +
                      "[[feature]]\nfunction = \"OTPState\"\nvalue = 3\ncommands = [{ delay = 1, set = \"write\" }]\n");
  const Outcome outcome = Run("diff a.toml b.toml");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output,
            "~ BIOS information record\n    - model \"M\"\n    + model \"N\"\n"
            "~ BTState index 0 value 1\n    - port 0x80, 1 byte; Get: reads, must be 0x5; Set: nothing\n"
            "    + port 0x80, 1 byte; Get: reads, must be 0x6; Set: nothing\n"
            "- OTPState index 0 value 2\n"
            "+ OTPState index 0 value 3\n    + wait 1 us; Get: nothing; Set: waits\n");
}

TEST_F(Vyntable, TellsThatNothingDiffersOrOnlyTheOrder) {
  const std::string other = "[[feature]]\nfunction = \"BTState\"\nvalue = 2\n";
  Write("a.toml", kOwner + (kFeature + other));
  Write("b.toml", kOwner + (other + kFeature));
  EXPECT_EQ(Run("compile a.toml -o a").status, 0);
  const Outcome same = Run("diff a.toml a");
  EXPECT_EQ(same.status, 0);
  EXPECT_EQ(same.output, "");
  const Outcome order = Run("diff a.toml b.toml");
  EXPECT_EQ(order.status, 1);
  EXPECT_EQ(order.output, "~ the order of the records: the first that succeeds is the one that counts\n");
  EXPECT_EQ(Run("diff a.toml none").status, 2);
}

// --- tries on the simulated machine ---

/// A port register whose bit 0 is Bluetooth, and one whose bits a machine could lose.
constexpr char kMachine[] =
    "[bios]\nmodel = \"M\"\n[iamt]\noem_id = \"ACME\"\n[acpi]\n[[ports]]\nfirst = 0x500\nbytes = [0, 200]\n";

std::string State(int value, const char* test, const char* set) {
  return "[[feature]]\nfunction = \"BTState\"\nvalue = " + std::to_string(value) +
         "\ncommands = [\n  { port = 0x500, get = \"read and\", and = 1, expected = " + test +
         " },\n  { port = 0x500, set = \"write and or\", and = 0xFE, or = " + set + " },\n]\n";
}

TEST_F(Vyntable, SetsEveryStateAndReadsItBack) {
  Write("b.toml", std::string(kOwner) + kMachine + State(0, "0", "0") + State(1, "1", "1") +
                      "[[sensor]]\nquantity = \"temperature\"\nkind = 2\nname = \"T\"\n"
                      "commands = [{ port = 0x501, get = \"read\" }]\n");
  const Outcome outcome = Run("test b.toml");
  // The state as it is, two that are set, a sensor.
  EXPECT_THAT(outcome.output, testing::EndsWith("4 tried, 0 failed\n"));
  EXPECT_EQ(outcome.status, 0);
}

TEST_F(Vyntable, ReportsWhatDoesNotComeBackWithItsAccesses) {
  Write("b.toml", std::string(kOwner) + kMachine + State(0, "0", "0") + State(1, "1", "2"));
  const Outcome outcome = Run("test b.toml");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output,
              testing::EndsWith("b.toml:19:1: BTState index 0 value 1: it was set, and value 0 is read back\n"
                                "    in8 0x500 -> 0x00\n    out8 0x500 <- 0x02\n"
                                "    in8 0x500 -> 0x02\n3 tried, 1 failed\n"));
}

TEST_F(Vyntable, TriesNoBoardOnWhichACallWouldNotEnd) {
  Write("b.toml", std::string(kOwner) + kMachine +
                      "[[feature]]\nfunction = \"BTState\"\ncommands = [{ port = 0x500, opcode = 7 }]\n");
  const Outcome outcome = Run("test b.toml");
  EXPECT_EQ(outcome.status, 2);
  EXPECT_THAT(outcome.output, HasSubstr("b.toml:14: expected a command that ends"));
}

TEST_F(Vyntable, FindsTheReferenceBoardDoingWhatItSays) {
  const Outcome outcome = Run("test " REFERENCE_BOARD);
  EXPECT_EQ(outcome.status, 0) << outcome.output;
}

TEST_F(Vyntable, ExplainsWithoutColourInAPipe) {
  Write("b.toml",
        "[[feature]]\nfunction = \"BTState\"\nvalue = 1\ncommands = [{ port = 0x80, get = \"read\", expected = 5 }]\n");
  const Outcome outcome = Run("explain b.toml");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.output, HasSubstr("BTState index 0 value 1, 55 bytes\n"));
  EXPECT_THAT(outcome.output,
              HasSubstr("  0x003f  05 80 00 80 00 00 00 00 00 00 00 00 00 00 00 05  port 0x80, 1 byte\n"
                        "  0x004f  00 00 00 FF FF FF FF 00 00 00 00 00              Get: reads, must be "
                        "0x5\n"));
  EXPECT_THAT(outcome.output, testing::Not(HasSubstr("\x1B")));
}

struct BadCase {
  const char* arguments;
  const char* output;
};

TEST_F(Vyntable, EndsWith2AndOneLineOnBadInput) {
  Write("b.toml", "[[feature]]\n");
  Write("x.bin", "nothing");
  Write("short.bin", "IADT\x24");
  fs::create_directories(directory / "empty");
  const BadCase cases[] = {
      {"compile b.toml -o out", "vyntable: b.toml:1:1: [[feature]] needs \"function\", a text\n"},
      {"compile none.toml -o out",
       "vyntable: none.toml:1:1: expected a readable board file: No such file or directory\n"},
      {"check none.bin", "vyntable: none.bin: No such file or directory\n"},
      {"explain x.bin",
       "vyntable: x.bin: expected an IADT or IAMT table, a BIOS information record, a dump or firmware image that "
       "holds "
       "one, or a board file (.toml)\n"},
      {"decompile short.bin", "vyntable: short.bin: shorter than the 36 bytes of a table header\n"},
      {"explain short.bin", "vyntable: short.bin: shorter than the 36 bytes of a table header\n"},
      {"decompile empty",
       "vyntable: empty: holds none of iadt.bin, iamt.bin, biosinfo.bin, nor their like (.dat, .aml, IADT, IAMT)\n"},
  };
  for (const BadCase& c : cases) {
    const Outcome outcome = Run(c.arguments);
    EXPECT_EQ(outcome.status, 2) << c.arguments;
    EXPECT_EQ(outcome.output, c.output);
  }
}

TEST_F(Vyntable, EndsWith2WhereItsOutputCannotBeWritten) {
  for (const char* arguments : {"decompile " REFERENCE_BOARD, "explain " REFERENCE_BOARD, "check " REFERENCE_BOARD,
                                "compile " REFERENCE_BOARD " -o out", "--help", "--version"}) {
    const std::string message = Run(std::string(arguments) + " 2>&1 >/dev/full").output;
    EXPECT_TRUE(message.starts_with("vyntable: cannot write to standard output")) << arguments << message;
    EXPECT_EQ(std::ranges::count(message, '\n'), 1) << message;
    EXPECT_EQ(Run(std::string(arguments) + " >/dev/full").status, 2) << arguments;
    EXPECT_EQ(Run(std::string(arguments) + " >&-").status, 2) << arguments;
  }
}

TEST_F(Vyntable, KeepsItsStatusWhereMessagesCannotBeWritten) {
  EXPECT_EQ(Run("check none.bin >/dev/null 2>/dev/full").status, 2);
  EXPECT_EQ(Run("check none.bin >/dev/null 2>&-").status, 2);
  EXPECT_EQ(Run("bake >/dev/null 2>/dev/full").status, 2);
  EXPECT_EQ(Run("check none.bin >&- 2>&-").status, 2);
}

TEST_F(Vyntable, WritesNoMessageIntoAFile) {
  // Without a standard error, the board file that is written must not take its number.
  EXPECT_EQ(Run("decompile " REFERENCE_BOARD " nothing.bin -o b.toml >&- 2>&-").status, 2);
  EXPECT_EQ(Run("compile " REFERENCE_BOARD " -o tables >/dev/null 2>&-").status, 0);
  EXPECT_EQ(Read("tables/iamt.bin").size(), 91u);
}

TEST_F(Vyntable, SuggestsTheSubcommandThatWasMeant) {
  EXPECT_EQ(Run("decompil x").output,
            "vyntable: there is no subcommand 'decompil' (did you mean 'decompile'?)\nTry 'vyntable --help'.\n");
}

TEST_F(Vyntable, ShowsNoControlCharacters) {
  EXPECT_EQ(Run("check \"$(printf '\\033[2J')\"").output, "vyntable: \\x1B[2J: No such file or directory\n");
  EXPECT_EQ(Run("\"$(printf '\\033[2J')\"").output,
            "vyntable: there is no subcommand '\\x1B[2J'\nTry 'vyntable --help'.\n");
}

TEST_F(Vyntable, EndsWith2OnWrongUsage) {
  for (const char* arguments : {"", "compile", "compile b.toml", "bake", "check", "check --fast x", "decompile"})
    EXPECT_EQ(Run(arguments).status, 2) << arguments;
  EXPECT_EQ(Run("--help").status, 0);
  EXPECT_EQ(Run("--version").status, 0);
}

}  // namespace
