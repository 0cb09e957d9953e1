#pragma once

#include "TidewellCore/CopyFailure.h"
#include "TidewellCore/Export/EarlyEnd.h"
#include "TidewellCore/Export/ExportSummary.h"

// Records in a summary what is not in the export although it was asked for.
class FailureLog {
 public:
  // What `places` refers to, and the summary, must outlive it.
  FailureLog(const EarlyEnd::Places& places, ExportSummary& summary) : places_(places), summary_(summary) {}

  // Called while `error` is being handled. Throws what ends the run instead, if anything does.
  void add(const std::exception& error, CopyFailure failure);

 private:
  EarlyEnd::Places places_;
  ExportSummary& summary_;
};
