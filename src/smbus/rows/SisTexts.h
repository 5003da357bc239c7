// SPDX-License-Identifier: MIT
/// SiS: registers 0 status, 2 busy, 3 control, 4 address, 5 command, 7 block count, 8 and up data.
#pragma once

#include "smbus/rows/Pieces.h"

namespace smbus_rows {

// Register 2 bits 1:0 show a transfer; Local6 is they and, eight bits up, the completion and error bits. Another's
// transfer gets 50 ms to end and 2.5 ms to be looked at (Local9 counts); our own that does not end is stopped by
// control bit 5.
inline constexpr char kSisLook[] =
    "Local6=i(Local2); Local6=And(Local6,3); Local1=i(Local0); Local1=And(Local1,0x1e); Local1=Shl(Local1,8); "
    "Local6=Or(Local6,Local1)";
inline constexpr char kSisAwaitEnd[] =
    "} Loop{0x3e8,Local1=Sub(1,Local8); Local1=Mul(Local1,0x1e00); Local1=Or(Local1,3); Local1=And(Local6,Local1); "
    "BkIf0(Or(Local1,0)); Local1=And(Local6,3); Local1=Cmz(Local1); Local9=Add(Local9,1); Local9=And(Local9,Local1); "
    "BkIf0(Sub(Local9,0x32)); Delay 50; ";
inline constexpr char kSisStop[] =
    "} CMDS{BkIf0(And(Local6,3)); BkIf0(Or(Local8,0)); Local1=Add(Local0,3); o(Local1,0x20); Delay 1000; ";
inline constexpr char kSisClear[] =
    "} BkIf1(And(Local6,3)); Local8=1; Local1=Shr(Local6,8); BkIf0(Or(Local1,0)); o(Local0,Local1); Local1=i(Local0); "
    "And(Local1,0x1e)";
// Result 0: done without an error; 2: an error bit, or neither done nor failed in time.
inline constexpr char kSisDone[] =
    "Loop{0x9c4,Local1=i(Local0); BkIf1(And(Local1,0x0e)); Delay 20} Local1=And(Local1,0x0e); Local1=Xor(Local1,8); "
    "Local1=Cmz(Local1); Local1=Not(Local1,0); And(Local1,2)";
// Result: 0x10 for a window of eight bytes, 8 at the end, 2 for any error bit, 0 when neither came.
inline constexpr char kSisWindow[] =
    "Loop{0x9c4,Local1=i(Local0); BkIf1(And(Local1,0x1e)); Delay 20} Local2=And(Local1,6); Local2=Cmz(Local2); "
    "Local2=Not(Local2,0); Local2=And(Local2,2); Local1=And(Local1,0x18); Or(Local1,Local2)";
inline constexpr char kSisStart12[] = "Local1=Add(Local0,3); o(Local1,0x12)";
inline constexpr char kSisStart13[] = "Local1=Add(Local0,3); o(Local1,0x13)";
inline constexpr char kSisStart15[] = "Local1=Add(Local0,3); o(Local1,0x15)";
inline constexpr SMBusText kSis[] = {
    {&Cfg::WaitIdleScript,
     {"CMDS{Local2=Add(Local0,2); ", kSisLook, kSisAwaitEnd, kSisLook, kSisStop, kSisLook, kSisClear}},
    {&Cfg::AddressPrefix, {"Local1=Add(Local0,4); o(Local1,"}},
    {&Cfg::CommandPrefix, {"Local1=Add(Local0,5); o(Local1,"}},
    {&Cfg::ByteWritePrefix, {"Local1=Add(Local0,7); o(Local1,"}},
    {&Cfg::DataWritePrefix, {"Local1=Add(Local0,8); o(Local1,"}},
    {&Cfg::DataReadPrefix, {"Local1=Add(Local0,7); i(Local1,"}},
    {&Cfg::ByteReadStartScript, {kSisStart12}},
    {&Cfg::ByteWriteStartScript, {kSisStart12}},
    {&Cfg::ByteWaitScript, {kByteTakes, kSisDone}},
    {&Cfg::ByteReadScript, {"Local1=Add(Local0,8); i(Local1)"}},
    {&Cfg::BlockReadStartScript, {kSisStart15}},
    {&Cfg::BlockWriteStartScript, {kSisStart15}},
    {&Cfg::BlockWaitScript, {kBlockTakes, kSisDone}},
    {&Cfg::BlockSetupScript, {"Local9=8"}},
    {&Cfg::BlockWritePrefix, {"Local1=Add(Local0,Local9); o(Local1,"}},
    {&Cfg::BlockReadScript, {"Local1=Add(Local0,Local9); i(Local1)"}},
    {&Cfg::BlockStepScript, {"Local9=Add(Local9,1)"}},
    {&Cfg::WordReadStartScript, {kSisStart13}},
    {&Cfg::WordWriteStartScript, {kSisStart13}},
    {&Cfg::WordWaitScript, {kWordTakes, kSisDone}},
    {&Cfg::WordReadLowScript, {"Local1=Add(Local0,8); i(Local1)"}},
    {&Cfg::WordReadHighScript, {"Local1=Add(Local0,9); i(Local1)"}},
    {&Cfg::WordWriteLowPrefix, {"Local1=Add(Local0,8); o(Local1,"}},
    {&Cfg::WordWriteHighPrefix, {"Local1=Add(Local0,9); o(Local1,"}},
};
// Windows of eight bytes at 8 to 0xf, over and over.
inline constexpr SMBusText kSisWindows[] = {
    {&Cfg::BlockWaitScript, {kBlockTakes, kSisWindow}},
    {&Cfg::BlockNextScript, {"CMDS{o(Local0,0x10)} ", kSisWindow}},
    {&Cfg::BlockStepScript, {"Local9=Add(Local9,1); Local9=And(Local9,0xf); Local9=Or(Local9,8)"}},
};

// The host is its own function 0:2.1, hidden by bit 4 of register 0x77 of the bridge 0:2.0.
inline constexpr SMBusText kSis962[] = {
    {&Cfg::DetectScript,
     {"Local0=Rpci32(0,2,0,0); BkIf0(Sub(Local0,0x09611039)); BkIf0(Sub(Local0,0x09621039)); "
      "Local1=Sub(Local0,0x09631039); ",
      kZeroDetects}},
    {&Cfg::EnableScript,
     {"CMDS{LocalA=Rpci(0,2,0,0x77); BkIf0(And(LocalA,0x10)); Local1=And(LocalA,0xef); Wpci(0,2,0,0x77,Local1); "
      "LocalA=Or(LocalA,0x100)} CMDS{LocalB=Rpci(0,2,1,4); LocalC=Rpci16(0,2,1,0x20); LocalD=Rpci(0,2,1,0x40)} ",
      "CMDS{BkIf0(And(LocalC,0xffe0)); BkIf1(And(LocalB,1)); Local1=Or(LocalB,1); Wpci(0,2,1,4,Local1); "
      "LocalB=Or(LocalB,0x100)} ",
      "CMDS{BkIf0(And(LocalC,0xffe0)); BkIf1(And(LocalD,1)); Local1=Or(LocalD,1); Wpci(0,2,1,0x40,Local1); "
      "LocalD=Or(LocalD,0x100)}"}},
    {&Cfg::BaseScript1, {kNoBase, "Local1=Rpci16(0,2,1,0x20); ", kTakeBaseFfe0}},
    {&Cfg::RestoreScript,
     {"CMDS{BkIf0(And(LocalD,0x100)); Wpci(0,2,1,0x40,LocalD)} CMDS{BkIf0(And(LocalB,0x100)); "
      "Wpci(0,2,1,4,LocalB)} CMDS{BkIf0(And(LocalA,0x100)); Wpci(0,2,0,0x77,LocalA)}"}},
};
// From the 964 on the host lies in the ACPI block, whose base is in 0x74; 0x40 bit 7 decodes it.
inline constexpr char kSisAcpiBase[] =
    "Local1=Rpci16(0,2,0,0x74); BkIf0(And(Local1,0xff00)); Local1=And(Local1,0xff00); ";
inline constexpr char kSisEnableAcpi[] =
    "CMDS{LocalA=Rpci(0,2,0,0x40); LocalC=Rpci16(0,2,0,0x74); BkIf0(And(LocalC,0xff00)); BkIf1(And(LocalA,0x80)); "
    "Local1=Or(LocalA,0x80); Wpci(0,2,0,0x40,Local1); LocalA=Or(LocalA,0x100)} ";
inline constexpr char kSisRestoreAcpi[] = "CMDS{BkIf0(And(LocalA,0x100)); Wpci(0,2,0,0x40,LocalA)}";
inline constexpr SMBusText kSis964[] = {
    {&Cfg::DetectScript, {"Local0=Rpci32(0,2,0,0); Local1=Sub(Local0,0x09641039); ", kZeroDetects}},
    {&Cfg::EnableScript, {kSisEnableAcpi}},
    {&Cfg::BaseScript1, {kNoBase, kSisAcpiBase, "Local0=Add(Local1,0xe0)"}},
    {&Cfg::RestoreScript, {kSisRestoreAcpi}},
};
// 0x76 bits 1:0 switch the host on.
inline constexpr SMBusText kSis965[] = {
    {&Cfg::DetectScript,
     {"Local0=Rpci32(0,2,0,0); BkIf0(Sub(Local0,0x09651039)); Local1=Sub(Local0,0x09661039); ", kZeroDetects}},
    {&Cfg::EnableScript,
     {kSisEnableAcpi,
      "CMDS{BkIf0(And(LocalC,0xff00)); LocalB=Rpci(0,2,0,0x76); Local1=And(LocalB,3); BkIf0(Xor(Local1,3)); "
      "Local1=Or(LocalB,3); Wpci(0,2,0,0x76,Local1); LocalB=Or(LocalB,0x100)}"}},
    {&Cfg::BaseScript1, {kNoBase, kSisAcpiBase, "Local0=Add(Local1,0xd0)"}},
    {&Cfg::RestoreScript, {"CMDS{BkIf0(And(LocalB,0x100)); Wpci(0,2,0,0x76,LocalB)} ", kSisRestoreAcpi}},
};
// Taken as firmware left it: ACPI decode and SMBus on, and something that answers at the base.
inline constexpr SMBusText kSis968[] = {
    {&Cfg::DetectScript, {"Local0=Rpci32(0,2,0,0); Local1=Sub(Local0,0x09681039); ", kZeroDetects}},
    {&Cfg::BaseScript1,
     {kNoBase,
      "Local1=Rpci(0,2,0,0x40); BkIf0(And(Local1,0x80)); Local1=Rpci(0,2,0,0x76); Local1=And(Local1,3); "
      "BkIf1(Xor(Local1,3)); ",
      kSisAcpiBase,
      "Local1=Add(Local1,0xd0); Local2=Add(Local1,2); Local2=i(Local2); BkIf0(Xor(Local2,0xff)); Local0=Local1"}},
};

}  // namespace smbus_rows
