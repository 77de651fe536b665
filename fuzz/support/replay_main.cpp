// Runs a target over the files of a folder, without a fuzzer: every input of the corpus once.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "support/fuzz.h"

int main(int count, char** arguments) {
  std::vector<std::filesystem::path> files;
  if (count == 2)
    for (const auto& entry : std::filesystem::directory_iterator(arguments[1])) files.push_back(entry.path());
  if (files.empty()) {
    std::fprintf(stderr, "usage: %s FOLDER, with inputs in it\n", arguments[0]);
    return 2;
  }
  std::sort(files.begin(), files.end());
  for (const auto& path : files) {
    std::printf("%s\n", path.filename().c_str());
    std::fflush(stdout);
    std::ifstream file{path, std::ios::binary};
    hy_wristlog::fuzz::run(std::string{std::istreambuf_iterator<char>{file}, {}});
  }
}
