// SPDX-License-Identifier: MIT
/// The PIIX4 way outside AMD's chips: VIA and ServerWorks.
#pragma once

#include "smbus/rows/ClassicTexts.h"

namespace smbus_rows {

inline constexpr SMBusText kPiixWhole[] = {
    {&Cfg::WaitIdleScript, {kTakeHost, kAwaitEnd, kStopByBit1, kReady, kClear1e}},
    {&Cfg::BlockSetupScript, {kBufferFromStart}},
};
inline constexpr auto kPiix = Joined(kClassicRegisters, kStarts, kDoneWaits, kPiixWhole);

// --- VIA: host enable 0xd2 bit 0 of 0:11.0 ---

inline constexpr SMBusText kViaSemaphore[] = {
    {&Cfg::WaitIdleScript, {kTakeSemaphore, kAwaitEnd, kStopByBit1, kReady, kClear1e}},
};
inline constexpr auto kVia = Joined(kClassicRegisters, kStarts, kDoneWaits, kPiixWhole, kViaSemaphore);
inline constexpr char kViaEnable[] =
    "CMDS{LocalC=Rpci16(0,0x11,0,0xd0); LocalD=Rpci(0,0x11,0,0xd2); BkIf0(And(LocalC,0xfff0)); "
    "BkIf1(And(LocalD,1)); Local1=Or(LocalD,1); Wpci(0,0x11,0,0xd2,Local1); LocalD=Or(LocalD,0x100)} ";
inline constexpr char kViaDecode[] =
    "CMDS{LocalB=Rpci(0,0x11,0,4); BkIf0(And(LocalC,0xfff0)); BkIf1(And(LocalB,1)); Local1=Or(LocalB,1); "
    "Wpci(0,0x11,0,4,Local1); LocalB=Or(LocalB,0x100)}";
inline constexpr char kViaReadBase[] = "Local1=Rpci16(0,0x11,0,0xd0); ";
inline constexpr char kViaRestore[] = "CMDS{BkIf0(And(LocalD,0x100)); Wpci(0,0x11,0,0xd2,LocalD)} ";
inline constexpr char kViaRestoreDecode[] = "CMDS{BkIf0(And(LocalB,0x100)); Wpci(0,0x11,0,4,LocalB)}";
inline constexpr SMBusText kVx900[] = {
    {&Cfg::DetectScript,
     {"Local0=Rpci32(0,0x11,0,0); BkIf0(Sub(Local0,0x84101106)); BkIf0(Sub(Local0,0x83241106)); "
      "BkIf0(Sub(Local0,0x83531106)); Local1=Sub(Local0,0x84091106); ",
      kZeroDetects}},
    {&Cfg::EnableScript, {kViaEnable}},
    {&Cfg::BaseScript1, {kNoBase, kViaReadBase, kTakeBaseFff0}},
    {&Cfg::RestoreScript, {kReleaseSemaphore, kViaRestore}},
};
inline constexpr SMBusText kVia8235[] = {
    {&Cfg::DetectScript,
     {"Local0=Rpci32(0,0x11,0,0); BkIf0(Sub(Local0,0x31771106)); BkIf0(Sub(Local0,0x32271106)); "
      "BkIf0(Sub(Local0,0x33371106)); BkIf0(Sub(Local0,0x33721106)); BkIf0(Sub(Local0,0x30741106)); "
      "BkIf0(Sub(Local0,0x31471106)); Local1=Sub(Local0,0x32871106); ",
      kZeroDetects}},
    {&Cfg::EnableScript, {kViaEnable, kViaDecode}},
    {&Cfg::BaseScript1, {kNoBase, kViaReadBase, kTakeBaseFff0}},
    {&Cfg::RestoreScript, {kReleaseSemaphore, kViaRestore, kViaRestoreDecode}},
};

// --- ServerWorks: a function of bus 0, nearly always 0:f.0 ---

// Base in 0x90, host enable in 0xd2 bit 0, of the function that LocalF names.
inline constexpr char kEnableAtD2[] =
    "LocalC=ERpci16(LocalF,0x90); LocalD=ERpci(LocalF,0xd2); BkIf0(And(LocalC,0xfff0)); BkIf1(And(LocalD,1)); "
    "Local1=Or(LocalD,1); EWpci(LocalF,0xd2,Local1); LocalD=Or(LocalD,0x100)";
inline constexpr char kReadBaseAt90[] = "Local1=ERpci16(LocalF,0x90); ";
inline constexpr char kRestoreAtD2[] = "BkIf0(And(LocalD,0x100)); EWpci(LocalF,0xd2,LocalD)";
inline constexpr SMBusText kServerWorks[] = {
    {&Cfg::DetectScript,
     {"LocalF=0x78; Loop{0x20,Local0=ERpci32(LocalF,0); BkIf0(Sub(Local0,0x02001166)); "
      "BkIf0(Sub(Local0,0x02011166)); BkIf0(Sub(Local0,0x02031166)); BkIf0(Sub(Local0,0x02051166)); "
      "LocalF=Add(LocalF,8); LocalF=And(LocalF,0xff)} ",
      "BkIf0(Sub(Local0,0x02001166)); BkIf0(Sub(Local0,0x02011166)); BkIf0(Sub(Local0,0x02031166)); "
      "Local1=Sub(Local0,0x02051166); ",
      kZeroDetects}},
    {&Cfg::EnableScript, {kEnableAtD2}},
    {&Cfg::BaseScript1, {kNoBase, kReadBaseAt90, kTakeBaseFff0}},
    {&Cfg::RestoreScript, {kRestoreAtD2}},
    // For 2 ms after a start the status says nothing.
    {&Cfg::ByteWaitScript, {"Delay 2000; ", kDone}},
    {&Cfg::WordWaitScript, {"Delay 2000; ", kDone}},
    {&Cfg::BlockWaitScript, {"Delay 2000; ", kDone}},
};

}  // namespace smbus_rows
