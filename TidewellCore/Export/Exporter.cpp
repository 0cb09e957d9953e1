#include "TidewellCore/Export/Exporter.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <span>

#include "TidewellCore/Archive/EarlierPages.h"
#include "TidewellCore/Backup/BackupInspector.h"
#include "TidewellCore/ChatData/BackupSource.h"
#include "TidewellCore/CleanUp/ExportDeduper.h"
#include "TidewellCore/Destination/DiskSpace.h"
#include "TidewellCore/Destination/ExportDestination.h"
#include "TidewellCore/Destination/FolderManifest.h"
#include "TidewellCore/Destination/NamingMemory.h"
#include "TidewellCore/Destination/OwnFiles.h"
#include "TidewellCore/Export/ArchiveExport.h"
#include "TidewellCore/Export/BackupMedia.h"
#include "TidewellCore/Export/BackupReading.h"
#include "TidewellCore/Export/EarlyEnd.h"
#include "TidewellCore/Export/ExportPlan.h"
#include "TidewellCore/Export/ExportReceipt.h"
#include "TidewellCore/Export/ExportRequests.h"
#include "TidewellCore/Export/ExportTarget.h"
#include "TidewellCore/Export/FailureLog.h"
#include "TidewellCore/Export/FormerFolders.h"
#include "TidewellCore/Export/LibraryFolders.h"
#include "TidewellCore/Export/MediaCopying.h"
#include "TidewellCore/Export/MediaSettlement.h"
#include "TidewellCore/Export/MovedFiles.h"
#include "TidewellCore/Export/NamedWarning.h"
#include "TidewellCore/Export/PictureExport.h"
#include "TidewellCore/Export/ProgressReporter.h"
#include "TidewellCore/FileNaming.h"
#include "TidewellCore/Library/ArchiveOwner.h"
#include "TidewellCore/Library/LibraryUpdate.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/SaturatingAdd.h"
#include "TidewellCore/Platform/TemporaryFolder.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;
using Phase = ExportProgress::Phase;

// Where every scan and export begins. What runs left behind that could not end themselves goes first.
template <typename Work>
auto begin(const EarlyEnd::Places& places, Work work) {
  TemporaryFolder::sweep();
  return EarlyEnd::explained(places, work);
}

// What is exported of a backup.
struct BackupPart {
  const BackupSource& source;
  const Scope scope;
};

// Those that have messages in the scope, or those that have messages and none there.
std::vector<CanonicalJID> chatsWithMessages(const BackupPart& part, bool areInScope) {
  std::vector<CanonicalJID> jids;
  for (const ChatStorageSnapshot::Chat& chat : part.source.snapshot.chats()) {
    const bool isInScope = !part.scope.messages(part.source.snapshot, chat.jid).empty();
    if (chat.messageCount > 0 && isInScope == areInScope) jids.push_back(chat.jid);
  }
  return jids;
}

// Every chat of the scope, and those that only files tell of, in the order of their JIDs. Of a chat that has nothing
// within a stretch of time nothing is told.
std::vector<CanonicalJID> chatsOf(const BackupPart& part, const ChatFolders& folders) {
  std::set<CanonicalJID> jids;
  for (const ChatStorageSnapshot::Chat& chat : part.source.snapshot.chats()) {
    if (part.scope.hasAllTime() && part.scope.has(chat.jid)) jids.insert(chat.jid);
  }
  for (const auto& [jid, folder] : folders) jids.insert(jid);
  return {jids.begin(), jids.end()};
}

struct Ground {
  const DestinationIndex& index;
  Library& library;
};

// What somebody moved within the export is not copied again.
void followMovedFiles(const Ground& ground, const BackupSource& source, const CancellationCheck& isCancelled) {
  BackupMedia media(source);
  MovedFiles::follow(
      ground.library.media(), ground.index,
      [&](const KeptMedium& medium) { return media.digest(medium.path, medium.size, isCancelled); }, isCancelled);
}

