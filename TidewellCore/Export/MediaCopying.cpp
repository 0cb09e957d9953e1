#include "TidewellCore/Export/MediaCopying.h"

#include "TidewellCore/Export/EarlyEnd.h"
#include "TidewellCore/Platform/SaturatingAdd.h"

namespace {

using ExportPlanner::PlannedCopy;

void count(MediaCopier::Outcome outcome, const PlannedCopy& copy, ExportSummary& summary) {
  if (outcome == MediaCopier::Outcome::alreadyPresent) {
    ++summary.skippedExistingCount;
  } else {
    ++summary.copiedCount;
    summary.totalBytesCopied = saturatingAdd(summary.totalBytesCopied, copy.sourceSize);
  }
}

}  // namespace

void MediaCopying::run(ExportPlan& plan, const Source& source, const DestinationLock& lock,
                       const CancellationCheck& isCancelled, ProgressReporter& progress, ExportSummary& summary) {
  MediaCopier copier(source.opened, plan.index, isCancelled);
  progress.begin(ExportProgress::Phase::copyingMedia, static_cast<std::int64_t>(plan.copies.size()));
  std::int64_t completed = 0;
  for (const PlannedCopy& copy : plan.copies) {
    throwIfCancelled(isCancelled);
    lock.requireInPlace();
    progress.report(copy.exportedName, completed);
    try {
      count(copier.carryOut(copy), copy, summary);
    } catch (const std::exception& error) {
      EarlyEnd::throwWhenDue(error, source.opened.url());
      ++summary.failedCount;
      summary.failures.push_back({.name = copy.exportedName,
                                  .chat = source.snapshot.chatTitle(copy.chatJID),
                                  .reason = copier.reasonOf(error, copy)});
    }
    progress.report(copy.exportedName, ++completed);
  }
  copier.removeEmptied(plan.removable);
}
