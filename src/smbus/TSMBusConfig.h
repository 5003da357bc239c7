// SPDX-License-Identifier: MIT
/// The list of controller records that detection tries.
#pragma once

#include <map>

#include "smbus/TSMBusCfg.h"

/// The registry of controller records, ordered by name: shorter names first, then by bytes. That is also the order in
/// which detection tries them.
class TSMBusConfig {
 public:
  static TSMBusConfig* g_Instance;

  /// The instance, created and filled on first use.
  static TSMBusConfig* GetInstance();
  /// Destroys the instance, if there is one. Pointers to its records end with it.
  static void FreeInstance();

  TSMBusConfig();
  virtual ~TSMBusConfig() = default;

  /// Adds the rows of SMBusRows.h, in their order.
  void InitCfgs();
  /// Stores a copy under its name, over a record that has this name already.
  void AddConfig(TSMBusCfg* config);
  std::map<VynString, TSMBusCfg>& GetConfigs() { return Configs; }
  /// Every script empty, every number 0.
  void ClearCfgStruct(TSMBusCfg* config);

  std::map<VynString, TSMBusCfg> Configs;
};
