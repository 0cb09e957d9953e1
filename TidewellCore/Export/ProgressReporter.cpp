#include "TidewellCore/Export/ProgressReporter.h"

#include <algorithm>

void ProgressReporter::begin(ExportProgress::Phase phase, std::int64_t total) {
  phase_ = phase;
  completed_ = 0;
  total_ = total;
  send({});
}

void ProgressReporter::report(const std::string& fileName, std::int64_t completed) {
  constexpr std::chrono::milliseconds interval(100);
  completed_ = completed;
  const bool isBorder = completed_ == 0 || completed_ == total_;
  if (isBorder || std::chrono::steady_clock::now() - lastReport_ >= interval) send(fileName);
}

void ProgressReporter::send(const std::string& fileName) {
  lastReport_ = std::chrono::steady_clock::now();
  if (!observer_) return;
  observer_({.phase = phase_,
             .currentFileName = fileName,
             .completed = completed_,
             .total = std::max<std::int64_t>(total_, 1)});
}
