#pragma once

#include <chrono>
#include <string>

#include "TidewellCore/ExportProgress.h"

// Tells the observer how far a run has come, at most ten times a second.
class ProgressReporter {
 public:
  explicit ProgressReporter(const ProgressObserver& observer) : observer_(observer) {}

  // Begins a phase of `total` units; always reported.
  void begin(ExportProgress::Phase phase, std::int64_t total = 0);
  // The first and the last report of a phase always arrive.
  void report(const std::string& fileName, std::int64_t completed);

 private:
  void send(const std::string& fileName);

  const ProgressObserver& observer_;
  ExportProgress::Phase phase_ = ExportProgress::Phase::preparing;
  std::int64_t completed_ = 0;
  std::int64_t total_ = 0;
  std::chrono::steady_clock::time_point lastReport_{};
};
