#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "TidewellCore/Platform/Cancellation.h"

// How far a run has come.
struct ExportProgress {
  // In the order in which a run passes through them; `verifying` is what a verification does.
  enum class Phase { preparing, unlocking, readingChats, copyingMedia, writingTranscripts, verifying, finished };

  Phase phase = Phase::preparing;
  std::string currentFileName;  // empty when no file is being worked on
  std::int64_t completed = 0;   // units done in this phase
  std::int64_t total = 0;       // units in this phase

  // 0 to 1; 0 when the amount of work is not known.
  double fraction() const;
  // Whether the phase cannot tell its amount of work.
  bool isIndeterminate() const;
  // What people read while a phase lasts.
  static std::string_view title(Phase phase);

  bool operator==(const ExportProgress&) const = default;
};

constexpr std::array<std::pair<ExportProgress::Phase, std::string_view>, 7> rawValueTable(ExportProgress::Phase) {
  using enum ExportProgress::Phase;
  return {{{preparing, "preparing"},
           {unlocking, "unlocking"},
           {readingChats, "readingChats"},
           {copyingMedia, "copyingMedia"},
           {writingTranscripts, "writingTranscripts"},
           {verifying, "verifying"},
           {finished, "finished"}}};
}

// Called on the thread that does the work.
using ProgressObserver = std::function<void(const ExportProgress&)>;

// Told of what people should know before it happens: a sentence in English.
using WarningObserver = std::function<void(const std::string&)>;

// How the caller of long work follows it and ends it; each may be empty.
struct RunControl {
  ProgressObserver progress;
  CancellationCheck isCancelled;
  WarningObserver warned;
};
