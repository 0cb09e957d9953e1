#include "Benchmarks/Measure.h"

#include <fmt/core.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <ctime>

#include "Tests/Support/SeededRandom.h"
#include "TidewellCore/Platform/FileDescriptor.h"

namespace {

double processorSeconds() {
  timespec spent{};
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &spent);
  return static_cast<double>(spent.tv_sec) + static_cast<double>(spent.tv_nsec) / 1e9;
}

constexpr std::size_t rounds = 7;

// What each round of one work took.
struct Rounds {
  std::array<double, rounds> seconds{};
  std::array<double, rounds> processorSeconds{};

  void measure(std::size_t round, const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    const double spent = ::processorSeconds();
    work();
    seconds[round] = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    processorSeconds[round] = ::processorSeconds() - spent;
  }

  Measure::Cost median() {
    std::ranges::sort(seconds);
    std::ranges::sort(processorSeconds);
    return {.seconds = seconds[rounds / 2], .processorSeconds = processorSeconds[rounds / 2]};
  }
};

std::int64_t peakOfThisProcess() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  return std::int64_t{usage.ru_maxrss} * 1024;
}

}  // namespace

Measure::Comparison Measure::compare(const std::function<void()>& ours, const std::function<void()>& reference,
                                     const std::function<void()>& prepare) {
  Rounds oursRounds;
  Rounds referenceRounds;
  for (std::size_t round = 0; round < rounds; ++round) {
    prepare();
    oursRounds.measure(round, ours);
    prepare();
    referenceRounds.measure(round, reference);
  }
  return {.ours = oursRounds.median(), .reference = referenceRounds.median()};
}

std::int64_t Measure::peakMemory(const std::function<void()>& work) {
  std::array<int, 2> ends{};
  if (::pipe(ends.data()) != 0) std::abort();
  const pid_t child = ::fork();
  if (child == 0) {
    const std::int64_t before = peakOfThisProcess();
    work();
    const std::int64_t taken = peakOfThisProcess() - before;
    const bool isTold = ::write(ends[1], &taken, sizeof taken) == sizeof taken;
    ::_exit(isTold ? 0 : 1);
  }
  std::int64_t taken = 0;
  if (::read(ends[0], &taken, sizeof taken) != sizeof taken) std::abort();
  ::waitpid(child, nullptr, 0);
  return taken;
}

void Measure::shell(const std::string& command) {
  if (std::system(command.c_str()) == 0) return;
  fmt::print(stderr, "This command failed: {}\n", command);
  std::exit(1);
}

void Measure::makeRandomFile(const std::filesystem::path& file, std::size_t megabytes) {
  Fixture::SeededRandom random(1);
  const Fixture::Bytes megabyte = random.bytes(1 << 20);
  FileDescriptor target = FileDescriptor::create(file);
  for (std::size_t i = 0; i < megabytes; ++i) target.write(megabyte);
}

void Measure::report(const std::string& what, const std::string& reference, const Comparison& comparison) {
  const auto& [ours, other] = comparison;
  fmt::print("{:<34} {:.2f} times {} ({:.3f} s to {:.3f} s), of processor time {:.2f} ({:.3f} s to {:.3f} s)\n", what,
             ours.seconds / other.seconds, reference, ours.seconds, other.seconds,
             ours.processorSeconds / other.processorSeconds, ours.processorSeconds, other.processorSeconds);
}
