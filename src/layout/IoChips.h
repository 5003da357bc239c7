// SPDX-License-Identifier: MIT
/// The I/O chips that the library knows by the identifier that the board information record and identifier entries
/// give.
#pragma once

#include <cstdint>

namespace layout {

struct IoChip {
  uint16_t identifier;
  uint8_t number;
  const char* name;
};

// Contract: number and name disagree in some rows.
inline constexpr IoChip kIoChips[] = {
    {0x00D8, 6, "Nuvoton 6796D-S"}, {0x0215, 1, "Fintek 81966"},  {0x80D2, 2, "None"},
    {0x83D2, 2, "Nuvoton 6126D"},   {0x84D2, 0, "Nuvoton 6126D"}, {0x94D2, 5, "Nuvoton 5525D-S"},
    {0xAEC2, 4, "MCU 121"},         {0xB0D2, 3, "None"},          {0xB3D2, 3, "Nuvoton 5525D"},
    {0xB4D2, 0, "Nuvoton 5525D"},   {0xE4D2, 7, "None"},
};
/// What every other identifier stands for.
inline constexpr IoChip kOtherChip = {0, 0, "None"};

/// The row of an identifier; null when it is not known.
constexpr const IoChip* FindIoChip(uint16_t identifier) {
  for (const IoChip& chip : kIoChips)
    if (chip.identifier == identifier) return &chip;
  return nullptr;
}

}  // namespace layout
