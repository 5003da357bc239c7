// SPDX-License-Identifier: MIT
/// What byte and word transfers differ in.
#pragma once

#include "smbus/TSMBusCfg.h"

/// The record fields that one kind of transfer uses.
struct SMBusProtocol {
  bool read;
  int width;                      ///< data bytes of one element, the low byte first
  VynString TSMBusCfg::*data[2];  ///< for each of them: the prefix that loads it, or the script that yields it
  VynString TSMBusCfg::*startScript;
  VynString TSMBusCfg::*waitScript;
};

inline constexpr SMBusProtocol kSMBusByteRead = {
    true, 1, {&TSMBusCfg::ByteReadScript}, &TSMBusCfg::ByteReadStartScript, &TSMBusCfg::ByteWaitScript};
inline constexpr SMBusProtocol kSMBusByteWrite = {
    false, 1, {&TSMBusCfg::DataWritePrefix}, &TSMBusCfg::ByteWriteStartScript, &TSMBusCfg::ByteWaitScript};
inline constexpr SMBusProtocol kSMBusWordRead = {true,
                                                 2,
                                                 {&TSMBusCfg::WordReadLowScript, &TSMBusCfg::WordReadHighScript},
                                                 &TSMBusCfg::WordReadStartScript,
                                                 &TSMBusCfg::WordWaitScript};
inline constexpr SMBusProtocol kSMBusWordWrite = {false,
                                                  2,
                                                  {&TSMBusCfg::WordWriteLowPrefix, &TSMBusCfg::WordWriteHighPrefix},
                                                  &TSMBusCfg::WordWriteStartScript,
                                                  &TSMBusCfg::WordWaitScript};
