// SPDX-License-Identifier: MIT
// Lists of strings, and texts taken apart into them.
#include "text/VynStringList.h"

#include <cstring>

#include <safe_str_lib.h>

namespace {

constexpr size_t kLongestDelimiters = 15;

/// Calls `use` with each field of `text`, which is cut up in place. strtok_s takes up to 32 KB of text and a few
/// delimiters; beyond that the C library's tokeniser of the same rules does the work.
template <typename Use>
void ForEachField(char* text, const char* delimiters, Use use) {
  const char* const end = text + std::strlen(text);
  rsize_t left = static_cast<rsize_t>(end - text) + 1;
  const size_t count = std::strlen(delimiters);
  const bool safe = left <= RSIZE_MAX_STR && count > 0 && count <= kLongestDelimiters;
  char* next = nullptr;
  const auto field = [&](char* from) {
    return safe ? strtok_s(from, &left, delimiters, &next) : strtok_r(from, delimiters, &next);
  };
  for (char* found = field(text); found; found = field(nullptr)) {
    use(found);
    // strtok_s does not step past a field that ends the text: it would find it again.
    if (found + std::strlen(found) == end) break;
  }
}

}  // namespace

VynStringList::VynStringList() = default;

VynStringList::~VynStringList() = default;

int VynStringList::Count() const { return static_cast<int>(items_.size()); }

void VynStringList::Clear() { items_.clear(); }

void VynStringList::Add(VynString text) { items_.push_back(text); }

void VynStringList::Insert(int index, VynString text) {
  if (index >= Count()) return Add(text);
  items_.insert(items_.begin() + (index < 0 ? 0 : index), text);
}

void VynStringList::Delete(int index) {
  if (index < 0 || index >= Count()) return;
  items_.erase(items_.begin() + index);
}

VynString VynStringList::operator[](int index) const {
  if (index < 0 || index >= Count()) return {};
  return items_[static_cast<size_t>(index)];
}

bool VynStringList::Find(VynString text, int& index) const {
  index = -1;
  for (int i = 0; i < Count() && index < 0; ++i)
    if (items_[static_cast<size_t>(i)] == text) index = i;
  return index >= 0;
}

int VynStringList::IndexOf(VynString text) const {
  int index = -1;
  Find(text, index);
  return index;
}

void VynStringList::SetCommaText(VynString text, VynString delimiters) {
  // Assigning a text without a buffer would keep the one before.
  commaText_ = text.Buffer() ? text.c_str() : "";
  if (!delimiters.Buffer()) return;
  // Contract: earlier items stay.
  ForEachField(commaText_.Buffer(), delimiters.Buffer(), [this](const char* field) { Add(VynString(field).Trim()); });
}
