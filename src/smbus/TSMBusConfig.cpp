// SPDX-License-Identifier: MIT
// Makes controller records of the rows.
#include "smbus/TSMBusConfig.h"

#include <string>

#include "smbus/SMBusRows.h"

TSMBusConfig* TSMBusConfig::g_Instance = nullptr;

TSMBusCfg::TSMBusCfg() : BlockMode(0), IdleValue(0), ErrorMask(0), ClockGenAddress(0), RetryValue(0) {}

namespace {

std::string Joined(const SMBusText& text) {
  std::string joined;
  for (const char* piece : text.pieces)
    if (piece) joined += piece;
  return joined;
}

void Fill(TSMBusCfg& config, const SMBusRow& row) {
  config.Name = row.name;
  for (const auto& texts : row.texts)
    for (const SMBusText& text : texts) config.*text.field = Joined(text);
  config.BlockMode = row.blockMode;
  config.IdleValue = row.idleValue;
  config.ErrorMask = row.errorMask;
  config.ClockGenAddress = row.clockGenAddress;
}

}  // namespace

TSMBusConfig* TSMBusConfig::GetInstance() {
  if (!g_Instance) g_Instance = new TSMBusConfig;
  return g_Instance;
}

void TSMBusConfig::FreeInstance() {
  delete g_Instance;
  g_Instance = nullptr;
}

TSMBusConfig::TSMBusConfig() { InitCfgs(); }

void TSMBusConfig::InitCfgs() {
  TSMBusCfg scratch;
  for (const SMBusRow& row : SMBusRows()) {
    ClearCfgStruct(&scratch);
    Fill(scratch, row);
    AddConfig(&scratch);
  }
}

void TSMBusConfig::AddConfig(TSMBusCfg* config) { Configs.insert_or_assign(config->Name, *config); }

void TSMBusConfig::ClearCfgStruct(TSMBusCfg* config) { *config = TSMBusCfg(); }
