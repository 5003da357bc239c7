// SPDX-License-Identifier: MIT
// Cutting an arbitrary function description table into lists, and walking them.
#include "fuzz/FuzzMachine.h"
#include "fuzz/TableFuzz.h"
#include "tables/TAcpiBase.h"
#include "tables/TIADTable.h"

namespace {
volatile unsigned sink;

void Touch(const unsigned char* bytes, size_t count) {
  for (size_t i = 0; i < count; ++i) sink = sink + bytes[i];
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Start({});
  const auto table = fuzz::Table("IADT", {data, size});
  TAcpiBase* acpi = TAcpiBase::GetInstance();
  acpi->BuildIADT(table.get());
  acpi->BuildIADT(table.get());
  for (unsigned list = 1; list < TIADTable::kSlots; ++list) {
    for (const IadtEntry entry : acpi->IadTable->List(list)) {
      Touch(entry.Record(), IadtEntry::kKeptBytes[list] != 0 ? entry.KeptBytes() : layout::iadt::kBody);
      if (IadtEntry::kKeptBytes[list] == 0) Touch(entry.Body(), entry.Length());
    }
  }
  fuzz::Finish();
  return 0;
}
