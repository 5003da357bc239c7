// SPDX-License-Identifier: MIT
/// nVidia: registers 0 protocol, 1 status, 2 address, 3 command, 4 and up data, 0x24 block count, 0x3c and 0x3e abort.
#pragma once

#include "smbus/rows/Pieces.h"

namespace smbus_rows {

// A protocol number stands in register 0 as long as its transfer runs; Local6 is it and, eight bits up, the status but
// for its alarm, bit 6. Another's transfer gets 50 ms to end and 2.5 ms to be looked at (Local9 counts); our own that
// does not end is aborted: register 0x3e bit 5, acknowledged by 0x3c bit 0 within 10 ms.
inline constexpr char kNvidiaLook[] =
    "Local6=i(Local0); Local1=Add(Local0,1); Local1=i(Local1); Local1=And(Local1,0xbf); Local1=Shl(Local1,8); "
    "Local6=Or(Local6,Local1)";
inline constexpr char kNvidiaAwaitEnd[] =
    "} Loop{0x3e8,Local1=Sub(1,Local8); Local1=Mul(Local1,0xbf00); Local1=Or(Local1,0xff); Local1=And(Local6,Local1); "
    "BkIf0(Or(Local1,0)); Local1=And(Local6,0xff); Local1=Cmz(Local1); Local9=Add(Local9,1); "
    "Local9=And(Local9,Local1); BkIf0(Sub(Local9,0x32)); Delay 50; ";
inline constexpr char kNvidiaStop[] =
    "} CMDS{BkIf0(And(Local6,0xff)); BkIf0(Or(Local8,0)); Local1=Add(Local0,0x3e); o(Local1,0x20)} "
    "Loop{10,BkIf0(And(Local6,0xff)); BkIf0(Or(Local8,0)); Delay 1000; Local2=Add(Local0,0x3c); Local1=i(Local2); "
    "BkIf1(And(Local1,1))} CMDS{BkIf0(And(Local6,0xff)); BkIf0(Or(Local8,0)); o(Local2,1); ";
inline constexpr char kNvidiaClear[] =
    "} BkIf1(And(Local6,0xff)); Local8=1; Local1=Shr(Local6,8); BkIf0(Or(Local1,0)); Local2=Add(Local0,1); "
    "o(Local2,Local1); And(Local6,0xff)";
// Result 0: done without an error; 4: an error code, or neither done nor failed in time.
inline constexpr char kNvidiaDone[] =
    "Loop{0x9c4,Local2=Add(Local0,1); Local1=i(Local2); BkIf1(And(Local1,0x9f)); Delay 20} Local1=And(Local1,0x9f); "
    "Local1=Xor(Local1,0x80); Local1=Cmz(Local1); Local1=Not(Local1,0); And(Local1,4)";
inline constexpr SMBusText kNvidia[] = {
    // With no base in any of its four registers the function is left as it is.
    {&Cfg::EnableScript,
     {"CMDS{LocalB=ERpci(LocalF,4); BkIf1(And(LocalB,1)); Local1=ERpci16(LocalF,0x20); Local2=ERpci16(LocalF,0x24); "
      "Local1=Or(Local1,Local2); Local2=ERpci16(LocalF,0x50); Local1=Or(Local1,Local2); "
      "Local2=ERpci16(LocalF,0x54); Local1=Or(Local1,Local2); ",
      "BkIf0(And(Local1,0xfffc)); Local1=Or(LocalB,1); EWpci(LocalF,4,Local1); LocalB=Or(LocalB,0x100)}"}},
    {&Cfg::WaitIdleScript,
     {"CMDS{", kNvidiaLook, kNvidiaAwaitEnd, kNvidiaLook, kNvidiaStop, kNvidiaLook, kNvidiaClear}},
    {&Cfg::AddressPrefix, {"Local1=Add(Local0,2); o(Local1,"}},
    {&Cfg::CommandPrefix, {"Local1=Add(Local0,3); o(Local1,"}},
    {&Cfg::ByteWritePrefix, {"Local1=Add(Local0,0x24); o(Local1,"}},
    {&Cfg::DataWritePrefix, {"Local1=Add(Local0,4); o(Local1,"}},
    {&Cfg::DataReadPrefix, {"Local1=Add(Local0,0x24); i(Local1,"}},
    {&Cfg::ByteReadStartScript, {"o(Local0,0x07)"}},
    {&Cfg::ByteWriteStartScript, {"o(Local0,0x06)"}},
    {&Cfg::ByteWaitScript, {kByteTakes, kNvidiaDone}},
    {&Cfg::ByteReadScript, {"Local1=Add(Local0,4); i(Local1)"}},
    {&Cfg::BlockReadStartScript, {"o(Local0,0x0B)"}},
    {&Cfg::BlockWriteStartScript, {"o(Local0,0x0A)"}},
    {&Cfg::BlockWaitScript, {kBlockTakes, kNvidiaDone}},
    {&Cfg::BlockSetupScript, {"Local9=4"}},
    {&Cfg::BlockWritePrefix, {"Local1=Add(Local0,Local9); o(Local1,"}},
    {&Cfg::BlockReadScript, {"Local1=Add(Local0,Local9); i(Local1)"}},
    {&Cfg::BlockStepScript, {"Local9=Add(Local9,1)"}},
    {&Cfg::RestoreScript, {"CMDS{BkIf0(And(LocalB,0x100)); EWpci(LocalF,4,LocalB)}"}},
    {&Cfg::WordReadStartScript, {"o(Local0,0x09)"}},
    {&Cfg::WordWriteStartScript, {"o(Local0,0x08)"}},
    {&Cfg::WordWaitScript, {kWordTakes, kNvidiaDone}},
    {&Cfg::WordReadLowScript, {"Local1=Add(Local0,4); i(Local1)"}},
    {&Cfg::WordReadHighScript, {"Local1=Add(Local0,5); i(Local1)"}},
    {&Cfg::WordWriteLowPrefix, {"Local1=Add(Local0,4); o(Local1,"}},
    {&Cfg::WordWriteHighPrefix, {"Local1=Add(Local0,5); o(Local1,"}},
};
// The first SMBus host by class. One detection looks once: Local3 is what it found, with bit 16 set.
inline constexpr char kFirstHostByClass[] =
    "CMDS{BkIf1(Or(Local3,0)); LocalF=Fpciclass(0x0C0500); Local3=Or(LocalF,0x10000)} LocalF=And(Local3,0xffff); "
    "Local0=ERpci32(LocalF,0); ";
inline constexpr char kNvidiaAt20[] = "Local1=ERpci16(LocalF,0x20); ";
inline constexpr char kNvidiaAt24[] = "Local1=ERpci16(LocalF,0x24); ";
inline constexpr char kNvidiaAt50[] = "Local1=ERpci16(LocalF,0x50); ";
inline constexpr char kNvidiaAt54[] = "Local1=ERpci16(LocalF,0x54); ";
inline constexpr SMBusText kMcp2[] = {
    {&Cfg::DetectScript,
     {kFirstHostByClass, "BkIf0(Sub(Local0,0x006410de)); Local1=Sub(Local0,0x008410de); ", kZeroDetects}},
    {&Cfg::BaseScript1, {kNoBase, kNvidiaAt50, kTakeBaseFffc}},
    {&Cfg::BaseScript2, {kNoBase, kNvidiaAt54, kTakeBaseFffc}},
};
inline constexpr SMBusText kNforce3[] = {
    {&Cfg::DetectScript,
     {kFirstHostByClass,
      "BkIf0(Sub(Local0,0x00d410de)); BkIf0(Sub(Local0,0x00e410de)); BkIf0(Sub(Local0,0x005210de)); "
      "BkIf0(Sub(Local0,0x003410de)); BkIf0(Sub(Local0,0x026410de)); BkIf0(Sub(Local0,0x036810de)); "
      "BkIf0(Sub(Local0,0x03eb10de)); BkIf0(Sub(Local0,0x044610de)); ",
      "BkIf0(Sub(Local0,0x054210de)); BkIf0(Sub(Local0,0x07d810de)); BkIf0(Sub(Local0,0x075210de)); "
      "BkIf0(Sub(Local0,0x0aa210de)); Local1=Sub(Local0,0x0d7910de); ",
      kZeroDetects}},
    {&Cfg::BaseScript1, {kNoBase, kNvidiaAt20, kTakeBaseFffc}},
    {&Cfg::BaseScript2, {kNoBase, kNvidiaAt24, kTakeBaseFffc}},
    {&Cfg::BaseScript3, {kNoBase, kNvidiaAt50, kTakeBaseFffc}},
    {&Cfg::BaseScript4, {kNoBase, kNvidiaAt54, kTakeBaseFffc}},
};

}  // namespace smbus_rows
