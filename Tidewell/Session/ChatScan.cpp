#include "Tidewell/Session/ChatScan.h"

#include <utility>
#include <vector>

#include "Tidewell/Session/BackupPassword.h"
#include "TidewellCore/Export/Exporter.h"
#include "TidewellCore/TidewellError.h"

// What was read, and what opened the backup; nothing for one that is not encrypted.
struct ChatScan::Reading {
  ScanResult result;
  std::optional<SecretBytes> password;
  std::optional<PasswordKey> key;
};

namespace {

namespace fs = std::filesystem;

bool isWrongPassword(const TidewellError& error) { return error.is<TidewellError::WrongBackupPassword>(); }

}  // namespace

// A worker's part; its own, since the wizard may be gone before it ends.
struct ChatScan::Work {
  fs::path backup;
  std::vector<SecretBytes> passwords;  // none for a backup that needs none
  CancellationCheck isCancelled;

  // Of several passwords the first that opens the backup counts; the last one's failure is told.
  Reading operator()() const {
    for (std::size_t i = 0; i + 1 < passwords.size(); ++i) {
      try {
        return read(passwords[i]);
      } catch (const TidewellError& error) {
        if (!isWrongPassword(error)) throw;
      }
    }
    return read(passwords.empty() ? std::nullopt : std::optional(passwords.back()));
  }

  Reading read(const std::optional<SecretBytes>& password) const {
    Reading reading{.password = password};
    const auto text = password ? std::optional(textOf(*password)) : std::nullopt;
    reading.result = Exporter().scan({.backup = backup, .password = text, .passwordKey = &reading.key}, isCancelled);
    return reading;
  }
};

ChatScan::~ChatScan() {
  if (const auto* scanning = std::get_if<Scanning>(&session_.state().work)) scanning->run->cancel();
}

void ChatScan::start(const std::function<void()>& then) {
  const ExportState& state = session_.state();
  if (state.step != WizardStep::backup || !state.canContinueFromBackup() || !state.backupURL) return;
  const ExportSession::Batch batch(session_);
  const auto run = std::make_shared<CancellationToken>();
  session_.clearError();
  session_.set(&ExportState::focusBackupPassword, false);
  session_.set(&ExportState::work, Scanning{.run = run, .isUnlocking = state.backupInfo->isEncrypted});
  Work work{.backup = *state.backupURL, .isCancelled = ExportSession::checkOf(run)};
  if (state.backupInfo->isEncrypted) work.passwords = state.passwordsToTry();
  session_.inBackground(BackgroundWork::Lane::userInitiated, std::move(work),
                        [this, run, then](std::future<Reading> reading) {
                          // Another backup was chosen meanwhile.
                          if (!session_.state().isRunning(run)) return;
                          session_.set(&ExportState::work, Idle());
                          if (!run->isCancelled()) take(std::move(reading), then);
                        });
}

void ChatScan::cancelUnlock() {
  const auto* scanning = std::get_if<Scanning>(&session_.state().work);
  if (scanning == nullptr || !scanning->isUnlocking) return;
  scanning->run->cancel();
  session_.set(&ExportState::work, Scanning{.run = scanning->run, .isUnlocking = true, .isCancelling = true});
}

void ChatScan::take(std::future<Reading> future, const std::function<void()>& then) {
  const bool isEncrypted = session_.state().backupInfo->isEncrypted;
  try {
    const Reading reading = future.get();
    session_.set(&ExportState::scanResult, reading.result);
    if (reading.password) BackupPassword::takeUnlocking(session_, *reading.password, reading.key);
  } catch (const std::exception& error) {
    session_.set(&ExportState::scanResult, std::nullopt);
    if (TidewellError::isCancellation(error)) return;
    session_.present(error);
    return session_.set(&ExportState::focusBackupPassword, isEncrypted);
  }
  session_.set(&ExportState::step, WizardStep::options);
  then();
}
