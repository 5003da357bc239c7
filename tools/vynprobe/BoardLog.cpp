// The simulated machine keeps a log of its own.
#include <cstdlib>

#include "AccessLog.h"
#include "sim/SimBoard.h"

namespace probe {

bool UseBoard(const std::string& file) {
  if (!file.empty()) setenv("VYNLIB_BOARD", file.c_str(), 1);
  sim::Board::Current().logging = true;
  return true;
}

std::vector<std::string> TakeAccesses() {
  std::vector<std::string> lines;
  for (const sim::Access& access : sim::Board::Current().Log()) lines.push_back(sim::ToString(access));
  sim::Board::Current().Log().clear();
  return lines;
}

}  // namespace probe
