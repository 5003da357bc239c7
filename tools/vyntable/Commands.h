// SPDX-License-Identifier: MIT
/// The subcommands: each says how its arguments look and what to run.
#pragma once

#include <functional>
#include <vector>

#include "commandline/Command.h"

namespace vyntable {

struct Syntax {
  std::vector<commandline::Argument> arguments;
  std::function<int()> run;  ///< returns the exit status; may throw BadInput
};

Syntax DescribeCompile();
Syntax DescribeDecompile();
Syntax DescribeCheck();
Syntax DescribeExplain();
Syntax DescribeTest();
Syntax DescribeDiff();
Syntax DescribeNew();

}  // namespace vyntable
