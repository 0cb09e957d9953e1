#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>

#include "Tests/Fuzz/FuzzTargets.h"
#include "Tests/Fuzz/SeedCorpus.h"
#include "Tests/Support/TemporaryDirectory.h"

// Writes every target's seeds into a folder of its name, as libFuzzer reads them.
int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: tidewell-fuzz-corpus FOLDER\n", stderr);
    return 2;
  }
  try {
    for (const FuzzTarget& target : fuzzTargets()) {
      int number = 0;
      for (const auto& seed : seedCorpus(target.name)) {
        const std::string name = "seed-" + std::to_string(++number);
        Fixture::writeFile(std::filesystem::path(argv[1]) / target.name / name, ByteView(seed));
      }
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
  return 0;
}
