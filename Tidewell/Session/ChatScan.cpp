#include "Tidewell/Session/ChatScan.h"

#include <utility>
#include <vector>

#include "Tidewell/Session/BackupPassword.h"
#include "TidewellCore/Export/Exporter.h"
#include "TidewellCore/TidewellError.h"

// What was read, and the password that opened the backup; none for one that is not encrypted.
struct ChatScan::Reading {
  ScanResult result;
  std::optional<SecretBytes> password;
};

namespace {

namespace fs = std::filesystem;

ScanResult scan(const fs::path& backup, const SecretBytes* password, const CancellationCheck& isCancelled) {
  const auto text = password == nullptr ? std::nullopt : std::optional(textOf(*password));
  return Exporter().scan(backup, text, {}, isCancelled);
}

bool isWrongPassword(const TidewellError& error) { return error.is<TidewellError::WrongBackupPassword>(); }

}  // namespace

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
  // Of several passwords the first that opens it counts; the last one's failure is told.
  const auto read = [backup = *state.backupURL, isEncrypted = state.backupInfo->isEncrypted,
                     passwords = state.passwordsToTry(), isCancelled = ExportSession::checkOf(run)]() -> Reading {
    if (!isEncrypted) return {.result = scan(backup, nullptr, isCancelled), .password = std::nullopt};
    for (std::size_t i = 0; i + 1 < passwords.size(); ++i) {
      try {
        return {.result = scan(backup, &passwords[i], isCancelled), .password = passwords[i]};
      } catch (const TidewellError& error) {
        if (!isWrongPassword(error)) throw;
      }
    }
    return {.result = scan(backup, &passwords.back(), isCancelled), .password = passwords.back()};
  };
  session_.inBackground(BackgroundWork::Lane::userInitiated, read, [this, run, then](std::future<Reading> reading) {
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
    if (reading.password) BackupPassword::takeUnlocking(session_, *reading.password);
  } catch (const std::exception& error) {
    session_.set(&ExportState::scanResult, std::nullopt);
    if (TidewellError::isCancellation(error)) return;
    session_.present(error);
    return session_.set(&ExportState::focusBackupPassword, isEncrypted);
  }
  session_.set(&ExportState::step, WizardStep::options);
  then();
}
