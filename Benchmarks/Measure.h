#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

// Times mean nothing on a busy machine, ratios of times that were taken in turns do.
namespace Measure {

using Work = std::function<void()>;

struct Cost {
  double seconds = 0;
  double processorSeconds = 0;  // of all threads, and of the programs that it started
  std::int64_t peakBytes = 0;   // of its memory
};

// Runs the work in a process of its own, so that it finds nothing that an earlier one left in memory. A work that fails
// ends the program.
Cost of(const Work& work);

enum class Judged { time, processorTime };

// A work of ours, and another that does what no way of doing it can do without.
struct Pair {
  std::string what;
  std::string reference;
  Work ours;
  Work other;
  Work prepare = [] {};  // before each of both, not measured
  double limit = 1;      // how much longer than the other it may take
  Judged judged = Judged::processorTime;
  std::optional<std::int64_t> mostBytes = std::nullopt;  // that our memory may take at its peak
};

// Prints what the columns of `compare` are.
void printHead();
// Runs both once unmeasured and `rounds` times in turns, and prints medians and ratios. Returns whether they are within
// the limits.
bool compare(const Pair& pair, int rounds);
// Runs a work once, and prints its cost, and whether its memory stayed below that many bytes.
bool compareMemory(const std::string& what, const Work& work, std::int64_t mostBytes);

// Runs a shell command; a failure ends the program.
void shell(const std::string& command);

}  // namespace Measure
