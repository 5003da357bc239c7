// SPDX-License-Identifier: MIT
/// ULi: the classic registers, protocols in control bits 3 to 5, a start for every byte of a block.
#pragma once

#include "smbus/rows/ClassicTexts.h"

namespace smbus_rows {

inline constexpr char kStopByBit2[] =
    "CMDS{BkIf1(Sub(Local8,0x41)); BkIf0(And(Local6,1)); Local1=Add(Local0,2); o(Local1,4); Delay 1000; o(Local1,0); "
    "Local6=i(Local0)} ";
inline constexpr char kUliStart50[] = "Local1=Add(Local0,2); o(Local1,0x50)";
inline constexpr char kUliStart58[] = "Local1=Add(Local0,2); o(Local1,0x58)";
inline constexpr char kUliStart68[] = "Local1=Add(Local0,2); o(Local1,0x68)";
inline constexpr SMBusText kUliOwn[] = {
    {&Cfg::WaitIdleScript, {kTakeHost, kAwaitEnd, kStopByBit2, kReady, kClear9e}},
    {&Cfg::ByteReadStartScript, {kUliStart50}},
    {&Cfg::ByteWriteStartScript, {kUliStart50}},
    {&Cfg::WordReadStartScript, {kUliStart58}},
    {&Cfg::WordWriteStartScript, {kUliStart58}},
    {&Cfg::BlockReadStartScript, {kUliStart68}},
    {&Cfg::BlockWriteStartScript, {kUliStart68}},
    {&Cfg::BlockWaitScript, {kByteWindowReady, kByteResult}},
    // Local4 counts the bytes left; with none left nothing is started.
    {&Cfg::BlockSetupScript, {"Local9=7; Local1=Add(Local0,5); Local4=i(Local1)"}},
    {&Cfg::BlockNextScript,
     {"CMDS{o(Local0,0x80); Local4=Sub(Local4,1)} CMDS{BkIf0(Or(Local4,0)); Local1=Add(Local0,2); Local2=i(Local1); "
      "Local2=Or(Local2,0x40); o(Local1,Local2)} ",
      "Loop{0x9c4,Local1=i(Local0); BkIf1(And(Local1,0x9c)); BkIf0(Or(Local4,0)); Delay 20} ", kByteResult}},
};
inline constexpr auto kUli = Joined(kClassicRegisters, kDoneWaits, kUliOwn);
inline constexpr char kUliReadBase[] = "Local1=ERpci16(LocalF,0x80); ";
// A function 0 of bus 0, looked for from where boards have it: device 3 or 0x1e.
inline constexpr char kNextDevice[] = "LocalF=Add(LocalF,8); LocalF=And(LocalF,0xff)} ";
inline constexpr SMBusText kM1563[] = {
    {&Cfg::DetectScript,
     {"LocalF=0x18; Loop{0x20,Local0=ERpci32(LocalF,0); BkIf0(Sub(Local0,0x156310b9)); ", kNextDevice,
      "Local1=Sub(Local0,0x156310b9); ", kZeroDetects}},
    {&Cfg::EnableScript,
     {"CMDS{LocalA=ERpci16(LocalF,0x80); BkIf0(And(LocalA,0xfff0)); Local1=And(LocalA,3); BkIf0(Xor(Local1,3)); "
      "Local1=Or(LocalA,3); EWpci16(LocalF,0x80,Local1); LocalA=Or(LocalA,0x10000)}"}},
    {&Cfg::BaseScript1, {kNoBase, kUliReadBase, kTakeBaseFff0}},
    {&Cfg::RestoreScript, {"CMDS{BkIf0(And(LocalA,0x10000)); EWpci16(LocalF,0x80,LocalA)}"}},
};
// Taken as firmware left it: a base, with host and I/O enable (bits 1 and 0) set, or nothing.
inline constexpr SMBusText kM157xBase = {
    &Cfg::BaseScript1, {kNoBase, kUliReadBase, "Local2=And(Local1,3); BkIf1(Xor(Local2,3)); ", kTakeBaseFff0}};
inline constexpr SMBusText kM1573[] = {
    {&Cfg::DetectScript,
     {"LocalF=0xf0; Loop{0x20,Local0=ERpci32(LocalF,0); BkIf0(Sub(Local0,0x157310b9)); ", kNextDevice,
      "Local1=Sub(Local0,0x157310b9); ", kZeroDetects}},
    kM157xBase,
};
inline constexpr SMBusText kM1575[] = {
    {&Cfg::DetectScript,
     {"LocalF=0xf0; Loop{0x20,Local0=ERpci32(LocalF,0); BkIf0(Sub(Local0,0x157510b9)); ", kNextDevice,
      "Local1=Sub(Local0,0x157510b9); ", kZeroDetects}},
    kM157xBase,
};

}  // namespace smbus_rows
