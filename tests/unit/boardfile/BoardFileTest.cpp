// SPDX-License-Identifier: MIT
// Board files from text: what each section becomes, and what is complained about.
#include "boardfile/BoardFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using boardfile::ParseBoard;
using firmware::Bytes;
using testing::HasSubstr;

Bytes IadtBody(const char* text) {
  const boardfile::LoadedBoard loaded = ParseBoard(text, "b.toml");
  EXPECT_EQ(loaded.error, "");
  const Bytes& iadt = loaded.firmware.iadt;
  return iadt.size() < 36 ? Bytes{} : Bytes(iadt.begin() + 36, iadt.end());
}

/// The bytes of the only command of the only feature.
Bytes CommandOf(const std::string& command) {
  const Bytes body = IadtBody(("[[feature]]\nfunction = \"LVDSState\"\ncommands = [ {" + command + "} ]\n").c_str());
  return body.size() < 27 ? Bytes{} : Bytes(body.begin() + 27, body.end());
}

// --- firmware ---

TEST(BoardFeature, BecomesARecord) {
  const Bytes expected = {5, 3, 1, 27, 0, 0, 0, 'p', 'a', 'n', 'e', 'l', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(IadtBody("[[feature]]\nfunction = \"LVDSState\"\nindex = 3\nvalue = 0x01\nname = \"panel\"\n"), expected);
}

TEST(BoardFeature, TakesATypeByNumber) {
  const Bytes body = IadtBody("[[feature]]\ntype = 40\nextra = \"AA BB\"\nlength = 0x12345678\n");
  ASSERT_EQ(body.size(), 29u);
  EXPECT_EQ(Bytes(body.begin(), body.begin() + 7), (Bytes{40, 0, 0, 0x78, 0x56, 0x34, 0x12}));
  EXPECT_EQ(body[28], 0xBB);
}

TEST(BoardFeature, KeepsTheOrderOfTheFile) {
  const Bytes body = IadtBody(
      "[[sensor]]\nquantity = \"current\"\nkind = 1\n[[feature]]\nfunction = \"BTState\"\n"
      "[[record]]\nraw = [0xEE, 0xEF]\n[[sensor]]\nquantity = \"voltage\"\nkind = 3\n");
  ASSERT_EQ(body.size(), 56u + 27 + 2 + 51);
  EXPECT_EQ(body[0], 31);
  EXPECT_EQ(body[56], 15);
  EXPECT_EQ(body[83], 0xEE);
  EXPECT_EQ(body[85], 2);
}

struct CommandCase {
  const char* text;
  Bytes bytes;
};

TEST(BoardCommand, OfEveryKindBecomesItsBytes) {
  const CommandCase cases[] = {
      {"memory = 0xFED41000, width = 4, set = \"write and or\", and = 0xFFFFFFF0, or = 5",
       {0x81, 0x07, 0x00, 0x00, 0x10, 0xD4, 0xFE, 0xF0, 0xFF, 0xFF, 0xFF, 0x05, 0x00, 0x00,
        0x00, 0x00, 0x00, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x00, 0x00, 0x00}},
      {"port = 0x443, get = \"read\", set = \"write\", argument = 2",
       {0x05, 0x84, 0x01, 0x43, 0x04, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
        0x00, 0x00, 0x00, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00}},
      {"index_port = 0x2E, data_port = 0x2F, register = 0xF0, get = \"read and\", and = 1, expected = 1, argument = 0, "
       "argument_mode = false",
       {0x06, 0xA0, 0x00, 0x2E, 0x00, 0x00, 0x00, 0x2F, 0x00, 0x00, 0x00, 0xF0, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00,
        0x00, 0x00, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00}},
      {"smbus = 0x5A, command = 0x20, width = 2, get = \"read and\", and = 0x3FF, expected = 0x234",
       {0x4D, 0xA0, 0x00, 0x5A, 0x20, 0x00, 0xFF, 0x03, 0x00, 0x00, 0x34,
        0x02, 0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x00, 0x00, 0x00}},
      {"pci = \"00:1f.3\", register = 0x140, width = 4, set = \"write or\", or = 7",
       {0x91, 0x05, 0x00, 0x00, 0x1F, 0x03, 0x40, 0x01, 0x00, 0x00, 0x00, 0x00, 0x07, 0x00, 0x00,
        0x00, 0x00, 0x00, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x00, 0x00, 0x00}},
      {"msr = 0x19C, width = 8, get = \"read and\", and = \"0x80000000007F0000\", expected = 1",
       {0xC9, 0xA0, 0x00, 0x9C, 0x01, 0x00, 0x00, 0x00, 0x00, 0x7F, 0x00, 0x00, 0x00, 0x00, 0x80, 0x00, 0x00, 0x00,
        0x00, 0x00, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF}},
      {"delay = 0x102, unit = \"ms\", set = \"write\"",
       {0x14, 0x04, 0x00, 0x02, 0x02, 0x01, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0, 0}},
      {"raw = \"06 a0 00\"", {0x06, 0xA0, 0x00}},
      {"delay = 1, control = 0xFEDC, opcode = 0x17",
       {0x17, 0xDC, 0xFE, 0x01, 0x01, 0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0, 0}},
  };
  for (const CommandCase& c : cases) EXPECT_EQ(CommandOf(c.text), c.bytes) << c.text;
}

TEST(BoardCommand, MayStandForANamedSequence) {
  const Bytes body = IadtBody(
      "[sequences]\nenter = [ { raw = \"87\" }, { raw = \"88\" } ]\n"
      "[[feature]]\nfunction = \"BTState\"\ncommands = [ { raw = \"01\" }, { use = \"enter\" }, { raw = \"02\" } ]\n");
  EXPECT_EQ(Bytes(body.begin() + 27, body.end()), (Bytes{0x01, 0x87, 0x88, 0x02}));
}

TEST(BoardSequence, MayUseOthers) {
  const Bytes body = IadtBody(
      "[sequences]\nall = [ { use = \"one\" }, { raw = \"03\" }, { use = \"one\" } ]\none = [ { raw = \"01\" } ]\n"
      "[[feature]]\nfunction = \"BTState\"\ncommands = [ { use = \"all\" } ]\n");
  EXPECT_EQ(Bytes(body.begin() + 27, body.end()), (Bytes{0x01, 0x03, 0x01}));
  EXPECT_THAT(ParseBoard("[sequences]\na = [{ use = \"b\" }]\nb = [{ use = \"a\" }]\n", "b.toml").error,
              testing::EndsWith("must be a sequence that does not use itself"));
  std::string deep = "[sequences]\n";
  for (int i = 0; i < 100; ++i) deep += "s" + std::to_string(i) + " = [{ use = \"s" + std::to_string(i + 1) + "\" }]\n";
  EXPECT_THAT(ParseBoard(deep + "s100 = []\n", "b.toml").error,
              testing::EndsWith("must be within 16 sequences that use each other"));
}

// --- fields ---

/// A field by itself and the features that it stands for are the same bytes.
void ExpectSame(const std::string& field, const std::string& features) {
  EXPECT_EQ(IadtBody(("[sequences]\nin = [{ raw = \"01\" }]\nout = [{ raw = \"02\" }]\n[[field]]\n" + field).c_str()),
            IadtBody(features.c_str()))
      << field;
}

std::string Feature(const std::string& function, int index, int value, const std::string& commands) {
  return "[[feature]]\nfunction = \"" + function + "\"\nindex = " + std::to_string(index) +
         "\nvalue = " + std::to_string(value) + "\ncommands = [" + commands + "]\n";
}

/// Setting and reading of a port's bits.
std::string PortState(const char* port, int keep, int mask, int value) {
  const std::string place = std::string("{ port = ") + port;
  return place + ", set = \"write and or\", and = " + std::to_string(keep) + ", or = " + std::to_string(value) +
         " }, " + place + ", get = \"read and\", and = " + std::to_string(mask) +
         ", expected = " + std::to_string(value) + " }";
}

TEST(BoardField, SetsAndReadsABitForEachState) {
  ExpectSame("function = \"BTState\"\nport = 0x500\nbit = 4\n",
             Feature("BTState", 0, 0, PortState("0x500", 0xEF, 0x10, 0)) +
                 Feature("BTState", 0, 1, PortState("0x500", 0xEF, 0x10, 0x10)));
}

TEST(BoardField, HasABitOfItsOwnForEachInstance) {
  ExpectSame(
      "function = \"DigitalIOState\"\nindex = \"1..2\"\nvalues = { low = 0, high = 1 }\nport = 0x500\nbit = "
      "\"index\"\n",
      Feature("DigitalIOState", 1, 0, PortState("0x500", 0xFD, 2, 0)) +
          Feature("DigitalIOState", 1, 1, PortState("0x500", 0xFD, 2, 2)) +
          Feature("DigitalIOState", 2, 0, PortState("0x500", 0xFB, 4, 0)) +
          Feature("DigitalIOState", 2, 1, PortState("0x500", 0xFB, 4, 4)));
}

TEST(BoardField, MovesOnByAStepAndTakesCodes) {
  ExpectSame(
      "function = \"ComType\"\nindex = [3, 5]\nvalues = [7]\ncodes = [2]\nport = 0x500\nstep = 0x10\nbits = \"1..2\"\n",
      Feature("ComType", 3, 7, PortState("0x500", 0xF9, 6, 4)) +
          Feature("ComType", 5, 7, PortState("0x510", 0xF9, 6, 4)));
  // A mask's codes are whole.
  ExpectSame("function = \"BTState\"\nvalues = [1]\ncodes = [0x81]\nport = 0x500\nmask = 0x81\n",
             Feature("BTState", 0, 1, PortState("0x500", 0x7E, 0x81, 0x81)));
}

TEST(BoardField, StandsBetweenSequencesInTheDirectionsItHas) {
  ExpectSame(
      "function = \"MFGState\"\nvalues = [1]\nmemory = 0x100\nwidth = 4\nbit = 16\naccess = \"get\"\n"
      "before = \"in\"\nafter = \"out\"\n",
      Feature("MFGState", 0, 1,
              "{ raw = \"01\" }, { memory = 0x100, width = 4, get = \"read and\", and = 0x10000, expected = 0x10000 }, "
              "{ raw = \"02\" }"));
  ExpectSame(
      "function = \"Backlight\"\nvalues = [2]\nsmbus = 0x40\ncommand = 3\nwidth = 2\nbits = \"8..9\"\naccess = "
      "\"set\"\n",
      Feature("Backlight", 0, 2,
              "{ smbus = 0x40, command = 3, width = 2, set = \"write and or\", and = 0xFCFF, or = 0x200 }"));
}

TEST(BoardField, MayStandInALine) {
  EXPECT_EQ(IadtBody("[[fields]]\neach = [\n  { function = \"BTState\", port = 0x500, bit = 0 },\n]\n"),
            IadtBody("[[field]]\nfunction = \"BTState\"\nport = 0x500\nbit = 0\n"));
}

TEST(BoardField, IsRefusedWhereItsBitsDoNotFit) {
  const std::string head = "[[field]]\nfunction = \"BTState\"\nport = 0x500\n";
  for (const char* bad : {"bit = 8", "bits = \"6..8\"", "mask = 0x100", "bit = 0\nvalues = [2]", "bit = 0\ncodes = [1]",
                          "bit = 32", "bits = \"2..1\"", "bit = \"first\"", "", "bit = 0\naccess = \"both\"",
                          "bit = 0\nindex = \"1..300\"", "bit = 0\nbefore = \"none\"", "bit = \"index\"\nindex = [40]"})
    EXPECT_NE(ParseBoard(head + bad + "\n", "b.toml").error, "") << bad;
  EXPECT_THAT(ParseBoard("format = 2\n", "b.toml").error, HasSubstr("\"format\" of the board file must be"));
  EXPECT_EQ(ParseBoard("format = 1\n", "b.toml").error, "");
}

TEST(BoardSensor, HasParametersAndCommandsAtTheirPlaces) {
  const Bytes body = IadtBody(
      "[[sensor]]\nquantity = \"temperature\"\nkind = 3\nname = \"CPU\"\nshift = 16\nwidth = 8\n"
      "subtrahend_shift = 17\nsubtrahend_width = 7\n"
      "commands = [ { msr = 0x1A2, get = \"read\" }, { msr = 0x19C, get = \"read\" } ]\n");
  ASSERT_EQ(body.size(), 111u);
  EXPECT_EQ(Bytes(body.begin() + 27, body.begin() + 34), (Bytes{16, 8, 0x09, 0x80, 0x00, 0xA2, 0x01}));
  EXPECT_EQ(Bytes(body.begin() + 69, body.begin() + 76), (Bytes{17, 7, 0x09, 0x80, 0x00, 0x9C, 0x01}));
}

TEST(BoardTables, TakeHeaderFieldsAndWrongOnesToo) {
  const auto firmware =
      ParseBoard(
          "[iadt]\nrevision = 3\noem_id = \"OEM\"\noem_table_id = \"TABLE\"\noem_revision = 0x11223344\n"
          "creator_id = \"CR\"\ncreator_revision = 7\nlength = 40\nchecksum = 0x99\n",
          "b.toml")
          .firmware;
  const Bytes expected = {'I', 'A', 'D', 'T', 40, 0, 0,    0,    3,    0x99, 'O', 'E', 'M', 0, 0, 0, 'T', 'A',
                          'B', 'L', 'E', 0,   0,  0, 0x44, 0x33, 0x22, 0x11, 'C', 'R', 0,   0, 7, 0, 0,   0};
  EXPECT_EQ(firmware.iadt, expected);
}

TEST(BoardTables, GiveChipIdentifiersAndOtherRecords) {
  const auto firmware = ParseBoard(
                            "[iamt]\nchips = [0x94D2, 0x0215]\n[[iamt.record]]\ntype = 7\nsize = 5\n"
                            "[[iamt.record]]\nraw = \"01 02 03 04\"\n",
                            "b.toml")
                            .firmware;
  ASSERT_EQ(firmware.iamt.size(), 36u + 55 + 5 + 4);
  EXPECT_EQ(Bytes(firmware.iamt.begin() + 65, firmware.iamt.begin() + 71), (Bytes{0xD2, 0x94, 0x15, 0x02, 0, 0}));
  EXPECT_EQ(Bytes(firmware.iamt.begin() + 91, firmware.iamt.end()), (Bytes{7, 0, 0, 5, 0, 1, 2, 3, 4}));
}

TEST(BoardFirmware, LiesInMemoryBehindARootPointer) {
  const auto loaded = ParseBoard(
      "[bios]\nmodel = \"M1\"\nat = 0xE0123\n[acpi]\nroot_pointer = 0xF4000\ntables_at = 0x100000\n"
      "[iamt]\n[iadt]\nat = 0x200000\n",
      "b.toml");
  ASSERT_TRUE(loaded.board) << loaded.error;
  sim::Board& board = *loaded.board;
  EXPECT_EQ(board.MemoryByte(0xE0123), '$');
  EXPECT_EQ(board.MemoryByte(0xE0123 + 10), 'M');
  EXPECT_EQ(board.MemoryByte(0xF4000), 'R');
  EXPECT_EQ(board.MemoryByte(0x100000 + 3), 'T');
  EXPECT_EQ(board.MemoryByte(0x100000 + 4), 44);
  EXPECT_EQ(board.MemoryByte(0x100040 + 1), 'A');
  EXPECT_EQ(board.MemoryByte(0x200000 + 2), 'D');
}

// --- machine ---

TEST(BoardMachine, HasMemoryPortsPciAndMsrs) {
  const auto loaded = ParseBoard(
      "[[memory]]\nat = 0xFED40000\nbytes = [1, 2]\n[[memory]]\nat = 0x5000\nsize = 3\nfill = 0xEE\n"
      "[[ports]]\nfirst = 0x280\nbytes = \"0A 0B\"\n"
      "[[pci]]\nat = \"00:1f.3\"\nid = \"8086:2930\"\nclass = 0x0C0500\nregisters = { 0x40 = 0x01, 0x20 = [1, 4] }\n"
      "[[msr]]\nnumber = 0x19C\nvalue = \"0x8000000000000001\"\n",
      "b.toml");
  ASSERT_TRUE(loaded.board) << loaded.error;
  sim::Board& board = *loaded.board;
  EXPECT_EQ(board.MemoryByte(0xFED40001), 2);
  EXPECT_EQ(board.MemoryByte(0x5002), 0xEE);
  EXPECT_EQ(board.PortValue(0x281), 0x0B);
  const sim::PciFunction* function = board.FindPci(0, 0x1F, 3);
  ASSERT_NE(function, nullptr);
  EXPECT_EQ(function->Get(0, 4), 0x29308086u);
  EXPECT_EQ(function->Get(8, 4), 0x0C050000u);
  EXPECT_EQ(function->Get(0x20, 2), 0x0401u);
  EXPECT_EQ(function->Get(0x40, 1), 1u);
  uint8_t msr[8];
  EXPECT_EQ(board.ReadAt(board.Open("/dev/cpu/0/msr", false), msr, 8, 0x19C), 8);
  EXPECT_EQ(msr[7], 0x80);
  EXPECT_TRUE(board.Log().empty());
}

class SuperIoBoard : public testing::Test {
 protected:
  SuperIoBoard() {
    loaded = ParseBoard(
        "[[super_io]]\nindex_port = 0x2E\ndata_port = 0x2F\nenter = [0x87, 0x87]\nleave = 0xAA\n"
        "registers = { 0x20 = 0x94 }\n"
        "[[super_io.device]]\nnumber = 8\nregisters = { 0x30 = 0x01 }\n"
        "[[super_io.device]]\nnumber = 9\nregisters = { 0x30 = 0x02 }\n",
        "b.toml");
    EXPECT_EQ(loaded.error, "");
  }
  uint8_t Read(uint8_t index) {
    loaded.board->Out(0x2E, 1, index);
    return static_cast<uint8_t>(loaded.board->In(0x2F, 1));
  }
  void Write(uint8_t index, uint8_t value) {
    loaded.board->Out(0x2E, 1, index);
    loaded.board->Out(0x2F, 1, value);
  }
  void Enter() {
    loaded.board->Out(0x2E, 1, 0x87);
    loaded.board->Out(0x2E, 1, 0x87);
  }
  boardfile::LoadedBoard loaded;
};

TEST_F(SuperIoBoard, IsClosedUntilTheEntryKey) {
  EXPECT_EQ(Read(0x20), 0xFF);
  Enter();
  EXPECT_EQ(Read(0x20), 0x94);
  loaded.board->Out(0x2E, 1, 0xAA);
  EXPECT_EQ(Read(0x20), 0xFF);
}

TEST_F(SuperIoBoard, SelectsLogicalDevices) {
  Enter();
  Write(0x07, 8);
  EXPECT_EQ(Read(0x30), 1);
  Write(0x07, 9);
  EXPECT_EQ(Read(0x30), 2);
  Write(0x30, 5);
  Write(0x07, 10);
  EXPECT_EQ(Read(0x30), 0xFF);
  Write(0x07, 9);
  EXPECT_EQ(Read(0x30), 5);
}

// --- errors ---

struct ErrorCase {
  const char* text;
  const char* error;
};

TEST(BoardError, NamesFileLineAndWhatWasExpected) {
  const ErrorCase cases[] = {
      {"\n[[feature]]\nfunction = \"LVDSState\"\nvalue = 256\n",
       "b.toml:4: \"value\" of [[feature]] must be a number from 0 to 0xff"},
      {"[[feature]]\nvalue = 1\n", "b.toml:1: [[feature]] needs \"function\", a text"},
      {"[[feature]]\nfunction = \"Toaster\"\n",
       "b.toml:2: \"function\" of [[feature]] must be the name of a feature (docs/board-files.md lists them)"},
      {"[[feature]]\nfunction = \"BTState\"\ncolour = 1\n", "b.toml:3: \"colour\" is not a key of [[feature]]"},
      {"[[featur]]\nvalue = 1\n", "b.toml:1: \"featur\" is not a key of the board file"},
      {"[[feature]]\nfunction = \"BTState\"\ncommands = [\n  { port = 0x80, width = 3 } ]\n",
       "b.toml:4: \"width\" of [[commands]] must be 1, 2, 4 or 8 (bytes)"},
      {"[[feature]]\nfunction = \"BTState\"\ncommands = [ { delay = 1, and = 3 } ]\n",
       "b.toml:3: \"and\" is not a key of [[commands]]"},
      {"[[feature]]\nfunction = \"BTState\"\ncommands = [ { port = 0x80, get = \"look\" } ]\n",
       "b.toml:3: \"get\" of [[commands]] must be made of the words read, write, and, or"},
      {"[[sensor]]\nquantity = \"voltage\"\nkind = 4\n",
       "b.toml:3: \"kind\" of [[sensor]] must be voltage (1 to 3), temperature (1 to 4), fan (1 to 3) or current (1)"},
      {"[[sensor]]\nquantity = \"current\"\nkind = 1\ncommands = [ { port = 0x80 } ]\n",
       "b.toml:4: \"commands\" of [[sensor]] must be of at most 21 bytes each in this record"},
      {"[[pci]]\nat = \"00:1f\"\nid = \"8086:2930\"\n",
       "b.toml:2: \"at\" of [[pci]] must be bus:device.function, \"00:1f.3\""},
      {"[[memory]]\nat = 0\nsize = 0x2000000\n",
       "b.toml:3: \"size\" of [[memory]] must be a number from 0 to 0x1000000"},
      {"[[chip]]\nmodel = \"toaster\"\n", "b.toml:2: \"model\" of [[chip]] must be watchdog, fan or drift"},
      {"[[ports]]\nfirst = 0x280\nbytes = \"0\"\n",
       "b.toml:3: \"bytes\" of [[ports]] must be pairs of hexadecimal digits"},
  };
  for (const ErrorCase& c : cases) {
    const auto loaded = ParseBoard(c.text, "b.toml");
    EXPECT_EQ(loaded.board, nullptr) << c.text;
    EXPECT_EQ(loaded.error, c.error);
  }
}

TEST(BoardError, OfTheTomlItselfNamesItsLine) {
  EXPECT_THAT(ParseBoard("[bios]\nmodel = \n", "b.toml").error, testing::StartsWith("b.toml:2: "));
}

TEST(BoardError, IsOneLineWhateverTheKeysHold) {
  const std::string error = ParseBoard("\"a\\nb\" = 1\n", "b.toml").error;
  EXPECT_EQ(error, "b.toml:1: \"a?b\" is not a key of the board file");
}

TEST(BoardError, StopsKeysThatWouldNestTooDeep) {
  std::string text = "a";
  for (int i = 0; i < 100000; ++i) text += ".a";
  EXPECT_EQ(ParseBoard(text + " = 1\n", "b.toml").error, "b.toml:1: expected at most 24 dots in one line");
}

TEST(BoardError, StopsSequencesThatWouldGrowWithoutEnd) {
  std::string text = "[sequences]\nx = [";
  for (int i = 0; i < 2000; ++i) text += "{ port = 1 },";
  text += "]\n[[feature]]\nfunction = \"BTState\"\ncommands = [";
  for (int i = 0; i < 2000; ++i) text += "{ use = \"x\" },";
  EXPECT_EQ(ParseBoard(text + "]\n", "b.toml").error, "b.toml:5: the commands of one list must fit into 64 KiB");
}

TEST(BoardError, TellsOfAMissingFile) {
  EXPECT_EQ(boardfile::LoadBoard("/nonexistent/b.toml").error,
            "/nonexistent/b.toml:1: expected a readable board file: No such file or directory");
}

TEST(CompiledFirmware, IsWhatTheBoardHolds) {
  const char* const text = "[bios]\nmodel = \"M\"\n[iamt]\nat = 0x1000\nchips = [1]\n[[feature]]\ntype = 5\n[acpi]\n";
  const boardfile::CompiledFirmware compiled = boardfile::CompileText(text, "b.toml");
  const boardfile::LoadedBoard loaded = ParseBoard(text, "b.toml");
  ASSERT_TRUE(compiled.firmware);
  EXPECT_EQ(compiled.firmware->iadt, loaded.firmware.iadt);
  EXPECT_EQ(compiled.firmware->iamt, loaded.firmware.iamt);
  EXPECT_EQ(compiled.firmware->biosInfo, loaded.firmware.biosInfo);
  EXPECT_EQ(loaded.board->MemoryByte(0x1000), 'I');
}

TEST(CompiledFirmware, LeavesTheMachineAlone) {
  EXPECT_TRUE(boardfile::CompileText("[[chip]]\nmodel = \"none\"\n", "b.toml").firmware);
  EXPECT_EQ(boardfile::CompileText("[chips]\n", "b.toml").error, "b.toml:1: \"chips\" is not a key of the board file");
  EXPECT_FALSE(boardfile::CompileText("[acpi.mcfg]\n", "b.toml").firmware);
  EXPECT_EQ(boardfile::CompileText("[acpi.mcfg]\n", "b.toml").error, ParseBoard("[acpi.mcfg]\n", "b.toml").error);
}

}  // namespace
