// SPDX-License-Identifier: MIT
/// Intel hosts at 0:1f.0 to 0:1f.4: ICH and all that followed.
#pragma once

#include "smbus/rows/ClassicTexts.h"

namespace smbus_rows {

inline constexpr SMBusText kIchx[] = {
    {&Cfg::DetectScript,
     {"Local0=Rpci32(0,0x1f,0,0); Local0=And(Local0,0xff00ffff); bkif0(Sub(Local0,0x24008086)); "
      "Sub(Local0,0x26008086)"}},
    {&Cfg::EnableScript,
     {"Local6=Rpci16(0,0x1f,0,0x40); Local6=And(Local6,0xFFF0); Local6=Add(Local6,0x69); Local7=i(Local6); "
      "o(Local6,8); Local6=Add(Local6,1); Local8=i(Local6); o(Local6,8); ",
      "LocalA=Rpci(0,0x1f,0,0xf2); Local0=And(LocalA,0xf7); Wpci(0,0x1f,0,0xf2,Local0); "
      "LocalB=Rpci(0,0x1f,3,4); LocalC=Rpci16(0,0x1f,3,0x20); LocalD=Rpci(0,0x1f,3,0x40); ",
      "Wpci(0,0x1f,3,0x40,1); Wpci(0,0x1f,3,4,1); BkIf1(And(LocalC,0xFFF0)); Wpci16(0,0x1f,3,0x20,0xc00)"}},
    {&Cfg::BaseScript1,
     {"Local0=Rpci16(0,0x1f,3,0x20); Local0=And(Local0,0xfff0); Local1=Add(Local0,0xD); Local5=i(Local1); "
      "o(Local1,0)"}},
    {&Cfg::WaitIdleScript, {"Wait{0,0x8000,o(Local0,0xff); Local1=i(Local0); And(Local1,0x9f)}"}},
    {&Cfg::ByteWaitScript, {"Delay 10; Wait{2,0x8000,Local1=i(Local0); BkIf1(And(Local1,4)); And(Local1,2)}"}},
    {&Cfg::BlockWaitScript, {"Delay 200; Wait{0x80,0x8000,Local1=i(Local0); BkIf1(And(Local1,4)); And(Local1,0x80)}"}},
    {&Cfg::BlockSetupScript, {"Local9=7"}},
    {&Cfg::BlockNextScript,
     {"o(Local0,0xff); Wait{0x80,0x8000,Local1=i(Local0); BkIf1(And(Local1,4)); BkIf0(And(Local1,1)); "
      "And(Local1,0x80)}"}},
    {&Cfg::RestoreScript,
     {"Local1=Add(Local0,0xD); o(Local1,Local5); Wpci(0,0x1f,3,0x40,LocalD); Wpci16(0,0x1f,3,0x20,LocalC); "
      "Wpci(0,0x1f,3,4,LocalB); Wpci(0,0x1f,0,0xf2,LocalA); ",
      "Local6=Rpci16(0,0x1f,0,0x40); Local6=And(Local6,0xFFF0); Local6=Add(Local6,0x69); o(Local6,Local7); "
      "Local6=Add(Local6,1); o(Local6,Local8)"}},
    {&Cfg::WordWaitScript, {"Delay 40;Wait{2,0x8000,Local1=i(Local0); BkIf1(And(Local1,4)); And(Local1,2)}"}},
};

inline constexpr auto kIchxWhole = Joined(kClassicRegisters, kStarts, kIchx);

inline constexpr char kLpcAt1f0[] = "LocalF=0xfb; Local0=Rpci32(0,0x1f,0,0); ";
inline constexpr char kHostAt1f3[] = "LocalF=0xfb; Local0=Rpci32(0,0x1f,3,0); ";
inline constexpr char kHostAt1f4[] = "LocalF=0xfc; Local0=Rpci32(0,0x1f,4,0); ";

// Function disable: the register at root complex base + 0x3418, when that block is on, reads sanely and bit 3 is set.
// The 6300ESB has other things in those registers. LocalE: its address, 0 when there is nothing to undo; LocalA: its
// value.
inline constexpr char kIchUnhide[] =
    "CMDS{LocalE=0; BkIf0(Sub(Local0,0x25a08086)); Local1=Rpci32(0,0x1f,0,0xf0); BkIf0(And(Local1,1)); "
    "Local1=And(Local1,0xffffc000); Local1=Add(Local1,0x3418); LocalA=R32(Local1); BkIf0(And(LocalA,8)); "
    "BkIf0(Xor(LocalA,0xffffffff)); LocalE=Local1; Local2=And(LocalA,0xfffffff7); W32(LocalE,Local2)} ";
inline constexpr char kIchHide[] = "CMDS{BkIf0(Or(LocalE,0)); W32(LocalE,LocalA)}";

inline constexpr char kIchSave[] =
    "CMDS{LocalB=ERpci(LocalF,4); LocalC=ERpci16(LocalF,0x20); LocalD=ERpci(LocalF,0x40)} ";
inline constexpr char kIchAssignBase[] =
    "CMDS{BkIf1(And(LocalC,0xffe0)); EWpci16(LocalF,0x20,0xc00); LocalC=Or(LocalC,0x10000)} ";
// A host that is off has no other user, and is set up at once. One that is on keeps its settings until it is ours.
inline constexpr char kIchEnable[] =
    "CMDS{BkIf0(And(LocalC,0x1ffe0)); Local1=And(LocalB,LocalD); BkIf1(And(Local1,1)); Local1=And(LocalD,0xf8); "
    "Local1=Or(Local1,1); EWpci(LocalF,0x40,Local1); LocalD=Or(LocalD,0x100); Local1=Or(LocalB,1); "
    "EWpci(LocalF,4,Local1); LocalB=Or(LocalB,0x100)}";
inline constexpr char kIchBase[] = "Local1=ERpci16(LocalF,0x20); ";

// I2C mode and SMI (configuration 0x40 bits 2 and 1) off for the time of our transfers.
inline constexpr char kIchHostMode[] =
    "CMDS{BkIf1(Sub(Local8,0x40)); BkIf1(And(Local6,1)); BkIf0(And(LocalD,6)); BkIf1(And(LocalD,0x100)); "
    "Local1=And(LocalD,0xf8); Local1=Or(Local1,1); EWpci(LocalF,0x40,Local1); LocalD=Or(LocalD,0x100)} ";
// Local5: the auxiliary control register. Bit 1 selects the 32-byte buffer, clear the byte-wise window.
inline constexpr char kIchByteWindow[] =
    "CMDS{BkIf1(Sub(Local8,0x40)); BkIf1(And(Local6,1)); Local8=0x41; Local1=Add(Local0,0xd); Local5=i(Local1); "
    "BkIf0(Or(Local5,0)); o(Local1,0); Local5=Or(Local5,0x100)} ";
inline constexpr char kIchBuffer[] =
    "CMDS{BkIf1(Sub(Local8,0x40)); BkIf1(And(Local6,1)); Local8=0x41; Local1=Add(Local0,0xd); Local5=i(Local1); "
    "BkIf0(Sub(Local5,2)); o(Local1,2); Local5=Or(Local5,0x100)} ";
// The last byte of a block read byte by byte is over when its bit 0x80 is cleared; the host waits for that.
inline constexpr char kIchPassLastByte[] =
    "CMDS{BkIf1(Sub(Local8,0x41)); Local1=And(Local6,0x81); BkIf1(Xor(Local1,0x81)); o(Local0,0x80); "
    "Local6=i(Local0)} ";
// A host that was on has its settings back while it is still ours; one that was off needs to stay on until the
// semaphore is given back.
inline constexpr char kIchRestoreHost[] =
    "CMDS{BkIf0(And(Local5,0x100)); Local1=Add(Local0,0xd); o(Local1,Local5)} "
    "CMDS{BkIf0(And(LocalD,0x100)); BkIf0(And(LocalD,1)); EWpci(LocalF,0x40,LocalD); LocalD=0} ";
inline constexpr char kIchRestoreFunction[] =
    "CMDS{BkIf0(And(LocalD,0x100)); EWpci(LocalF,0x40,LocalD)} CMDS{BkIf0(And(LocalB,0x100)); "
    "EWpci(LocalF,4,LocalB)} CMDS{BkIf0(And(LocalC,0x10000)); EWpci16(LocalF,0x20,LocalC)} ";

// Local4 counts the bytes left. A read is told which byte is its last: control 0x34 without the start bit.
inline constexpr char kIchCountBytes[] = "CMDS{Local9=7; Local1=Add(Local0,5); Local4=i(Local1)} ";
inline constexpr char kIchLastByte[] =
    "CMDS{BkIf1(Sub(Local4,1)); Local1=Add(Local0,4); Local1=i(Local1); BkIf0(And(Local1,1)); "
    "Local1=Add(Local0,2); o(Local1,0x34)} ";
inline constexpr char kIchPassByte[] = "CMDS{o(Local0,0x80)} ";
inline constexpr char kIchNextByte[] =
    "Loop{0x9c4,Local1=i(Local0); BkIf1(And(Local1,0x9c)); BkIf0(And(Local1,1)); Delay 20} ";

inline constexpr SMBusText kIch[] = {
    {&Cfg::EnableScript, {kIchSave, kIchAssignBase, kIchEnable}},
    {&Cfg::BaseScript1, {kNoBase, kIchBase, kTakeBaseFfe0}},
    {&Cfg::RestoreScript, {kIchRestoreHost, kReleaseSemaphore, kIchRestoreFunction}},
};
inline constexpr SMBusText kIchByteBlocks[] = {
    {&Cfg::WaitIdleScript,
     {kTakeSemaphore, kIchPassLastByte, kAwaitEnd, kStopByBit1, kIchHostMode, kIchByteWindow, kClear9e}},
    {&Cfg::BlockWaitScript, {kByteWindowReady, kByteResult}},
    {&Cfg::BlockSetupScript, {kIchCountBytes, kIchLastByte}},
    {&Cfg::BlockNextScript, {"CMDS{Local4=Sub(Local4,1)} ", kIchLastByte, kIchPassByte, kIchNextByte, kByteResult}},
};
inline constexpr SMBusText kIchBufferBlocks[] = {
    {&Cfg::WaitIdleScript, {kTakeSemaphore, kAwaitEnd, kStopByBit1, kIchHostMode, kIchBuffer, kClear9e}},
    {&Cfg::BlockSetupScript, {kBufferFromStart}},
};
inline constexpr auto kIchBytewise = Joined(kClassicRegisters, kStarts, kDoneWaits, kIch, kIchByteBlocks);
inline constexpr auto kIchBuffered = Joined(kClassicRegisters, kStarts, kDoneWaits, kIch, kIchBufferBlocks);
inline constexpr SMBusText kIchHidden[] = {
    {&Cfg::EnableScript, {kIchUnhide, kIchSave, kIchAssignBase, kIchEnable}},
    {&Cfg::RestoreScript, {kIchRestoreHost, kReleaseSemaphore, kIchRestoreFunction, kIchHide}},
};

inline constexpr SMBusText kIch7[] = {
    {&Cfg::DetectScript,
     {kLpcAt1f0,
      "Local0=And(Local0,0xfff0ffff); BkIf0(Sub(Local0,0x27b08086)); BkIf0(Sub(Local0,0x28108086)); "
      "BkIf0(Sub(Local0,0x29108086)); BkIf0(Sub(Local0,0x3a108086)); BkIf0(Sub(Local0,0x25a08086)); "
      "Local1=Sub(Local0,0x50308086); ",
      kZeroDetects}},
};
inline constexpr SMBusText kPch[] = {
    {&Cfg::DetectScript,
     {kLpcAt1f0,
      "Local0=And(Local0,0xff00ffff); BkIf0(Sub(Local0,0x3b008086)); BkIf0(Sub(Local0,0x1c008086)); "
      "BkIf0(Sub(Local0,0x1e008086)); BkIf0(Sub(Local0,0x8c008086)); BkIf0(Sub(Local0,0x1d008086)); "
      "BkIf0(Sub(Local0,0x8d008086)); BkIf0(Sub(Local0,0x9c008086)); Local1=Sub(Local0,0x23008086); ",
      kZeroDetects}},
};
inline constexpr SMBusText kAvoton[] = {
    {&Cfg::DetectScript, {kHostAt1f3, "Local1=Sub(Local0,0x1f3c8086); ", kZeroDetects}},
};
inline constexpr SMBusText kBraswellAlone[] = {
    {&Cfg::DetectScript, {kHostAt1f3, "Local1=Sub(Local0,0x22928086); ", kZeroDetects}},
};
inline constexpr SMBusText kBraswell[] = {
    {&Cfg::DetectScript, {kHostAt1f3, "BkIf0(Sub(Local0,0x22928086)); Local1=Sub(Local0,0x0f128086); ", kZeroDetects}},
};
inline constexpr SMBusText kSkylake[] = {
    {&Cfg::DetectScript, {kHostAt1f4, "BkIf0(Sub(Local0,0xa1238086)); Local1=Sub(Local0,0x9d238086); ", kZeroDetects}},
};
inline constexpr SMBusText kKabyLake[] = {
    {&Cfg::DetectScript, {kHostAt1f4, "Local1=Sub(Local0,0xa2a38086); ", kZeroDetects}},
};
// The function of 0:1f that is of class SMBus host, looked for from 0:1f.4 on: Intel's, not function 3, and none that
// another row drives. Denverton's (19df) shares its bus with another host, which comes first. It gets no base of its
// own.
inline constexpr SMBusText kAutoPch[] = {
    {&Cfg::DetectScript,
     {"LocalF=0xfb; Loop{8,LocalF=Add(LocalF,1); LocalF=And(LocalF,7); LocalF=Or(LocalF,0xf8); "
      "Local1=ERpci16(LocalF,0xa); BkIf0(Sub(Local1,0x0C05))} ",
      "Local1=Sub(Local1,0x0C05); Local1=Cmz(Local1); BkIf1(Not(Local1,0)); Local0=ERpci32(LocalF,0); "
      "Local1=And(Local0,0xffff); Local1=Sub(Local1,0x8086); Local1=Cmz(Local1); BkIf1(Not(Local1,0)); ",
      "Local1=Sub(LocalF,0xfb); BkIf1(Cmz(Local1)); Local1=Sub(Local0,0x19df8086); BkIf1(Cmz(Local1)); "
      "Local1=Sub(Local0,0xa1238086); BkIf1(Cmz(Local1)); Local1=Sub(Local0,0x9d238086); BkIf1(Cmz(Local1)); "
      "Local1=Sub(Local0,0xa2a38086); Cmz(Local1)"}},
    {&Cfg::EnableScript, {kIchSave, kIchEnable}},
};

}  // namespace smbus_rows
