#include "TidewellCore/Export/Rerendering.h"

#include <utility>

#include "TidewellCore/Destination/ExportDestination.h"
#include "TidewellCore/Destination/FolderManifest.h"
#include "TidewellCore/Export/ArchiveExport.h"
#include "TidewellCore/Export/EarlyEnd.h"
#include "TidewellCore/Export/ExportTarget.h"
#include "TidewellCore/Export/ProgressReporter.h"
#include "TidewellCore/Library/KeptExports.h"
#include "TidewellCore/Library/LibraryCheck.h"
#include "TidewellCore/Platform/Files.h"

namespace {

namespace fs = std::filesystem;

Library openLibrary(const fs::path& contentRoot) {
  auto file = LibraryFile::openIfThere(contentRoot);
  if (!file) {
    throw TidewellError::ioFailure(
        "This folder holds no library to make pages from. Export again: the next export makes one.");
  }
  LibraryCheck::requireMessagesOfPages(file->database());
  Library library(std::move(*file));
  if (library.isNew()) {
    throw TidewellError::ioFailure("This export’s library knows no chats yet. Export again, with transcripts.");
  }
  return library;
}

class Run {
 public:
  Run(const RenderJob& job, const fs::path& destination, const RunControl& control)
      : job_(job),
        control_(control),
        target_(ExportTarget::standing(destination)),
        library_(openLibrary(target_.contentRoot())),
        known_(Renderings::load(library_.database())),
        remembered_(FolderManifest::load(destination)),
        folders_(LibraryFolders::remembered(library_, remembered_, known_)),
        failures_({.destination = &target_.destination()}) {}

  RenderSummary run(ProgressReporter& progress) {
    const ArchiveExport::Outcome outcome = makePages(progress);
    // The viewer's copy went with its folder.
    if (!remembered_.empty()) FolderManifest::save(target_.contentRoot(), remembered_);
    throwIfCancelled(control_.isCancelled);
    target_.lock().requireInPlace();
    target_.flush(folders_);  // what the library knows of pages is never ahead of them
    LibraryUpdate::takePages(library_, outcome.pages);
    return {.chatCount = std::ssize(library_.chats()),
            .transcriptCount = outcome.transcriptCount,
            .failedCount = std::ssize(failures_.failures()),
            .destination = target_.destination(),
            .archiveIndexURL = outcome.page,
            .failures = failures_.failures()};
  }

 private:
  ArchiveExport::Outcome makePages(ProgressReporter& progress) {
    progress.begin(ExportProgress::Phase::writingTranscripts, std::ssize(library_.chats()));
    const auto [timeZone, locale] = speech();
    return ArchiveExport::write({.library = library_, .folders = folders_, .pictures = {}},
                                {.archive = {.destination = target_.destination(),
                                             .contentRoot = target_.contentRoot(),
                                             .style = TranscriptStyle::matching(locale),
                                             .timeZone = timeZone,
                                             .locale = locale},
                                 .disk = target_.disk(),
                                 .kinds = {},
                                 .formats = job_.formats,
                                 .isAllStale = true},
                                failures_, control_.isCancelled, progress);
  }

  // Whatever somebody may have written into the library, dates are written by names that exist.
  KeptExports::Speech speech() const {
    KeptExports::Speech speech = KeptExports::lastSpeech(library_.database()).value_or(KeptExports::Speech());
    if (!TimeZone::named(speech.timeZone.identifier)) speech.timeZone = TimeZone();
    if (!Locale::named(speech.locale.identifier)) speech.locale = Locale();
    return {.timeZone = job_.timeZone.value_or(speech.timeZone), .locale = job_.locale.value_or(speech.locale)};
  }

  const RenderJob& job_;
  const RunControl& control_;
  const ExportTarget target_;
  Library library_;
  const Renderings known_;
  const FolderAssignment remembered_;
  const LibraryFolders::Folders folders_;
  FailureLog failures_;
};

}  // namespace

RenderSummary Rerendering::run(const RenderJob& job, const RunControl& control) {
  const fs::path destination = ExportDestination::meant(job.destination);
  if (!Files::isFolder(destination)) throw TidewellError::ioFailure("There is no export in this folder.");
  ProgressReporter progress(control.progress);
  progress.begin(ExportProgress::Phase::preparing);
  RenderSummary summary = EarlyEnd::explained({.destination = &destination}, [&] {
    try {
      return Run(job, destination, control).run(progress);
    } catch (const SQLiteDamage&) {
      throw TidewellError::ioFailure(LibraryFile::adviceForDamaged());
    }
  });
  progress.begin(ExportProgress::Phase::finished);
  return summary;
}
