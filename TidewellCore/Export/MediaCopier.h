#pragma once

#include "TidewellCore/Backup/OpenedBackup.h"
#include "TidewellCore/Export/CopyFailure.h"
#include "TidewellCore/Export/DestinationIndex.h"
#include "TidewellCore/Export/ExportPlanner.h"

// Carries out planned copies, one at a time. Every file appears under its name
// whole, with its date, or not at all.
class MediaCopier {
 public:
  enum class Outcome { copied, alreadyPresent };

  // Keeps `index` up to date with what it does. Both must outlive it.
  MediaCopier(const OpenedBackup& opened, DestinationIndex& index, CancellationCheck isCancelled);

  // Throws whatever kept the file from being copied, and TidewellError::cancelled.
  Outcome carryOut(const ExportPlanner::PlannedCopy& copy);

  // Why a copy failed that threw `error`.
  FailureReason reasonOf(const std::exception& error, const ExportPlanner::PlannedCopy& copy) const;

  // Removes the folders that held a chat's files in an earlier export and now
  // hold nothing more than its transcripts.
  void removeEmptied(const ExportPlanner::LeftoverFolders& formerFolders) const;

 private:
  // Throws what keeps a file from being copied whose size could not be proven.
  [[noreturn]] void failAsDamaged(const ExportPlanner::PlannedCopy& copy) const;
  // Whether a key opens the file, or it needs none.
  bool hasKey(const ExportPlanner::PlannedCopy& copy) const;
  void move(const ExportPlanner::PlannedCopy& copy);
  void write(const ExportPlanner::PlannedCopy& copy) const;

  const OpenedBackup& opened_;
  DestinationIndex& index_;
  CancellationCheck isCancelled_;
};
