// SPDX-License-Identifier: MIT
// The whole examination of machines in many states, against texts that stand beside this file.
#include "doctor/Examine.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>

#include <cerrno>
#include <csignal>
#include <fstream>
#include <set>

#include "Board.h"

namespace vynctl::doctor {
namespace {

constexpr char kVersion[] = "1.0.0";
constexpr char kStatus[] = "/proc/self/status";
constexpr char kLockdown[] = "/sys/kernel/security/lockdown";
constexpr char kKernelIadt[] = "/sys/firmware/acpi/tables/IADT", kKernelIamt[] = "/sys/firmware/acpi/tables/IAMT";

void StartByUefi(const Board& board, char secureBoot) {
  board.Write("/sys/firmware/efi/efivars/SecureBoot-8be4df61-93ca-11d2-aa0d-00e098032b8c",
              std::string("\x16\0\0\0", 4) + secureBoot);
  board.Poke(kRootPointer, std::string(20, '\0'));
  board.Poke(kRecord, std::string(64, '\0'));
}

void WithoutRawIo(Board& board, int error) {
  board.trial.error = EPERM;
  board.closed["/dev/mem"] = error;
  board.closed["/dev/cpu/0/msr"] = error;
}

struct State {
  const char* name;  ///< of the text
  Verdict verdict;
  void (*change)(Board& board);
  friend void PrintTo(const State& state, std::ostream* stream) { *stream << state.name; }
};

const State kStates[] = {
    {"healthy", Verdict::kOk, [](Board&) {}},
    {"tables-hidden", Verdict::kOk,
     [](Board& board) {
       board.hiddenFrom = 0x100000;
       board.refusal = EPERM;
     }},
    {"tables-hidden-without-copies", Verdict::kProblem,
     [](Board& board) {
       board.hiddenFrom = 0x100000;
       board.refusal = EPERM;
       board.Remove("/sys/firmware/acpi");
     }},
    {"tables-hidden-without-iamt", Verdict::kWarning,
     [](Board& board) {
       board.hiddenFrom = 0x100000;
       board.refusal = EPERM;
       board.Remove(kKernelIamt);
     }},
    {"uefi", Verdict::kOk, [](Board& board) { StartByUefi(board, '\0'); }},
    {"root-pointer-damaged", Verdict::kOk, [](Board& board) { board.Poke(kRootPointer + 9, "X"); }},
    // The library tries the first root pointer alone, and is served nothing while a sound one is there.
    {"root-pointer-behind-a-damaged-one", Verdict::kProblem,
     [](Board& board) { board.Poke(0xF5000, "RSD PTR damaged"); }},
    // The FACS, which the FADT names at byte 36, is in memory that the kernel hides.
    {"facs-hidden", Verdict::kOk,
     [](Board& board) {
       board.Poke(kRootTable + 0x100 + 36, Little(0x8000000, 4));
       board.hiddenFrom = 0x8000000;
       board.refusal = EPERM;
     }},
    {"bios-record-damaged", Verdict::kWarning, [](Board& board) { board.Poke(kRecord + 20, "X"); }},
    {"lockdown", Verdict::kProblem,
     [](Board& board) {
       StartByUefi(board, '\1');
       board.Write(kLockdown, "none [integrity] confidentiality\n");
       WithoutRawIo(board, EPERM);
     }},
    {"not-root", Verdict::kProblem,
     [](Board& board) {
       board.Field(kStatus, "Uid:\t0\t0\t0\t0", "Uid:\t1000\t1000\t1000\t1000");
       board.Field(kStatus, "000001ffffffffff", "0000000000000000");
       WithoutRawIo(board, EACCES);
       board.closed[kKernelIadt] = EACCES;
       board.closed[kKernelIamt] = EACCES;
       board.closed["/run/lock/vynlib.lock"] = EACCES;
       board.Write("/proc/ioports", "0000-0000 : PCI Bus 0000:00\n  0000-0000 : pnp 00:03\n");
       board.Write("/proc/iomem", "00000000-00000000 : Reserved\n");
     }},
    {"no-capability", Verdict::kProblem,
     [](Board& board) {
       // Bit 17 is CAP_SYS_RAWIO.
       board.Field(kStatus, "000001ffffffffff", "000001fffffdffff");
       WithoutRawIo(board, EPERM);
     }},
    {"container", Verdict::kProblem,
     [](Board& board) {
       board.Write("/proc/self/uid_map", "         0       1000          1\n");
       board.Remove("/dev/mem");
       board.trial.error = EPERM;
     }},
    {"service-user", Verdict::kOk,
     [](Board& board) {
       board.Field(kStatus, "Uid:\t0\t0\t0\t0", "Uid:\t990\t990\t990\t990");
       board.Field(kStatus, "000001ffffffffff", "0000000000020000");
     }},
    {"no-iopl", Verdict::kProblem, [](Board& board) { board.trial.error = ENOSYS; }},
    {"sandbox", Verdict::kProblem,
     [](Board& board) {
       board.Field(kStatus, "Seccomp:\t0", "Seccomp:\t2");
       board.trial.error = EPERM;
     }},
    {"sandbox-that-kills", Verdict::kProblem,
     [](Board& board) {
       board.Field(kStatus, "Seccomp:\t0", "Seccomp:\t2");
       board.trial.signal = SIGSYS;
     }},
    {"no-dev-mem", Verdict::kProblem, [](Board& board) { board.Remove("/dev/mem"); }},
    {"dev-mem-read-only", Verdict::kWarning, [](Board& board) { board.readOnly["/dev/mem"] = EPERM; }},
    {"no-iadt", Verdict::kProblem,
     [](Board& board) {
       board.Poke(kIadt, AcpiTable("OEM1", ""));
       board.Remove(kKernelIadt);
     }},
    {"no-iamt", Verdict::kWarning,
     [](Board& board) {
       board.Poke(kIamt, AcpiTable("OEM1", ""));
       board.Remove(kKernelIamt);
     }},
    {"iadt-broken", Verdict::kWarning,
     [](Board& board) {
       std::string records = BoardRecords();
       // The last record, of 111 bytes, claims one more.
       records[records.size() - 111 + 3] = 112;
       board.SetIadt(AcpiTable("IADT", records));
     }},
    {"iadt-replaced", Verdict::kWarning,
     [](Board& board) { board.Write(kKernelIadt, AcpiTable("IADT", BoardRecords() + BoardRecords())); }},
    {"no-msr", Verdict::kWarning,
     [](Board& board) {
       board.Remove("/dev/cpu");
       board.Write("/proc/modules", "xfs 1 0 - Live 0x0\n");
     }},
    {"no-msr-needed", Verdict::kOk,
     [](Board& board) {
       board.Remove("/dev/cpu");
       board.SetIadt(AcpiTable("IADT", IadtRecord(15, 1, "", MemoryCommand(0xFED1F410))));
     }},
    {"smbus-driver", Verdict::kWarning,
     [](Board& board) {
       board.Link("/sys/bus/pci/drivers/i801_smbus/module", "../../../../module/i2c_i801");
       board.Link("/sys/bus/pci/devices/0000:00:1f.3/driver", board.Path("/sys/bus/pci/drivers/i801_smbus"));
     }},
    {"smbus-unknown", Verdict::kWarning,
     [](Board& board) {
       board.Write("/sys/bus/pci/devices/0000:00:1f.0/device", "0x1234\n");
       board.Write("/sys/bus/pci/devices/0000:00:1f.3/device", "0x5678\n");
     }},
    {"drivers", Verdict::kWarning,
     [](Board& board) {
       board.Write("/proc/ioports",
                   "0000-0cf7 : PCI Bus 0000:00\n  0290-0297 : pnp 00:03\n    0295-0296 : it87\n"
                   "  0460-047f : iTCO_wdt.0.auto\n    0460-047f : iTCO_wdt\n");
       board.Write("/proc/modules", "it87 81920 0 - Live 0x0000000000000000\n");
       board.SetIadt(
           AcpiTable("IADT", BoardRecords() + IadtRecord(2, 2, "VBAT", "\x0A\x01" + IndexCommand(0x464, 0x465))));
     }},
    {"chipset-pages", Verdict::kWarning,
     [](Board& board) {
       board.Write("/proc/iomem",
                   "e0000000-efffffff : PCI MMCONFIG 0000 [bus 00-ff]\nfed1c000-fed1ffff : Reserved\n"
                   "  fed1f410-fed1f414 : iTCO_wdt.0.auto\n    fed1f410-fed1f414 : iTCO_wdt\n");
       board.SetIadt(AcpiTable("IADT", BoardRecords() + IadtRecord(15, 2, "", MemoryCommand(0xE00F8040))));
     }},
    {"virtual-machine-without-board", Verdict::kProblem,
     [](Board& board) {
       board.Field("/proc/cpuinfo", "tsc", "tsc hypervisor");
       board.Write("/sys/class/dmi/id/sys_vendor", "QEMU\n");
       board.Write("/sys/class/dmi/id/product_name", "Standard PC (Q35 + ICH9, 2009)\n");
       board.Poke(kIadt, AcpiTable("OEM1", ""));
       board.Poke(kIamt, AcpiTable("OEM1", ""));
       board.Remove(kKernelIadt);
       board.Remove(kKernelIamt);
     }},
    {"virtual-machine", Verdict::kOk, [](Board& board) { board.Field("/proc/cpuinfo", "tsc", "tsc hypervisor"); }},
    {"no-library", Verdict::kProblem,
     [](Board& board) {
       board.library = {.error = "libvynlib.so.1: cannot open shared object file: No such file or directory"};
     }},
};

std::string Beside(const std::string& name) {
  std::ifstream file(std::string(DOCTOR_TEXTS) + '/' + name + ".txt");
  EXPECT_TRUE(file.is_open()) << name;
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string Told(const Examination& examination) { return ToText(examination.findings, Style{}); }

class ExamineState : public testing::TestWithParam<State> {};

TEST_P(ExamineState, IsTold) {
  Board board;
  GetParam().change(board);
  const Examination examination = Examine(board, kVersion);
  EXPECT_EQ(Told(examination), Beside(GetParam().name));
  EXPECT_EQ(examination.Result(), GetParam().verdict);
}

/// What documents promise of each finding.
TEST_P(ExamineState, IsWellFormed) {
  Board board;
  GetParam().change(board);
  std::set<std::string> ids;
  for (const Finding& finding : Examine(board, kVersion).findings) {
    EXPECT_TRUE(ids.insert(finding.id).second) << finding.id;
    EXPECT_THAT(finding.id, testing::MatchesRegex("[a-z0-9]+([-/][a-z0-9]+)*"));
    EXPECT_NE(finding.found, "") << finding.id;
    EXPECT_EQ(finding.next.empty(), finding.verdict == Verdict::kOk) << finding.id;
  }
}

std::string TestName(const testing::TestParamInfo<State>& info) {
  std::string name = info.param.name;
  std::ranges::replace(name, '-', '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Machines, ExamineState, testing::ValuesIn(kStates), TestName);

/// The line of a finding, found and next step.
std::string Line(const Board& board, const std::string& id) {
  for (const Finding& finding : Examine(board, kVersion).findings) {
    if (finding.id == id) return finding.found + " [" + ToString(finding.verdict) + "] " + finding.next;
  }
  return "no such finding";
}

constexpr char kLockFile[] = "/run/lock/vynlib.lock";

TEST(ExamineLock, NamesTheHolder) {
  const Board board;
  board.Write(kLockFile, "4711 vynctl watchdog\n");
  EXPECT_EQ(Line(board, "lock"), "free [ok] ");
  const Descriptor holder = board.Open(kLockFile, O_RDONLY);
  ASSERT_EQ(flock(holder.Number(), LOCK_EX), 0);
  EXPECT_EQ(Line(board, "lock"),
            "held by vynctl watchdog (pid 4711) [warning] vynctl waits until it is given back. If that takes long, see "
            "what the holder does ('ps -p PID') and stop it.");
}

TEST(ExamineLock, NeedsNoNameOfTheHolder) {
  const Board board;
  const Descriptor holder = board.Open(kLockFile, O_RDONLY);
  ASSERT_EQ(flock(holder.Number(), LOCK_EX), 0);
  EXPECT_THAT(Line(board, "lock"), testing::StartsWith("held by a program that does not tell its name [warning]"));
}

TEST(ExamineLock, MayNotBeThereYet) {
  const Board board;
  board.Remove(kLockFile);
  EXPECT_EQ(Line(board, "lock"), "free, nobody has used it since the machine was started [ok] ");
}

TEST(ExamineLock, IsNotTrustedBehindALink) {
  const Board board;
  board.Link(kLockFile, "elsewhere");
  EXPECT_EQ(Line(board, "lock"),
            "/run/lock/vynlib.lock is no regular file of root or of this user; vynctl does not trust it [warning] Find "
            "out who made it, and remove it: 'rm /run/lock/vynlib.lock'.");
}

TEST(ExamineLock, IsGivenBackAtOnce) {
  const Board board;
  Examine(board, kVersion);
  const Descriptor other = board.Open(kLockFile, O_RDONLY);
  EXPECT_EQ(flock(other.Number(), LOCK_EX | LOCK_NB), 0);
}

TEST(ExamineTexts, ShowNoByteOfTheMachineThatIsNotPrintable) {
  Board board;
  const std::string hostile = "\x1b[31m\xC3\nX";
  board.Write("/proc/sys/kernel/osrelease", hostile);
  board.Write("/proc/ioports", "0295-0295 : \x1b[31m\n");
  board.Field("/proc/cpuinfo", "tsc", "hypervisor");
  board.Write("/sys/class/dmi/id/sys_vendor", hostile);
  board.Write(kLockdown, "[\x1b]\n");
  board.Link("/sys/bus/pci/devices/0000:00:1f.3/driver", hostile);
  board.library = {.error = hostile};
  board.Write(kLockFile, hostile);
  const Descriptor holder = board.Open(kLockFile, O_RDONLY);
  ASSERT_EQ(flock(holder.Number(), LOCK_EX), 0);
  for (const Finding& finding : Examine(board, kVersion).findings) {
    for (const std::string& text : {finding.found, finding.next})
      EXPECT_TRUE(std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; })) << text;
  }
}

TEST(ExamineText, PaintsTheVerdicts) {
  const Findings findings = {{.id = "a", .what = "A", .found = "x"},
                             {.id = "b", .what = "B", .found = "y", .verdict = Verdict::kWarning, .next = "Do."},
                             {.id = "c", .what = "C", .found = "z", .verdict = Verdict::kProblem, .next = "Go."}};
  EXPECT_EQ(
      ToText(findings, {.colour = true}),
      "A: x  \x1b[32m[ok]\x1b[0m\nB: y  \x1b[33m[warning]\x1b[0m\n    Do.\nC: z  \x1b[31m[problem]\x1b[0m\n    Go.\n"
      "\nThe board cannot be used: 1 problem, 1 warning.\n");
}

}  // namespace
}  // namespace vynctl::doctor
