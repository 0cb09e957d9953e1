#include <array>
#include <string_view>

#include "Benchmarks/Measure.h"
#include "Tests/Support/TemporaryDirectory.h"

namespace {

struct Benchmark {
  std::string_view name;
  void (*run)(const std::filesystem::path& folder) = nullptr;
};

// Memory that this process freed would be used again unseen, so what is measured for it comes first.
constexpr std::array<Benchmark, 4> benchmarks{{{"export", measureExport},
                                               {"messages", measureMessages},
                                               {"copying", measureCopying},
                                               {"decryption", measureDecryption}}};

}  // namespace

// Runs all benchmarks, or those that are named.
int main(int count, char** arguments) {
  const Fixture::TemporaryDirectory folder;
  for (const Benchmark& benchmark : benchmarks) {
    bool isWanted = count < 2;
    for (int i = 1; i < count; ++i) isWanted = isWanted || benchmark.name == arguments[i];
    if (isWanted) benchmark.run(folder.path());
  }
}
