// SPDX-License-Identifier: MIT
/// How the kinds of tables are told apart, and what their files are called.
#pragma once

#include <string_view>

#include "diagnosis/Image.h"
#include "layout/BiosRecord.h"
#include "layout/BoardRecord.h"
#include "layout/LittleEndian.h"
#include "layout/RecordLayout.h"

namespace vyntable {

using diagnosis::Kind;

struct KindRow {
  Kind kind;
  std::string_view signature;  ///< its first bytes
  const char* stem;            ///< of its files
};
inline constexpr KindRow kKinds[] = {
    {Kind::kIadt, layout::iadt::kSignature, "iadt"},
    {Kind::kIamt, layout::iamt::kSignature, "iamt"},
    {Kind::kBiosInfo, layout::bios::kSignature, "biosinfo"},
};

/// Null when the bytes are the beginning of none.
inline const KindRow* KindOfTable(layout::View bytes) {
  for (const KindRow& row : kKinds)
    if (bytes.size() >= row.signature.size() && std::equal(row.signature.begin(), row.signature.end(), bytes.begin()))
      return &row;
  return nullptr;
}

}  // namespace vyntable
