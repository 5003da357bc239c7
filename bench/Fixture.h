// SPDX-License-Identifier: MIT
/// A library over tables that the case brings.
#pragma once

#include <vector>

#include "bench/NullMachine.h"
#include "firmware/IadtBuilder.h"
#include "tables/TAcpiBase.h"
#include "tables/TIADTable.h"
#include "tables/TIAxTCommon.h"
#include "vynlib/vynlib.h"

namespace bench {

/// An empty machine, and the library started on it without tables.
inline void StartLibrary() {
  VynLibDllUnInit();
  NullMachine::Get().Reset();
  VynLibDllInit();
}

/// The same with these function description records.
inline void StartLibrary(const firmware::IadtBuilder& builder) {
  StartLibrary();
  firmware::Bytes table = builder.Build();
  TAcpiBase::GetInstance()->BuildIADT(table.data());
}

constexpr uint16_t kIndexPort = 0x2E;
constexpr uint16_t kDataPort = 0x2F;

}  // namespace bench
