#pragma once

#include <functional>
#include <optional>
#include <string>

#include "TidewellCore/Crypto/SecretBytes.h"

// The backup passwords that the user asked to remember, in the store that the
// system keeps for this user: Keychain on macOS, the Secret Service elsewhere.
// Waits for the store at most five seconds; call it on a worker thread. Nothing
// here fails.
namespace BackupPasswordStore {

inline constexpr const char* service = "Lorewick.backup-password";

// `late` is told what the store answers after that time, once, on a thread of the store's.
std::optional<SecretBytes> load(const std::string& account,
                                const std::function<void(std::optional<SecretBytes>)>& late = {});
// Replaces what is there.
void save(const SecretBytes& password, const std::string& account);
void remove(const std::string& account);

// Whether the system has a store at all, be it locked.
bool isAvailable();

}  // namespace BackupPasswordStore
