#pragma once

#include "TidewellCore/ChatData/BackupSource.h"
#include "TidewellCore/Export/DestinationLock.h"
#include "TidewellCore/Export/ExportPlan.h"
#include "TidewellCore/Export/ExportSummary.h"
#include "TidewellCore/Export/FailureLog.h"
#include "TidewellCore/Export/MediaCopier.h"
#include "TidewellCore/Export/ProgressReporter.h"

// The part of an export that copies the media, file after file.
namespace MediaCopying {

struct Target {
  const DestinationLock& lock;
  const FlushPoint& disk;
  FailureLog& failures;
  ExportSummary& summary;
};

// Carries out the plan's copies and counts them in the summary. A copy that fails
// is recorded and the next one follows; throws TidewellError::cancelled,
// destinationNotWritable when the destination was taken away, and what a full
// disk or a disk that was taken away makes a copy fail with. What was written
// until then is kept.
void run(ExportPlan& plan, const BackupSource& source, const Target& target, const CancellationCheck& isCancelled,
         ProgressReporter& progress);

}  // namespace MediaCopying
