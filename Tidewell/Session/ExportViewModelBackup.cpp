#include <algorithm>
#include <utility>

#include "Tidewell/Services/PathURL.h"
#include "Tidewell/Session/ExportViewModel.h"
#include "TidewellCore/Export/Exporter.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/TidewellError.h"

// The first step: which backups there are, which one is chosen, what it holds.

namespace {

namespace fs = std::filesystem;
using Lane = BackgroundWork::Lane;

std::optional<SecretBytes> copied(const std::optional<std::string_view>& password) {
  return password ? std::optional(SecretBytes(password->begin(), password->end())) : std::nullopt;
}

std::optional<std::string_view> textIn(const std::optional<SecretBytes>& password) {
  return password ? std::optional(textOf(*password)) : std::nullopt;
}

std::vector<DiscoveredBackup> measured(std::vector<DiscoveredBackup> backups, const CancellationCheck& isCancelled) {
  for (DiscoveredBackup& backup : backups) {
    backup.byteCount = BackupLibrary::folderByteCount(backup.info.url, isCancelled);
  }
  return backups;
}

// Choosers, drops and command lines may name a folder with a slash at its end.
fs::path withoutSlash(const fs::path& folder) { return folder.has_filename() ? folder : folder.parent_path(); }

}  // namespace

// ------------------------------------------------------------ the library

void ExportViewModel::startUp(const std::optional<fs::path>& backup) {
  if (backup) setBackup(*backup);
  refreshLibrary([this] { restoreRememberedLocations(); });
}

void ExportViewModel::refreshLibrary() { refreshLibrary({}); }

void ExportViewModel::refreshLibrary(const Then& then) {
  if (state_.isUnlocking) return;
  set(&ExportState::isRefreshingLibrary, true);
  inBackground(
      Lane::userInitiated, [root = services_.backupRoot] { return BackupLibrary::diagnose(root); },
      [this, then](std::future<BackupLibrarySnapshot> snapshot) {
        set(&ExportState::library, snapshot.get());
        set(&ExportState::hasReadLibrary, true);
        fillSizes([this, then] {
          chooseRememberedInLibrary([this, then] {
            set(&ExportState::isRefreshingLibrary, false);
            if (then) then();
          });
        });
      });
}

void ExportViewModel::fillSizes(const Then& then) {
  inBackground(
      Lane::utility,
      [backups = state_.library.backups, isCancelled = checkOf(lifetime_)] { return measured(backups, isCancelled); },
      [this, then](std::future<std::vector<DiscoveredBackup>> backups) {
        set(&ExportState::library, {.access = state_.library.access, .backups = backups.get()});
        then();
      });
}

void ExportViewModel::chooseRememberedInLibrary(const Then& then) {
  const DiscoveredBackup* remembered = state_.backupURL ? nullptr : listed(preferences_.lastBackupPath);
  if (remembered == nullptr) return then();
  selectDiscovered(*remembered, then);
}

const DiscoveredBackup* ExportViewModel::listed(const std::optional<std::string>& path) const {
  const auto& backups = state_.library.backups;
  const auto found = std::ranges::find_if(backups, [&](const DiscoveredBackup& backup) { return backup.id() == path; });
  return found == backups.end() ? nullptr : &*found;
}

// ------------------------------------------------------------- the backup

void ExportViewModel::selectDiscovered(const DiscoveredBackup& backup) { selectDiscovered(backup, {}); }

void ExportViewModel::selectDiscovered(const DiscoveredBackup& backup, const Then& then) {
  if (state_.isUnlocking) return;
  set(&ExportState::selectedBackupID, backup.id());
  setBackup(backup.info.url, backup.info, then);
}

void ExportViewModel::selectBackup(const QString& id) {
  // Not looked up by path: one that is no text has become another on its way through the screen.
  const auto& backups = state_.library.backups;
  const auto found = std::ranges::find(
      backups, id, [](const DiscoveredBackup& backup) { return QString::fromStdString(backup.id()); });
  if (found != backups.end()) selectDiscovered(DiscoveredBackup(*found));
}

void ExportViewModel::chooseBackup() {
  if (state_.isUnlocking) return;
  services_.chooseFolder(
      {.title = translated("Choose a backup folder"),
       .message = translated("Choose the device folder from a Finder backup, or a copy of that folder."),
       .confirmButton = translated("Choose"),
       .initialFolder = services_.backupRoot},
      answering(&ExportViewModel::startWith));
}

void ExportViewModel::dropFolder(const QUrl& url) {
  if (url.isLocalFile()) startWith(localPath(url));
}

void ExportViewModel::startWith(const fs::path& folder) {
  if (state_.isUnlocking || state_.isExporting) return;
  exportAnother();
  goBackToBackup();
  setBackup(folder);
}

void ExportViewModel::setBackup(const fs::path& url) { setBackup(url, std::nullopt); }

void ExportViewModel::setBackup(const fs::path& url, const std::optional<BackupInfo>& knownInfo) {
  setBackup(url, knownInfo, {});
}

