#pragma once

#include <vector>

#include "TidewellCore/CopyFailure.h"
#include "TidewellCore/Export/EarlyEnd.h"

// Records what is not in the export although it was asked for.
class FailureLog {
 public:
  // What `places` refers to must outlive it.
  explicit FailureLog(const EarlyEnd::Places& places) : places_(places) {}

  // Called while `error` is being handled. Throws what ends the run instead, if anything does.
  void add(const std::exception& error, CopyFailure failure);
  // In the order in which they were recorded.
  const std::vector<CopyFailure>& failures() const { return failures_; }

 private:
  EarlyEnd::Places places_;
  std::vector<CopyFailure> failures_;
};
