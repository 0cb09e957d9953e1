#include "TidewellCore/Export/MediaCopying.h"

#include <algorithm>
#include <span>

#include "TidewellCore/Export/EarlyEnd.h"
#include "TidewellCore/Export/FormerFolders.h"
#include "TidewellCore/Export/MediaCopier.h"
#include "TidewellCore/Platform/FileDescriptor.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;
using ExportPlanner::PlannedCopy;

bool isReadable(const PlannedCopy& copy) try {
  Bytes firstByte(1);
  FileDescriptor::openForReading(PathText::path(copy.source)).read(firstByte);
  return true;
} catch (const fs::filesystem_error&) {
  return false;
}

class Copying {
 public:
  Copying(const ExportPlan& plan, const BackupSource& source, const MediaCopying::Target& target,
          const CancellationCheck& isCancelled)
      : plan_(plan),
        source_(source),
        target_(target),
        isCancelled_(isCancelled),
        copier_(plan.copies, source.opened, target.index, target.disk, isCancelled) {
    results_.reserve(plan.copies.size());
  }

  std::vector<MediaResult> run(ProgressReporter& progress) {
    progress.begin(ExportProgress::Phase::copyingMedia, static_cast<std::int64_t>(plan_.copies.size()));
    try {
      copyAll(progress);
      target_.lock.requireInPlace();
      take(copier_.settle());
      throwIfCancelled(isCancelled_);
    } catch (const std::exception& error) {
      settleQuietly(TidewellError::isCancellation(error));
      throw;
    }
    FormerFolders::removeEmptied(plan_.chats, target_.index.destination);
    return std::move(results_);
  }

 private:
  void copyAll(ProgressReporter& progress) {
    std::int64_t completed = 0;
    for (const PlannedCopy& copy : plan_.copies) {
      throwIfCancelled(isCancelled_);
      if (!copy.alreadyPresent()) target_.lock.requireInPlace();
      progress.report(copy.dest.name, completed);
      results_.push_back({.place = copy.dest});
      attempt(copy);
      take(copier_.settleDue());
      progress.report(resultOf(copy).place.name, ++completed);
    }
  }

  void attempt(const PlannedCopy& copy) {
    const std::optional<SettledCopy> settled = copier_.carryOut(copy);
    if (settled) take(*settled);
    if (settled && settled->failure) {
      requireReadableBackup(copy);
    } else {
      unreadableInARow_ = 0;
    }
  }

  void take(const std::vector<SettledCopy>& settled) {
    for (const SettledCopy& one : settled) take(one);
  }

  void take(const SettledCopy& settled) {
    resultOf(*settled.copy) = MediaResult::of(settled);
    if (!settled.failure) return;
    try {
      std::rethrow_exception(settled.failure);
    } catch (const std::exception& error) {
      record(error, settled);
    }
  }

  MediaResult& resultOf(const PlannedCopy& copy) {
    return results_[static_cast<std::size_t>(&copy - plan_.copies.data())];
  }

  // While another failure ends the run: that one is told.
  void settleQuietly(bool isInHaste) try {
    take(isInHaste ? copier_.settleInHaste() : copier_.settle());
  } catch (const std::exception&) {
  }

  void record(const std::exception& error, const SettledCopy& failed) {
    unreadableInARow_ = EarlyEnd::isOfDisk(error) ? unreadableInARow_ + 1 : 0;
    target_.failures.add(error, {.name = failed.place.name,
                                 .chat = source_.snapshot.chatTitle(failed.copy->chatJID.text()),
                                 .reason = copier_.reasonOf(error, *failed.copy)});
  }

  // A disk that was pulled may still tell what it told before, but gives no file
  // any more; one with a damaged place gives others.
  void requireReadableBackup(const PlannedCopy& failed) const {
    constexpr int suspicious = 8;
    constexpr std::size_t samples = 16;
    const std::span<const PlannedCopy> left(&failed + 1, &plan_.copies.back() + 1);
    if (unreadableInARow_ < suspicious || left.size() < samples) return;
    for (std::size_t i = 0; i < left.size(); i += std::max<std::size_t>(1, left.size() / samples)) {
      if (isReadable(left[i])) return;
    }
    throw TidewellError::ioFailure(EarlyEnd::backupGone);
  }

  const ExportPlan& plan_;
  const BackupSource& source_;
  const MediaCopying::Target& target_;
  const CancellationCheck& isCancelled_;
  MediaCopier copier_;
  std::vector<MediaResult> results_;  // of the copies that were attempted
  int unreadableInARow_ = 0;
};

}  // namespace

std::vector<MediaResult> MediaCopying::run(const ExportPlan& plan, const BackupSource& source, const Target& target,
                                           const CancellationCheck& isCancelled, ProgressReporter& progress) {
  return Copying(plan, source, target, isCancelled).run(progress);
}
