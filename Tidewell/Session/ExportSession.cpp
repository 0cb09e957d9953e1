#include "Tidewell/Session/ExportSession.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QStandardPaths>

#include "TidewellCore/ErrorReport.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;

fs::path applicationSupport(const fs::path& home) {
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
  return folder.isEmpty() ? home / "Library" / "Application Support" : PathText::path(folder.toStdString());
}

}  // namespace

ExportSession::ExportSession(Setup setup, BackgroundWork& work)
    : services_(std::move(setup.services)),
      texts_(std::move(setup.texts)),
      work_(work),
      preferencesURL_(setup.preferencesURL ? *setup.preferencesURL
                                           : ExportPreferences::fileURL(applicationSupport(services_.home))),
      preferences_(ExportPreferences::load(preferencesURL_)) {}

ExportSession::~ExportSession() { lifetime_->cancel(); }

void ExportSession::endBatch() {
  if (--batchCount_ > 0 || !hasChanged_) return;
  hasChanged_ = false;
  emit changed();
}

void ExportSession::post(std::function<void()> action) {
  QCoreApplication* application = QCoreApplication::instance();
  if (application != nullptr) QMetaObject::invokeMethod(application, std::move(action), Qt::QueuedConnection);
}

void ExportSession::keepInOrder(std::function<void()> work) {
  inBackground(BackgroundWork::Lane::inOrder, std::move(work), [](const std::future<void>&) {});
}

CancellationCheck ExportSession::isGone() const { return checkOf(lifetime_); }

CancellationCheck ExportSession::checkOf(std::shared_ptr<CancellationToken> token) {
  return [token = std::move(token)] { return token->isCancelled(); };
}

// ---------------------------------------------------------------- folders

// A folder may be chosen when the wizard is gone.
void ExportSession::chooseFolder(const FolderRequest& request, const std::function<void(const fs::path&)>& take) {
  services_.chooseFolder(request, [self = QPointer(this), take](const std::optional<fs::path>& folder) {
    if (!self || !folder) return;
    const Batch batch(*self);
    take(*folder);
  });
}

// The access before ends when the new one has begun.
std::unique_ptr<ScopedAccess> ExportSession::startAccess(const fs::path& folder) const {
  const FolderPermissions& permissions = services_.permissions;
  return std::make_unique<ScopedAccess>(folder, permissions.startAccess(folder), permissions.stopAccess);
}

std::optional<fs::path> ExportSession::resolved(const std::optional<Bytes>& bookmark) const {
  return bookmark ? services_.permissions.resolveBookmark(*bookmark) : std::nullopt;
}

std::shared_ptr<ScopedAccess> ExportSession::accessWhileLooking(const std::optional<fs::path>& folder) const {
  return folder ? startAccess(*folder) : nullptr;
}

// ------------------------------------------------------------ preferences

void ExportSession::rememberBackup(const fs::path& folder) {
  preferences_.lastBackupPath = PathText::text(folder);
  preferences_.lastBackupBookmark = services_.permissions.makeBookmark(folder);
  savePreferences();
}

void ExportSession::rememberDestination(const fs::path& folder) {
  preferences_.lastDestinationPath = PathText::text(folder);
  preferences_.lastDestinationBookmark = services_.permissions.makeBookmark(folder);
  savePreferences();
}

void ExportSession::savePreferences() {
  keepInOrder([preferences = preferences_, url = preferencesURL_] { preferences.save(url); });
}

// ----------------------------------------------------------------- errors

std::string ExportSession::translated(std::string_view english) const {
  return texts_.text(QString::fromUtf8(english.data(), static_cast<qsizetype>(english.size()))).toStdString();
}

void ExportSession::present(const std::exception& error) {
  const Batch batch(*this);
  const ErrorReport report = ErrorReport::of(error);
  set(&ExportState::recoverySuggestion,
      report.recoverySuggestion ? std::optional(translated(*report.recoverySuggestion)) : std::nullopt);
  const auto* known = dynamic_cast<const TidewellError*>(&error);
  set(&ExportState::isForeignArchive, known != nullptr && known->is<TidewellError::ForeignArchive>());
  set(&ExportState::errorMessage, translated(report.errorDescription));
}

void ExportSession::clearError() {
  const Batch batch(*this);
  set(&ExportState::errorMessage, std::nullopt);
  set(&ExportState::recoverySuggestion, std::nullopt);
  set(&ExportState::isForeignArchive, false);
}
