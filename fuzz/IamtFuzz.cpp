// SPDX-License-Identifier: MIT
// Keeping the board record of an arbitrary board information table.
#include "fuzz/FuzzMachine.h"
#include "fuzz/TableFuzz.h"
#include "tables/TAcpiBase.h"
#include "tables/TIAMTable.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Start({});
  const auto table = fuzz::Table("IAMT", {data, size});
  TAcpiBase::GetInstance()->BuildIAMT(table.get());
  TIAMTable* iamTable = TIAMTable::GetInstance();
  delete[] iamTable->BoardInfo;
  iamTable->BoardInfo = nullptr;
  TAcpiBase::GetInstance()->BuildIAMT(table.get());
  fuzz::Finish();
  return 0;
}
