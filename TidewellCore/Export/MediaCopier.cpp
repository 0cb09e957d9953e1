#include "TidewellCore/Export/MediaCopier.h"

#include <algorithm>
#include <array>

#include "TidewellCore/Export/CopyPlace.h"
#include "TidewellCore/FolderNames.h"
#include "TidewellCore/MakeRoom.h"
#include "TidewellCore/Platform/FileDescriptor.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;
using ExportPlanner::PlannedCopy;

void setDate(const fs::path& file, const PlannedCopy& copy) {
  if (copy.date) Files::setModificationDate(file, *copy.date);
}

bool isWithoutOwnContent(const Files::Entry& entry) {
  constexpr std::array<std::string_view, 3> names{FolderNames::textTranscript, FolderNames::htmlTranscript,
                                                  ".DS_Store"};
  return !entry.isFolder && std::ranges::find(names, entry.name) != names.end();
}

void removeIfEmptied(const fs::path& folder) {
  const std::vector<Files::Entry> entries = Files::list(folder);
  if (!std::ranges::all_of(entries, isWithoutOwnContent)) return;
  for (const Files::Entry& entry : entries) Files::remove(folder / entry.name);
  Files::remove(folder);
}

}  // namespace

MediaCopier::MediaCopier(const OpenedBackup& opened, DestinationIndex& index, const FlushPoint& disk,
                         CancellationCheck isCancelled)
    : opened_(opened), index_(index), batches_(disk, isCancelled), isCancelled_(std::move(isCancelled)) {}

MediaCopier::Outcome MediaCopier::carryOut(PlannedCopy& copy) {
  if (copy.alreadyPresent) return Outcome::alreadyPresent;
  if (copy.sourceSize < 0) failAsDamaged(copy);
  const fs::path folder = copy.dest.parent_path();
  // What stands there is not known, so nothing can be put beside it.
  if (index_.unreadableFolders.contains(PathText::text(folder.filename()))) throw CopyError(FailureReason::unwritable);
  MakeRoom::forFolder(folder);
  if (copy.leftoverFolder) return move(copy);
  write(copy);
  return Outcome::written;
}

std::vector<CopyBatches::Settled> MediaCopier::settleDue() {
  return batches_.isFull() ? entered(batches_.turnOver()) : std::vector<CopyBatches::Settled>();
}

std::vector<CopyBatches::Settled> MediaCopier::settle() { return entered(batches_.settle()); }

std::vector<CopyBatches::Settled> MediaCopier::settleInHaste() { return entered(batches_.settleInHaste()); }

std::vector<CopyBatches::Settled> MediaCopier::entered(std::vector<CopyBatches::Settled> settled) {
  for (const CopyBatches::Settled& one : settled) {
    if (!one.failure) enter(*one.copy);
  }
  return settled;
}

void MediaCopier::enter(const PlannedCopy& copy) {
  index_.addFile(PathText::text(copy.dest.parent_path().filename()), copy.exportedName, copy.sourceSize);
}

void MediaCopier::failAsDamaged(const PlannedCopy& copy) const {
  if (copy.source.empty()) throw CopyError(FailureReason::missing);
  FileDescriptor::openForReading(copy.source);
  throw CopyError(opened_.isOpenedBy(copy.encryptionKey) ? FailureReason::cutShort : FailureReason::keyMissing);
}

FailureReason MediaCopier::reasonOf(const std::exception& error, const PlannedCopy& copy) const {
  // A former copy that is moved is no file of the backup.
  const FailureReason reason = CopyFailures::reasonOf(error, copy.leftoverFolder ? fs::path() : copy.source);
  return reason == FailureReason::undecryptable && !opened_.isOpenedBy(copy.encryptionKey) ? FailureReason::keyMissing
                                                                                           : reason;
}

MediaCopier::Outcome MediaCopier::move(PlannedCopy& copy) {
  const bool isMoved = CopyPlace::give(copy, copy.source);
  if (isMoved) {
    index_.removeFile(*copy.leftoverFolder, PathText::text(copy.source.filename()));
    setDate(copy.dest, copy);
  }
  enter(copy);
  return isMoved ? Outcome::moved : Outcome::alreadyPresent;
}

void MediaCopier::write(PlannedCopy& copy) {
  const fs::path partial = copy.dest.parent_path() / Files::partialName();
  try {
    const StoredFile stored{.location = copy.source, .encryptionKey = copy.encryptionKey, .size = copy.sourceSize};
    if (opened_.writePlaintext(stored, partial, isCancelled_) != copy.sourceSize) {
      throw CopyError(FailureReason::cutShort);
    }
    setDate(partial, copy);
  } catch (...) {
    Files::removeQuietly(partial);
    throw;
  }
  batches_.add(copy, partial);
}

void MediaCopier::removeEmptied(const ExportPlanner::LeftoverFolders& formerFolders) const {
  for (const auto& [jid, folders] : formerFolders) {
    for (const std::string& folder : folders) {
      try {
        removeIfEmptied(index_.destination / PathText::path(folder));
      } catch (const fs::filesystem_error&) {
        // What cannot be removed stays, and harms nothing.
      }
    }
  }
}