ExportPlan makePlan(const ExportJob& job, const BackupPart& part, const Ground& ground, const DateFormatter& stamps,
                    const CancellationCheck& isCancelled) {
  const BackupSource& source = part.source;
  const ExportRequests::Wish media{.kinds = job.options.includedKinds, .scope = part.scope};
  ExportPlan::Wish wish;
  wish.naming = [&](const ExportPlanner::Request& request) {
    return FileNaming::exportFileName(request.date, request.relativePath, stamps);
  };
  const bool isLeftOutLinked = job.options.exportTranscripts || !part.scope.isEverything();
  auto [wanted, leftOut] = ExportRequests::build(source, media, isLeftOutLinked, isCancelled);
  wish.requests = std::move(wanted);
  wish.leftOut = std::move(leftOut);
  if (isLeftOutLinked) wish.jidsLeftOut = chatsWithMessages(part, false);
  if (job.options.exportTranscripts) {
    throwIfCancelled(isCancelled);
    wish.lost = ExportRequests::lost(source.snapshot, {&wish.requests, &wish.leftOut});
    wish.jidsOfTranscripts = chatsWithMessages(part, true);
  }
  throwIfCancelled(isCancelled);
  const FolderAssignment remembered =
      LibraryFolders::withKnownChats(ground.library, source.snapshot, FolderManifest::load(job.destination));
  followMovedFiles(ground, source, isCancelled);
  const KnownMedia known = [&](std::string_view path) { return ground.library.media().newest(path); };
  std::span<const ManifestFile> pictures;
  if (job.options.exportTranscripts) pictures = source.pictures();
  auto warning = ExportRequests::warningOfShortFiles(wish.requests, wish.naming, pictures, source.opened);
  ExportPlan plan = ExportPlan::make(std::move(wish), {.index = ground.index, .remembered = remembered, .known = known},
                                     source.snapshot, isCancelled);
  if (warning) plan.warnings.push_back(std::move(*warning));
  return plan;
}

// The part of an export that writes.
class Writing {
 public:
  Writing(const Exporter& exporter, const ExportJob& job, BackupSource& source, const RunControl& control)
      : exporter_(exporter),
        job_(job),
        source_(source),
        part_{.source = source, .scope = Scope::of(job.selection, source, exporter.timeZone)},
        control_(control),
        target_(job.destination, job.backup, [&](const fs::path& contentRoot) { requireOwner(contentRoot); }),
        naming_(NamingMemory::decide({.naming = {.timeZone = exporter.timeZone, .locale = exporter.locale},
                                      .isTimeZoneChosen = exporter.isTimeZoneChosen,
                                      .isLocaleChosen = exporter.isLocaleChosen},
                                     NamingMemory::load(target_.contentRoot()))),
        index_(target_.index(control.isCancelled)),
        library_(openLibrary()),
        plan_(makePlan(job, part_, {.index = index_, .library = library_},
                       FileNaming::stampFormatter(naming_.naming.timeZone, naming_.naming.locale),
                       control.isCancelled)) {}

  ExportSummary run(ProgressReporter& progress) {
    warn();
    target_.requireSpace(plan_.bytesToCopy());
    throwIfCancelled(control_.isCancelled);
    // Saved before copying, so that an interrupted export keeps its names.
    NamingMemory::save(target_.contentRoot(), naming_.naming);
    FolderManifest::save(target_.contentRoot(), PlannedChats::toRememberMeanwhile(plan_.chats));
    const std::vector<MediaResult> media = MediaCopying::run(
        plan_, source_, {.index = index_, .lock = target_.lock(), .disk = target_.disk(), .failures = failures_},
        control_.isCancelled, progress);
    count(media);
    warnOfDoubtful(doubtfulOf(media));
    MediaSettlement::settle(library_.media(), {.plan = plan_, .index = index_, .source = source_}, media);
    remember();
    if (job_.options.exportTranscripts) {
      takeIn();
      const auto [pictures, doubtfulPictures] = copyPictures(progress);
      warnOfDoubtful(doubtfulPictures);
      source_.forget();  // pages are made from the library alone
      const LibraryUpdate::Pages pages = writeArchive(pictures, progress);
      remember();
      target_.flush(folderNames());  // what the library knows of pages is never ahead of them
      LibraryUpdate::takePages(library_, pages);
    } else {
      LibraryUpdate::takeMedia(library_, source_.snapshot);
      target_.flush(folderNames());
    }
    summary_.failures = failures_.failures();
    summary_.failedCount = std::ssize(summary_.failures);
    return std::move(summary_);
  }

