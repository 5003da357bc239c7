#include "smbus/SMBusRows.h"

namespace {

using Cfg = TSMBusCfg;

/// The lists one after another.
template <size_t... sizes>
constexpr auto Joined(const SMBusText (&... lists)[sizes]) {
  std::array<SMBusText, (sizes + ...)> joined{};
  size_t count = 0;
  const auto append = [&](const auto& list) {
    for (const SMBusText& text : list) joined[count++] = text;
  };
  (append(lists), ...);
  return joined;
}

// --- pieces that several texts are made of ---

constexpr char kNoBase[] = "Local0=0x10000; ";
// Local0 becomes the base in Local1, unless that reads all ones (no such function) or holds no address.
constexpr char kTakeBaseFffc[] = "BkIf0(Xor(Local1,0xffff)); BkIf0(And(Local1,0xfffc)); Local0=And(Local1,0xfffc)";
constexpr char kTakeBaseFff0[] = "BkIf0(Xor(Local1,0xffff)); BkIf0(And(Local1,0xfff0)); Local0=And(Local1,0xfff0)";
constexpr char kTakeBaseFfe0[] = "BkIf0(Xor(Local1,0xffff)); BkIf0(And(Local1,0xffe0)); Local0=And(Local1,0xffe0)";
constexpr char kZeroDetects[] = "Local1=Cmz(Local1); Not(Local1,0)";
constexpr char kFoundDetects[] = "Local0=Xor(LocalF,0xffff); Cmz(Local0)";

// --- registers at 0 status, 2 control, 3 command, 4 address, 5 and 6 data, 7 block window ---

constexpr SMBusText kClassicRegisters[] = {
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

constexpr char kStart48[] = "Local1=Add(Local0,2); o(Local1,0x48)";
constexpr char kStart4c[] = "Local1=Add(Local0,2); o(Local1,0x4C)";
constexpr char kStart54[] = "Local1=Add(Local0,2); o(Local1,0x54)";
constexpr char kIdle9f[] = "Wait{0,0x8000,o(Local0,0xff); Local1=i(Local0); And(Local1,0x9f)}";
constexpr char kIdle1f[] = "Wait{0,0x8000,o(Local0,0xff); Local1=i(Local0); And(Local1,0x1f)}";
// Result 0: done without an error; 4: any error bit, or neither done nor failed in time.
constexpr char kDone[] =
    "Wait{2,0x8000,Local1=i(Local0); BkIf1(And(Local1,0x1c)); And(Local1,2)}; Local1=And(Local1,0x1e); "
    "Local1=Xor(Local1,2); Local1=Cmz(Local1); Local1=Not(Local1,0); And(Local1,4)";
// Result: 0x80 or 2 to go on, 4 for any error bit, 0 when neither came.
constexpr char kByteResult[] =
    "; Local2=And(Local1,0x1c); Local2=Cmz(Local2); Local2=Not(Local2,0); Local2=And(Local2,4); "
    "Local1=And(Local1,0x82); Or(Local1,Local2)";
constexpr char kByteWindowReady[] =
    "Delay 200; Wait{0x80,0x8000,Local1=i(Local0); BkIf1(And(Local1,0x1c)); And(Local1,0x80)}";
// Reading the control register sets the 32-byte buffer behind the window to its first byte; each access moves on.
constexpr char kBufferFromStart[] = "Local1=Add(Local0,2); i(Local1); Local9=7";

constexpr SMBusText kStarts[] = {
    {&Cfg::ByteReadStartScript, {kStart48}},  {&Cfg::ByteWriteStartScript, {kStart48}},
    {&Cfg::WordReadStartScript, {kStart4c}},  {&Cfg::WordWriteStartScript, {kStart4c}},
    {&Cfg::BlockReadStartScript, {kStart54}}, {&Cfg::BlockWriteStartScript, {kStart54}},
};
constexpr SMBusText kDoneWaits[] = {
    {&Cfg::ByteWaitScript, {"Delay 10; ", kDone}},
    {&Cfg::WordWaitScript, {"Delay 40; ", kDone}},
    {&Cfg::BlockWaitScript, {"Delay 200; ", kDone}},
};

// --- Intel at 0:1f.0 to 0:1f.4: ICH and all that followed ---

constexpr SMBusText kIchx[] = {
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
    {&Cfg::WaitIdleScript, {kIdle9f}},
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

constexpr auto kIchxWhole = Joined(kClassicRegisters, kStarts, kIchx);

constexpr char kLpcAt1f0[] = "LocalF=0xfb; Local0=Rpci32(0,0x1f,0,0); ";
constexpr char kHostAt1f3[] = "LocalF=0xfb; Local0=Rpci32(0,0x1f,3,0); ";
constexpr char kHostAt1f4[] = "LocalF=0xfc; Local0=Rpci32(0,0x1f,4,0); ";

// Function disable: the register at root complex base + 0x3418, when that block is on, reads sanely and bit 3 is set.
// LocalE: its address, 0 when there is nothing to undo; LocalA: its value.
constexpr char kIchUnhide[] =
    "CMDS{LocalE=0; Local1=Rpci32(0,0x1f,0,0xf0); BkIf0(And(Local1,1)); Local1=And(Local1,0xffffc000); "
    "Local1=Add(Local1,0x3418); LocalA=R32(Local1); BkIf0(And(LocalA,8)); BkIf0(Xor(LocalA,0xffffffff)); "
    "LocalE=Local1; Local2=And(LocalA,0xfffffff7); W32(LocalE,Local2)}; ";
constexpr char kIchHide[] = "; CMDS{BkIf0(Or(LocalE,0)); W32(LocalE,LocalA)}";

constexpr char kIchSave[] = "LocalB=ERpci(LocalF,4); LocalC=ERpci16(LocalF,0x20); LocalD=ERpci(LocalF,0x40); ";
constexpr char kIchAssignBase[] = "CMDS{BkIf1(And(LocalC,0xffe0)); EWpci16(LocalF,0x20,0xc00)}; ";
constexpr char kIchEnable[] =
    "Local1=ERpci16(LocalF,0x20); BkIf0(And(Local1,0xffe0)); Local1=And(LocalD,0xf8); Local1=Or(Local1,1); "
    "EWpci(LocalF,0x40,Local1); Local1=Or(LocalB,1); EWpci(LocalF,4,Local1)";
constexpr char kIchReadBase[] = "Local1=ERpci16(LocalF,0x20); ";
// Local5: the auxiliary control register. Bit 1 selects the 32-byte buffer, clear the byte-wise window.
constexpr char kIchByteWindow[] = "; Local1=Add(Local0,0xd); Local5=i(Local1); o(Local1,0)";
constexpr char kIchBuffer[] = "; Local1=Add(Local0,0xd); Local5=i(Local1); o(Local1,2)";
// Status bit 0x40 is the semaphore that reading the status took.
constexpr char kIchRestore[] =
    "CMDS{BkIf1(And(Local0,0x10000)); Local1=Add(Local0,0xd); o(Local1,Local5); o(Local0,0x40)}; "
    "EWpci(LocalF,0x40,LocalD); EWpci(LocalF,4,LocalB); EWpci16(LocalF,0x20,LocalC)";

// Local4 counts the bytes left. A read is told which byte is its last: control 0x34 without the start bit.
constexpr char kIchCountBytes[] = "Local9=7; Local1=Add(Local0,5); Local4=i(Local1); ";
constexpr char kIchLastByte[] =
    "CMDS{BkIf1(Sub(Local4,1)); Local1=Add(Local0,4); Local1=i(Local1); BkIf0(And(Local1,1)); "
    "Local1=Add(Local0,2); o(Local1,0x34)}";
constexpr char kIchNextByte[] =
    "; o(Local0,0xff); Wait{0x80,0x8000,Local1=i(Local0); BkIf1(And(Local1,0x1c)); BkIf0(And(Local1,1)); "
    "And(Local1,0x80)}";

constexpr SMBusText kIch[] = {
    {&Cfg::EnableScript, {kIchSave, kIchAssignBase, kIchEnable}},
    {&Cfg::WaitIdleScript, {kIdle9f}},
    {&Cfg::RestoreScript, {kIchRestore}},
};
constexpr SMBusText kIchByteBlocks[] = {
    {&Cfg::BaseScript1, {kNoBase, kIchReadBase, kTakeBaseFfe0, kIchByteWindow}},
    {&Cfg::BlockWaitScript, {kByteWindowReady, kByteResult}},
    {&Cfg::BlockSetupScript, {kIchCountBytes, kIchLastByte}},
    {&Cfg::BlockNextScript, {"Local4=Sub(Local4,1); ", kIchLastByte, kIchNextByte, kByteResult}},
};
constexpr SMBusText kIchBufferBlocks[] = {
    {&Cfg::BaseScript1, {kNoBase, kIchReadBase, kTakeBaseFfe0, kIchBuffer}},
    {&Cfg::BlockSetupScript, {kBufferFromStart}},
};
constexpr auto kIchBytewise = Joined(kClassicRegisters, kStarts, kDoneWaits, kIch, kIchByteBlocks);
constexpr auto kIchBuffered = Joined(kClassicRegisters, kStarts, kDoneWaits, kIch, kIchBufferBlocks);
constexpr SMBusText kIchHidden[] = {
    {&Cfg::EnableScript, {kIchUnhide, kIchSave, kIchAssignBase, kIchEnable}},
    {&Cfg::RestoreScript, {kIchRestore, kIchHide}},
};

constexpr SMBusText kIch7[] = {
    {&Cfg::DetectScript,
     {kLpcAt1f0,
      "Local0=And(Local0,0xfff0ffff); BkIf0(Sub(Local0,0x27b08086)); BkIf0(Sub(Local0,0x28108086)); "
      "BkIf0(Sub(Local0,0x29108086)); Local1=Sub(Local0,0x3a108086); ",
      kZeroDetects}},
};
constexpr SMBusText kPch[] = {
    {&Cfg::DetectScript,
     {kLpcAt1f0,
      "Local0=And(Local0,0xff00ffff); BkIf0(Sub(Local0,0x3b008086)); BkIf0(Sub(Local0,0x1c008086)); "
      "BkIf0(Sub(Local0,0x1e008086)); BkIf0(Sub(Local0,0x8c008086)); BkIf0(Sub(Local0,0x1d008086)); "
      "BkIf0(Sub(Local0,0x8d008086)); BkIf0(Sub(Local0,0x9c008086)); Local1=Sub(Local0,0x23008086); ",
      kZeroDetects}},
};
constexpr SMBusText kAvoton[] = {
    {&Cfg::DetectScript, {kHostAt1f3, "Local1=Sub(Local0,0x1f3c8086); ", kZeroDetects}},
};
constexpr SMBusText kBraswellAlone[] = {
    {&Cfg::DetectScript, {kHostAt1f3, "Local1=Sub(Local0,0x22928086); ", kZeroDetects}},
};
constexpr SMBusText kBraswell[] = {
    {&Cfg::DetectScript, {kHostAt1f3, "BkIf0(Sub(Local0,0x22928086)); Local1=Sub(Local0,0x0f128086); ", kZeroDetects}},
};
constexpr SMBusText kSkylake[] = {
    {&Cfg::DetectScript, {kHostAt1f4, "BkIf0(Sub(Local0,0xa1238086)); Local1=Sub(Local0,0x9d238086); ", kZeroDetects}},
};
constexpr SMBusText kKabyLake[] = {
    {&Cfg::DetectScript, {kHostAt1f4, "Local1=Sub(Local0,0xa2a38086); ", kZeroDetects}},
};
// The first SMBus host by class: Intel's, at 0:1f, and none that another row drives. It gets no base of its own.
constexpr SMBusText kAutoPch[] = {
    {&Cfg::DetectScript,
     {"LocalF=Fpciclass(0x0C0500); Local0=ERpci32(LocalF,0); Local1=And(Local0,0xffff); "
      "Local1=Sub(Local1,0x8086); Local1=Cmz(Local1); BkIf1(Not(Local1,0)); ",
      "Local1=And(LocalF,0xfff8); Local1=Sub(Local1,0xf8); Local1=Cmz(Local1); BkIf1(Not(Local1,0)); "
      "Local1=Sub(LocalF,0xfb); BkIf1(Cmz(Local1)); ",
      "Local1=Sub(Local0,0xa1238086); BkIf1(Cmz(Local1)); Local1=Sub(Local0,0x9d238086); BkIf1(Cmz(Local1)); "
      "Local1=Sub(Local0,0xa2a38086); Cmz(Local1)"}},
    {&Cfg::EnableScript, {kIchSave, kIchEnable}},
};

// --- Intel SCH: registers at 0 control, 1 status, 2 clock, 4 address, 5 command, 6 and 7 data, 0x20 block ---

// Result 0: done without an error; 8: an error bit, or neither done nor failed in time.
constexpr char kSchDone[] =
    "Local2=Add(Local0,1); Wait{1,0x8000,Local1=i(Local2); BkIf1(And(Local1,6)); And(Local1,1)}; "
    "Local1=And(Local1,0x0f); Local1=Xor(Local1,1); Local1=Cmz(Local1); Local1=Not(Local1,0); And(Local1,8)";
constexpr SMBusText kSch[] = {
    {&Cfg::DetectScript,
     {"Local0=Rpci32(0,0x1f,0,0); BkIf0(Sub(Local0,0x81198086)); BkIf0(Sub(Local0,0x81868086)); "
      "Local1=Sub(Local0,0x0c608086); ",
      kZeroDetects}},
    {&Cfg::EnableScript,
     {"LocalA=Rpci32(0,0x1f,0,0x40); BkIf0(And(LocalA,0xffc0)); Local1=Or(LocalA,0x80000000); "
      "Wpci32(0,0x1f,0,0x40,Local1)"}},
    // Without a clock divider no transfer ends; 0x52 is 100 kHz.
    {&Cfg::BaseScript1,
     {kNoBase,
      "Local1=Rpci32(0,0x1f,0,0x40); BkIf0(And(Local1,0x80000000)); BkIf0(And(Local1,0xffc0)); "
      "Local0=And(Local1,0xffc0); Local1=Add(Local0,2); Local5=i16(Local1); BkIf1(Or(Local5,0)); "
      "o16(Local1,0x52)"}},
    {&Cfg::WaitIdleScript, {"Local2=Add(Local0,1); Wait{0,0x8000,o(Local2,0x0f); Local1=i(Local2); And(Local1,0x0f)}"}},
    {&Cfg::AddressPrefix, {"Local1=Add(Local0,4); o(Local1,"}},
    {&Cfg::CommandPrefix, {"Local1=Add(Local0,5); o(Local1,"}},
    {&Cfg::ByteWritePrefix, {"Local1=Add(Local0,6); o(Local1,"}},
    {&Cfg::DataWritePrefix, {"Local1=Add(Local0,6); o(Local1,"}},
    {&Cfg::DataReadPrefix, {"Local1=Add(Local0,6); i(Local1,"}},
    {&Cfg::ByteReadStartScript, {"o(Local0,0x12)"}},
    {&Cfg::ByteWriteStartScript, {"o(Local0,0x12)"}},
    {&Cfg::ByteWaitScript, {"Delay 10; ", kSchDone}},
    {&Cfg::ByteReadScript, {"Local1=Add(Local0,6); i(Local1)"}},
    {&Cfg::BlockReadStartScript, {"o(Local0,0x15)"}},
    {&Cfg::BlockWriteStartScript, {"o(Local0,0x15)"}},
    {&Cfg::BlockWaitScript, {"Delay 200; ", kSchDone}},
    {&Cfg::BlockSetupScript, {"Local9=0x20"}},
    {&Cfg::BlockWritePrefix, {"Local1=Add(Local0,Local9); o(Local1,"}},
    {&Cfg::BlockReadScript, {"Local1=Add(Local0,Local9); i(Local1)"}},
    {&Cfg::BlockStepScript, {"Local9=Add(Local9,1)"}},
    {&Cfg::RestoreScript,
     {"CMDS{BkIf1(And(Local0,0x10000)); Local1=Add(Local0,2); o16(Local1,Local5)}; "
      "Wpci32(0,0x1f,0,0x40,LocalA)"}},
    {&Cfg::WordReadStartScript, {"o(Local0,0x13)"}},
    {&Cfg::WordWriteStartScript, {"o(Local0,0x13)"}},
    {&Cfg::WordWaitScript, {"Delay 40; ", kSchDone}},
    {&Cfg::WordReadLowScript, {"Local1=Add(Local0,6); i(Local1)"}},
    {&Cfg::WordReadHighScript, {"Local1=Add(Local0,7); i(Local1)"}},
    {&Cfg::WordWriteLowPrefix, {"Local1=Add(Local0,6); o(Local1,"}},
    {&Cfg::WordWriteHighPrefix, {"Local1=Add(Local0,7); o(Local1,"}},
};

// --- the PIIX4 way: VIA, ServerWorks, ATI and AMD ---

constexpr SMBusText kBuffer[] = {
    {&Cfg::WaitIdleScript, {kIdle1f}},
    {&Cfg::BlockSetupScript, {kBufferFromStart}},
};
constexpr auto kPiix = Joined(kClassicRegisters, kStarts, kDoneWaits, kBuffer);

// Host enable: 0xd2 bit 0. Status bit 0x40 is the semaphore that reading the status took.
constexpr char kViaEnable[] =
    "LocalC=Rpci16(0,0x11,0,0xd0); LocalD=Rpci(0,0x11,0,0xd2); BkIf0(And(LocalC,0xfff0)); Local1=Or(LocalD,1); "
    "Wpci(0,0x11,0,0xd2,Local1)";
constexpr char kViaReadBase[] = "Local1=Rpci16(0,0x11,0,0xd0); ";
constexpr char kViaRestore[] = "CMDS{BkIf1(And(Local0,0x10000)); o(Local0,0x40)}; Wpci(0,0x11,0,0xd2,LocalD)";
constexpr SMBusText kVx900[] = {
    {&Cfg::DetectScript, {"Local0=Rpci32(0,0x11,0,0); Local1=Sub(Local0,0x84101106); ", kZeroDetects}},
    {&Cfg::EnableScript, {kViaEnable}},
    {&Cfg::BaseScript1, {kNoBase, kViaReadBase, kTakeBaseFff0}},
    {&Cfg::RestoreScript, {kViaRestore}},
};
constexpr SMBusText kVia8235[] = {
    {&Cfg::DetectScript,
     {"Local0=Rpci32(0,0x11,0,0); BkIf0(Sub(Local0,0x31771106)); BkIf0(Sub(Local0,0x32271106)); "
      "BkIf0(Sub(Local0,0x33371106)); BkIf0(Sub(Local0,0x33721106)); Local1=Sub(Local0,0x32871106); ",
      kZeroDetects}},
    {&Cfg::EnableScript, {"LocalB=Rpci(0,0x11,0,4); ", kViaEnable, "; Local1=Or(LocalB,1); Wpci(0,0x11,0,4,Local1)"}},
    {&Cfg::BaseScript1, {kNoBase, kViaReadBase, kTakeBaseFff0}},
    {&Cfg::RestoreScript, {kViaRestore, "; Wpci(0,0x11,0,4,LocalB)"}},
};

// Base in 0x90, host enable in 0xd2 bit 0, of the function that LocalF names.
constexpr char kEnableAtD2[] =
    "LocalC=ERpci16(LocalF,0x90); LocalD=ERpci(LocalF,0xd2); BkIf0(And(LocalC,0xfff0)); Local1=Or(LocalD,1); "
    "EWpci(LocalF,0xd2,Local1)";
constexpr char kReadBaseAt90[] = "Local1=ERpci16(LocalF,0x90); ";
constexpr char kRestoreAtD2[] = "EWpci(LocalF,0xd2,LocalD)";
constexpr SMBusText kServerWorks[] = {
    {&Cfg::DetectScript,
     {"LocalF=Fpci(0x02001166); Local0=Xor(LocalF,0xffff); BkIf0(Cmz(Local0)); LocalF=Fpci(0x02011166); ",
      kFoundDetects}},
    {&Cfg::EnableScript, {kEnableAtD2}},
    {&Cfg::BaseScript1, {kNoBase, kReadBaseAt90, kTakeBaseFff0}},
    {&Cfg::RestoreScript, {kRestoreAtD2}},
    // For 2 ms after a start the status says nothing.
    {&Cfg::ByteWaitScript, {"Delay 2000; ", kDone}},
    {&Cfg::WordWaitScript, {"Delay 2000; ", kDone}},
    {&Cfg::BlockWaitScript, {"Delay 2000; ", kDone}},
};

// LocalE, how the base is found: 0 in configuration space, 1 in power management register 0x2c, 2 in the decode enable
// register 0 of power management. 0xCD6 and 0xCD7 are the index and data port of these, 0xFED80300 is their memory.
constexpr char kFchGeneration[] =
    "Local1=Rpci(0,0x14,0,8); Local2=Rpci32(0,0x14,0,0); CMDS{LocalE=0; BkIf0(Sub(Local2,0x43721002)); "
    "Local3=Sub(Local2,0x43851002); Local3=Cmz(Local3); Local4=And(Local1,0xc0); Local4=Cmz(Local4); "
    "Local3=And(Local3,Local4); Local3=And(Local3,1); LocalE=Sub(1,Local3); Local3=Sub(Local2,0x780b1022); "
    "Local3=Cmz(Local3); Local4=Sub(Local1,0x41); Local4=And(Local4,0x80000000); Local4=Cmz(Local4); "
    "Local3=And(Local3,Local4); Local3=And(Local3,1); LocalE=Add(LocalE,Local3)}; ";
constexpr char kOnlyGeneration1[] = "Local0=0x10000; BkIf1(Sub(LocalE,1)); ";
constexpr char kOnlyGeneration2[] = "Local0=0x10000; BkIf1(Sub(LocalE,2)); ";
constexpr char kPmMemory2c[] = "Local1=R32(0xFED8032C); ";
constexpr char kPmPorts2c[] =
    "LocalA=i(0xCD6); Local1=iid(0xCD6,0xCD7,0x2c); Local2=iid(0xCD6,0xCD7,0x2d); o(0xCD6,LocalA); "
    "Local2=Shl(Local2,8); Local1=Or(Local1,Local2); ";
constexpr char kPmBase2c[] =
    "BkIf0(And(Local1,1)); Local1=And(Local1,0xffe0); BkIf0(Xor(Local1,0xffe0)); BkIf0(Or(Local1,0)); "
    "Local0=Local1";
constexpr char kPmMemoryDecode[] = "Local1=R16(0xFED80300); ";
// From revision 0x51 on the port pair may be off.
constexpr char kPmPortsDecode[] =
    "Local1=Rpci(0,0x14,0,8); Local1=Sub(Local1,0x51); BkIf0(And(Local1,0x80000000)); LocalA=i(0xCD6); "
    "Local1=iid(0xCD6,0xCD7,0); Local2=iid(0xCD6,0xCD7,1); o(0xCD6,LocalA); Local2=Shl(Local2,8); "
    "Local1=Or(Local1,Local2); ";
constexpr char kPmBaseDecode[] =
    "BkIf0(And(Local1,0x10)); Local1=And(Local1,0xff00); BkIf0(Xor(Local1,0xff00)); BkIf0(Or(Local1,0)); "
    "Local0=Local1";

constexpr SMBusText kAti[] = {
    {&Cfg::DetectScript,
     {"LocalF=0xa0; Local0=Rpci32(0,0x14,0,0); BkIf0(Sub(Local0,0x43721002)); BkIf0(Sub(Local0,0x43851002)); "
      "Local1=Sub(Local0,0x780b1022); ",
      kZeroDetects}},
    {&Cfg::EnableScript, {kFchGeneration, "CMDS{BkIf1(Or(LocalE,0)); ", kEnableAtD2, "}"}},
    {&Cfg::BaseScript1, {"Local0=0x10000; BkIf1(Or(LocalE,0)); ", kReadBaseAt90, kTakeBaseFff0}},
    {&Cfg::BaseScript2, {kOnlyGeneration1, kPmMemory2c, kPmBase2c}},
    {&Cfg::BaseScript3, {kOnlyGeneration1, kPmPorts2c, kPmBase2c}},
    {&Cfg::BaseScript4, {kOnlyGeneration2, kPmMemoryDecode, kPmBaseDecode}},
    {&Cfg::RestoreScript, {"BkIf1(Or(LocalE,0)); ", kRestoreAtD2}},
};
constexpr SMBusText kAmd[] = {
    {&Cfg::DetectScript,
     {"Local0=Rpci32(0,0x14,0,0); BkIf0(Sub(Local0,0x790b1022)); Local1=Sub(Local0,0x790b1d94); ", kZeroDetects}},
    {&Cfg::EnableScript,
     {"Local1=Rpci(0,0x14,0,8); Local2=Sub(Local1,0x49); Local2=And(Local2,0x80000000); Local2=Cmz(Local2); "
      "Local2=And(Local2,1); LocalE=Add(Local2,1)"}},
    {&Cfg::BaseScript1, {kOnlyGeneration2, kPmMemoryDecode, kPmBaseDecode}},
    {&Cfg::BaseScript2, {kOnlyGeneration2, kPmPortsDecode, kPmBaseDecode}},
    {&Cfg::BaseScript3, {kOnlyGeneration1, kPmMemory2c, kPmBase2c}},
    {&Cfg::BaseScript4, {kOnlyGeneration1, kPmPorts2c, kPmBase2c}},
};

// --- ULi: the classic registers, protocols in control bits 3 to 5, a start for every byte of a block ---

constexpr char kUliStart50[] = "Local1=Add(Local0,2); o(Local1,0x50)";
constexpr char kUliStart58[] = "Local1=Add(Local0,2); o(Local1,0x58)";
constexpr char kUliStart68[] = "Local1=Add(Local0,2); o(Local1,0x68)";
constexpr SMBusText kUliOwn[] = {
    {&Cfg::WaitIdleScript, {kIdle9f}},
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
     {"o(Local0,0x80); Local4=Sub(Local4,1); CMDS{BkIf0(Or(Local4,0)); Local1=Add(Local0,2); Local2=i(Local1); "
      "Local2=Or(Local2,0x40); o(Local1,Local2)}; ",
      "Wait{0x80,0x8000,Local1=i(Local0); BkIf1(And(Local1,0x1c)); BkIf0(Or(Local4,0)); And(Local1,0x80)}",
      kByteResult}},
};
constexpr auto kUli = Joined(kClassicRegisters, kDoneWaits, kUliOwn);
constexpr char kUliReadBase[] = "Local1=ERpci16(LocalF,0x80); ";
constexpr SMBusText kM1563[] = {
    {&Cfg::DetectScript, {"LocalF=Fpci(0x156310b9); ", kFoundDetects}},
    {&Cfg::EnableScript,
     {"LocalA=ERpci16(LocalF,0x80); BkIf0(And(LocalA,0xfff0)); Local1=Or(LocalA,3); EWpci16(LocalF,0x80,Local1)"}},
    {&Cfg::BaseScript1, {kNoBase, kUliReadBase, kTakeBaseFff0}},
    {&Cfg::RestoreScript, {"EWpci16(LocalF,0x80,LocalA)"}},
};
// Taken as firmware left it: a base, with host and I/O enable (bits 1 and 0) set, or nothing.
constexpr SMBusText kM157xBase = {
    &Cfg::BaseScript1, {kNoBase, kUliReadBase, "Local2=And(Local1,3); BkIf1(Xor(Local2,3)); ", kTakeBaseFff0}};
constexpr SMBusText kM1573[] = {
    {&Cfg::DetectScript, {"LocalF=Fpci(0x157310b9); ", kFoundDetects}},
    kM157xBase,
};
constexpr SMBusText kM1575[] = {
    {&Cfg::DetectScript, {"LocalF=Fpci(0x157510b9); ", kFoundDetects}},
    kM157xBase,
};

// --- SiS: registers at 0 status, 2 busy, 3 control, 4 address, 5 command, 7 block count, 8 and up data ---

// Result 0: done without an error; 2: an error bit, or neither done nor failed in time.
constexpr char kSisDone[] =
    "Wait{8,0x8000,Local1=i(Local0); BkIf1(And(Local1,6)); And(Local1,8)}; Local1=And(Local1,0x0e); "
    "Local1=Xor(Local1,8); Local1=Cmz(Local1); Local1=Not(Local1,0); And(Local1,2)";
// Result: 0x10 for a window of eight bytes, 8 at the end, 2 for any error bit, 0 when neither came.
constexpr char kSisWindow[] =
    "Wait{0x10,0x8000,Local1=i(Local0); BkIf1(And(Local1,0x0e)); And(Local1,0x10)}; Local2=And(Local1,6); "
    "Local2=Cmz(Local2); Local2=Not(Local2,0); Local2=And(Local2,2); Local1=And(Local1,0x18); Or(Local1,Local2)";
constexpr char kSisStart12[] = "Local1=Add(Local0,3); o(Local1,0x12)";
constexpr char kSisStart13[] = "Local1=Add(Local0,3); o(Local1,0x13)";
constexpr char kSisStart15[] = "Local1=Add(Local0,3); o(Local1,0x15)";
constexpr SMBusText kSis[] = {
    {&Cfg::WaitIdleScript,
     {"Wait{0,0x8000,o(Local0,0xff); Local1=i(Local0); Local1=And(Local1,0x1e); Local2=Add(Local0,2); "
      "Local2=i(Local2); Local2=And(Local2,3); Or(Local1,Local2)}"}},
    {&Cfg::AddressPrefix, {"Local1=Add(Local0,4); o(Local1,"}},
    {&Cfg::CommandPrefix, {"Local1=Add(Local0,5); o(Local1,"}},
    {&Cfg::ByteWritePrefix, {"Local1=Add(Local0,7); o(Local1,"}},
    {&Cfg::DataWritePrefix, {"Local1=Add(Local0,8); o(Local1,"}},
    {&Cfg::DataReadPrefix, {"Local1=Add(Local0,7); i(Local1,"}},
    {&Cfg::ByteReadStartScript, {kSisStart12}},
    {&Cfg::ByteWriteStartScript, {kSisStart12}},
    {&Cfg::ByteWaitScript, {"Delay 10; ", kSisDone}},
    {&Cfg::ByteReadScript, {"Local1=Add(Local0,8); i(Local1)"}},
    {&Cfg::BlockReadStartScript, {kSisStart15}},
    {&Cfg::BlockWriteStartScript, {kSisStart15}},
    {&Cfg::BlockWaitScript, {"Delay 200; ", kSisDone}},
    {&Cfg::BlockSetupScript, {"Local9=8"}},
    {&Cfg::BlockWritePrefix, {"Local1=Add(Local0,Local9); o(Local1,"}},
    {&Cfg::BlockReadScript, {"Local1=Add(Local0,Local9); i(Local1)"}},
    {&Cfg::BlockStepScript, {"Local9=Add(Local9,1)"}},
    {&Cfg::WordReadStartScript, {kSisStart13}},
    {&Cfg::WordWriteStartScript, {kSisStart13}},
    {&Cfg::WordWaitScript, {"Delay 40; ", kSisDone}},
    {&Cfg::WordReadLowScript, {"Local1=Add(Local0,8); i(Local1)"}},
    {&Cfg::WordReadHighScript, {"Local1=Add(Local0,9); i(Local1)"}},
    {&Cfg::WordWriteLowPrefix, {"Local1=Add(Local0,8); o(Local1,"}},
    {&Cfg::WordWriteHighPrefix, {"Local1=Add(Local0,9); o(Local1,"}},
};
// Windows of eight bytes at 8 to 0xf, over and over.
constexpr SMBusText kSisWindows[] = {
    {&Cfg::BlockWaitScript, {"Delay 200; ", kSisWindow}},
    {&Cfg::BlockNextScript, {"o(Local0,0x10); ", kSisWindow}},
    {&Cfg::BlockStepScript, {"Local9=Add(Local9,1); Local9=And(Local9,0xf); Local9=Or(Local9,8)"}},
};
// The host is its own function 0:2.1, hidden by bit 4 of register 0x77 of the bridge 0:2.0.
constexpr SMBusText kSis962[] = {
    {&Cfg::DetectScript,
     {"Local0=Rpci32(0,2,0,0); BkIf0(Sub(Local0,0x09621039)); Local1=Sub(Local0,0x09631039); ", kZeroDetects}},
    {&Cfg::EnableScript,
     {"LocalA=Rpci(0,2,0,0x77); Local1=And(LocalA,0xef); Wpci(0,2,0,0x77,Local1); LocalB=Rpci(0,2,1,4); "
      "LocalC=Rpci16(0,2,1,0x20); LocalD=Rpci(0,2,1,0x40); BkIf0(And(LocalC,0xffe0)); ",
      "Local1=Or(LocalB,1); Wpci(0,2,1,4,Local1); Local1=Or(LocalD,1); Wpci(0,2,1,0x40,Local1)"}},
    {&Cfg::BaseScript1, {kNoBase, "Local1=Rpci16(0,2,1,0x20); ", kTakeBaseFfe0}},
    {&Cfg::RestoreScript, {"Wpci(0,2,1,0x40,LocalD); Wpci(0,2,1,4,LocalB); Wpci(0,2,0,0x77,LocalA)"}},
};
// From the 964 on the host lies in the ACPI block, whose base is in 0x74.
constexpr char kSisAcpiBase[] = "Local1=Rpci16(0,2,0,0x74); BkIf0(And(Local1,0xff00)); Local1=And(Local1,0xff00); ";
constexpr char kSisSaveAcpi[] = "LocalA=Rpci(0,2,0,0x40); ";
constexpr char kSisEnableAcpi[] =
    "LocalC=Rpci16(0,2,0,0x74); BkIf0(And(LocalC,0xff00)); Local1=Or(LocalA,0x80); Wpci(0,2,0,0x40,Local1)";
constexpr char kSisRestoreAcpi[] = "Wpci(0,2,0,0x40,LocalA)";
constexpr SMBusText kSis964[] = {
    {&Cfg::DetectScript, {"Local0=Rpci32(0,2,0,0); Local1=Sub(Local0,0x09641039); ", kZeroDetects}},
    {&Cfg::EnableScript, {kSisSaveAcpi, kSisEnableAcpi}},
    {&Cfg::BaseScript1, {kNoBase, kSisAcpiBase, "Local0=Add(Local1,0xe0)"}},
    {&Cfg::RestoreScript, {kSisRestoreAcpi}},
};
constexpr SMBusText kSis965[] = {
    {&Cfg::DetectScript,
     {"Local0=Rpci32(0,2,0,0); BkIf0(Sub(Local0,0x09651039)); Local1=Sub(Local0,0x09661039); ", kZeroDetects}},
    {&Cfg::EnableScript,
     {kSisSaveAcpi, "LocalB=Rpci(0,2,0,0x76); ", kSisEnableAcpi, "; Local1=Or(LocalB,3); Wpci(0,2,0,0x76,Local1)"}},
    {&Cfg::BaseScript1, {kNoBase, kSisAcpiBase, "Local0=Add(Local1,0xd0)"}},
    {&Cfg::RestoreScript, {"Wpci(0,2,0,0x76,LocalB); ", kSisRestoreAcpi}},
};
// Taken as firmware left it: ACPI decode and SMBus on, and something that answers at the base.
constexpr SMBusText kSis968[] = {
    {&Cfg::DetectScript, {"Local0=Rpci32(0,2,0,0); Local1=Sub(Local0,0x09681039); ", kZeroDetects}},
    {&Cfg::BaseScript1,
     {kNoBase,
      "Local1=Rpci(0,2,0,0x40); BkIf0(And(Local1,0x80)); Local1=Rpci(0,2,0,0x76); Local1=And(Local1,3); "
      "BkIf1(Xor(Local1,3)); ",
      kSisAcpiBase,
      "Local1=Add(Local1,0xd0); Local2=Add(Local1,2); Local2=i(Local2); BkIf0(Xor(Local2,0xff)); Local0=Local1"}},
};

// --- nVidia: registers at 0 protocol, 1 status, 2 address, 3 command, 4 and up data, 0x24 block count ---

// Result 0: done without an error; 4: an error code, or neither done nor failed in time.
constexpr char kNvidiaDone[] =
    "Local2=Add(Local0,1); Wait{0x80,0x8000,Local1=i(Local2); BkIf1(And(Local1,0x1f)); And(Local1,0x80)}; "
    "Local1=And(Local1,0x9f); Local1=Xor(Local1,0x80); Local1=Cmz(Local1); Local1=Not(Local1,0); And(Local1,4)";
constexpr SMBusText kNvidia[] = {
    // With no base in any of its four registers the function is left as it is.
    {&Cfg::EnableScript,
     {"LocalB=ERpci(LocalF,4); Local1=ERpci16(LocalF,0x20); Local2=ERpci16(LocalF,0x24); Local1=Or(Local1,Local2); "
      "Local2=ERpci16(LocalF,0x50); Local1=Or(Local1,Local2); Local2=ERpci16(LocalF,0x54); "
      "Local1=Or(Local1,Local2); ",
      "BkIf0(And(Local1,0xfffc)); Local1=Or(LocalB,1); EWpci(LocalF,4,Local1)"}},
    {&Cfg::WaitIdleScript,
     {"Local1=Add(Local0,1); Local2=i(Local1); o(Local1,Local2); Wait{0,0x8000,Local1=i(Local0); "
      "And(Local1,0xff)}"}},
    {&Cfg::AddressPrefix, {"Local1=Add(Local0,2); o(Local1,"}},
    {&Cfg::CommandPrefix, {"Local1=Add(Local0,3); o(Local1,"}},
    {&Cfg::ByteWritePrefix, {"Local1=Add(Local0,0x24); o(Local1,"}},
    {&Cfg::DataWritePrefix, {"Local1=Add(Local0,4); o(Local1,"}},
    {&Cfg::DataReadPrefix, {"Local1=Add(Local0,0x24); i(Local1,"}},
    {&Cfg::ByteReadStartScript, {"o(Local0,0x07)"}},
    {&Cfg::ByteWriteStartScript, {"o(Local0,0x06)"}},
    {&Cfg::ByteWaitScript, {"Delay 10; ", kNvidiaDone}},
    {&Cfg::ByteReadScript, {"Local1=Add(Local0,4); i(Local1)"}},
    {&Cfg::BlockReadStartScript, {"o(Local0,0x0B)"}},
    {&Cfg::BlockWriteStartScript, {"o(Local0,0x0A)"}},
    {&Cfg::BlockWaitScript, {"Delay 200; ", kNvidiaDone}},
    {&Cfg::BlockSetupScript, {"Local9=4"}},
    {&Cfg::BlockWritePrefix, {"Local1=Add(Local0,Local9); o(Local1,"}},
    {&Cfg::BlockReadScript, {"Local1=Add(Local0,Local9); i(Local1)"}},
    {&Cfg::BlockStepScript, {"Local9=Add(Local9,1)"}},
    {&Cfg::RestoreScript, {"EWpci(LocalF,4,LocalB)"}},
    {&Cfg::WordReadStartScript, {"o(Local0,0x09)"}},
    {&Cfg::WordWriteStartScript, {"o(Local0,0x08)"}},
    {&Cfg::WordWaitScript, {"Delay 40; ", kNvidiaDone}},
    {&Cfg::WordReadLowScript, {"Local1=Add(Local0,4); i(Local1)"}},
    {&Cfg::WordReadHighScript, {"Local1=Add(Local0,5); i(Local1)"}},
    {&Cfg::WordWriteLowPrefix, {"Local1=Add(Local0,4); o(Local1,"}},
    {&Cfg::WordWriteHighPrefix, {"Local1=Add(Local0,5); o(Local1,"}},
};
constexpr char kFirstHostByClass[] = "LocalF=Fpciclass(0x0C0500); Local0=ERpci32(LocalF,0); ";
constexpr char kNvidiaAt20[] = "Local1=ERpci16(LocalF,0x20); ";
constexpr char kNvidiaAt24[] = "Local1=ERpci16(LocalF,0x24); ";
constexpr char kNvidiaAt50[] = "Local1=ERpci16(LocalF,0x50); ";
constexpr char kNvidiaAt54[] = "Local1=ERpci16(LocalF,0x54); ";
constexpr SMBusText kMcp2[] = {
    {&Cfg::DetectScript,
     {kFirstHostByClass, "BkIf0(Sub(Local0,0x006410de)); Local1=Sub(Local0,0x008410de); ", kZeroDetects}},
    {&Cfg::BaseScript1, {kNoBase, kNvidiaAt50, kTakeBaseFffc}},
    {&Cfg::BaseScript2, {kNoBase, kNvidiaAt54, kTakeBaseFffc}},
};
constexpr SMBusText kNforce3[] = {
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

// clang-format off
constexpr SMBusRow kRows[] = {
    // name                              texts                        block idle error clock generator
    {"Intel ICHx",                         {kIchxWhole},                             1, 0, 4, 0xD2},
    {"SiS 962/963",                        {kSis, kSisWindows, kSis962},         8, 0, 2, 0xD2},
    {"ULI M1563",                          {kUli, kM1563},                       1, 0, 4, 0xD2},
    {"VIA 8235/8237/8237A/8251",           {kPiix, kVia8235},                    0, 0, 4, 0xD2},
    {"SiS 964",                            {kSis, kSisWindows, kSis964},         8, 0, 2, 0xD2},
    {"SiS 965/966",                        {kSis, kSis965},                      0, 0, 2, 0xD2},
    {"ATI SB400/SB600/SB700/SB800/Hudson", {kPiix, kAti},                        0, 0, 4, 0xD2},
    {"nVidia MCP2",                        {kNvidia, kMcp2},                     0, 0, 4, 0xD2},
    {"Intel ICH7/ICH8/ICH9/ICH10",         {kIchBytewise, kIchHidden, kIch7},    1, 0, 4, 0xD2},
    {"nVidia nForce3/CK804",               {kNvidia, kNforce3},                  0, 0, 4, 0xD2},
    {"ULI M1573",                          {kUli, kM1573},                       1, 0, 4, 0xD2},
    {"ULI M1575",                          {kUli, kM1575},                       1, 0, 4, 0xD2},
    {"ServerWorks OSB4/CSB5",              {kPiix, kServerWorks},                0, 0, 4, 0xD2},
    {"SiS 968",                            {kSis, kSis968},                      0, 0, 2, 0xD2},
    {"Intel SCH",                          {kSch},                               0, 0, 8, 0xD2},
    {"Intel PCH/P67/Z77/Z87",              {kIchBuffered, kIchHidden, kPch},     0, 0, 4, 0xD2},
    {"VIA VX900",                          {kPiix, kVx900},                      0, 0, 4, 0xD2},
    {"Intel Avoton PCH",                   {kIchBytewise, kAvoton},              1, 0, 4, 0xD2},
    {"Intel Skylake PCH",                  {kIchBuffered, kSkylake},             0, 0, 4, 0xD2},
    {"Intel Braswell PCH",                 {kIchBuffered, kBraswellAlone},       0, 0, 4, 0xD2},
    {"Intel Kaby lake",                    {kIchBuffered, kKabyLake},            0, 0, 4, 0xD2},
    {"AMD Promontory",                     {kPiix, kAmd},                        0, 0, 4, 0xD2},
    // Goes over the row of the same name above.
    {"Intel Braswell PCH",                 {kIchBuffered, kBraswell},            0, 0, 4, 0xD2},
    {"Intel Auto PCH",                     {kIchBuffered, kAutoPch},             0, 0, 4, 0xD2},
};
// clang-format on

}  // namespace

std::span<const SMBusRow> SMBusRows() { return kRows; }
