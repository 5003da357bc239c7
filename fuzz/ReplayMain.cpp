// SPDX-License-Identifier: MIT
// Runs one fuzz target over the files of its corpus: the ordinary test that every past finding stays fixed.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
    std::ifstream file(entry.path(), std::ios::binary);
    std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    const size_t size = bytes.size();
    bytes.reserve(size + 1);  // an empty input is no null pointer either
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), size);
    ++count;
  }
  std::printf("%d inputs replayed\n", count);
  return count > 0 ? 0 : 1;
}
