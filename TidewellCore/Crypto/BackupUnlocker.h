#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "TidewellCore/Crypto/BackupKeyBag.h"
#include "TidewellCore/Crypto/BackupUnlockReport.h"
#include "TidewellCore/ExportProgress.h"

// What an encrypted backup and its password yield: an unlocked key bag and the key of Manifest.db.
struct BackupUnlocker {
  BackupKeyBag keyBag;
  std::optional<SecretBytes> manifestKey;  // of use until the index is decrypted

  // Fills `report` as far as it comes, on failure too. Takes seconds, during
  // which the phase is `unlocking`; a kept key opens its bag at once, without
  // that phase. Throws TidewellError::needsBackupPassword when none fits and
  // the password is empty.
  static BackupUnlocker unlock(const std::filesystem::path& backup, std::string_view password,
                               BackupUnlockReport& report, const RunControl& control = {}, const KeyReuse& keys = {});

  // Writes the plaintext of Manifest.db to `copy`, making its folder when it is
  // missing; nothing is written of what is no database. False when its end is not as that of a whole one.
  // Throws TidewellError::manifestDecryptFailed and TidewellError::missingManifestDB.
  bool decryptManifestDatabase(const std::filesystem::path& encrypted, const std::filesystem::path& copy,
                               BackupUnlockReport& report) const;

  // The journal kind that a database's header names: "delete", "wal", "other(N)" or "unknown".
  static std::string sqliteJournalName(ByteView header);
};
