#pragma once

#include <chrono>
#include <optional>

#include "TidewellCore/Export/ExportTiming.h"
#include "TidewellCore/ExportProgress.h"

// Measures the phases of one run. It reads no clock: all times are given to it,
// in seconds since any one moment.
struct PhaseClock {
  using Seconds = std::chrono::duration<double>;

  void take(const ExportProgress& progress, Seconds now);

  // How long the present phase has lasted; 0 before the first progress.
  Seconds elapsed(Seconds now) const;
  // What the present phase still takes by the last progress; absent before the
  // media are copied, and while there is too little to tell.
  std::optional<TimeLeft> timeLeft(Seconds now) const;

  bool operator==(const PhaseClock&) const = default;

 private:
  ExportProgress last_;
  std::optional<Seconds> phaseStart_;  // absent before the first progress
};
