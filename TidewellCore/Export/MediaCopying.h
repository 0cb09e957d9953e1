#pragma once

#include "TidewellCore/Export/DestinationLock.h"
#include "TidewellCore/Export/ExportPlan.h"
#include "TidewellCore/Export/ExportSummary.h"
#include "TidewellCore/Export/MediaCopier.h"
#include "TidewellCore/Export/ProgressReporter.h"

// The part of an export that copies the media, file after file.
namespace MediaCopying {

struct Source {
  const OpenedBackup& opened;
  const ChatStorageSnapshot& snapshot;  // names the chats of copies that fail
};

// Carries out the plan's copies and counts them in `summary`. A copy that fails
// is recorded there and the next one follows; throws TidewellError::cancelled,
// destinationNotWritable when the destination was taken away, and what a full
// disk or a backup that was taken away makes a copy fail with.
void run(ExportPlan& plan, const Source& source, const DestinationLock& lock, const CancellationCheck& isCancelled,
         ProgressReporter& progress, ExportSummary& summary);

}  // namespace MediaCopying
