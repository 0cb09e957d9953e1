#include "Tidewell/Session/ExportViewModel.h"

#include <QByteArray>
#include <QStandardPaths>
#include <utility>

#include "Tidewell/Services/FinderSupport.h"
#include "TidewellCore/ErrorReport.h"
#include "TidewellCore/Export/ExportDestination.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"

namespace {

namespace fs = std::filesystem;

fs::path applicationSupport(const fs::path& home) {
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
  return folder.isEmpty() ? home / "Library" / "Application Support" : PathText::path(folder.toStdString());
}

std::optional<fs::path> pathOf(const std::optional<std::string>& text) {
  return text ? std::optional(PathText::path(*text)) : std::nullopt;
}

bool isFolder(const std::optional<fs::path>& path) { return path && Files::isFolder(*path); }

}  // namespace

ExportViewModel::ExportViewModel(Setup setup, BackgroundWork& work)
    : services_(std::move(setup.services)),
      texts_(std::move(setup.texts)),
      work_(work),
      preferencesURL_(setup.preferencesURL ? *setup.preferencesURL
                                           : ExportPreferences::fileURL(applicationSupport(services_.home))),
      preferences_(ExportPreferences::load(preferencesURL_)) {}

ExportViewModel::~ExportViewModel() {
  lifetime_->cancel();
  choice_->cancel();
  if (cancellation_) cancellation_->cancel();
}

CancellationCheck ExportViewModel::checkOf(std::shared_ptr<CancellationToken> token) {
  return [token = std::move(token)] { return token->isCancelled(); };
}

// ---------------------------------------------- what was used last time

void ExportViewModel::restoreRememberedLocations() {
  restoreBackup();
  restoreDestination();
}

// The folders are looked at on a worker, since the volume of one may be slow or gone.
void ExportViewModel::restoreBackup() {
  const std::optional<fs::path> bookmarked = resolved(preferences_.lastBackupBookmark);
  inBackground(
      BackgroundWork::Lane::userInitiated,
      [bookmarked, last = pathOf(preferences_.lastBackupPath)] {
        return isFolder(bookmarked) ? bookmarked : isFolder(last) ? last : std::nullopt;
      },
      [this, access = accessWhileLooking(bookmarked)](std::future<std::optional<fs::path>> folder) {
        if (const std::optional<fs::path> found = folder.get()) reopen(*found);
      });
}

// What was chosen meanwhile stays chosen.
void ExportViewModel::reopen(const fs::path& folder) {
  if (state_.backupURL == folder) {
    backupAccess_ = startAccess(folder);
  } else if (!state_.backupURL) {
    const DiscoveredBackup* known = listed(folder.native());
    setBackup(folder, known != nullptr ? std::optional(known->info) : std::nullopt);
  }
}

void ExportViewModel::restoreDestination() {
  if (state_.destinationURL) return;
  const std::optional<fs::path> bookmarked = resolved(preferences_.lastDestinationBookmark);
  inBackground(
      BackgroundWork::Lane::userInitiated,
      [bookmarked, last = preferences_.lastDestinationPath, home = services_.home] {
        return isFolder(bookmarked) ? bookmarked : ExportDestination::resolvedDefault(last, home);
      },
      [this, access = accessWhileLooking(bookmarked)](std::future<std::optional<fs::path>> folder) {
        const std::optional<fs::path> found = folder.get();
        if (found && !state_.destinationURL) setDestination(*found);
      });
}

std::optional<fs::path> ExportViewModel::resolved(const std::optional<Bytes>& bookmark) const {
  return bookmark ? services_.permissions.resolveBookmark(*bookmark) : std::nullopt;
}

std::shared_ptr<ScopedAccess> ExportViewModel::accessWhileLooking(const std::optional<fs::path>& folder) const {
  return folder ? startAccess(*folder) : nullptr;
}

void ExportViewModel::rememberBackup() {
  preferences_.lastBackupPath = PathText::text(*state_.backupURL);
  preferences_.lastBackupBookmark = services_.permissions.makeBookmark(*state_.backupURL);
  savePreferences();
}

void ExportViewModel::savePreferences() {
  keepInOrder([preferences = preferences_, url = preferencesURL_] { preferences.save(url); });
}

void ExportViewModel::keepInOrder(std::function<void()> work) {
  inBackground(BackgroundWork::Lane::inOrder, std::move(work), [](const std::future<void>&) {});
}

// The access before ends when the new one has begun.
std::unique_ptr<ScopedAccess> ExportViewModel::startAccess(const fs::path& url) const {
  return std::make_unique<ScopedAccess>(url, services_.permissions.startAccess(url), services_.permissions.stopAccess);
}

// ------------------------------------------------- what the controls write

void ExportViewModel::setBackupPassword(const QString& password) {
  QByteArray utf8 = password.toUtf8();
  set(&ExportState::backupPassword, {utf8.begin(), utf8.end()});
  tw_wipe(utf8.data(), static_cast<std::size_t>(utf8.size()));
}

void ExportViewModel::setRememberBackupPassword(bool remember) { set(&ExportState::rememberBackupPassword, remember); }

void ExportViewModel::setKindIncluded(const QString& rawValue, bool included) {
  const std::optional<MediaKind> kind = MediaKind::fromRawValue(rawValue.toStdString());
  if (!kind) return;
  MediaKinds kinds = state_.includedKinds;
  if (included) {
    kinds.insert(*kind);
  } else {
    kinds.erase(*kind);
  }
  set(&ExportState::includedKinds, std::move(kinds));
}

void ExportViewModel::setExportTranscripts(bool wanted) { set(&ExportState::exportTranscripts, wanted); }

void ExportViewModel::setDropTargeted(bool targeted) { set(&ExportState::dropTargeted, targeted); }

void ExportViewModel::setFocusBackupPassword(bool wanted) { set(&ExportState::focusBackupPassword, wanted); }

void ExportViewModel::goBackToBackup() {
  if (state_.step == WizardStep::options && !state_.isExporting) set(&ExportState::step, WizardStep::backup);
}

void ExportViewModel::openFullDiskAccessSettings() { FinderSupport::openFullDiskAccessSettings(services_.workspace); }

// ----------------------------------------------------------------- errors

void ExportViewModel::present(const std::exception& error) {
  const ErrorReport report = ErrorReport::of(error);
  set(&ExportState::recoverySuggestion,
      report.recoverySuggestion ? std::optional(translated(*report.recoverySuggestion)) : std::nullopt);
  set(&ExportState::errorMessage, translated(report.errorDescription));
}

void ExportViewModel::clearError() {
  set(&ExportState::errorMessage, std::nullopt);
  set(&ExportState::recoverySuggestion, std::nullopt);
}

void ExportViewModel::dismissError() { set(&ExportState::errorMessage, std::nullopt); }

std::string ExportViewModel::translated(std::string_view english) const {
  return texts_.text(QString::fromUtf8(english.data(), static_cast<qsizetype>(english.size()))).toStdString();
}

// Folders may be chosen when the controller is gone.
FolderAnswer ExportViewModel::answering(void (ExportViewModel::*take)(const fs::path&)) {
  return [self = QPointer(this), take](const std::optional<fs::path>& folder) {
    if (self && folder) (self->*take)(*folder);
  };
}