 private:
  // `place` is a content root or an open library.
  template <typename Place>
  void requireOwner(const Place& place) const {
    if (!job_.isSamePerson) ArchiveOwner::requireSame(place, source_.snapshot);
  }

  // One whose last transaction was broken off can be read, and its owner be known, only now.
  Library openLibrary() const {
    Library library = Library::open(target_.contentRoot());
    requireOwner(library.database());
    return library;
  }

  // An export that ended with a library left its receipt beside it.
  bool isLibraryGone() const {
    const bool hadOne = Files::kindOf(target_.contentRoot() / OwnFiles::receipt) == Files::Kind::file;
    return hadOne && library_.knowsNothing() && library_.warnings().empty();
  }

  void warn() {
    summary_.warnings = source_.warnings;
    std::ranges::copy(plan_.warnings, std::back_inserter(summary_.warnings));
    std::ranges::copy(library_.warnings(), std::back_inserter(summary_.warnings));
    if (isLibraryGone()) {
      summary_.warnings.emplace_back(
          "This export’s library was missing. It was made anew from the archive’s pages and this backup; what only the "
          "library knew may be missing.");
    }
    summary_.mayBeIncomplete = !summary_.warnings.empty();
    std::ranges::copy(naming_.warnings, std::back_inserter(summary_.warnings));
    if (control_.warned) std::ranges::for_each(summary_.warnings, control_.warned);
  }

  // Folders that were taken away meanwhile were made again, without what was copied into them.
  void remember() const {
    target_.lock().requireInPlace();
    FolderAssignment folders = PlannedChats::toRemember(plan_.chats);
    folders.merge(FormerFolders::stillFull(plan_.chats, target_.contentRoot()));
    FolderManifest::save(target_.contentRoot(), folders);
    throwIfCancelled(control_.isCancelled);
  }

  void count(const std::vector<MediaResult>& media) {
    for (const MediaResult& result : media) {
      if (result.outcome == MediaResult::Outcome::wasThere) ++summary_.skippedExistingCount;
      if (result.outcome == MediaResult::Outcome::copied) ++summary_.copiedCount;
      summary_.totalBytesCopied = saturatingAdd(summary_.totalBytesCopied, result.copiedBytes);
    }
  }

  static std::vector<std::string> doubtfulOf(const std::vector<MediaResult>& media) {
    std::vector<std::string> names;
    for (const MediaResult& result : media) {
      if (result.isDoubtful) names.push_back(result.place.name);
    }
    return names;
  }

  // Their lengths are right, so nothing else tells them from whole files.
  void warnOfDoubtful(const std::vector<std::string>& names) {
    const auto warning = NamedWarning::of(
        names,
        "damaged in the backup, or locked with another key than the backup says. Such files are exported as they are. "
        "Copy the backup again from where it came, or make a new one with the iPhone.");
    if (warning) warnOfLoss(*warning);
  }

  void takeIn() {
    LibraryUpdate::take(library_, earlierPages(),
                        {.snapshot = source_.snapshot,
                         .scope = part_.scope,
                         .chats = chatsOf(part_, folders_),
                         .backup = source_.opened.info(),
                         .timeZone = exporter_.timeZone,
                         .locale = exporter_.locale,
                         .pageIDOf = ChatArchiveWriter::pageID},
                        control_.isCancelled);
  }

  // What the archive tells that an export without a library left; nothing where there is one.
  LibraryUpdate::EarlierChats earlierPages() {
    if (!library_.isNew()) return {};
    return [this](const auto& take) {
      const EarlierPages pages(target_.contentRoot(), FolderManifest::load(job_.destination));
      for (const std::string& warning : pages.forEachChat(library_.media(), take)) warnOfLoss(warning);
    };
  }

  std::vector<std::string> folderNames() const {
    std::vector<std::string> names;
    for (const auto& [jid, folder] : folders_) names.push_back(folder);
    return names;
  }

  void warnOfLoss(const std::string& warning) {
    summary_.warnings.push_back(warning);
    summary_.mayBeIncomplete = true;
    if (control_.warned) control_.warned(warning);
  }

  PictureExport::Outcome copyPictures(ProgressReporter& progress) {
    progress.begin(Phase::writingTranscripts, std::ssize(library_.chats()));
    return PictureExport::copy(source_, library_, {target_.destination(), target_.contentRoot()}, failures_,
                               control_.isCancelled);
  }

