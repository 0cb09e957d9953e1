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
#include "TidewellCore/Export/FailureLog.h"
#include "TidewellCore/Export/FolderManifest.h"
#include "TidewellCore/Export/MediaCopying.h"
#include "TidewellCore/Export/NameProbe.h"
#include "TidewellCore/Export/NamingMemory.h"
#include "TidewellCore/Export/ProgressReporter.h"
#include "TidewellCore/FileNaming.h"
#include "TidewellCore/FolderNames.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/TemporaryFolder.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;
using Phase = ExportProgress::Phase;

// The one reading of the index, which stands decrypted on the disk no longer than that.
ManifestStore loadManifest(OpenedBackup& opened, const CancellationCheck& isCancelled) {
  ManifestStore manifest =
      ManifestStore::load(opened.url(), opened.manifestDatabaseURL(), opened.usesTemporaryManifest(), isCancelled);
  opened.dropTemporaryManifest();
  return manifest;
}

// Where every scan and export begins. What runs left behind that could not end themselves goes first.
template <typename Work>
auto begin(const EarlyEnd::Places& places, Work work) {
  TemporaryFolder::sweep();
  return EarlyEnd::explained(places, work);
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
    Files::makeFolder(job.destination);
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

// Puts into the summary what is to be told before anything is copied.
MediaNaming decideNaming(const Exporter& exporter, const Reading& reading, const fs::path& contentRoot,
                         ExportSummary& summary) {
  summary.warnings = ScanSummary::warnings(reading.snapshot, reading.manifest, reading.opened);
  summary.mayMissMessages = !summary.warnings.empty();
  const auto [naming, warnings] =
      NamingMemory::decide({.naming = {.timeZone = exporter.timeZone, .locale = exporter.locale},
                            .isTimeZoneChosen = exporter.isTimeZoneChosen,
                            .isLocaleChosen = exporter.isLocaleChosen},
                           NamingMemory::load(contentRoot));
  summary.warnings.insert(summary.warnings.end(), warnings.begin(), warnings.end());
  return naming;
}

// What an export works with once it is planned.
struct Work {
  const Exporter& exporter;
  const ExportJob& job;
  const Reading& reading;
  const DestinationLock& lock;
  const FlushPoint& disk;
  const fs::path& contentRoot;
  const CancellationCheck& isCancelled;
};

// Folders that were taken away meanwhile may have been made again, without what was copied into them.
void remember(const Work& work, const FolderAssignment& folders) {
  work.lock.requireInPlace();
  FolderManifest::save(work.contentRoot, folders);
  throwIfCancelled(work.isCancelled);
}

ArchiveExport::Outcome writeArchive(const Work& work, const ExportPlan& plan, FailureLog& failures,
                                    ProgressReporter& progress) {
  const auto& [opened, manifest, snapshot] = work.reading;
  return ArchiveExport::write({.opened = opened, .manifest = manifest, .snapshot = snapshot, .plan = plan},
                              {.archive = {.destination = work.job.destination,
                                           .contentRoot = work.contentRoot,
                                           .style = work.exporter.transcriptStyle,
                                           .timeZone = work.exporter.timeZone},
                               .locale = work.exporter.locale,
                               .kinds = work.job.options.includedKinds},
                              failures, work.isCancelled, progress);
}

void carryOut(const Work& work, ExportPlan& plan, ExportSummary& summary, ProgressReporter& progress) {
  FailureLog failures({.backup = work.job.backup, .destination = &work.job.destination}, summary);
  MediaCopying::run(plan, {.opened = work.reading.opened, .snapshot = work.reading.snapshot},
                    {.lock = work.lock, .disk = work.disk, .failures = failures, .summary = summary}, work.isCancelled,
                    progress);
  remember(work, plan.remembered);
  if (!work.job.options.exportTranscripts) return;
  const ArchiveExport::Outcome archive = writeArchive(work, plan, failures, progress);
  summary.transcriptCount = archive.transcriptCount;
  summary.archiveIndexURL = archive.page;
  summary.unresolvedArchiveLinkCount = archive.unresolvedLinkCount;
  remember(work, plan.remembered);
}

// What the summary tells is on the disk by then: the names of files too, and all that was not copied.
void bringToDisk(const FlushPoint& disk, const fs::path& destination, const ExportPlan& plan) try {
  if (disk.flush()) return;
  const fs::path& contentRoot = plan.index.destination;
  const fs::path viewer = contentRoot / FolderNames::viewer;
  std::vector<fs::path> folders{destination, contentRoot, viewer, viewer / FolderNames::viewerData,
                                contentRoot / FolderNames::avatars};
  for (const auto& [jid, folder] : plan.folders) folders.push_back(contentRoot / PathText::path(folder));
  for (const fs::path& folder : folders) {
    if (Files::kindOf(folder) == Files::Kind::folder) Files::flush(folder);
  }
} catch (const fs::filesystem_error& error) {
  if (EarlyEnd::isFullDisk(error)) throw;
  throw TidewellError::ioFailure(EarlyEnd::destinationBroken);
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
  return begin({.backup = backup}, [&] {
    std::optional<PasswordKey> used;
    OpenedBackup opened = OpenedBackup::open(backup, password, {.isCancelled = isCancelled}, unlockReport,
                                             {.used = passwordKey == nullptr ? nullptr : &used});
    throwIfCancelled(isCancelled);
    const ManifestStore manifest = loadManifest(opened, isCancelled);
    const ChatStorageSnapshot snapshot = SnapshotLoader::load(opened, manifest, isCancelled);
    ScanResult result = ScanSummary::summarize(snapshot, manifest, opened, locale);
    if (passwordKey != nullptr) *passwordKey = std::move(used);
    return result;
  });
}

ExportSummary Exporter::exportBackup(const ExportJob& wish, const RunControl& control) const {
  ExportJob job = wish;
  job.destination = ExportDestination::meant(job.destination);
  return begin({.backup = job.backup, .destination = &job.destination}, [&] { return runExport(job, control); });
}

ExportSummary Exporter::runExport(const ExportJob& job, const RunControl& control) const {
  ProgressReporter progress(control.progress);
  progress.begin(Phase::preparing);
  OpenedBackup opened =
      OpenedBackup::open(job.backup, job.password, control, job.unlockReport, {.kept = job.passwordKey});
  throwIfCancelled(control.isCancelled);

  progress.begin(Phase::readingChats);
  const ManifestStore manifest = loadManifest(opened, control.isCancelled);
  requireWhatsApp(manifest);
  const ChatStorageSnapshot snapshot = SnapshotLoader::load(opened, manifest, control.isCancelled);
  const Reading reading{.opened = opened, .manifest = manifest, .snapshot = snapshot};

  const DestinationLock lock = lockDestination(job);
  const FlushPoint disk(job.destination);
  const fs::path contentRoot = prepareDestination(job);
  ExportSummary summary{.destination = job.destination};
  const MediaNaming naming = decideNaming(*this, reading, contentRoot, summary);
  if (control.warned) std::ranges::for_each(summary.warnings, control.warned);
  ExportPlan plan = makePlan(job, reading, contentRoot, FileNaming::stampFormatter(naming.timeZone, naming.locale),
                             control.isCancelled);
  summary.chatFolderCount = static_cast<std::int64_t>(plan.folders.size());
  requireSpace(plan.bytesToCopy(), contentRoot);
  throwIfCancelled(control.isCancelled);

  // Saved before copying, so that an interrupted export keeps its names.
  NamingMemory::save(contentRoot, naming);
  FolderManifest::save(contentRoot, plan.rememberedMeanwhile);
  const Work work{.exporter = *this,
                  .job = job,
                  .reading = reading,
                  .lock = lock,
                  .disk = disk,
                  .contentRoot = contentRoot,
                  .isCancelled = control.isCancelled};
  carryOut(work, plan, summary, progress);
  bringToDisk(disk, job.destination, plan);
  progress.begin(Phase::finished);
  return summary;
}

DedupeSummary Exporter::dedupe(const fs::path& destination, bool apply, const CancellationCheck& isCancelled) const {
  return ExportDeduper::run(destination, apply, isCancelled);
}

std::int64_t Exporter::freeSpace(const fs::path& folder) const { return DiskSpace::availableBytes(folder); }
