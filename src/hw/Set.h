// SPDX-License-Identifier: MIT
/// A set of the numbers from 0 to 255, as a map of bits.
#pragma once

/// A set of the 256 numbers 0..255 as a 32-byte bit map: member n is bit (n mod 8) of byte (n / 8).
/// `T` is the type of a member; only members from 0 to 255 exist, so `First` is 0 and `Last` is 255.
template <typename T, int First, int Last>
struct Set {
  static_assert(First == 0 && Last == 255, "the map holds exactly the members 0..255");

  unsigned char Bits[32] = {};

  void Add(T member) {
    if (member <= Last) Bits[member / 8] = static_cast<unsigned char>(Bits[member / 8] | (1u << (member % 8)));
  }
  void Remove(T member) {
    if (member <= Last) Bits[member / 8] = static_cast<unsigned char>(Bits[member / 8] & ~(1u << (member % 8)));
  }
  bool Contains(T member) const { return member <= Last && (Bits[member / 8] >> (member % 8) & 1u) != 0; }
};
