#include "TidewellCore/Export/MediaCopier.h"

#include "TidewellCore/Export/CopyPlace.h"
#include "TidewellCore/Export/CopySource.h"
#include "TidewellCore/MakeRoom.h"
#include "TidewellCore/Platform/FailureOf.h"
#include "TidewellCore/Platform/FileDescriptor.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PartialFile.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;
using ExportPlanner::PlannedCopy;

// Of two such at once a disk that turns would read and write a slice each, and move its head in between.
constexpr std::int64_t largeFile = 4 << 20;

// Whether there is no folder that a file could be made in: none at all, or a file or a link in its place.
bool isOfFolder(const std::error_code& code) {
  return code == std::errc::no_such_file_or_directory || code == std::errc::not_a_directory ||
         code == std::errc::too_many_symbolic_link_levels;
}

}  // namespace

MediaCopier::MediaCopier(std::span<const PlannedCopy> copies, const OpenedBackup& opened, const DestinationIndex& index,
                         const FlushPoint& disk, CancellationCheck isCancelled)
    : opened_(opened),
      index_(index),
      batches_(index.destination, disk, isCancelled),
      isCancelled_(std::move(isCancelled)),
      ahead_(copies, [this](const auto& copy, const auto& isUnwanted) { return write(copy, isUnwanted); }) {}

std::optional<SettledCopy> MediaCopier::carryOut(const PlannedCopy& copy) try {
  auto settled = std::visit([&](const auto& fate) { return carryOut(copy, fate); }, copy.fate);
  if (!settled || settled->failure || copy.soundness == ExportPlanner::Soundness::known) return settled;
  return lookAtEnd(std::move(*settled));
} catch (...) {
  return SettledCopy{.copy = &copy, .place = copy.dest, .failure = std::current_exception()};
}

std::vector<SettledCopy> MediaCopier::settleDue() {
  return batches_.isFull() ? batches_.turnOver() : std::vector<SettledCopy>();
}

std::vector<SettledCopy> MediaCopier::settle() { return batches_.settle(); }

std::vector<SettledCopy> MediaCopier::settleInHaste() { return batches_.settleInHaste(); }

FailureReason MediaCopier::reasonOf(const std::exception& error, const PlannedCopy& copy) const {
  // A former copy that is moved is no file of the backup.
  const bool isMoved = std::holds_alternative<ExportPlanner::Moved>(copy.fate);
  const FailureReason reason = CopyFailures::reasonOf(error, isMoved ? fs::path() : PathText::path(copy.source));
  return reason == FailureReason::undecryptable && !opened_.isOpenedBy(copy.encryptionKey) ? FailureReason::keyMissing
                                                                                           : reason;
}

std::optional<SettledCopy> MediaCopier::carryOut(const PlannedCopy& copy, const ExportPlanner::Restored&) {
  batches_.add(ahead_.take(copy, isCancelled_));
  return std::nullopt;
}

WrittenCopy MediaCopier::write(const PlannedCopy& copy, const CancellationCheck& isUnwanted) const {
  std::unique_lock oneAtATime(largeFileBeingWritten_, std::defer_lock);
  if (copy.sourceSize >= largeFile) oneAtATime.lock();
  PartialFile partial(copy.dest.in(index_.destination));
  FileDescriptor output = create(copy.dest, partial.path());
  const auto [byteCount, isDoubtful] = opened_.writePlaintext(CopySource::storedFile(copy), output, isUnwanted);
  if (byteCount != copy.sourceSize) throw CopyError(FailureReason::cutShort);
  if (copy.date) Files::setModificationDate(output, *copy.date);
  output.close();
  return {.copy = &copy, .partial = std::move(partial), .isDoubtful = isDoubtful};
}

std::optional<SettledCopy> MediaCopier::carryOut(const PlannedCopy& copy, const ExportPlanner::Moved& fate) const {
  requireKnown(copy.dest);
  makeFolder(copy.dest);
  SettledCopy settled = CopyPlace::give(copy, index_.destination, fate.from.in(index_.destination));
  if (settled.failure || settled.wasThere) return settled;
  settled.failure = failureOf([&] {
    if (copy.date) Files::setModificationDate(settled.place.in(index_.destination), *copy.date);
  });
  return settled;
}

std::optional<SettledCopy> MediaCopier::carryOut(const PlannedCopy& copy, const ExportPlanner::Present&) {
  return SettledCopy{.copy = &copy, .place = copy.dest, .wasThere = true};
}

std::optional<SettledCopy> MediaCopier::lookAtEnd(SettledCopy settled) {
  const PlannedCopy& copy = *settled.copy;
  const CopySource::Likeness likeness = CopySource::compareEnds(copy, settled.place.in(index_.destination), opened_);
  const bool isAsBefore = likeness == CopySource::Likeness::untold;
  settled.isDoubtful =
      isAsBefore ? copy.soundness == ExportPlanner::Soundness::doubtful : likeness == CopySource::Likeness::notWhole;
  if (likeness != CopySource::Likeness::other) return settled;
  batches_.add(write(copy, isCancelled_));
  return std::nullopt;
}

std::optional<SettledCopy> MediaCopier::carryOut(const PlannedCopy& copy, const ExportPlanner::Lost&) const {
  if (copy.source.empty()) throw CopyError(FailureReason::missing);
  FileDescriptor::openForReading(PathText::path(copy.source));
  throw CopyError(opened_.isOpenedBy(copy.encryptionKey) ? FailureReason::cutShort : FailureReason::keyMissing);
}

FileDescriptor MediaCopier::create(const ExportPlace& place, const fs::path& partial) const {
  requireKnown(place);
  try {
    return FileDescriptor::create(partial);
  } catch (const fs::filesystem_error& error) {
    if (!isOfFolder(error.code())) throw;
  }
  makeFolder(place);
  return FileDescriptor::create(partial);
}

// Of a folder that cannot be listed it is not known what stands there, so nothing can be put beside it.
void MediaCopier::requireKnown(const ExportPlace& place) const {
  if (index_.unreadableFolders.contains(place.folder)) throw CopyError(FailureReason::unwritable);
}

void MediaCopier::makeFolder(const ExportPlace& place) const {
  const std::lock_guard lock(foldersBeingMade_);
  MakeRoom::forFolder(place.in(index_.destination).parent_path());
}
