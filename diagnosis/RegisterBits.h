// SPDX-License-Identifier: MIT
/// The bits of the machine that entries test and write, by numbers of their own.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "diagnosis/CommandFacts.h"
#include "diagnosis/Satisfy.h"
#include "layout/Walk.h"

namespace diagnosis {

/// What an entry's commands ask for when it is read.
struct Reading {
  Bits tested;                                  ///< all have these values exactly when the entry succeeds
  bool never = false;                           ///< a command cannot succeed
  bool contradicts = false;                     ///< two commands want different values of a bit
  bool broken = false;                          ///< the walk over its commands ends before they do
  std::string unknown = {};                     ///< why it cannot be told; else empty
  std::map<std::string, unsigned> places = {};  ///< the tested bits by place, whatever was selected before
  std::set<std::string> written = {};           ///< of what reading it writes
};

/// What an entry's commands leave when it is set.
struct Setting {
  Bits written;  ///< with values that do not depend on what was there before
  bool writes = false;
  std::string unknown = {};
  std::map<std::string, unsigned> places = {};  ///< all bits of what is written, kept ones as well
};

/// A byte of a register file may be another one after something else was selected: a logical device of a super I/O
/// chip, a bank. What an entry writes to the same chip before, to registers that no entry tests, is part of a bit's
/// name.
class RegisterBits {
 public:
  /// `records`: all of the table, for what is tested anywhere.
  explicit RegisterBits(const std::vector<layout::RecordView>& records);

  Reading ReadingOf(const layout::RecordView& record);
  Setting SettingOf(const layout::RecordView& record);

 private:
  struct Written {
    std::string group, place, text;
  };
  using Selected = std::vector<Written>;

  unsigned Number(const CommandFacts& c, unsigned bit, const Selected& selected);
  std::string Select(const CommandFacts& c, const Selected& selected) const;
  void AddTest(const CommandFacts& c, const layout::DirectionBits& d, const Selected& selected, Reading* reading);
  void AddWrite(const CommandFacts& c, const layout::DirectionBits& d, const Selected& selected, Setting* setting);

  std::set<std::string> tested_;  ///< places
  std::map<std::string, unsigned> numbers_;
};

}  // namespace diagnosis
