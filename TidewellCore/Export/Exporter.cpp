#include "TidewellCore/Export/Exporter.h"

#include <algorithm>

#include "TidewellCore/Backup/BackupInspector.h"
#include "TidewellCore/Backup/ManifestStore.h"
#include "TidewellCore/Backup/OpenedBackup.h"
#include "TidewellCore/ChatData/SnapshotLoader.h"
#include "TidewellCore/Export/ArchiveExport.h"
#include "TidewellCore/Export/ChatLines.h"
#include "TidewellCore/Export/DestinationLock.h"
#include "TidewellCore/Export/DiskSpace.h"
#include "TidewellCore/Export/EarlyEnd.h"
#include "TidewellCore/Export/ExportDeduper.h"
#include "TidewellCore/Export/ExportDestination.h"
#include "TidewellCore/Export/ExportLayout.h"
#include "TidewellCore/Export/ExportPlan.h"
#include "TidewellCore/Export/ExportRequests.h"
#include "TidewellCore/Export/FolderManifest.h"
#include "TidewellCore/Export/MediaCopying.h"
#include "TidewellCore/Export/NameProbe.h"
#include "TidewellCore/Export/NamingMemory.h"
#include "TidewellCore/Export/ProgressReporter.h"
#include "TidewellCore/FileNaming.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;
using Phase = ExportProgress::Phase;

ManifestStore loadManifest(const OpenedBackup& opened) {
  return ManifestStore::load(opened.url(), opened.manifestDatabaseURL(), opened.usesTemporaryManifest());
}

bool isWithinAnyBackup(const fs::path& destination) {
  fs::path folder = fs::weakly_canonical(fs::absolute(destination));
  while (!EarlyEnd::isBackup(folder)) {
    if (folder == folder.parent_path()) return false;
    folder = folder.parent_path();
  }
  return true;
}

// Nothing in a backup is ever changed, so nothing is exported into one, be it another than the one that is read.
void requireOutsideBackups(const fs::path& destination, const fs::path& backup) {
  if (Files::isWithin(destination, backup) || isWithinAnyBackup(destination)) {
    throw TidewellError::destinationNotWritable(PathText::text(destination));
  }
}

void requireWhatsApp(const ManifestStore& manifest) {
  if (manifest.chatStorage || !manifest.media.empty()) return;
  throw TidewellError::chatStorageUnreadable("This backup holds no WhatsApp data.");
}

// What keeps the destination from being made ready is told as one thing.
template <typename Work>
auto inDestination(const ExportJob& job, Work work) {
  try {
    return work();
  } catch (const fs::filesystem_error& error) {
    if (EarlyEnd::isFullDisk(error)) throw;
    throw TidewellError::destinationNotWritable(PathText::text(job.destination));
  }
}

DestinationLock lockDestination(const ExportJob& job) {
  return inDestination(job, [&] {
    requireOutsideBackups(job.destination, job.backup);
    fs::create_directories(job.destination);
    return DestinationLock(job.destination);
  });
}

fs::path prepareDestination(const ExportJob& job) {
  return inDestination(job, [&] { return ExportLayout::prepare(job.destination, job.backup); });
}

// What was read of a backup.
struct Reading {
  const OpenedBackup& opened;
  const ManifestStore& manifest;
  const ChatStorageSnapshot& snapshot;
};

MediaKinds allBut(const MediaKinds& kinds) {
  MediaKinds others(MediaKind::allCases.begin(), MediaKind::allCases.end());
  std::erase_if(others, [&](MediaKind kind) { return kinds.contains(kind); });
  return others;
}

ExportPlan makePlan(const ExportJob& job, const Reading& reading, const fs::path& contentRoot,
                    const DateFormatter& stamps, const CancellationCheck& isCancelled) {
  const auto& [opened, manifest, snapshot] = reading;
  const MediaKinds others = allBut(job.options.includedKinds);
  ExportPlan::Wish wish{.destination = job.destination, .contentRoot = contentRoot};
  wish.nameForm = inDestination(job, [&] { return NameProbe::formFor(contentRoot); });
  wish.requests = ExportRequests::build(manifest, snapshot, opened,
                                        {.kinds = job.options.includedKinds, .stamps = stamps}, isCancelled);
  if (job.options.exportTranscripts) {
    wish.leftOut = ExportRequests::build(manifest, snapshot, opened, {.kinds = others, .stamps = stamps}, isCancelled);
    throwIfCancelled(isCancelled);
    wish.lost = ExportRequests::lost(snapshot, {&wish.requests, &wish.leftOut}, stamps);
    wish.jidsOfTranscripts = ChatLines(snapshot).chatsWithMessages();
  }
  throwIfCancelled(isCancelled);
  return ExportPlan::make(wish, snapshot, isCancelled);
}

