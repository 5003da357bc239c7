/// The machine part of a board file: memory, ports, register files, PCI functions, MSRs, SMBus controllers, chips.
#pragma once

#include "sim/SimBoard.h"
#include "sim/TomlSection.h"

namespace sim {

/// Reads [board], [[memory]], [[ports]], [[index_data]], [[super_io]], [[pci]], [[msr]], [[smbus]] and [[chip]] of the
/// file's root into the board; throws BoardFileError.
void ReadMachine(TomlSection* root, Board* board);

}  // namespace sim
