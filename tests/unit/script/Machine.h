// SPDX-License-Identifier: MIT
/// A simulated machine with an interpreter on it.
#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "script/TInterpreter.h"
#include "tests/support/Answers.h"
#include "tests/support/Machine.h"

namespace scripttest {

/// What a result holds before a statement reports one.
constexpr unsigned kUntouched = 0xCAFE0001;

struct Machine : support::Machine {
  TInterpreter interpreter;
  unsigned result = kUntouched;

  bool Run(const std::string& script) { return interpreter.Interpret(script.c_str(), &result); }
  bool RunCmd(const std::string& statement) { return interpreter.ExecuteCmd(statement.c_str(), &result); }
  bool RunCmds(const std::string& statements) { return interpreter.ExecuteCmds(statements.c_str(), &result); }
};

}  // namespace scripttest
