// SPDX-License-Identifier: MIT
/// The simulated machine of a test: its board is current, and no object of the library is older or outlives it.
#pragma once

#include "hw/TReadWrite.h"
#include "smbus/TSMBus.h"
#include "smbus/TSMBusConfig.h"
#include "tables/TAcpiBase.h"
#include "tables/TIADTable.h"
#include "tables/TIAMTable.h"
#include "tables/TIAxTCommon.h"
#include "tests/support/CurrentBoard.h"

namespace support {

struct ForgottenLibrary {
  ForgottenLibrary() { Forget(); }

  static void Forget() {
    TIAxTCommon::FreeInstance();
    TIADTable::FreeInstance();
    TIAMTable::FreeInstance();
    TSMBus::FreeInstance();
    TSMBusConfig::FreeInstance();
    TReadWrite::FreeInstance();
    TAcpiBase::FreeInstance();
  }
};

/// Base of a fixture, or an object in a test.
struct Machine : ForgottenLibrary, CurrentBoard {
  ~Machine() { Forget(); }
};

}  // namespace support