  LibraryUpdate::Pages writeArchive(const PictureExport::Pictures& pictures, ProgressReporter& progress) {
    const LibraryFolders::Folders folders = LibraryFolders::planned(library_, plan_.chats);
    ArchiveExport::Outcome outcome =
        ArchiveExport::write({.library = library_, .folders = folders, .pictures = pictures},
                             {.archive = {.destination = target_.destination(),
                                          .contentRoot = target_.contentRoot(),
                                          .style = exporter_.transcriptStyle,
                                          .timeZone = exporter_.timeZone,
                                          .locale = exporter_.locale},
                              .disk = target_.disk(),
                              .kinds = job_.options.includedKinds,
                              .formats = job_.options.formats},
                             failures_, control_.isCancelled, progress);
    summary_.transcriptCount = outcome.transcriptCount;
    summary_.archiveIndexURL = outcome.page;
    summary_.unresolvedArchiveLinkCount = outcome.unresolvedLinkCount;
    return std::move(outcome.pages);
  }

  const Exporter& exporter_;
  const ExportJob& job_;
  BackupSource& source_;
  const BackupPart part_;
  const RunControl& control_;
  const ExportTarget target_;
  const NamingMemory::Decision naming_;
  const DestinationIndex index_;  // as it was before anything was copied
  Library library_;
  const ExportPlan plan_;
  const ChatFolders folders_ = PlannedChats::folders(plan_.chats);
  ExportSummary summary_{.destination = job_.destination,
                         .chatFolderCount = static_cast<std::int64_t>(folders_.size())};
  FailureLog failures_{{.backup = &job_.backup, .destination = &job_.destination}};
};

}  // namespace

BackupInfo Exporter::inspect(const fs::path& backup) const { return BackupInspector::inspect(backup); }

ScanResult Exporter::scan(const ScanJob& job, const CancellationCheck& isCancelled) const {
  return begin({.backup = &job.backup}, [&] {
    std::optional<PasswordKey> used;
    OpenedBackup opened = OpenedBackup::open(job.backup, job.password, {.isCancelled = isCancelled}, job.unlockReport,
                                             {.used = job.passwordKey == nullptr ? nullptr : &used});
    throwIfCancelled(isCancelled);
    const BackupSource source = BackupSource::load(std::move(opened), isCancelled);
    EarlyEnd::requireBackup({.backup = &job.backup});
    ScanResult result = ScanSummary::summarize(source, Scope::of(job.selection, source, timeZone), locale);
    if (job.passwordKey != nullptr) *job.passwordKey = std::move(used);
    return result;
  });
}

ExportSummary Exporter::exportBackup(const ExportJob& wish, const RunControl& control) const {
  ExportJob job = wish;
  job.destination = ExportDestination::meant(job.destination);
  return begin({.backup = &job.backup, .destination = &job.destination}, [&] { return runExport(job, control); });
}

ExportSummary Exporter::runExport(const ExportJob& job, const RunControl& control) const {
  ProgressReporter progress(control.progress);
  ExportReceipt receipt(*this, job, control.isCancelled);
  OpenedBackup opened = BackupReading::open({.backup = job.backup,
                                             .password = job.password,
                                             .passwordKey = job.passwordKey,
                                             .unlockReport = job.unlockReport},
                                            progress, control);
  if (auto nothingNew = receipt.summaryOfNothingNew()) {
    progress.begin(Phase::finished);
    return *std::move(nothingNew);
  }
  BackupSource source = BackupReading::read(std::move(opened), progress, control,
                                            [&](const ManifestStore& manifest) { receipt.noteDatabases(manifest); });
  // One that was taken away would only lack the names of its contacts.
  EarlyEnd::requireBackup({.backup = &job.backup, .destination = &job.destination});
  Writing writing(*this, job, source, control);
  ExportSummary summary = writing.run(progress);
  receipt.write(summary, control.isCancelled);
  progress.begin(Phase::finished);
  return summary;
}

DedupeSummary Exporter::dedupe(const fs::path& destination, bool apply, const CancellationCheck& isCancelled) const {
  return ExportDeduper::run(destination, apply, isCancelled);
}

std::int64_t Exporter::freeSpace(const fs::path& folder) const { return DiskSpace::availableBytes(folder); }