void ExportViewModel::setBackup(const fs::path& folder, const std::optional<BackupInfo>& knownInfo, const Then& then) {
  if (state_.isUnlocking) return;
  const fs::path url = withoutSlash(folder);
  clearForNewBackup(url);
  backupAccess_ = startAccess(url);
  set(&ExportState::backupURL, url);
  set(&ExportState::isInspecting, true);
  inBackground(
      Lane::userInitiated, [url] { return Exporter().inspect(url); },
      [this, then, knownInfo, choice = choice_](std::future<BackupInfo> info) {
        takeInspection(std::move(info), knownInfo, choice, [this, then, choice] {
          if (!choice->isCancelled()) set(&ExportState::isInspecting, false);
          if (then) then();
        });
      });
}

// Calls that still work for the backup chosen before are not to be taken up any more.
void ExportViewModel::clearForNewBackup(const fs::path& url) {
  choice_->cancel();
  choice_ = std::make_shared<CancellationToken>();
  if (state_.isScanning && cancellation_) cancellation_->cancel();
  clearError();
  set(&ExportState::scanResult, std::nullopt);
  set(&ExportState::summary, std::nullopt);
  set(&ExportState::progress, std::nullopt);
  if (state_.selectedBackupID != url.native()) set(&ExportState::selectedBackupID, std::nullopt);
  set(&ExportState::backupPassword, {});
  set(&ExportState::storedPassword, std::nullopt);
  set(&ExportState::hasStoredPassword, false);
  set(&ExportState::rememberBackupPassword, false);
}

void ExportViewModel::takeInspection(std::future<BackupInfo> info, const std::optional<BackupInfo>& knownInfo,
                                     const Choice& choice, const Then& then) {
  if (choice->isCancelled()) return then();
  try {
    set(&ExportState::backupInfo, info.get());
    set(&ExportState::selectedBackupID, state_.backupURL->native());
    rememberBackup();
    return state_.backupInfo->isEncrypted ? loadStoredPassword(choice, then) : then();
  } catch (const std::exception& error) {
    set(&ExportState::backupInfo, knownInfo);
    present(error);
  }
  then();
}

void ExportViewModel::loadStoredPassword(const Choice& choice, const Then& then) {
  inBackground(
      Lane::inOrder,
      [load = services_.passwords.load, account = passwordAccount(), choice] {
        return choice->isCancelled() ? std::nullopt : load(account);
      },
      [this, choice, then](std::future<std::optional<SecretBytes>> future) {
        const std::optional<SecretBytes> password = future.get();
        if (!choice->isCancelled() && password && !password->empty()) {
          set(&ExportState::storedPassword, password);
          set(&ExportState::hasStoredPassword, true);
          set(&ExportState::rememberBackupPassword, true);
        }
        then();
      });
}

std::string ExportViewModel::passwordAccount() const {
  const std::optional<std::string>& identifier = state_.backupInfo->uniqueIdentifier;
  return identifier && !identifier->empty() ? *identifier : PathText::text(*state_.backupURL);
}

// ------------------------------------------------------ reading the chats

void ExportViewModel::continueToOptions() {
  if (state_.step != WizardStep::backup || !state_.canContinueFromBackup() || !state_.backupURL) return;
  clearError();
  set(&ExportState::focusBackupPassword, false);
  cancellation_ = std::make_shared<CancellationToken>();
  set(&ExportState::isScanning, true);
  set(&ExportState::isUnlocking, state_.backupInfo->isEncrypted);
  set(&ExportState::isCancellingUnlock, false);
  const std::optional<SecretBytes> password = copied(state_.currentPassword());
  inBackground(
      Lane::userInitiated,
      [backup = *state_.backupURL, password, isCancelled = checkOf(cancellation_)] {
        return Exporter().scan(backup, textIn(password), {}, isCancelled);
      },
      [this, password, token = cancellation_](std::future<ScanResult> result) {
        takeScan(std::move(result), *token, password);
        set(&ExportState::isScanning, false);
        set(&ExportState::isUnlocking, false);
        set(&ExportState::isCancellingUnlock, false);
        cancellation_.reset();
      });
}

void ExportViewModel::cancelUnlock() {
  if (!state_.isUnlocking) return;
  set(&ExportState::isCancellingUnlock, true);
  if (cancellation_) cancellation_->cancel();
}

void ExportViewModel::takeScan(std::future<ScanResult> result, const CancellationToken& token,
                               const std::optional<SecretBytes>& password) {
  if (token.isCancelled()) return;
  try {
    set(&ExportState::scanResult, result.get());
  } catch (const std::exception& error) {
    set(&ExportState::scanResult, std::nullopt);
    if (TidewellError::isCancellation(error)) return;
    present(error);
    return set(&ExportState::focusBackupPassword, state_.backupInfo->isEncrypted);
  }
  if (state_.backupInfo->isEncrypted && password) keepOrForget(*password);
  set(&ExportState::step, WizardStep::options);
  restoreDestination();
  refreshFreeSpace();
}

// The export will need the password that unlocked once more, also one that is not kept.
void ExportViewModel::keepOrForget(const SecretBytes& password) {
  const std::string account = passwordAccount();
  if (state_.rememberBackupPassword) {
    keepInOrder([save = services_.passwords.save, password, account] { save(password, account); });
    set(&ExportState::storedPassword, password);
    set(&ExportState::hasStoredPassword, true);
  } else {
    keepInOrder([remove = services_.passwords.remove, account] { remove(account); });
    set(&ExportState::storedPassword, std::nullopt);
    set(&ExportState::hasStoredPassword, false);
  }
  if (state_.currentPassword() != textOf(password)) set(&ExportState::backupPassword, password);
}
