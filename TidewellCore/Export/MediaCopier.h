#pragma once

#include <mutex>
#include <optional>
#include <span>
#include <vector>

#include "TidewellCore/Backup/OpenedBackup.h"
#include "TidewellCore/CopyFailure.h"
#include "TidewellCore/Destination/DestinationIndex.h"
#include "TidewellCore/Export/CopyAhead.h"
#include "TidewellCore/Export/CopyBatches.h"
#include "TidewellCore/Export/ExportPlanner.h"
#include "TidewellCore/Platform/FlushPoint.h"

// Carries out planned copies, one after another. Every file appears under its name
// whole, with its date, and when its bytes are on the disk, or not at all.
class MediaCopier {
 public:
  // All must outlive it. `index` is of the destination as the plan found it.
  MediaCopier(std::span<const ExportPlanner::PlannedCopy> copies, const OpenedBackup& opened,
              const DestinationIndex& index, const FlushPoint& disk, CancellationCheck isCancelled);

  // To be called for each of the copies, in their order. Absent when the copy was written and waits to be settled; it
  // must stay where it is until then. What keeps it from being copied, TidewellError::cancelled too, is told as its
  // failure.
  std::optional<SettledCopy> carryOut(const ExportPlanner::PlannedCopy& copy);
  // Settles what is due of what was written, and tells what came of each such copy.
  std::vector<SettledCopy> settleDue();
  // Brings all that was written onto the disk and into its places.
  std::vector<SettledCopy> settle();
  // The same within about a second, as far as it gets; the rest is dropped.
  std::vector<SettledCopy> settleInHaste();

  // Why a copy failed that threw `error`.
  FailureReason reasonOf(const std::exception& error, const ExportPlanner::PlannedCopy& copy) const;

 private:
  using PlannedCopy = ExportPlanner::PlannedCopy;

  std::optional<SettledCopy> carryOut(const PlannedCopy& copy, const ExportPlanner::Restored& fate);
  std::optional<SettledCopy> carryOut(const PlannedCopy& copy, const ExportPlanner::Moved& fate) const;
  static std::optional<SettledCopy> carryOut(const PlannedCopy& copy, const ExportPlanner::Present& fate);
  // Looks at the end of a file that stood there and of which it is not known whether it is whole. One that is whole in
  // the backup alone is copied again, beside it.
  std::optional<SettledCopy> lookAtEnd(SettledCopy settled);
  // Throws why no whole file of it can be had.
  std::optional<SettledCopy> carryOut(const PlannedCopy& copy, const ExportPlanner::Lost& fate) const;
  // Beside its place, from any thread.
  WrittenCopy write(const PlannedCopy& copy, const CancellationCheck& isUnwanted) const;
  // Makes the folder when it is missing.
  FileDescriptor create(const ExportPlace& place, const std::filesystem::path& partial) const;
  void requireKnown(const ExportPlace& place) const;
  void makeFolder(const ExportPlace& place) const;

  const OpenedBackup& opened_;
  const DestinationIndex& index_;
  CopyBatches batches_;
  CancellationCheck isCancelled_;
  mutable std::mutex foldersBeingMade_;  // what one thread made is not to be moved away by another
  mutable std::mutex largeFileBeingWritten_;
  CopyAhead ahead_;  // last, so that its threads end before what they use
};
