#include "Benchmarks/Measure.h"

#include <fmt/core.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <vector>

namespace {

using Measure::Cost;
using Measure::Judged;
using Measure::Pair;

constexpr const char* rowFormat = "{:<46}  {:<34}  {:>7}  {:>9}  {:>7}  {:>9}  {:>7}  {:<9}  {}\n";

double secondsOf(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

[[noreturn]] void runInChild(const Measure::Work& work) {
  try {
    work();
    std::fflush(nullptr);
    ::_exit(0);
  } catch (const std::exception& error) {
    fmt::print(stderr, "{}\n", error.what());
    ::_exit(1);
  }
}

template <typename Member>
Member median(std::vector<Cost> costs, Member Cost::*member) {
  std::ranges::sort(costs, {}, member);
  return costs[costs.size() / 2].*member;
}

Cost medians(const std::vector<Cost>& costs) {
  return {.seconds = median(costs, &Cost::seconds),
          .processorSeconds = median(costs, &Cost::processorSeconds),
          .peakBytes = median(costs, &Cost::peakBytes)};
}

// What an earlier work left to be written to the disk is no burden of the next.
Cost prepared(const Pair& pair, const Measure::Work& work) {
  Measure::of(pair.prepare);
  ::sync();
  return Measure::of(work);
}

std::string megabytes(std::int64_t bytes) { return fmt::format("{} MB", bytes / 1'000'000); }

std::string ratioOf(double ours, double other) { return fmt::format("{:.2f} x", ours / std::max(other, 1e-4)); }

}  // namespace

Cost Measure::of(const Work& work) {
  std::fflush(nullptr);  // what waits there would be printed by the child, too
  const auto start = std::chrono::steady_clock::now();
  const pid_t child = ::fork();
  if (child == 0) runInChild(work);
  int status = 0;
  rusage used{};
  if (child < 0 || ::wait4(child, &status, 0, &used) != child || status != 0) {
    fmt::print(stderr, "A work that was to be measured failed.\n");
    std::exit(1);
  }
  return {.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(),
          .processorSeconds = secondsOf(used.ru_utime) + secondsOf(used.ru_stime),
          .peakBytes = std::int64_t{used.ru_maxrss} * 1024};
}

void Measure::printHead() { fmt::print(rowFormat, "", "beside", "s", "", "CPU s", "", "peak", "to reach", ""); }

bool Measure::compare(const Pair& pair, int rounds) {
  std::vector<Cost> ours;
  std::vector<Cost> others;
  for (int round = 0; round <= rounds; ++round) {
    const Cost own = prepared(pair, pair.ours);
    const Cost other = prepared(pair, pair.other);
    if (round == 0) continue;  // it warmed the caches
    ours.push_back(own);
    others.push_back(other);
  }
  const Cost own = medians(ours);
  const Cost other = medians(others);
  const bool isOfTime = pair.judged == Judged::time;
  const double ratio = isOfTime ? own.seconds / other.seconds : own.processorSeconds / other.processorSeconds;
  const bool isReached = ratio <= pair.limit && own.peakBytes <= pair.mostBytes.value_or(own.peakBytes);
  std::string limit = fmt::format("{} {:.2f} x", isOfTime ? "s" : "CPU", pair.limit);
  if (pair.mostBytes) limit += ", " + megabytes(*pair.mostBytes);
  fmt::print(rowFormat, pair.what, pair.reference, fmt::format("{:.3f}", own.seconds),
             ratioOf(own.seconds, other.seconds), fmt::format("{:.3f}", own.processorSeconds),
             ratioOf(own.processorSeconds, other.processorSeconds), megabytes(own.peakBytes), limit,
             isReached ? "" : "NOT REACHED");
  return isReached;
}

bool Measure::compareMemory(const std::string& what, const Work& work, std::int64_t mostBytes) {
  const Cost cost = of(work);
  const bool isReached = cost.peakBytes <= mostBytes;
  fmt::print(rowFormat, what, "", fmt::format("{:.3f}", cost.seconds), "", fmt::format("{:.3f}", cost.processorSeconds),
             "", megabytes(cost.peakBytes), megabytes(mostBytes), isReached ? "" : "NOT REACHED");
  return isReached;
}

void Measure::shell(const std::string& command) {
  if (std::system(command.c_str()) == 0) return;
  fmt::print(stderr, "This command failed: {}\n", command);
  std::exit(1);
}
