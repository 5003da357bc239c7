// SPDX-License-Identifier: MIT
// Loading an arbitrary board description.
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "boardfile/BoardFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const boardfile::LoadedBoard loaded =
      boardfile::ParseBoard({reinterpret_cast<const char*>(data), size}, "board.toml");
  // Either a board or one line that says why not.
  const bool oneLine = !loaded.error.empty() && loaded.error.find('\n') == std::string::npos;
  if ((loaded.board == nullptr) != oneLine) {
    std::fprintf(stderr, "fuzz: error is \"%s\"\n", loaded.error.c_str());
    std::abort();
  }
  return 0;
}
