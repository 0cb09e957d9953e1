#include <utility>

#include "Tidewell/Session/ExportViewModel.h"
#include "TidewellCore/Export/DiskSpace.h"
#include "TidewellCore/Export/Exporter.h"
#include "TidewellCore/Platform/PathText.h"

// The second and the third step: where to, and the export itself.

namespace {

namespace fs = std::filesystem;
using Lane = BackgroundWork::Lane;

// What a worker needs for one export; its own, since the controller may be gone before it ends.
struct ExportRun {
  fs::path backup;
  fs::path destination;
  ExportOptions options;
  SecretBytes password;
  TranscriptStyle style;
  RunControl control;

  ExportSummary operator()() const {
    const auto text = password.empty() ? std::nullopt : std::optional(textOf(password));
    const ExportJob job{.backup = backup, .destination = destination, .options = options, .password = text};
    return Exporter{.transcriptStyle = style}.exportBackup(job, control);
  }
};

}  // namespace

// -------------------------------------------------------- the destination

void ExportViewModel::chooseDestination() {
  services_.chooseFolder(
      {.title = translated("Choose where to save"),
       .message = translated(
           "Chats and media will be saved here. Files that are already there with the same size are skipped."),
       .confirmButton = translated("Choose"),
       .initialFolder = state_.destinationURL.value_or(services_.home / "Desktop"),
       .canCreateFolders = true},
      answering(&ExportViewModel::takeDestination));
}

// A running or finished export keeps the folder that it was started with.
void ExportViewModel::takeDestination(const fs::path& folder) {
  if (!state_.isExporting && state_.step != WizardStep::done) setDestination(folder);
}

void ExportViewModel::setDestination(const fs::path& url) {
  destinationAccess_ = startAccess(url);
  // What is free in one folder says nothing of another.
  if (state_.destinationURL != url) set(&ExportState::availableBytes, std::nullopt);
  set(&ExportState::destinationURL, url);
  set(&ExportState::summary, std::nullopt);
  preferences_.lastDestinationPath = PathText::text(url);
  preferences_.lastDestinationBookmark = services_.permissions.makeBookmark(url);
  savePreferences();
  refreshFreeSpace();
}

void ExportViewModel::refreshFreeSpace() {
  if (!state_.destinationURL) return set(&ExportState::availableBytes, std::nullopt);
  const fs::path asked = *state_.destinationURL;
  inBackground(
      Lane::userInitiated, [asked] { return DiskSpace::availableBytes(asked); },
      [this, asked](std::future<std::int64_t> bytes) {
        if (state_.destinationURL != asked) return;
        try {
          set(&ExportState::availableBytes, bytes.get());
        } catch (const std::exception&) {
          set(&ExportState::availableBytes, std::nullopt);
        }
      });
}

// ------------------------------------------------------------- the export

void ExportViewModel::startExport() {
  if (!state_.canExport() || state_.step != WizardStep::options) return;
  set(&ExportState::summary, std::nullopt);
  cancellation_ = std::make_shared<CancellationToken>();
  set(&ExportState::isExporting, true);
  set(&ExportState::exportStartedAt, services_.now());
  set(&ExportState::progress, ExportProgress{.total = 1});
  set(&ExportState::step, WizardStep::exporting);

  const auto password = state_.currentPassword().value_or("");
  const auto report = [this, self = QPointer<QObject>(this), &work = work_](const ExportProgress& progress) {
    work.post(self, [this, progress] { set(&ExportState::progress, progress); });
  };
  inBackground(
      Lane::userInitiated,
      ExportRun{.backup = *state_.backupURL,
                .destination = *state_.destinationURL,
                .options = {.includedKinds = state_.includedKinds, .exportTranscripts = state_.exportTranscripts},
                .password = {password.begin(), password.end()},
                .style = texts_.transcriptStyle(),
                .control = {.progress = report, .isCancelled = checkOf(cancellation_)}},
      [this](std::future<ExportSummary> summary) {
        takeExport(std::move(summary));
        set(&ExportState::isExporting, false);
        cancellation_.reset();
      });
}

void ExportViewModel::takeExport(std::future<ExportSummary> summary) {
  try {
    set(&ExportState::summary, summary.get());
    set(&ExportState::step, WizardStep::done);
  } catch (const std::exception& error) {
    present(error);
    set(&ExportState::step, WizardStep::options);
  }
}

void ExportViewModel::cancelExport() {
  if (state_.isExporting && cancellation_) cancellation_->cancel();
}

// ------------------------------------------------------------ the summary

void ExportViewModel::exportAnother() {
  if (state_.step != WizardStep::done) return;
  set(&ExportState::progress, std::nullopt);
  set(&ExportState::summary, std::nullopt);
  clearError();
  set(&ExportState::step, WizardStep::backup);
}

void ExportViewModel::openArchive() {
  if (state_.summary && state_.summary->archiveIndexURL) services_.workspace.openFile(*state_.summary->archiveIndexURL);
}

void ExportViewModel::revealDestination() {
  if (state_.destinationURL) services_.workspace.revealInFinder(*state_.destinationURL);
}
