// SPDX-License-Identifier: MIT
// Numbers, texts and checksums into bytes.
#include "firmware/Bytes.h"

#include <algorithm>

#include "layout/Checksum.h"

namespace firmware {

using namespace layout;

void Put(Bytes* bytes, size_t offset, size_t size, uint64_t value) {
  if (bytes->size() < offset + size) bytes->resize(offset + size);
  for (size_t i = 0; i < size; ++i) (*bytes)[offset + i] = static_cast<uint8_t>(value >> (8 * i));
}

uint8_t ChecksumFor(const Bytes& bytes, size_t offset) {
  return static_cast<uint8_t>(bytes[offset] - ByteSum(bytes.data(), bytes.size()));
}

void PutText(Bytes* bytes, size_t offset, size_t size, std::string_view text) {
  if (bytes->size() < offset + size) bytes->resize(offset + size);
  std::fill_n(bytes->begin() + static_cast<ptrdiff_t>(offset), size, uint8_t{0});
  std::copy_n(text.begin(), std::min(size, text.size()), bytes->begin() + static_cast<ptrdiff_t>(offset));
}

}  // namespace firmware
