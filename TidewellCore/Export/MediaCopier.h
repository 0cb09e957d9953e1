#pragma once

#include "TidewellCore/Backup/OpenedBackup.h"
#include "TidewellCore/CopyFailure.h"
#include "TidewellCore/Export/CopyBatches.h"
#include "TidewellCore/Export/DestinationIndex.h"
#include "TidewellCore/Export/ExportPlanner.h"
#include "TidewellCore/Platform/FlushPoint.h"

// Carries out planned copies, one at a time. Every file appears under its name
// whole, with its date, and when its bytes are on the disk, or not at all.
class MediaCopier {
 public:
  enum class Outcome {
    written,        // and waits to be settled
    moved,          // from a former folder
    alreadyPresent  // or somebody else put it there meanwhile
  };

  // Keeps `index` up to date with what it does. All must outlive it.
  MediaCopier(const OpenedBackup& opened, DestinationIndex& index, const FlushPoint& disk,
              CancellationCheck isCancelled);

  // Throws whatever kept the file from being copied, and TidewellError::cancelled.
  // `copy` must stay where it is until it is settled, and is told the place that it is really given.
  Outcome carryOut(ExportPlanner::PlannedCopy& copy);
  // Settles what is due of what was written, and tells what came of each such copy.
  std::vector<CopyBatches::Settled> settleDue();
  // Brings all that was written onto the disk and into its places.
  std::vector<CopyBatches::Settled> settle();
  // The same within about a second, as far as it gets; the rest is dropped.
  std::vector<CopyBatches::Settled> settleInHaste();

  // Why a copy failed that threw `error`.
  FailureReason reasonOf(const std::exception& error, const ExportPlanner::PlannedCopy& copy) const;

  // Removes the folders that held a chat's files in an earlier export and now
  // hold nothing more than its transcripts.
  void removeEmptied(const ExportPlanner::LeftoverFolders& formerFolders) const;

 private:
  // Throws what keeps a file from being copied whose size could not be proven.
  [[noreturn]] void failAsDamaged(const ExportPlanner::PlannedCopy& copy) const;
  Outcome move(ExportPlanner::PlannedCopy& copy);
  void write(ExportPlanner::PlannedCopy& copy);
  void enter(const ExportPlanner::PlannedCopy& copy);
  std::vector<CopyBatches::Settled> entered(std::vector<CopyBatches::Settled> settled);

  const OpenedBackup& opened_;
  DestinationIndex& index_;
  CopyBatches batches_;
  CancellationCheck isCancelled_;
};
