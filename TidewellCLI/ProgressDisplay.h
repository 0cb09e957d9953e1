#pragma once

#include <optional>
#include <string>

#include "TidewellCore/Export/PhaseClock.h"
#include "TidewellCore/ExportProgress.h"

// Shows how far an export has come on standard error: one line that redraws in
// place on a terminal, else a line for each phase.
class ProgressDisplay {
 public:
  explicit ProgressDisplay(bool isShown);
  ~ProgressDisplay();
  ProgressDisplay(const ProgressDisplay&) = delete;
  ProgressDisplay& operator=(const ProgressDisplay&) = delete;

  void show(const ExportProgress& progress);
  // Takes the line away, so that other text can follow.
  void clear();

 private:
  std::string line(const ExportProgress& progress) const;

  bool isShown_;
  bool isTerminal_;
  bool isDrawn_ = false;
  std::optional<ExportProgress::Phase> phase_;
  PhaseClock clock_;
};
