#include "Tidewell/Session/ExportViewModel.h"

#include <QByteArray>
#include <utility>

#include "Tidewell/Services/FinderSupport.h"
#include "Tidewell/Services/PathURL.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"

namespace {

namespace fs = std::filesystem;

std::optional<fs::path> pathOf(const std::optional<std::string>& text) {
  return text ? std::optional(PathText::path(*text)) : std::nullopt;
}

bool isFolder(const std::optional<fs::path>& path) { return path && Files::isFolder(*path); }

std::optional<BackupInfo> infoOf(const DiscoveredBackup* backup) {
  return backup == nullptr ? std::nullopt : std::optional(backup->info);
}

}  // namespace

ExportViewModel::ExportViewModel(Setup setup, BackgroundWork& work) : session_(std::move(setup), work) {
  connect(&session_, &ExportSession::changed, this, &ExportViewModel::changed);
}

// ------------------------------------------------------------ the library

void ExportViewModel::startUp(const std::optional<fs::path>& backup) {
  if (backup) setBackup(*backup);
  library_.refresh([this](const auto& end) {
    chooseRemembered([this, end] {
      end();
      restoreRememberedLocations();
    });
  });
}

void ExportViewModel::refreshLibrary() {
  library_.refresh([this](const auto& end) { chooseRemembered(end); });
}

void ExportViewModel::comeBack() {
  library_.refreshOnReturn();
  if (state().step == WizardStep::options) destination_.refreshFreeSpace();
}

void ExportViewModel::chooseRemembered(const std::function<void()>& then) {
  const DiscoveredBackup* found = state().backupURL ? nullptr : library_.atPath(session_.preferences().lastBackupPath);
  if (found == nullptr) return then();
  backup_.select(DiscoveredBackup(*found), then);
}

void ExportViewModel::restoreRememberedLocations() {
  restoreBackup();
  destination_.restore();
}

// The folders are looked at on a worker, since the volume of one may be slow or gone.
void ExportViewModel::restoreBackup() {
  const std::optional<fs::path> bookmarked = session_.resolved(session_.preferences().lastBackupBookmark);
  session_.inBackground(
      BackgroundWork::Lane::userInitiated,
      [bookmarked, last = pathOf(session_.preferences().lastBackupPath)] {
        return isFolder(bookmarked) ? bookmarked : isFolder(last) ? last : std::nullopt;
      },
      [this, access = session_.accessWhileLooking(bookmarked)](std::future<std::optional<fs::path>> folder) {
        const std::optional<fs::path> found = folder.get();
        if (found) backup_.reopen(*found, infoOf(library_.atPath(found->native())));
      });
}

// ------------------------------------------------------------- the backup

void ExportViewModel::selectDiscovered(const DiscoveredBackup& backup) { backup_.select(backup); }

void ExportViewModel::selectBackup(const QString& id) {
  if (const DiscoveredBackup* backup = library_.withIdentifier(id)) selectDiscovered(DiscoveredBackup(*backup));
}

void ExportViewModel::chooseBackup() {
  if (state().isUnlocking()) return;
  session_.chooseFolder(
      {.title = session_.translated("Choose a backup folder"),
       .message = session_.translated("Choose the device folder from a Finder backup, or a copy of that folder."),
       .confirmButton = session_.translated("Choose"),
       .initialFolder = services().backupRoot},
      [this](const fs::path& folder) { startWith(folder); });
}

void ExportViewModel::dropFolder(const QUrl& url) {
  if (url.isLocalFile()) startWith(localPath(url));
}

void ExportViewModel::startWith(const fs::path& folder) {
  if (state().isUnlocking() || state().isExporting()) return;
  const ExportSession::Batch batch(session_);
  exportAnother();
  goBackToBackup();
  setBackup(folder);
}

void ExportViewModel::setBackup(const fs::path& url) { setBackup(url, std::nullopt); }

void ExportViewModel::setBackup(const fs::path& url, const std::optional<BackupInfo>& knownInfo) {
  backup_.set(url, knownInfo);
}

void ExportViewModel::continueToOptions() {
  scan_.start([this] {
    destination_.restore();
    destination_.refreshFreeSpace();
  });
}

void ExportViewModel::cancelUnlock() { scan_.cancelUnlock(); }

void ExportViewModel::goBackToBackup() {
  if (state().step == WizardStep::options && !state().isExporting())
    session_.set(&ExportState::step, WizardStep::backup);
}

// -------------------------------------------- the destination, the export

void ExportViewModel::chooseDestination() { destination_.choose(); }

void ExportViewModel::setDestination(const fs::path& url) { destination_.set(url); }

void ExportViewModel::startExport() {
  export_.start([this] { destination_.takeStock(); });
}

void ExportViewModel::tryAgain() {
  export_.startAgain([this] { destination_.takeStock(); });
}

void ExportViewModel::exportAsSamePerson() {
  export_.startAsSamePerson([this] { destination_.takeStock(); });
}

void ExportViewModel::cancelExport() { export_.cancel(); }

void ExportViewModel::askToCancelExport() { export_.ask(StopQuestion::cancel); }

