// SPDX-License-Identifier: MIT
/// Intel SCH: registers 0 control, 1 status, 2 clock, 4 address, 5 command, 6 and 7 data, 0x20 block.
#pragma once

#include "smbus/rows/Pieces.h"

namespace smbus_rows {

// Control bits 7 (SMI) and 5 (alert) belong to others.
inline constexpr char kSchControl[] = "Local1=i(Local0); Local1=And(Local1,0xa0); ";
inline constexpr char kSchStart12[] = "Local1=Or(Local1,0x12); o(Local0,Local1)";
inline constexpr char kSchStart13[] = "Local1=Or(Local1,0x13); o(Local0,Local1)";
inline constexpr char kSchStart15[] = "Local1=Or(Local1,0x15); o(Local0,Local1)";
// Over is what is idle (status bit 3) with a completion or error bit.
// Result 0: done without an error; 8: an error bit, or neither done nor failed in time.
inline constexpr char kSchDone[] =
    "Loop{0x9c4,Local1=Add(Local0,1); Local1=i(Local1); Local2=And(Local1,8); Local2=Cmz(Local2); "
    "Local2=And(Local2,Local1); BkIf1(And(Local2,7)); Delay 20} Local1=And(Local2,7); Local1=Xor(Local1,1); "
    "Local1=Cmz(Local1); Local1=Not(Local1,0); And(Local1,8)";
// Another's transfer gets 50 ms to end and 2.5 ms to be looked at (Local9 counts); our own that does not end loses its
// start bit. Without a clock divider none would end; 0x52 is 100 kHz.
inline constexpr char kSchIdle[] =
    "CMDS{Local2=Add(Local0,1); Local6=i(Local2)} Loop{0x3e8,Local1=Sub(1,Local8); Local1=Mul(Local1,7); "
    "Local1=Or(Local1,8); Local1=And(Local6,Local1); BkIf0(Or(Local1,0)); Local1=And(Local6,8); Local1=Cmz(Local1); "
    "Local9=Add(Local9,1); Local9=And(Local9,Local1); BkIf0(Sub(Local9,0x32)); Delay 50; Local6=i(Local2)} "
    "CMDS{BkIf0(And(Local6,8)); BkIf0(Or(Local8,0)); Local1=i(Local0); Local1=And(Local1,0xef); o(Local0,Local1); "
    "Delay 1000; Local6=i(Local2)} CMDS{BkIf1(And(Local6,8)); BkIf1(Or(Local8,0)); Local8=1; "
    "Local1=Add(Local0,2); Local5=i16(Local1); BkIf1(Or(Local5,0)); o16(Local1,0x52); Local5=0x10000} ";
inline constexpr char kSchClear[] =
    "BkIf1(And(Local6,8)); Local1=And(Local6,7); BkIf0(Or(Local1,0)); o(Local2,Local1); Local6=i(Local2); "
    "And(Local6,0x0f)";

inline constexpr SMBusText kSch[] = {
    {&Cfg::DetectScript,
     {"Local0=Rpci32(0,0x1f,0,0); BkIf0(Sub(Local0,0x81198086)); BkIf0(Sub(Local0,0x81868086)); "
      "Local1=Sub(Local0,0x0c608086); ",
      kZeroDetects}},
    {&Cfg::EnableScript,
     {"LocalA=Rpci32(0,0x1f,0,0x40); BkIf0(And(LocalA,0xffc0)); BkIf1(And(LocalA,0x80000000)); "
      "Local1=Or(LocalA,0x80000000); Wpci32(0,0x1f,0,0x40,Local1); LocalE=1"}},
    {&Cfg::BaseScript1,
     {kNoBase,
      "Local1=Rpci32(0,0x1f,0,0x40); BkIf0(And(Local1,0x80000000)); BkIf0(And(Local1,0xffc0)); "
      "Local0=And(Local1,0xffc0)"}},
    {&Cfg::WaitIdleScript, {kSchIdle, kSchClear}},
    {&Cfg::AddressPrefix, {"Local1=Add(Local0,4); o(Local1,"}},
    {&Cfg::CommandPrefix, {"Local1=Add(Local0,5); o(Local1,"}},
    {&Cfg::ByteWritePrefix, {"Local1=Add(Local0,6); o(Local1,"}},
    {&Cfg::DataWritePrefix, {"Local1=Add(Local0,6); o(Local1,"}},
    {&Cfg::DataReadPrefix, {"Local1=Add(Local0,6); i(Local1,"}},
    {&Cfg::ByteReadStartScript, {kSchControl, kSchStart12}},
    {&Cfg::ByteWriteStartScript, {kSchControl, kSchStart12}},
    {&Cfg::ByteWaitScript, {kByteTakes, kSchDone}},
    {&Cfg::ByteReadScript, {"Local1=Add(Local0,6); i(Local1)"}},
    {&Cfg::BlockReadStartScript, {kSchControl, kSchStart15}},
    {&Cfg::BlockWriteStartScript, {kSchControl, kSchStart15}},
    {&Cfg::BlockWaitScript, {kBlockTakes, kSchDone}},
    {&Cfg::BlockSetupScript, {"Local9=0x20"}},
    {&Cfg::BlockWritePrefix, {"Local1=Add(Local0,Local9); o(Local1,"}},
    {&Cfg::BlockReadScript, {"Local1=Add(Local0,Local9); i(Local1)"}},
    {&Cfg::BlockStepScript, {"Local9=Add(Local9,1)"}},
    {&Cfg::RestoreScript,
     {"CMDS{BkIf0(And(Local5,0x10000)); Local1=Add(Local0,2); o16(Local1,0)} CMDS{BkIf0(Or(LocalE,0)); "
      "Wpci32(0,0x1f,0,0x40,LocalA)}"}},
    {&Cfg::WordReadStartScript, {kSchControl, kSchStart13}},
    {&Cfg::WordWriteStartScript, {kSchControl, kSchStart13}},
    {&Cfg::WordWaitScript, {kWordTakes, kSchDone}},
    {&Cfg::WordReadLowScript, {"Local1=Add(Local0,6); i(Local1)"}},
    {&Cfg::WordReadHighScript, {"Local1=Add(Local0,7); i(Local1)"}},
    {&Cfg::WordWriteLowPrefix, {"Local1=Add(Local0,6); o(Local1,"}},
    {&Cfg::WordWriteHighPrefix, {"Local1=Add(Local0,7); o(Local1,"}},
};

}  // namespace smbus_rows
