// SPDX-License-Identifier: MIT
/// ATI's and AMD's southbridges: PIIX4 registers, and from SB800 on a bus that an embedded controller and four ports
/// share.
///
/// LocalE, how the base is found: 0 in configuration space, 1 in power management register 0x2c, 2 in the decode enable
/// register 0 of power management. Those registers lie in memory at 0xFED80300 and behind index port 0xCD6 and data
/// port 0xCD7. LocalB, the way to them: 0 none, 1 memory, 2 ports. Local7 is the one that selects the bus's port, with
/// Local5 as mask of the selection, Local4 its value (bit 8: changed) and Local3 its address in memory. LocalA keeps
/// the index port.
#pragma once

#include "smbus/rows/PiixTexts.h"

namespace smbus_rows {

// Chips since revision 0x40 of 1002:4385, all of 1022:780B: SB800, Hudson and later.
inline constexpr char kFchGeneration[] =
    "CMDS{Local1=Rpci(0,0x14,0,8); Local2=Rpci32(0,0x14,0,0); LocalE=0; BkIf0(Sub(Local2,0x43721002)); "
    "Local3=Sub(Local2,0x43851002); Local3=Cmz(Local3); Local4=And(Local1,0xc0); Local4=Cmz(Local4); "
    "Local3=And(Local3,Local4); Local3=And(Local3,1); LocalE=Sub(1,Local3); Local3=Sub(Local2,0x780b1022); "
    "Local3=Cmz(Local3); Local4=Sub(Local1,0x41); Local4=And(Local4,0x80000000); Local4=Cmz(Local4); "
    "Local3=And(Local3,Local4); Local3=And(Local3,1); LocalE=Add(LocalE,Local3)} ";
inline constexpr char kFchPortSelect[] =
    "CMDS{Local7=0x2c; Local5=6; BkIf0(Sub(Local2,0x43851002)); Local7=0x2e; Local3=Sub(Local1,0x1f); "
    "BkIf1(And(Local3,0x80000000)); Local7=2; Local5=0x18} ";
// What the old ones share with ServerWorks.
inline constexpr char kFchOldAlone[] = "CMDS{BkIf1(Or(LocalE,0)); ";
inline constexpr char kFchOldBase[] = "CMDS{Local0=0x10000; LocalB=0; BkIf1(Or(LocalE,0)); ";
inline constexpr char kFchOldEnd[] = "} ";

inline constexpr char kFchByMemory[] =
    "CMDS{BkIf1(Sub(LocalE,1)); Local1=R32(0xFED8032C)} CMDS{BkIf1(Sub(LocalE,2)); Local1=R16(0xFED80300)} ";
// Where memory cannot be read (all ones) or shows the host off, the port pair is asked; from revision 0x51 on it may be
// missing. Local3: the enable bit, 1 or 0x10.
inline constexpr char kFchByPorts[] =
    "CMDS{BkIf0(Or(LocalE,0)); LocalB=1; Local3=Sub(LocalE,1); Local3=Mul(Local3,15); Local3=Add(Local3,1); "
    "Local2=And(Local1,0xffff); Local2=Xor(Local2,0xffff); Local2=Cmz(Local2); Local2=Not(Local2,0); "
    "Local2=And(Local2,Local1); BkIf1(And(Local2,Local3)); LocalB=0; Local2=Rpci(0,0x14,0,8); "
    "Local2=Sub(Local2,0x51); BkIf0(And(Local2,0x80000000)); LocalB=2; Local2=Sub(2,LocalE); "
    "Local2=Mul(Local2,0x2c); LocalA=i(0xCD6); Local1=iid(0xCD6,0xCD7,Local2); Local2=Add(Local2,1); "
    "Local2=iid(0xCD6,0xCD7,Local2); o(0xCD6,LocalA); Local2=Shl(Local2,8); Local1=Or(Local1,Local2)} ";
inline constexpr char kFchTakeBase[] =
    "CMDS{BkIf1(Sub(LocalE,1)); BkIf0(And(Local1,1)); Local1=And(Local1,0xffe0); BkIf0(Xor(Local1,0xffe0)); "
    "BkIf0(Or(Local1,0)); Local0=Local1} CMDS{BkIf1(Sub(LocalE,2)); BkIf0(And(Local1,0x10)); "
    "Local1=And(Local1,0xff00); BkIf0(Xor(Local1,0xff00)); BkIf0(Or(Local1,0)); Local0=Local1} ";
// SB800 selects in 0x2e instead of 0x2c when bit 0 of 0x2f is set.
inline constexpr char kFchSelector[] =
    "CMDS{BkIf1(Sub(Local7,0x2c)); BkIf1(Sub(LocalB,1)); Local1=R(0xFED8032F); Local1=And(Local1,1); "
    "Local1=Shl(Local1,1); Local7=Add(Local7,Local1)} CMDS{BkIf1(Sub(Local7,0x2c)); BkIf1(Sub(LocalB,2)); "
    "LocalA=i(0xCD6); Local1=iid(0xCD6,0xCD7,0x2f); o(0xCD6,LocalA); Local1=And(Local1,1); Local1=Shl(Local1,1); "
    "Local7=Add(Local7,Local1)}";

// Slave control, base + 8: bit 4 asks for the bus and reads back 1 once it is the host's, bit 5 gives it back; bits 3
// to 0 are settings. Half a second, in steps of 1 ms.
inline constexpr char kFchTakeBus[] =
    "Loop{0x1f4,Local6=i(Local0); BkIf1(Or(Local8,0)); Local8=Cmz(LocalE); Local8=And(Local8,0x40); "
    "BkIf1(Or(Local8,0)); Local1=Add(Local0,8); Local2=i(Local1); Local2=And(Local2,0x0f); Local2=Or(Local2,0x10); "
    "o(Local1,Local2); Local2=i(Local1); Local2=Shl(Local2,2); Local8=And(Local2,0x40); BkIf1(Or(Local8,0)); "
    "Delay 1000} ";
inline constexpr char kFchGiveBusBack[] =
    "CMDS{BkIf0(Or(Local8,0)); BkIf0(Or(LocalE,0)); Local1=Add(Local0,8); Local2=i(Local1); Local2=And(Local2,0x0f); "
    "Local2=Or(Local2,0x20); o(Local1,Local2)} ";
// Port 0 is the board's; the others are the kernel's to switch to.
inline constexpr char kFchSelectByPorts[] =
    "CMDS{BkIf1(Sub(Local8,0x40)); BkIf1(And(Local6,1)); BkIf1(Sub(LocalB,2)); LocalA=i(0xCD6); "
    "Local4=iid(0xCD6,0xCD7,Local7); o(0xCD6,LocalA); Local1=And(Local4,Local5); BkIf0(Or(Local1,0)); "
    "Local1=Xor(Local4,Local1); oid(0xCD6,0xCD7,Local7,Local1); o(0xCD6,LocalA); Local4=Or(Local4,0x100)} ";
inline constexpr char kFchSelectByMemory[] =
    "CMDS{BkIf1(Sub(Local8,0x40)); BkIf1(And(Local6,1)); Local8=0x41; BkIf1(Sub(LocalB,1)); "
    "Local3=Add(Local7,0xFED80300); Local4=R(Local3); Local1=And(Local4,Local5); BkIf0(Or(Local1,0)); "
    "Local1=Xor(Local4,Local1); W(Local3,Local1); Local4=Or(Local4,0x100)} ";
inline constexpr char kFchRestoreSelection[] =
    "CMDS{BkIf1(Sub(Local8,0x41)); BkIf1(Sub(LocalB,1)); BkIf0(And(Local4,0x100)); W(Local3,Local4)} "
    "CMDS{BkIf1(Sub(Local8,0x41)); BkIf1(Sub(LocalB,2)); BkIf0(And(Local4,0x100)); LocalA=i(0xCD6); "
    "oid(0xCD6,0xCD7,Local7,Local4); o(0xCD6,LocalA)} ";
inline constexpr SMBusText kFchOwn[] = {
    {&Cfg::BaseScript1,
     {kFchOldBase, kReadBaseAt90, kTakeBaseFff0, kFchOldEnd, kFchByMemory, kFchByPorts, kFchTakeBase, kFchSelector}},
    {&Cfg::WaitIdleScript, {kFchTakeBus, kAwaitEnd, kStopByBit1, kFchSelectByPorts, kFchSelectByMemory, kClear1e}},
    {&Cfg::RestoreScript, {kFchRestoreSelection, kFchGiveBusBack, kFchOldAlone, kRestoreAtD2, kFchOldEnd}},
};
inline constexpr auto kFch = Joined(kClassicRegisters, kStarts, kDoneWaits, kPiixWhole, kFchOwn);

inline constexpr SMBusText kAti[] = {
    {&Cfg::DetectScript,
     {"LocalF=0xa0; Local0=Rpci32(0,0x14,0,0); BkIf0(Sub(Local0,0x43721002)); BkIf0(Sub(Local0,0x43851002)); "
      "Local1=Sub(Local0,0x780b1022); ",
      kZeroDetects}},
    {&Cfg::EnableScript, {kFchGeneration, kFchPortSelect, kFchOldAlone, kEnableAtD2, kFchOldEnd}},
};
inline constexpr SMBusText kAmd[] = {
    {&Cfg::DetectScript,
     {"LocalF=0xa0; Local0=Rpci32(0,0x14,0,0); BkIf0(Sub(Local0,0x790b1022)); Local1=Sub(Local0,0x790b1d94); ",
      kZeroDetects}},
    {&Cfg::EnableScript,
     {"Local1=Rpci(0,0x14,0,8); Local2=Sub(Local1,0x49); Local2=And(Local2,0x80000000); Local2=Cmz(Local2); "
      "Local2=And(Local2,1); LocalE=Add(Local2,1); Local7=2; Local5=0x18"}},
};

}  // namespace smbus_rows
