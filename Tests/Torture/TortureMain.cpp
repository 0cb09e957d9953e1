// tidewell-torture SECONDS SEED [ROUND]: random rounds until the time is over, or the one
// round that is named. Ends with 1 at the first difference, whose folders it keeps.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "Tests/Torture/Fault.h"
#include "Tests/Torture/Round.h"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

bool isGood(std::uint64_t seed, long number, Torture::Statistics& statistics) {
  constexpr std::uint64_t apart = 1'000'003;
  Torture::Round round(seed * apart + static_cast<std::uint64_t>(number), statistics);
  try {
    round.run();
    return true;
  } catch (const std::exception& difference) {
    const fs::path kept =
        fs::temp_directory_path() / ("tidewell-torture-" + std::to_string(seed) + "-" + std::to_string(number));
    fs::remove_all(kept);
    std::printf("A difference in seed %llu, round %ld: %s\n", static_cast<unsigned long long>(seed), number,
                difference.what());
    for (const std::string& line : round.story()) std::printf("  %s\n", line.c_str());
    round.keepIn(kept);
    std::printf("Kept in %s\n", kept.c_str());
    return false;
  }
}

void print(const Torture::Statistics& statistics, Clock::duration time) {
  std::printf("%.1f minutes", std::chrono::duration<double, std::ratio<60>>(time).count());
  for (const auto& [what, count] : statistics) std::printf(", %ld %s", count, what.c_str());
  std::printf("\n");
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 3 || count > 4) {
    std::fprintf(stderr, "usage: tidewell-torture SECONDS SEED [ROUND]\n");
    return 2;
  }
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  const std::uint64_t seed = std::strtoull(arguments[2], nullptr, 10);
  const auto start = Clock::now();
  const auto end = start + std::chrono::seconds(std::atol(arguments[1]));
  if (!Torture::Fault::isPossible()) std::printf("without faults: the sanitizer's library must come first\n");
  Torture::Statistics statistics;
  bool isAllGood = true;
  if (count == 4) {
    isAllGood = isGood(seed, std::atol(arguments[3]), statistics);
  } else {
    for (long number = 1; isAllGood && Clock::now() < end; ++number) isAllGood = isGood(seed, number, statistics);
  }
  print(statistics, Clock::now() - start);
  return isAllGood ? 0 : 1;
}
