#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Tidewell/Session/ExportSession.h"

// The password of the chosen backup: asked of the store, kept in it, wiped.
namespace BackupPassword {

// The name under which the chosen backup's password is kept.
std::string account(const ExportState& state);

// Asks the store; `then` is called when it has answered, or has not for some seconds. An answer after that is taken
// up while nothing was typed, unless `choice` is cancelled by then: another backup was chosen.
void lookUp(ExportSession& session, const std::shared_ptr<CancellationToken>& choice,
            const std::function<void()>& then);

// After `password` has opened the chosen backup by `key`: keeps it when that is wanted. Removed from the store is only
// what was found there and is wanted no more. The export needs the password once more, also one that is not kept.
void takeUnlocking(ExportSession& session, const SecretBytes& password, const std::optional<PasswordKey>& key);

// Wipes all that is known of the password of the backup before.
void forget(ExportSession& session);

}  // namespace BackupPassword
