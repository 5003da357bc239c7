/// A simulated machine with an interpreter on it.
#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hw/TReadWrite.h"
#include "script/TInterpreter.h"
#include "sim/Board.h"

namespace scripttest {

/// What a result holds before a statement reports one.
constexpr unsigned kUntouched = 0xCAFE0001;

/// The board is current, and the hardware object stands on it, for as long as this lives.
struct Current {
  explicit Current(sim::Board* board) {
    TReadWrite::FreeInstance();
    sim::Board::MakeCurrent(board);
  }
  ~Current() {
    TReadWrite::FreeInstance();
    sim::Board::MakeCurrent(nullptr);
  }
  Current(const Current&) = delete;
  Current& operator=(const Current&) = delete;
};

struct Machine {
  sim::Board board;
  Current current{&board};
  TInterpreter interpreter;
  unsigned result = kUntouched;

  bool Run(const std::string& script) { return interpreter.Interpret(script.c_str(), &result); }
  bool RunCmd(const std::string& statement) { return interpreter.ExecuteCmd(statement.c_str(), &result); }
  bool RunCmds(const std::string& statements) { return interpreter.ExecuteCmds(statements.c_str(), &result); }
};

/// Answers reads of its port with the given values in turn, the last one for ever.
class Answers : public sim::PortDevice {
 public:
  explicit Answers(std::vector<uint8_t> values) : values_(std::move(values)) {}
  uint32_t Read(sim::Board&, uint16_t, unsigned) override {
    const uint8_t value = values_[next_];
    if (next_ + 1 < values_.size()) ++next_;
    return value;
  }
  void Write(sim::Board&, uint16_t, unsigned, uint32_t) override {}

 private:
  std::vector<uint8_t> values_;
  size_t next_ = 0;
};

inline void Answer(Machine* machine, uint16_t port, std::vector<uint8_t> values) {
  machine->board.Attach(port, 1, std::make_shared<Answers>(std::move(values)));
}

}  // namespace scripttest
