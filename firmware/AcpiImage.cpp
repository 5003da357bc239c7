// SPDX-License-Identifier: MIT
// Where the tables lie.
#include "firmware/AcpiImage.h"

#include "firmware/AcpiTable.h"

namespace firmware {

namespace {

constexpr size_t kAlignment = 64;

}  // namespace

AcpiImage& AcpiImage::RootPointerAt(uint32_t address) {
  root_ = address;
  return *this;
}

AcpiImage& AcpiImage::RootPointerRevision(uint8_t revision) {
  revision_ = revision;
  return *this;
}

AcpiImage& AcpiImage::TablesAt(uint32_t address) {
  tables_ = address;
  return *this;
}

AcpiImage& AcpiImage::Table(Bytes table) {
  pieces_.push_back({std::nullopt, std::move(table), true});
  return *this;
}

AcpiImage& AcpiImage::TableAt(uint32_t address, Bytes table) {
  pieces_.push_back({address, std::move(table), true});
  return *this;
}

AcpiImage& AcpiImage::UnlistedAt(uint32_t address, Bytes table) {
  pieces_.push_back({address, std::move(table), false});
  return *this;
}

AcpiImage& AcpiImage::Entry(uint32_t address) { return TableAt(address, {}); }

std::vector<std::pair<uint32_t, Bytes>> AcpiImage::Build() const {
  std::vector<std::pair<uint32_t, Bytes>> image;
  std::vector<uint32_t> entries;
  for (const Piece& piece : pieces_)
    if (piece.listed) entries.push_back(0);
  const auto align = [](size_t bytes) { return (bytes + kAlignment - 1) / kAlignment * kAlignment; };
  size_t next = tables_ + align(RsdtTable(entries).size());
  entries.clear();
  for (const Piece& piece : pieces_) {
    const uint32_t address = piece.address.value_or(static_cast<uint32_t>(next));
    if (!piece.address) next += align(piece.bytes.size());
    if (piece.listed) entries.push_back(address);
    if (!piece.bytes.empty()) image.emplace_back(address, piece.bytes);
  }
  image.insert(image.begin(), {tables_, RsdtTable(entries)});
  image.insert(image.begin(), {root_, Rsdp(tables_, revision_)});
  return image;
}

}  // namespace firmware
