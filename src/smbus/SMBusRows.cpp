// SPDX-License-Identifier: MIT
// The controller records: scripts and numbers of each chipset.
#include "smbus/SMBusRows.h"

#include "smbus/rows/FchTexts.h"
#include "smbus/rows/IntelTexts.h"
#include "smbus/rows/NvidiaTexts.h"
#include "smbus/rows/PiixTexts.h"
#include "smbus/rows/SchTexts.h"
#include "smbus/rows/SisTexts.h"
#include "smbus/rows/UliTexts.h"

namespace {

using namespace smbus_rows;

// clang-format off
constexpr SMBusRow kRows[] = {
    // name                              texts                        block idle error clock generator
    {"Intel ICHx",                         {kIchxWhole},                             1, 0, 4, 0xD2},
    {"SiS 962/963",                        {kSis, kSisWindows, kSis962},         8, 0, 2, 0xD2},
    {"ULI M1563",                          {kUli, kM1563},                       1, 0, 4, 0xD2},
    {"VIA 8235/8237/8237A/8251",           {kVia, kVia8235},                     0, 0, 4, 0xD2},
    {"SiS 964",                            {kSis, kSisWindows, kSis964},         8, 0, 2, 0xD2},
    {"SiS 965/966",                        {kSis, kSis965},                      0, 0, 2, 0xD2},
    {"ATI SB400/SB600/SB700/SB800/Hudson", {kFch, kAti},                         0, 0, 4, 0xD2},
    {"nVidia MCP2",                        {kNvidia, kMcp2},                     0, 0, 4, 0xD2},
    {"Intel ICH7/ICH8/ICH9/ICH10",         {kIchBytewise, kIchHidden, kIch7},    1, 0, 4, 0xD2},
    {"nVidia nForce3/CK804",               {kNvidia, kNforce3},                  0, 0, 4, 0xD2},
    {"ULI M1573",                          {kUli, kM1573},                       1, 0, 4, 0xD2},
    {"ULI M1575",                          {kUli, kM1575},                       1, 0, 4, 0xD2},
    {"ServerWorks OSB4/CSB5",              {kPiix, kServerWorks},                0, 0, 4, 0xD2},
    {"SiS 968",                            {kSis, kSis968},                      0, 0, 2, 0xD2},
    {"Intel SCH",                          {kSch},                               0, 0, 8, 0xD2},
    {"Intel PCH/P67/Z77/Z87",              {kIchBuffered, kIchHidden, kPch},     0, 0, 4, 0xD2},
    {"VIA VX900",                          {kVia, kVx900},                       0, 0, 4, 0xD2},
    {"Intel Avoton PCH",                   {kIchBytewise, kAvoton},              1, 0, 4, 0xD2},
    {"Intel Skylake PCH",                  {kIchBuffered, kSkylake},             0, 0, 4, 0xD2},
    {"Intel Braswell PCH",                 {kIchBuffered, kBraswellAlone},       0, 0, 4, 0xD2},
    {"Intel Kaby lake",                    {kIchBuffered, kKabyLake},            0, 0, 4, 0xD2},
    {"AMD Promontory",                     {kFch, kAmd},                         0, 0, 4, 0xD2},
    // Goes over the row of the same name above.
    {"Intel Braswell PCH",                 {kIchBuffered, kBraswell},            0, 0, 4, 0xD2},
    {"Intel Auto PCH",                     {kIchBuffered, kAutoPch},             0, 0, 4, 0xD2},
};
// clang-format on

}  // namespace

std::span<const SMBusRow> SMBusRows() { return kRows; }