bool ExportViewModel::mayClose() { return export_.mayClose(); }

void ExportViewModel::keepExporting() { export_.keepGoing(); }

void ExportViewModel::stopExporting() {
  if (export_.stop() == StopQuestion::close) emit closeConfirmed();
}

void ExportViewModel::verify() { verify_.start(); }

void ExportViewModel::cancelVerification() { verify_.cancel(); }

void ExportViewModel::exportAnother() {
  if (state().step != WizardStep::done) return;
  const ExportSession::Batch batch(session_);
  verify_.leave();
  session_.set(&ExportState::progress, std::nullopt);
  session_.set(&ExportState::summary, std::nullopt);
  session_.set(&ExportState::verification, std::nullopt);
  session_.clearError();
  session_.set(&ExportState::step, WizardStep::backup);
}

// ------------------------------------------------------------ the desktop

void ExportViewModel::openArchive() {
  const auto& summary = state().summary;
  if (summary && summary->archiveIndexURL) open(services().workspace.openFile, *summary->archiveIndexURL);
}

void ExportViewModel::revealDestination() {
  if (state().destinationURL) open(services().workspace.revealInFinder, *state().destinationURL);
}

void ExportViewModel::open(const Workspace::Open& opener, const fs::path& place) {
  const auto tell = session_.posting(
      std::function([this](fs::path unopened) { session_.set(&ExportState::unopenedPath, std::move(unopened)); }));
  opener(place, [tell, place] { tell(place); });
}

bool ExportViewModel::hasFullDiskAccessSettings() const { return FinderSupport::hasFullDiskAccessSettings; }

void ExportViewModel::openFullDiskAccessSettings() { FinderSupport::openFullDiskAccessSettings(services().workspace); }

// ------------------------------------------------- what the controls write

void ExportViewModel::setBackupPassword(const QString& password) {
  const ExportSession::Batch batch(session_);
  QByteArray utf8 = password.toUtf8();
  session_.set(&ExportState::backupPassword, {utf8.begin(), utf8.end()});
  session_.set(&ExportState::hasEditedPassword, true);
  session_.set(&ExportState::passwordKey, std::nullopt);
  tw_wipe(utf8.data(), static_cast<std::size_t>(utf8.size()));
}

void ExportViewModel::setRememberBackupPassword(bool remember) {
  session_.set(&ExportState::rememberBackupPassword, remember);
}

void ExportViewModel::setKindIncluded(const QString& rawValue, bool included) {
  const std::optional<MediaKind> kind = MediaKind::fromRawValue(rawValue.toStdString());
  if (!kind) return;
  MediaKinds kinds = state().includedKinds;
  if (included) {
    kinds.insert(*kind);
  } else {
    kinds.erase(*kind);
  }
  session_.set(&ExportState::includedKinds, std::move(kinds));
}

void ExportViewModel::setExportTranscripts(bool wanted) { session_.set(&ExportState::exportTranscripts, wanted); }

void ExportViewModel::setExportMessageFiles(bool wanted) { session_.set(&ExportState::exportMessageFiles, wanted); }

void ExportViewModel::changeChats(const std::function<void(ChatChoice& choice)>& change) {
  ChatChoice choice = state().chatChoice;
  change(choice);
  session_.set(&ExportState::chatChoice, std::move(choice));
}

void ExportViewModel::setFirstDay(const QString& typed) {
  changeChats([&](ChatChoice& choice) { choice.since = typed.toStdString(); });
}

void ExportViewModel::setLastDay(const QString& typed) {
  changeChats([&](ChatChoice& choice) { choice.until = typed.toStdString(); });
}

void ExportViewModel::showChats(bool shown) {
  changeChats([&](ChatChoice& choice) {
    choice.isListShown = shown && state().step == WizardStep::options;
    choice.search.clear();
  });
}

void ExportViewModel::searchChats(const QString& typed) {
  changeChats([&](ChatChoice& choice) { choice.search = typed.toStdString(); });
}

void ExportViewModel::setChatIncluded(const QString& jid, bool included) {
  changeChats([&](ChatChoice& choice) {
    if (included) {
      choice.leftOut.erase(jid.toStdString());
    } else {
      choice.leftOut.insert(jid.toStdString());
    }
  });
}

void ExportViewModel::setFoundChatsIncluded(bool included) {
  if (!state().scanResult) return;
  changeChats([&](ChatChoice& choice) {
    for (const ScanChat& chat : state().scanResult->chats) {
      if (!choice.fitsSearch(chat)) continue;
      included ? void(choice.leftOut.erase(chat.jid)) : void(choice.leftOut.insert(chat.jid));
    }
  });
}

void ExportViewModel::setDropTargeted(bool targeted) { session_.set(&ExportState::dropTargeted, targeted); }

void ExportViewModel::setFocusBackupPassword(bool wanted) { session_.set(&ExportState::focusBackupPassword, wanted); }

void ExportViewModel::dismissError() { session_.set(&ExportState::errorMessage, std::nullopt); }

void ExportViewModel::dismissUnopenedPath() { session_.set(&ExportState::unopenedPath, std::nullopt); }
