#include "Tidewell/Session/BackupChoice.h"

#include <utility>

#include "Tidewell/Session/BackupPassword.h"
#include "TidewellCore/Export/Exporter.h"

namespace {

namespace fs = std::filesystem;
using Lane = BackgroundWork::Lane;

// Choosers, drops and command lines may name a folder with a slash at its end.
fs::path withoutSlash(const fs::path& folder) { return folder.has_filename() ? folder : folder.parent_path(); }

}  // namespace

BackupChoice::~BackupChoice() { choice_->cancel(); }

bool BackupChoice::isBusy() const { return session_.state().isUnlocking() || session_.state().isExporting(); }

void BackupChoice::select(const DiscoveredBackup& backup, const Then& then) {
  if (isBusy()) return;
  const ExportSession::Batch batch(session_);
  session_.set(&ExportState::selectedBackupID, backup.id());
  set(backup.info.url, backup.info, then);
}

void BackupChoice::set(const fs::path& folder, const std::optional<BackupInfo>& knownInfo, const Then& then) {
  if (isBusy()) return;
  const ExportSession::Batch batch(session_);
  const fs::path url = withoutSlash(folder);
  clearForNewBackup(url);
  access_ = session_.startAccess(url);
  session_.set(&ExportState::backupURL, url);
  session_.set(&ExportState::work, Inspecting());
  session_.inBackground(
      Lane::userInitiated, [url] { return Exporter().inspect(url); },
      [this, then, knownInfo, choice = choice_](std::future<BackupInfo> info) {
        takeInspection(std::move(info), knownInfo, choice, [this, then, choice] {
          if (!choice->isCancelled()) session_.set(&ExportState::work, Idle());
          if (then) then();
        });
      });
}

// Calls that still work for the backup chosen before are not to be taken up any more.
void BackupChoice::clearForNewBackup(const fs::path& url) {
  choice_->cancel();
  choice_ = std::make_shared<CancellationToken>();
  const ExportState& state = session_.state();
  if (const auto* scanning = std::get_if<Scanning>(&state.work)) scanning->run->cancel();
  session_.clearError();
  session_.set(&ExportState::scanResult, std::nullopt);
  session_.set(&ExportState::chatChoice, {});
  session_.set(&ExportState::summary, std::nullopt);
  session_.set(&ExportState::progress, std::nullopt);
  session_.set(&ExportState::keptBytes, 0);
  if (state.selectedBackupID != url.native()) session_.set(&ExportState::selectedBackupID, std::nullopt);
  BackupPassword::forget(session_);
}

void BackupChoice::takeInspection(std::future<BackupInfo> info, const std::optional<BackupInfo>& knownInfo,
                                  const Choice& choice, const Then& then) {
  if (choice->isCancelled()) return then();
  try {
    const BackupInfo found = info.get();
    session_.set(&ExportState::backupInfo, found);
    session_.set(&ExportState::selectedBackupID, session_.state().backupURL->native());
    session_.rememberBackup(*session_.state().backupURL);
    return found.isEncrypted ? BackupPassword::lookUp(session_, choice, then) : then();
  } catch (const std::exception& error) {
    session_.set(&ExportState::backupInfo, knownInfo);
    session_.present(error);
  }
  then();
}

// What was chosen meanwhile stays chosen.
void BackupChoice::reopen(const fs::path& folder, const std::optional<BackupInfo>& knownInfo) {
  const std::optional<fs::path>& chosen = session_.state().backupURL;
  if (chosen == folder) {
    access_ = session_.startAccess(folder);
  } else if (!chosen) {
    set(folder, knownInfo);
  }
}
