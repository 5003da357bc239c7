// SPDX-License-Identifier: MIT
/// Firmware bytes under construction.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace firmware {

using Bytes = std::vector<uint8_t>;

/// Little-endian store of `size` bytes at `offset`, growing the buffer when it is too short.
void Put(Bytes* bytes, size_t offset, size_t size, uint64_t value);
/// Text into a field of `size` bytes: cut at its end, padded with zeros.
void PutText(Bytes* bytes, size_t offset, size_t size, std::string_view text);
/// The value of the byte at `offset` that makes all bytes sum to 0 modulo 256.
uint8_t ChecksumFor(const Bytes& bytes, size_t offset);

}  // namespace firmware
