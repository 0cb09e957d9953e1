#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string_view>

#include "TidewellCore/Crypto/PasswordKey.h"
#include "TidewellCore/Crypto/SecretBytes.h"
#include "TidewellCore/Platform/Bytes.h"
#include "TidewellCore/Platform/Cancellation.h"

// The key of one protection class.
struct BackupClassKey {
  Bytes uuid;
  std::uint32_t clas = 0;  // the protection class number
  std::uint32_t wrap = 0;  // flags: 1 wrapped with the device's key, 2 with the password's
  std::uint32_t keyType = 0;
  Bytes wrappedKey;
  std::optional<SecretBytes> unwrappedKey;  // once the bag is unlocked

  bool operator==(const BackupClassKey&) const = default;
};

// The keys of an encrypted backup, locked with its password (docs/formats/keybag.md).
struct BackupKeyBag {
  std::uint32_t type = 0;
  Bytes uuid;
  std::uint32_t wrap = 0;
  Bytes salt;                                         // of the SHA-1 derivation
  std::int64_t iterations = 0;                        // of the SHA-1 derivation
  std::optional<Bytes> doubleSalt;                    // of the SHA-256 derivation that precedes it
  std::optional<std::int64_t> doubleIterations;       // of the SHA-256 derivation that precedes it
  std::map<std::uint32_t, BackupClassKey> classKeys;  // by protection class number

  // Reads the bytes under "BackupKeyBag" of Manifest.plist. Throws TidewellError::ioFailure.
  static BackupKeyBag parse(ByteView data);

  // Derives the password's key, unwraps every class key it opens and returns it; takes
  // seconds. Throws TidewellError::wrongBackupPassword and TidewellError::cancelled.
  PasswordKey unlock(std::string_view password, const CancellationCheck& isCancelled = {});
  // The same with a key that was derived before, at once. False, and nothing
  // changed, when it belongs to another derivation or does not open the bag.
  bool unlock(const PasswordKey& key);

  std::size_t unwrappedClassKeyCount() const;
  // Throws TidewellError::ioFailure when that class is missing or locked.
  const SecretBytes& key(std::uint32_t protectionClass) const;

  // A file's persistent key: its class number (4 bytes, little-endian) and its wrapped key.
  static std::optional<std::uint32_t> protectionClass(ByteView persistentKey);
  SecretBytes unwrapPersistentKey(ByteView persistentKey) const;

  bool operator==(const BackupKeyBag&) const = default;
};
