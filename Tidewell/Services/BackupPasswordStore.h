#pragma once

#include <optional>
#include <string>

#include "TidewellCore/Crypto/SecretBytes.h"

// The backup passwords that the user asked to remember, in the store that the
// system keeps for this user: Keychain on macOS, the Secret Service elsewhere.
// Waits for the store at most five seconds and then counts it as absent; call it
// on a worker thread. Nothing here fails.
namespace BackupPasswordStore {

inline constexpr const char* service = "Lorewick.backup-password";

std::optional<SecretBytes> load(const std::string& account);
// Replaces what is there.
void save(const SecretBytes& password, const std::string& account);
void remove(const std::string& account);

}  // namespace BackupPasswordStore
