#include "Tidewell/Session/ExportViewModel.h"

#include <QByteArray>
#include <QStandardPaths>
#include <utility>

#include "Tidewell/Services/FinderSupport.h"
#include "TidewellCore/ErrorReport.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"

namespace {

namespace fs = std::filesystem;

fs::path applicationSupport(const fs::path& home) {
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
  return folder.isEmpty() ? home / "Library" / "Application Support" : PathText::path(folder.toStdString());
}

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

// What was chosen meanwhile stays chosen.
void ExportViewModel::restoreBackup() {
  if (const auto resolved = resolvedFolder(preferences_.lastBackupBookmark)) {
    if (state_.backupURL == *resolved) {
      backupAccess_ = startAccess(*resolved);
    } else if (!state_.backupURL) {
      const DiscoveredBackup* known = listed(PathText::text(*resolved));
      setBackup(*resolved, known != nullptr ? std::optional(known->info) : std::nullopt);
    }
  } else if (!state_.backupURL && preferences_.lastBackupPath) {
    const fs::path last = PathText::path(*preferences_.lastBackupPath);
    if (Files::isFolder(last)) setBackup(last);
  }
}

std::optional<fs::path> ExportViewModel::resolvedFolder(const std::optional<Bytes>& bookmark) const {
  if (!bookmark) return std::nullopt;
  const auto folder = services_.permissions.resolveBookmark(*bookmark);
  if (!folder) return std::nullopt;
  const auto access = startAccess(*folder);
  return Files::isFolder(*folder) ? folder : std::nullopt;
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
  utf8.fill('\0');
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
