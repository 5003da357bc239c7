// SPDX-License-Identifier: MIT
/// The walk over the entries of a list that features, the watchdog and the fans share.
#pragma once

#include <cstdint>

#include "api/Guard.h"
#include "api/Library.h"
#include "tables/EntryRun.h"

namespace api {

/// What a walk needs, read before the result is written: a write through a caller's byte pointer may change anything
/// for all the compiler knows, the lists and rows included.
struct Candidates {
  IadtList entries;
  uint64_t failed, none;  ///< codes: the commands of the last candidate failed, there was no candidate
};

/// `wants(entry)` picks the candidates; `done(entry)` takes the first one whose commands succeed, and the call is a
/// success. Every other candidate is a fallback. The slots are shared by all entries of a call.
template <typename Wants, typename Done>
int Walk(const Candidates& candidates, tables::Direction direction, tables::Slots slots, Wants wants, Done done) {
  return Guarded([&] {
    LastErrorCode = candidates.none;
    for (const IadtEntry entry : candidates.entries) {
      if (!wants(entry)) continue;
      const tables::Ran ran = tables::RunEntry(*IAxTCommon, entry, direction, slots);
      if (ran == tables::Ran::kUnknownKind) return Fail(VYNLIB_ERROR_UNKNOWN_ACCESS);
      if (ran == tables::Ran::kDone) {
        done(entry);
        return Succeed();
      }
      LastErrorCode = candidates.failed;
    }
    return 0;
  });
}

}  // namespace api
