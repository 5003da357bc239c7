// SPDX-License-Identifier: MIT
/// Ordered list of texts, and the splitting of a text into one.
#pragma once

#include <vector>

#include "text/VynString.h"

/// Indexes are 0-based. An index equal to `Count()` lies outside the list.
class VynStringList {
 public:
  std::vector<VynString> items_;
  VynString commaText_;  ///< the text last split, its delimiters overwritten: not meant to be read back

  VynStringList();
  virtual ~VynStringList();

  int Count() const;
  void Clear();
  void Add(VynString text);
  /// Inserts before item `index`; a negative index counts as 0, one behind the last item appends.
  void Insert(int index, VynString text);
  /// Does nothing outside the list.
  void Delete(int index);
  /// A copy of the item; empty outside the list.
  VynString operator[](int index) const;
  /// Sets `index` to the first equal item, or -1. @return whether there is one
  bool Find(VynString text, int& index) const;
  int IndexOf(VynString text) const;
  /// Splits `text` at runs of the delimiter characters, trims spaces off each field and appends the fields: earlier
  /// items stay. Empty fields are skipped.
  void SetCommaText(VynString text, VynString delimiters);
};
