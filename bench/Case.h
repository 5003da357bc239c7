// SPDX-License-Identifier: MIT
/// One thing that is measured: a library call, and the same accesses written by hand.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace bench {

struct Case {
  std::string name;             ///< "group/what", with "/N" where a size grows
  std::function<void()> setUp;  ///< machine and library, before both
  std::function<void()> library;
  std::function<void()> baseline;  ///< exactly the same accesses and nothing else
  unsigned perCall = 1;            ///< units in one call: the figures are divided by it
  double target = 0;               ///< largest ratio of instructions; 0: none
  double targetInstructions = 0;   ///< largest number of instructions of one unit; 0: none
};

std::vector<Case> TableCases();
std::vector<Case> CommandCases();
std::vector<Case> SensorCases();
std::vector<Case> SmbusCases();
std::vector<Case> ScriptCases();
std::vector<Case> MemoryCases();

}  // namespace bench
