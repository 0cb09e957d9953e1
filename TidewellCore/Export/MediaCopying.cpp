#include "TidewellCore/Export/MediaCopying.h"

#include <algorithm>
#include <span>

#include "TidewellCore/Platform/FileDescriptor.h"
#include "TidewellCore/Platform/SaturatingAdd.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;
using ExportPlanner::PlannedCopy;

bool isReadable(const PlannedCopy& copy) try {
  Bytes firstByte(1);
  FileDescriptor::openForReading(copy.source).read(firstByte);
  return true;
} catch (const fs::filesystem_error&) {
  return false;
}

class Copying {
 public:
  Copying(ExportPlan& plan, const BackupSource& source, const MediaCopying::Target& target,
          const CancellationCheck& isCancelled)
      : plan_(plan),
        source_(source),
        target_(target),
        isCancelled_(isCancelled),
        copier_(source.opened, plan.index, target.disk, isCancelled) {}

  void run(ProgressReporter& progress) {
    progress.begin(ExportProgress::Phase::copyingMedia, static_cast<std::int64_t>(plan_.copies.size()));
    try {
      copyAll(progress);
      count(copier_.settle());
      throwIfCancelled(isCancelled_);
    } catch (const std::exception& error) {
      settleQuietly(TidewellError::isCancellation(error));
      throw;
    }
    copier_.removeEmptied(plan_.removable);
  }

 private:
  void copyAll(ProgressReporter& progress) {
    std::int64_t completed = 0;
    for (PlannedCopy& copy : plan_.copies) {
      throwIfCancelled(isCancelled_);
      target_.lock.requireInPlace();
      progress.report(copy.exportedName, completed);
      attempt(copy);
      count(copier_.settleDue());
      progress.report(copy.exportedName, ++completed);
    }
  }

  void attempt(PlannedCopy& copy) {
    try {
      const MediaCopier::Outcome outcome = copier_.carryOut(copy);
      if (outcome == MediaCopier::Outcome::alreadyPresent) ++target_.summary.skippedExistingCount;
      if (outcome == MediaCopier::Outcome::moved) countAsCopied(copy);
      unreadableInARow_ = 0;
    } catch (const std::exception& error) {
      record(error, copy);
      requireReadableBackup(copy);
    }
  }

  void count(const std::vector<CopyBatches::Settled>& settled) {
    for (const auto& [copy, failure, wasThere] : settled) {
      if (wasThere) ++target_.summary.skippedExistingCount;
      if (!failure && !wasThere) countAsCopied(*copy);
      if (!failure) continue;
      try {
        std::rethrow_exception(failure);
      } catch (const std::exception& error) {
        record(error, *copy);
      }
    }
  }

  // While another failure ends the run: that one is told.
  void settleQuietly(bool isInHaste) try {
    count(isInHaste ? copier_.settleInHaste() : copier_.settle());
  } catch (const std::exception&) {
  }

  void countAsCopied(const PlannedCopy& copy) {
    ++target_.summary.copiedCount;
    target_.summary.totalBytesCopied = saturatingAdd(target_.summary.totalBytesCopied, copy.sourceSize);
  }

  void record(const std::exception& error, PlannedCopy& copy) {
    copy.hasFailed = true;
    unreadableInARow_ = EarlyEnd::isOfDisk(error) ? unreadableInARow_ + 1 : 0;
    target_.failures.add(error, {.name = copy.exportedName,
                                 .chat = source_.snapshot.chatTitle(copy.chatJID.text()),
                                 .reason = copier_.reasonOf(error, copy)});
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

  ExportPlan& plan_;
  const BackupSource& source_;
  const MediaCopying::Target& target_;
  const CancellationCheck& isCancelled_;
  MediaCopier copier_;
  int unreadableInARow_ = 0;
};

}  // namespace

void MediaCopying::run(ExportPlan& plan, const BackupSource& source, const Target& target,
                       const CancellationCheck& isCancelled, ProgressReporter& progress) {
  Copying(plan, source, target, isCancelled).run(progress);
}
