// SPDX-License-Identifier: MIT
/// The controller records as data. docs/smbus-controllers.md lists the chips behind each row; docs/add-a-chipset.md
/// tells how to write one.
#pragma once

#include <array>
#include <span>

#include "smbus/TSMBusCfg.h"

/// One script field and its text, in up to eight pieces that follow each other without a gap.
struct SMBusText {
  VynString TSMBusCfg::*field;
  std::array<const char*, 8> pieces;
};

/// One record: the fields it sets, in up to three lists of which a later one goes over an earlier one.
struct SMBusRow {
  const char* name;
  std::array<std::span<const SMBusText>, 3> texts;
  unsigned char blockMode, idleValue, errorMask, clockGenAddress;
};

/// The rows in the order in which the registry takes them up. One name stands twice; its second row is the one that
/// counts.
std::span<const SMBusRow> SMBusRows();