void requireSpace(std::int64_t needed, const fs::path& contentRoot) {
  if (DiskSpace::fitsExport(needed, DiskSpace::availableBytes(contentRoot))) return;
  throw TidewellError::ioFailure("Not enough free space — choose another folder");
}

}  // namespace

BackupInfo Exporter::inspect(const fs::path& backup) const { return BackupInspector::inspect(backup); }

ScanResult Exporter::scan(const fs::path& backup, std::optional<std::string_view> password,
                          const UnlockObserver& unlockReport, const CancellationCheck& isCancelled,
                          std::optional<PasswordKey>* passwordKey) const {
  return EarlyEnd::explained({.backup = backup}, [&] {
    std::optional<PasswordKey> used;
    const OpenedBackup opened = OpenedBackup::open(backup, password, {.isCancelled = isCancelled}, unlockReport,
                                                   {.used = passwordKey == nullptr ? nullptr : &used});
    throwIfCancelled(isCancelled);
    const ManifestStore manifest = loadManifest(opened);
    const ChatStorageSnapshot snapshot = SnapshotLoader::load(opened, manifest, isCancelled);
    ScanResult result = ScanSummary::summarize(snapshot, manifest, opened, locale);
    if (passwordKey != nullptr) *passwordKey = std::move(used);
    return result;
  });
}

ExportSummary Exporter::exportBackup(const ExportJob& wish, const RunControl& control) const {
  ExportJob job = wish;
  job.destination = ExportDestination::meant(job.destination);
  return EarlyEnd::explained({.backup = job.backup, .destination = &job.destination},
                             [&] { return runExport(job, control); });
}

ExportSummary Exporter::runExport(const ExportJob& job, const RunControl& control) const {
  ProgressReporter progress(control.progress);
  progress.begin(Phase::preparing);
  const OpenedBackup opened = OpenedBackup::open(job.backup, job.password, control, {}, {.kept = job.passwordKey});
  throwIfCancelled(control.isCancelled);

  progress.begin(Phase::readingChats);
  const ManifestStore manifest = loadManifest(opened);
  requireWhatsApp(manifest);
  const ChatStorageSnapshot snapshot = SnapshotLoader::load(opened, manifest, control.isCancelled);

  const DestinationLock lock = lockDestination(job);
  const fs::path contentRoot = prepareDestination(job);
  const auto [naming, warnings] = NamingMemory::decide({.naming = {.timeZone = timeZone, .locale = locale},
                                                        .isTimeZoneChosen = isTimeZoneChosen,
                                                        .isLocaleChosen = isLocaleChosen},
                                                       NamingMemory::load(contentRoot));
  if (control.warned) std::ranges::for_each(warnings, control.warned);
  ExportPlan plan = makePlan(job, {.opened = opened, .manifest = manifest, .snapshot = snapshot}, contentRoot,
                             FileNaming::stampFormatter(naming.timeZone, naming.locale), control.isCancelled);
  requireSpace(plan.bytesToCopy(), contentRoot);
  throwIfCancelled(control.isCancelled);

  // Saved before copying, so that an interrupted export keeps its names.
  NamingMemory::save(contentRoot, naming);
  FolderManifest::save(contentRoot, plan.rememberedMeanwhile);
  ExportSummary summary{.destination = job.destination,
                        .chatFolderCount = static_cast<std::int64_t>(plan.folders.size()),
                        .warnings = warnings};
  MediaCopying::run(plan, {.opened = opened, .snapshot = snapshot}, lock, control.isCancelled, progress, summary);
  lock.requireInPlace();
  FolderManifest::save(contentRoot, plan.remembered);
  throwIfCancelled(control.isCancelled);

  if (job.options.exportTranscripts) {
    const auto [transcriptCount, page, unresolvedLinkCount] =
        ArchiveExport::write({.opened = opened, .manifest = manifest, .snapshot = snapshot, .plan = plan},
                             {.archive = {.destination = job.destination,
                                          .contentRoot = contentRoot,
                                          .style = transcriptStyle,
                                          .timeZone = timeZone},
                              .locale = locale,
                              .kinds = job.options.includedKinds},
                             control.isCancelled, progress);
    summary.transcriptCount = transcriptCount;
    summary.archiveIndexURL = page;
    summary.unresolvedArchiveLinkCount = unresolvedLinkCount;
    // Folders that were taken away meanwhile were made again, without what was copied into them.
    lock.requireInPlace();
    FolderManifest::save(contentRoot, plan.remembered);
  }
  throwIfCancelled(control.isCancelled);
  progress.begin(Phase::finished);
  return summary;
}

DedupeSummary Exporter::dedupe(const fs::path& destination, bool apply, const CancellationCheck& isCancelled) const {
  return ExportDeduper::run(destination, apply, isCancelled);
}

std::int64_t Exporter::freeSpace(const fs::path& folder) const { return DiskSpace::availableBytes(folder); }
