// SPDX-License-Identifier: MIT
/// A board over the simulated library, on the reference board. It is the same one for a whole program, so tests put
/// back what they set, or set what they rely on.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "vynlib/vynlib.hpp"

/// No turns with other programs.
inline vynlib::Settings Alone() { return {"", std::chrono::milliseconds(0)}; }

inline vynlib::Result<vynlib::Board> OpenReference(const vynlib::Settings& settings = Alone()) {
  setenv("VYNLIB_BOARD", REFERENCE_BOARD, 1);
  return vynlib::Board::Open(settings);
}

/// A board that is open, without asking each time.
class ReferenceBoard : public testing::Test {
 protected:
  vynlib::Board board = OpenReference().value();
};

/// "name" of each, in order.
template <typename Things>
std::vector<std::string> NamesOf(const Things& things) {
  std::vector<std::string> names;
  for (const auto& thing : things) names.push_back(thing.name());
  return names;
}
