// SPDX-License-Identifier: MIT
/// A port that gives prepared answers.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "sim/Board.h"

namespace support {

/// Answers reads with the given values in turn, the last one for ever. Writes are taken.
class Answers : public sim::PortDevice {
 public:
  explicit Answers(std::vector<uint32_t> values) : values_(std::move(values)) {}
  uint32_t Read(sim::Board&, uint16_t, unsigned) override {
    const uint32_t value = values_[next_];
    if (next_ + 1 < values_.size()) ++next_;
    return value;
  }
  void Write(sim::Board&, uint16_t, unsigned, uint32_t) override {}

 private:
  std::vector<uint32_t> values_;
  size_t next_ = 0;
};

inline void Answer(sim::Board* board, uint16_t port, std::vector<uint32_t> values) {
  board->Attach(port, 1, std::make_shared<Answers>(std::move(values)));
}

}  // namespace support
