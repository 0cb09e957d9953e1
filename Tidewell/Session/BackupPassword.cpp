#include "Tidewell/Session/BackupPassword.h"

#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/Text.h"

namespace {

using Choice = std::shared_ptr<CancellationToken>;
using Found = std::optional<SecretBytes>;

void take(ExportSession& session, const Found& password) {
  if (!password || password->empty()) return;
  session.set(&ExportState::storedPassword, password);
  session.set(&ExportState::hasStoredPassword, true);
  session.set(&ExportState::rememberBackupPassword, true);
}

// Who types has an answer of his own.
void takeLate(ExportSession& session, const Choice& choice, const Found& password) {
  if (!choice->isCancelled() && !session.state().hasEditedPassword) take(session, password);
}

// Nobody waits for it: a store is taken for granted until there turns out to be none.
void lookForStore(ExportSession& session, const Choice& choice) {
  session.inBackground(
      BackgroundWork::Lane::inOrder,
      [isAvailable = session.services().passwords.isAvailable, choice] {
        return choice->isCancelled() || isAvailable();
      },
      [&session, choice](std::future<bool> isThere) {
        if (!choice->isCancelled()) session.set(&ExportState::hasPasswordStore, isThere.get());
      });
}

}  // namespace

std::string BackupPassword::account(const ExportState& state) {
  const std::optional<std::string>& identifier = state.backupInfo->uniqueIdentifier;
  return identifier && !identifier->empty() ? *identifier : PathText::text(*state.backupURL);
}

void BackupPassword::lookUp(ExportSession& session, const Choice& choice, const std::function<void()>& then) {
  const PasswordAnswer late =
      session.posting(std::function([&session, choice](Found password) { takeLate(session, choice, password); }));
  session.inBackground(
      BackgroundWork::Lane::inOrder,
      [load = session.services().passwords.load, account = account(session.state()), choice, late] {
        return choice->isCancelled() ? std::nullopt : load(account, late);
      },
      [&session, choice, then](std::future<Found> password) {
        if (!choice->isCancelled()) take(session, password.get());
        lookForStore(session, choice);
        then();
      });
}

void BackupPassword::takeUnlocking(ExportSession& session, const SecretBytes& password,
                                   const std::optional<PasswordKey>& key) {
  const ExportState& state = session.state();
  const PasswordStore& store = session.services().passwords;
  session.set(&ExportState::unlockedPassword, password);
  session.set(&ExportState::passwordKey, key);
  if (state.rememberBackupPassword) {
    session.keepInOrder([save = store.save, password, account = account(state)] { save(password, account); });
    session.set(&ExportState::storedPassword, password);
    session.set(&ExportState::hasStoredPassword, true);
  } else if (state.hasStoredPassword) {
    session.keepInOrder([remove = store.remove, account = account(state)] { remove(account); });
    session.set(&ExportState::storedPassword, std::nullopt);
    session.set(&ExportState::hasStoredPassword, false);
  }
  if (state.currentPassword() != Text::trimmedPart(textOf(password))) {
    session.set(&ExportState::backupPassword, password);
  }
}

void BackupPassword::forget(ExportSession& session) {
  session.set(&ExportState::backupPassword, {});
  session.set(&ExportState::hasEditedPassword, false);
  session.set(&ExportState::storedPassword, std::nullopt);
  session.set(&ExportState::unlockedPassword, std::nullopt);
  session.set(&ExportState::passwordKey, std::nullopt);
  session.set(&ExportState::hasStoredPassword, false);
  session.set(&ExportState::rememberBackupPassword, false);
}
