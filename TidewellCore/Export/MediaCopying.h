#pragma once

#include "TidewellCore/ChatData/BackupSource.h"
#include "TidewellCore/Destination/DestinationLock.h"
#include "TidewellCore/Export/ExportPlan.h"
#include "TidewellCore/Export/FailureLog.h"
#include "TidewellCore/Export/MediaResult.h"
#include "TidewellCore/Export/ProgressReporter.h"
#include "TidewellCore/Platform/FlushPoint.h"

// The part of an export that copies the media, file after file.
namespace MediaCopying {

struct Target {
  const DestinationIndex& index;  // as the plan was made from it
  const DestinationLock& lock;
  const FlushPoint& disk;
  FailureLog& failures;
};

// Carries out the plan's copies and tells what came of each, in their order. A
// copy that fails is recorded and the next one follows; throws
// TidewellError::cancelled, destinationNotWritable when the destination was taken
// away, and what a full disk or a disk that was taken away makes a copy fail with.
// What was written until then is kept.
std::vector<MediaResult> run(const ExportPlan& plan, const BackupSource& source, const Target& target,
                             const CancellationCheck& isCancelled, ProgressReporter& progress);

}  // namespace MediaCopying
