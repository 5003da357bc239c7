// SPDX-License-Identifier: MIT
// The library's life: start, tear-down, the last error.
#include "api/Library.h"

#include <cstdio>

#include "api/Guard.h"
#include "api/TVyn.h"
#include "hw/TReadWrite.h"
#include "tables/TAcpiBase.h"
#include "tables/TIAMTable.h"
#include "tables/TIAxTCommon.h"
#include "vynlib/vynlib.h"

namespace api {

uint8_t InitOk = 0;
uint64_t LastErrorCode = 0;
TReadWrite* rw = nullptr;
TVyn* vyn = nullptr;
TAcpiBase* Acpi = nullptr;
TIAMTable* IAMTable = nullptr;
TIADTable* IADTable = nullptr;
TIAxTCommon* IAxTCommon = nullptr;

}  // namespace api

using namespace api;

namespace {

void Start() {
  vyn = new TVyn;  // Contract: one left by an earlier start without a tear-down is dropped
  Acpi = TAcpiBase::GetInstance();
  IAMTable = TIAMTable::GetInstance();
  IADTable = TIADTable::GetInstance();
  IAxTCommon = TIAxTCommon::GetInstance();
  InitOk = 1;
  std::printf("ModelName::%s\n", vyn->ModelName().c_str());
}

void TakeDown() {
  delete vyn;
  TIAxTCommon::FreeInstance();
  TIADTable::FreeInstance();
  TIAMTable::FreeInstance();
  TReadWrite::FreeInstance();
  TAcpiBase::FreeInstance();
  vyn = nullptr;
  IAxTCommon = nullptr;
  IADTable = nullptr;
  IAMTable = nullptr;
  rw = nullptr;
  Acpi = nullptr;
}

}  // namespace

int VynLibDllInit() {
  InitOk = 0;
  LastErrorCode = VYNLIB_OK;
  const int started = Guarded([] {
    rw = TReadWrite::GetInstance();
    if (rw == nullptr) return Fail(VYNLIB_ERROR_NOT_INITIALISED);
    Start();
    return 1;
  });
  if (started == 0 && rw != nullptr) {  // out of memory half-way
    TakeDown();
    InitOk = 0;
  }
  return started;
}

int VynLibDllUnInit() {
  if (InitOk == 0) return 0;
  TakeDown();
  LastErrorCode = VYNLIB_OK;
  return 1;  // Contract: InitOk stays 1
}

uint64_t VynLibDllGetLastError() { return LastErrorCode; }
