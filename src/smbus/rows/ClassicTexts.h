// SPDX-License-Identifier: MIT
/// Texts for the registers 0 status, 2 control, 3 command, 4 address, 5 and 6 data, 7 block window, which Intel's ICH,
/// the PIIX4 and its descendants, and ULi have.
#pragma once

#include "smbus/rows/Pieces.h"

namespace smbus_rows {

inline constexpr SMBusText kClassicRegisters[] = {
    {&Cfg::AddressPrefix, {"Local1=Add(Local0,4); o(Local1,"}},
    {&Cfg::CommandPrefix, {"Local1=Add(Local0,3); o(Local1,"}},
    {&Cfg::ByteWritePrefix, {"Local1=Add(Local0,5); o(Local1,"}},
    {&Cfg::DataWritePrefix, {"Local1=Add(Local0,5); o(Local1,"}},
    {&Cfg::DataReadPrefix, {"Local1=Add(Local0,5); i(Local1,"}},
    {&Cfg::ByteReadScript, {"Local1=Add(Local0,5); i(Local1)"}},
    {&Cfg::BlockWritePrefix, {"Local1=Add(Local0,Local9); o(Local1,"}},
    {&Cfg::BlockReadScript, {"Local1=Add(Local0,Local9); i(Local1)"}},
    {&Cfg::WordReadLowScript, {"Local1=Add(Local0,5); i(Local1)"}},
    {&Cfg::WordReadHighScript, {"Local1=Add(Local0,6); i(Local1)"}},
    {&Cfg::WordWriteLowPrefix, {"Local1=Add(Local0,5); o(Local1,"}},
    {&Cfg::WordWriteHighPrefix, {"Local1=Add(Local0,6); o(Local1,"}},
};

inline constexpr char kStart48[] = "Local1=Add(Local0,2); o(Local1,0x48)";
inline constexpr char kStart4c[] = "Local1=Add(Local0,2); o(Local1,0x4C)";
inline constexpr char kStart54[] = "Local1=Add(Local0,2); o(Local1,0x54)";
inline constexpr SMBusText kStarts[] = {
    {&Cfg::ByteReadStartScript, {kStart48}},  {&Cfg::ByteWriteStartScript, {kStart48}},
    {&Cfg::WordReadStartScript, {kStart4c}},  {&Cfg::WordWriteStartScript, {kStart4c}},
    {&Cfg::BlockReadStartScript, {kStart54}}, {&Cfg::BlockWriteStartScript, {kStart54}},
};

// --- the idle wait, in this order ---

// The semaphore, status bit 0x40, for hosts that have one: a read that finds it clear has taken it. Somebody else's is
// waited for, at least 0.25 s; where for 50 ms in a row no transfer was seen, its owner has forgotten it (firmware
// does). Local7 counts the looks in a row that saw no transfer.
inline constexpr char kTakeSemaphore[] =
    "Loop{0x1388,Local6=i(Local0); BkIf1(Or(Local8,0)); Local1=And(Local6,1); Local1=Sub(Local1,1); "
    "Local7=Add(Local7,1); Local7=And(Local7,Local1); Local1=Sub(Local7,0x3e8); Local1=Cmz(Local1); "
    "Local2=Not(Local6,0); Local1=Or(Local1,Local2); Local8=And(Local1,0x40); BkIf1(Or(Local8,0)); Delay 50} ";
// A host without a semaphore belongs to whoever finds it idle.
inline constexpr char kTakeHost[] = "CMDS{Local6=i(Local0); Local8=Or(Local8,0x40)} ";
// A transfer in progress gets 50 ms, more than a device may stretch it to. Whoever made one without taking the host
// first finds out how it ended from the status: bits that we did not cause are left alone for 2.5 ms, which is also how
// long ServerWorks' status says nothing after a start. Local9 counts the looks in a row that saw no transfer.
inline constexpr char kAwaitEnd[] =
    "Loop{0x3e8,BkIf0(Or(Local8,0)); Local1=Sub(Local8,0x40); Local1=Mul(Local1,0x1e); Local1=Sub(0x1f,Local1); "
    "Local1=And(Local6,Local1); BkIf0(Or(Local1,0)); Local1=And(Local6,1); Local1=Sub(Local1,1); "
    "Local9=Add(Local9,1); Local9=And(Local9,Local1); BkIf0(Sub(Local9,0x32)); Delay 50; Local6=i(Local0)} ";
// One that is still there once the settings are made is our own: the host is told to give it up.
inline constexpr char kStopByBit1[] =
    "CMDS{BkIf1(Sub(Local8,0x41)); BkIf0(And(Local6,1)); Local1=Add(Local0,2); o(Local1,2); Delay 1000; o(Local1,0); "
    "Local6=i(Local0)} ";
// Where there are no settings to make.
inline constexpr char kReady[] = "CMDS{BkIf1(Sub(Local8,0x40)); BkIf1(And(Local6,1)); Local8=0x41} ";
// Result 0: the host is ours, idle, and its completion and error bits are clear. Other bits are nobody's business here.
inline constexpr char kClear1e[] =
    "Local1=Cmz(Local8); BkIf1(Or(Local1,0)); BkIf1(And(Local6,1)); Local1=And(Local6,0x1e); BkIf0(Or(Local1,0)); "
    "o(Local0,Local1); Local6=i(Local0); And(Local6,0x1f)";
inline constexpr char kClear9e[] =
    "Local1=Cmz(Local8); BkIf1(Or(Local1,0)); BkIf1(And(Local6,1)); Local1=And(Local6,0x9e); BkIf0(Or(Local1,0)); "
    "o(Local0,Local1); Local6=i(Local0); And(Local6,0x9f)";
inline constexpr char kReleaseSemaphore[] = "CMDS{BkIf0(Or(Local8,0)); o(Local0,0x40)} ";

// --- the waits for a transfer ---

// Over is what is idle with a completion or error bit; 50 ms at the least, which the idle wait goes on from.
// Result 0: done without an error; 4: any error bit, or neither done nor failed in time.
inline constexpr char kDone[] =
    "Loop{0x9c4,Local1=i(Local0); Local2=And(Local1,1); Local2=Sub(Local2,1); Local2=And(Local2,Local1); "
    "BkIf1(And(Local2,0x1e)); Delay 20} Local1=And(Local2,0x1e); Local1=Xor(Local1,2); Local1=Cmz(Local1); "
    "Local1=Not(Local1,0); And(Local1,4)";
inline constexpr char kByteWindowReady[] =
    "Delay 300; Loop{0x9c4,Local1=i(Local0); BkIf1(And(Local1,0x9e)); Delay 20} ";
// Result: 0x80 or 2 to go on, 4 for any error bit, 0 when neither came.
inline constexpr char kByteResult[] =
    "Local2=And(Local1,0x1c); Local2=Cmz(Local2); Local2=Not(Local2,0); Local2=And(Local2,4); "
    "Local1=And(Local1,0x82); Or(Local1,Local2)";
// Reading the control register sets the 32-byte buffer behind the window to its first byte; each access moves on.
inline constexpr char kBufferFromStart[] = "Local1=Add(Local0,2); i(Local1); Local9=7";

inline constexpr SMBusText kDoneWaits[] = {
    {&Cfg::ByteWaitScript, {kByteTakes, kDone}},
    {&Cfg::WordWaitScript, {kWordTakes, kDone}},
    {&Cfg::BlockWaitScript, {kBlockTakes, kDone}},
};

}  // namespace smbus_rows
