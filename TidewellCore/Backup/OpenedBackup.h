#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "TidewellCore/Backup/BackupInfo.h"
#include "TidewellCore/Backup/ManifestStore.h"
#include "TidewellCore/Crypto/BackupUnlocker.h"
#include "TidewellCore/ExportProgress.h"
#include "TidewellCore/Platform/FileDescriptor.h"
#include "TidewellCore/Platform/MemoryGuard.h"
#include "TidewellCore/Platform/RootFolder.h"
#include "TidewellCore/Platform/TemporaryFolder.h"

// A stored file and what is needed to read it.
struct StoredFile {
  std::filesystem::path location;
  std::optional<Bytes> encryptionKey;  // wrapped; absent for a file that is stored plain
  std::optional<std::int64_t> size;    // of the plaintext; absent when only its padding tells
};

struct WrittenPlaintext {
  std::int64_t byteCount = 0;
  bool isDoubtful = false;  // it was encrypted, and its end is not as that of a whole file
};

// A backup that can be read, with the keys of an encrypted one and the working
// folder it needs; the folder goes with its owner. Never writes into the backup.
class OpenedBackup {
 public:
  // Throws what BackupInspector, BackupUnlocker and SQLiteDB throw, and
  // TidewellError::needsBackupPassword for a password that is absent or empty.
  // `unlockReport` is called once when a password or a kept key was tried, on
  // failure too; the password is needed no more then. A kept key that fits makes the password needless.
  static OpenedBackup open(const std::filesystem::path& backup, std::optional<std::string_view> password,
                           const RunControl& control = {}, const UnlockObserver& unlockReport = {},
                           const KeyReuse& keys = {});

  const std::filesystem::path& url() const { return info_.url; }
  const BackupInfo& info() const { return info_; }
  const std::optional<BackupUnlocker>& unlocker() const { return unlocker_; }
  const std::optional<BackupUnlockReport>& unlockReport() const { return unlockReport_; }
  // The backup's own Manifest.db, or the working copy of it.
  std::filesystem::path manifestDatabaseURL() const;
  // What may be missing since the index could not be read whole: sentences for people, in English.
  const std::vector<std::string>& warnings() const { return warnings_; }
  bool usesTemporaryManifest() const { return workingFolder_.has_value(); }
  // Removes the working copy, once it has been read. What is left then is the
  // backup's own Manifest.db, which in an encrypted backup says nothing.
  void dropTemporaryManifest() { workingFolder_.reset(); }

  // Where a file is stored: "3d/3d0d7e5f…" in the backup. Absent for an
  // identifier that is not fit to be a path.
  std::optional<std::filesystem::path> location(const ManifestFile& file) const;

  // False only when it is known that nothing stands there.
  bool isStored(const ManifestFile& file) const;

  // The wrapped key that locks a file: absent for one that is stored plain, and
  // empty, so that it opens nothing, where the backup has lost it with the file's
  // record. A file that is padded as encrypted ones are is not stored plain, whatever its record says.
  std::optional<Bytes> keyOf(const ManifestFile& file) const;
  // Whether a wrapped key can be unwrapped, or is absent.
  bool isOpenedBy(const std::optional<Bytes>& key) const;

  // The recorded size of the plaintext, else the stored file's, else 0.
  std::int64_t sourceSize(const ManifestFile& file) const;
  // The size of the plaintext as the stored file bears it out, whatever was
  // recorded; absent when the stored file is missing or was cut short, or when no key opens it.
  std::optional<std::int64_t> provenSize(const ManifestFile& file) const;
  // The same of many, in their order, looked at folder by folder and on several threads. Throws
  // TidewellError::cancelled.
  std::vector<std::optional<std::int64_t>> provenSizes(std::span<const ManifestFile> files,
                                                       const CancellationCheck& isCancelled = {}) const;

  // The first bytes of the plaintext, at most `count`, fewer when the file is
  // shorter. Throws what reading and decrypting report.
  Bytes firstBytes(const ManifestFile& file, std::size_t count) const;

  // The last bytes of a file's plaintext, of which there are some where there are any at all; absent where they are not
  // as those of a whole file, as WrittenPlaintext tells. Throws what reading reports.
  std::optional<Bytes> wholeEnd(const StoredFile& file) const;
  // The same as a question. Throws what reading reports.
  bool isDoubtful(const ManifestFile& file) const;

  // Writes a working copy of a file, for this user alone; one without a key is copied as it is. Throws
  // TidewellError::chatStorageUnreadable when it is not stored, and what decrypting or copying reports.
  WrittenPlaintext materialize(const ManifestFile& file, const std::filesystem::path& destination,
                               const CancellationCheck& isCancelled = {}) const;
  // Writes the plaintext of a file whose place is known into a new one. What was written before a failure is left for
  // the caller to remove. From any thread.
  WrittenPlaintext writePlaintext(const StoredFile& file, FileDescriptor& output,
                                  const CancellationCheck& isCancelled = {}) const;

 private:
  explicit OpenedBackup(RootFolder root, BackupInfo info) : root_(std::move(root)), info_(std::move(info)) {}

  // `unlocker_` is what opened the key bag.
  void decryptManifest(const RunControl& control, BackupUnlockReport& report);
  void copyManifest(const CancellationCheck& isCancelled);
  bool isStoredPadded(const ManifestFile& file) const;
  // Of one that is stored there with that length; absent for one that is not.
  std::optional<std::int64_t> provenSize(const ManifestFile& file, const std::filesystem::path& stored,
                                         std::optional<std::int64_t> storedSize) const;

  RootFolder root_;                   // no link below the backup is followed
  std::optional<MemoryGuard> guard_;  // while there are keys; goes after them
  BackupInfo info_;
  std::optional<BackupUnlocker> unlocker_;
  std::optional<TemporaryFolder> workingFolder_;
  std::optional<BackupUnlockReport> unlockReport_;
  std::vector<std::string> warnings_;
};

namespace TemporaryBackupDatabase {

// Makes a working copy of one database file, or of a companion. A recorded size
// that would cut it short is not believed. Without an opened backup the stored
// file is copied as it is. Throws TidewellError::chatStorageUnreadable also for
// a database that no key opens.
WrittenPlaintext copyDatabaseFile(const std::filesystem::path& backup, const ManifestFile& file,
                                  const std::filesystem::path& destination, const OpenedBackup* opened,
                                  const CancellationCheck& isCancelled = {});

}  // namespace TemporaryBackupDatabase
