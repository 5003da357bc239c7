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
  fs::path directory;
};

TEST_F(Vyntable, CompilesTheThreeFiles) {
  Write("b.toml", "[bios]\nmodel = \"M\"\n[iamt]\nchips = [0x94D2]\n[[feature]]\nfunction = \"BTState\"\nvalue = 1\n");
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
  Write("b.toml", "[[feature]]\nfunction = \"BTState\"\ncommands = [{ msr = 0x1B, get = \"read\" }]\n");
  EXPECT_EQ(Run("compile b.toml -o .").status, 0);
  const Outcome outcome = Run("check iadt.bin");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output,
            "iadt.bin:0x003f: error: an MSR command stops the walk with code 21 (BTState index 0 value 0)\n"
            "1 errors, 0 warnings, 0 notes\n");
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

TEST_F(Vyntable, EndsWith1AndOneLineOnBadInput) {
  Write("b.toml", "[[feature]]\n");
  Write("x.bin", "nothing");
  Write("short.bin", "IADT\x24");
  fs::create_directories(directory / "empty");
  const BadCase cases[] = {
      {"compile b.toml -o out", "vyntable: b.toml:1: [[feature]] needs \"function\", a text\n"},
      {"compile none.toml -o out",
       "vyntable: none.toml:1: expected a readable board file: No such file or directory\n"},
      {"check none.bin", "vyntable: none.bin: No such file or directory\n"},
      {"explain x.bin",
       "vyntable: x.bin: expected an IADT or IAMT table, a BIOS information record or a board file (.toml)\n"},
      {"decompile short.bin", "vyntable: short.bin: shorter than the 36 bytes of a table header\n"},
      {"explain short.bin", "vyntable: short.bin: shorter than the 36 bytes of a table header\n"},
      {"decompile empty", "vyntable: empty: holds none of iadt.bin, iamt.bin, biosinfo.bin\n"},
  };
  for (const BadCase& c : cases) {
    const Outcome outcome = Run(c.arguments);
    EXPECT_EQ(outcome.status, 1) << c.arguments;
    EXPECT_EQ(outcome.output, c.output);
  }
}

TEST_F(Vyntable, EndsWith1WhereItsOutputCannotBeWritten) {
  for (const char* arguments : {"decompile " REFERENCE_BOARD, "explain " REFERENCE_BOARD, "check " REFERENCE_BOARD,
                                "compile " REFERENCE_BOARD " -o out", "--help", "--version"}) {
    const std::string message = Run(std::string(arguments) + " 2>&1 >/dev/full").output;
    EXPECT_TRUE(message.starts_with("vyntable: cannot write to standard output")) << arguments << message;
    EXPECT_EQ(std::ranges::count(message, '\n'), 1) << message;
    EXPECT_EQ(Run(std::string(arguments) + " >/dev/full").status, 1) << arguments;
    EXPECT_EQ(Run(std::string(arguments) + " >&-").status, 1) << arguments;
  }
}

TEST_F(Vyntable, KeepsItsStatusWhereMessagesCannotBeWritten) {
  EXPECT_EQ(Run("check none.bin >/dev/null 2>/dev/full").status, 1);
  EXPECT_EQ(Run("check none.bin >/dev/null 2>&-").status, 1);
  EXPECT_EQ(Run("bake >/dev/null 2>/dev/full").status, 2);
  EXPECT_EQ(Run("check none.bin >&- 2>&-").status, 1);
}

TEST_F(Vyntable, WritesNoMessageIntoAFile) {
  // Without a standard error, the board file that is written must not take its number.
  EXPECT_EQ(Run("decompile " REFERENCE_BOARD " nothing.bin -o b.toml >&- 2>&-").status, 1);
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
  for (const char* arguments : {"", "compile", "compile b.toml", "bake", "check", "check --fast x"})
    EXPECT_EQ(Run(arguments).status, 2) << arguments;
  EXPECT_EQ(Run("--help").status, 0);
  EXPECT_EQ(Run("--version").status, 0);
}

}  // namespace
