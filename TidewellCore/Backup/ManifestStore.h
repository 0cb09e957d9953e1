#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "TidewellCore/Platform/Bytes.h"
#include "TidewellCore/Platform/Cancellation.h"

// One file of the backup, as its file index lists it.
struct ManifestFile {
  std::string fileID;                         // the stored file's name: SHA-1 of domain, "-" and path in hexadecimal
  std::string domain;                         // the app's container, "AppDomainGroup-…"
  std::string relativePath;                   // inside the container
  std::int64_t flags = 0;                     // 1 for a regular file
  std::optional<Bytes> encryptionKey;         // wrapped; meaningless in a plain backup
  std::optional<std::int64_t> plaintextSize;  // as the phone recorded it, in bytes; can be wrong
  bool isUnprotected = false;                 // its record says that nothing locks it, even in an encrypted backup

  bool operator==(const ManifestFile&) const = default;
};

// A database and what SQLite looks for beside it, as far as the backup lists them.
struct StoredDatabase {
  std::optional<ManifestFile> file;
  std::optional<ManifestFile> wal;
  std::optional<ManifestFile> shm;
  std::optional<ManifestFile> rollback;
  bool isLost = false;  // something that belongs beside it is listed, and it is not

  bool operator==(const StoredDatabase&) const = default;
};

// WhatsApp's part of a backup's file index (docs/formats/file-index.md).
struct ManifestStore {
  std::vector<ManifestFile> files;  // all of the below, in the index's order
  std::optional<ManifestFile> chatStorage;
  std::optional<ManifestFile> chatStorageWAL;
  std::optional<ManifestFile> chatStorageSHM;
  std::optional<ManifestFile> chatStorageRollback;  // the journal of a transaction that was under way
  std::optional<ManifestFile> contacts;
  std::optional<ManifestFile> contactsWAL;
  std::optional<ManifestFile> contactsSHM;
  std::optional<ManifestFile> contactsRollback;
  StoredDatabase callHistory;         // WhatsApp's own list of calls
  StoredDatabase identities;          // who stands behind anonymous identities
  bool isWithoutItsContacts = false;  // their journal is listed, and they are not
  std::vector<ManifestFile> media;
  std::vector<ManifestFile> skippedThumbnails;
  std::vector<ManifestFile> profilePictures;
  std::vector<std::string> warnings;  // what may be missing: sentences for people, in English

  // `manifestDatabase` stands in for the backup's own Manifest.db, which SQLite
  // would write beside if it were in WAL mode (OpenedBackup sees to that);
  // `isWritableCopy` says that it is a working copy of ours. Throws
  // TidewellError::missingManifestDB, ::invalidDatabase, ::databaseOpenFailed and ::cancelled.
  static ManifestStore load(const std::filesystem::path& backup,
                            const std::optional<std::filesystem::path>& manifestDatabase = std::nullopt,
                            bool isWritableCopy = false, const CancellationCheck& isCancelled = {});

  bool operator==(const ManifestStore&) const = default;
};
