#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

// Times mean nothing on a busy machine, ratios of times taken in turns do.
namespace Measure {

struct Cost {
  double seconds = 0;
  double processorSeconds = 0;  // of all threads
};
struct Comparison {
  Cost ours;
  Cost reference;
};
// Runs both in turns and takes the medians of each. `prepare` is run before each and not measured.
Comparison compare(
    const std::function<void()>& ours, const std::function<void()>& reference,
    const std::function<void()>& prepare = [] {});

// The memory that `work` takes at its peak, in bytes, measured in a process of its own.
std::int64_t peakMemory(const std::function<void()>& work);

// Runs a shell command; a failure ends the program.
void shell(const std::string& command);
void makeRandomFile(const std::filesystem::path& file, std::size_t megabytes);

void report(const std::string& what, const std::string& reference, const Comparison& comparison);

}  // namespace Measure

void measureCopying(const std::filesystem::path& folder);
void measureDecryption(const std::filesystem::path& folder);
void measureExport(const std::filesystem::path& folder);
void measureMessages(const std::filesystem::path& folder);
