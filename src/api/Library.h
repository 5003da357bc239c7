// SPDX-License-Identifier: MIT
/// The library-wide globals and what every exported function does with them.
#pragma once

#include <cstdint>
#include <type_traits>

#include "api/ErrorCodes.h"
#include "tables/TIADTable.h"
#include "vynlib/vynlib.h"

class TAcpiBase;
class TIAMTable;
class TIAxTCommon;
class TReadWrite;
class TVyn;

namespace api {

extern uint8_t InitOk;          ///< 1 once VynLibDllInit has succeeded
extern uint64_t LastErrorCode;  ///< outcome of the most recent exported call
extern TReadWrite* rw;
extern TVyn* vyn;
extern TAcpiBase* Acpi;
extern TIAMTable* IAMTable;
extern TIADTable* IADTable;
extern TIAxTCommon* IAxTCommon;

/// InitOk; sets code 1 when it is 0.
inline bool VynLibCheckAvailabled() {
  if (InitOk == 0) LastErrorCode = VYNLIB_ERROR_NOT_INITIALISED;
  return InitOk != 0;
}

enum Selector : uint8_t { kQuery = VYNLIB_QUERY, kPerformToo = 1, kPerform = VYNLIB_PERFORM };

constexpr bool IsPerform(uint8_t selector) { return selector == kPerformToo || selector == kPerform; }

inline int Fail(uint64_t code) {
  LastErrorCode = code;
  return 0;
}

/// Success is the value of InitOk.
inline int Succeed() {
  LastErrorCode = VYNLIB_OK;
  return InitOk;
}

/// The support query: succeeds when the board offers the family.
inline int Answer(bool offered, uint8_t family) { return offered ? Succeed() : Fail(Code(family, kAbsent)); }

/// Whether the board has list `number`; never after tear-down.
inline bool Has(unsigned number) { return IADTable != nullptr && IADTable->Has(number); }

/// List `number`; only for lists that the board has.
inline IadtList Entries(unsigned number) { return IADTable->List(number); }

/// A caller's text argument; null counts as empty.
inline const char* Text(const char* text) { return text != nullptr ? text : ""; }

/// Stores a result where the caller wants it; null counts as not wanted.
template <typename T>
void StoreResult(T* target, std::type_identity_t<T> value) {
  if (target != nullptr) *target = value;
}

}  // namespace api
