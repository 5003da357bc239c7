// SPDX-License-Identifier: MIT
/// One controller record: its scripts, masks and values.
#pragma once

#include "text/VynString.h"

/// How to drive one SMBus host controller: a script for each step of a transaction, and the numbers to compare results
/// with. A prefix ends in an open argument list; a value is appended to it before it runs.
///
/// Scripts of one transaction share variables. Local0 holds the I/O base once a base script has run, 0x10000 (no port)
/// when there is none; Local1 and Local2 are free in every step; Local4 and Local9 belong to the block scripts; the
/// others carry what the enable and base scripts saved to the restore script, LocalF the PCI function that detection
/// found.
class TSMBusCfg {
 public:
  VynString Name;          ///< key in the registry
  VynString DetectScript;  ///< result 0: this controller is present; also begins every transaction
  VynString EnableScript;  ///< saves what it changes
  VynString BaseScript1;   ///< leaves the I/O base in Local0; 1 to 4 are alternatives
  VynString BaseScript2;
  VynString BaseScript3;
  VynString BaseScript4;
  VynString WaitIdleScript;   ///< takes the host, clears its status; result IdleValue: it is ours and idle
  VynString AddressPrefix;    ///< slave address byte, bit 0 set to read
  VynString CommandPrefix;    ///< command (register) number
  VynString ByteWritePrefix;  ///< byte count of a block
  VynString DataWritePrefix;  ///< data byte of a byte write
  VynString DataReadPrefix;   ///< run as it stands: byte count of a received block
  VynString ByteReadStartScript;
  VynString ByteWriteStartScript;
  VynString ByteWaitScript;  ///< result AND ErrorMask nonzero: failed
  VynString ByteReadScript;  ///< result: the byte read
  VynString BlockReadStartScript;
  VynString BlockWriteStartScript;
  VynString BlockWaitScript;
  VynString BlockSetupScript;  ///< before the first data byte
  VynString BlockWritePrefix;  ///< one data byte
  VynString BlockReadScript;   ///< result: one data byte
  unsigned char BlockMode;     ///< data bytes per handshake; 0: the whole block, without one
  VynString BlockNextScript;   ///< handshake after each BlockMode bytes
  VynString BlockStepScript;   ///< after each data byte
  VynString RestoreScript;     ///< puts back what the enable and base scripts changed
  unsigned char IdleValue;
  unsigned char ErrorMask;
  unsigned char ClockGenAddress;  ///< slave address byte of the clock generator
  VynString RetryScript;          ///< run when the byte or word wait gave RetryValue
  unsigned char RetryValue;       ///< 0: never
  VynString WordReadStartScript;
  VynString WordWriteStartScript;
  VynString WordWaitScript;
  VynString WordReadLowScript;  ///< result: the low byte of the word read
  VynString WordReadHighScript;
  VynString WordWriteLowPrefix;  ///< low byte of the word to write
  VynString WordWriteHighPrefix;

  /// Every script empty, every number 0.
  TSMBusCfg();
};
