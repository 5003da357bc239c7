// SPDX-License-Identifier: MIT
/// The machine part of a board file: memory, ports, register files, PCI functions, MSRs, SMBus controllers, chips.
#pragma once

#include "boardfile/TomlSection.h"
#include "sim/Board.h"

namespace boardfile {

/// The sections that describe the machine.
inline constexpr const char* kMachineSections[] = {"board", "memory", "ports", "index_data", "super_io",
                                                   "pci",   "msr",    "smbus", "chip"};

/// Reads [board], [[memory]], [[ports]], [[index_data]], [[super_io]], [[pci]], [[msr]], [[smbus]] and [[chip]] of the
/// file's root into the board; throws BoardFileError.
void ReadMachine(TomlSection* root, sim::Board* board);

}  // namespace boardfile
