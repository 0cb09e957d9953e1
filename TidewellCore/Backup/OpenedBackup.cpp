#include "TidewellCore/Backup/OpenedBackup.h"

#include "TidewellCore/Backup/BackupInspector.h"
#include "TidewellCore/Backup/StoredFileLocation.h"
#include "TidewellCore/Crypto/BackupCrypto.h"
#include "TidewellCore/Platform/FileDescriptor.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/SQLiteDB.h"
#include "TidewellCore/Platform/SQLiteHeader.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* indexName = "Manifest.db";
constexpr const char* workingFolderPrefix = "Tidewell-manifest-";

// Reading such an index in place would write beside it, lack its newest rows,
// or wait for a FIFO that somebody put beside it.
bool needsWorkingCopy(const fs::path& index) {
  for (const char* ending : SQLiteHeader::companionEndings) {
    std::error_code ignored;
    if (fs::exists(fs::symlink_status(index.native() + ending, ignored))) return true;
  }
  const auto header = SQLiteHeader::read(index);
  return header && header->isWAL;
}

// Encryption pads a file to whole blocks; a full block is added or not when it fills them already.
bool canBelongTogether(std::int64_t recordedSize, std::int64_t storedSize) {
  constexpr auto block = static_cast<std::int64_t>(BackupCrypto::blockSize);
  return storedSize % block == 0 && recordedSize >= 0 && recordedSize <= storedSize && storedSize - recordedSize <= block;
}

[[noreturn]] void failAsMissing(const ManifestFile& file) {
  throw TidewellError::chatStorageUnreadable("Missing backup file for " + file.relativePath + ".");
}

}  // namespace

OpenedBackup OpenedBackup::open(const fs::path& backup, std::optional<std::string_view> password,
                                const RunControl& control, const UnlockObserver& unlockReport) {
  OpenedBackup opened(BackupInspector::inspect(backup));
  if (!opened.info_.isEncrypted) {
    if (needsWorkingCopy(backup / indexName)) opened.copyManifest();
    return opened;
  }
  if (!password || password->empty()) throw TidewellError::needsBackupPassword();
  BackupUnlockReport report;
  try {
    opened.unlock(*password, control, report);
  } catch (...) {
    if (unlockReport) unlockReport(report);
    throw;
  }
  if (unlockReport) unlockReport(report);
  opened.unlockReport_ = report;
  return opened;
}

void OpenedBackup::unlock(std::string_view password, const RunControl& control, BackupUnlockReport& report) {
  unlocker_ = BackupUnlocker::unlock(url(), password, report, control);
  throwIfCancelled(control.isCancelled);
  workingFolder_.emplace(workingFolderPrefix);
  unlocker_->decryptManifestDatabase(url() / indexName, manifestDatabaseURL(), report);
  throwIfCancelled(control.isCancelled);
  const SQLiteDB converted(PathText::text(manifestDatabaseURL()), SQLiteDB::OpenMode::writableCopy,
                           "convert decrypted Manifest.db");
  report.openedAsWritableCopy = true;
}

void OpenedBackup::copyManifest() {
  workingFolder_.emplace(workingFolderPrefix);
  Files::copy(url() / indexName, manifestDatabaseURL());
  for (const char* ending : SQLiteHeader::companionEndings) {
    const fs::path companion = (url() / indexName).native() + ending;
    if (Files::isRegularFile(companion)) Files::copy(companion, manifestDatabaseURL().native() + ending);
  }
}

fs::path OpenedBackup::manifestDatabaseURL() const {
  return (workingFolder_ ? workingFolder_->path() : url()) / indexName;
}

std::optional<fs::path> OpenedBackup::location(const ManifestFile& file) const {
  return storedFileLocation(url(), file.fileID);
}

std::int64_t OpenedBackup::sourceSize(const ManifestFile& file) const {
  if (file.plaintextSize) return *file.plaintextSize;
  const auto stored = location(file);
  return stored ? Files::regularFileSize(*stored).value_or(0) : 0;
}

std::optional<std::int64_t> OpenedBackup::provenSize(const ManifestFile& file) const {
  const auto stored = location(file);
  const auto storedSize = stored ? Files::regularFileSize(*stored) : std::nullopt;
  if (!storedSize || !isEncrypted(file)) return storedSize;
  if (file.plaintextSize && canBelongTogether(*file.plaintextSize, *storedSize)) return file.plaintextSize;
  if (*storedSize == 0) return file.plaintextSize ? std::nullopt : storedSize;
  try {
    return BackupCrypto::paddedFileSize(*stored, unlocker_->keyBag.unwrapPersistentKey(*file.encryptionKey));
  } catch (const std::exception&) {
    return std::nullopt;  // a key that does not open, or a file that does not read
  }
}

void OpenedBackup::materialize(const ManifestFile& file, const fs::path& destination) const {
  const auto stored = location(file);
  if (!stored || !Files::isRegularFile(*stored)) failAsMissing(file);
  writePlaintext({.location = *stored, .encryptionKey = file.encryptionKey, .size = file.plaintextSize}, destination);
}

std::int64_t OpenedBackup::writePlaintext(const StoredFile& file, const fs::path& destination,
                                          const CancellationCheck& isCancelled) const {
  if (!file.encryptionKey || !unlocker_) return Files::copy(file.location, destination, isCancelled);
  if (file.size.value_or(0) == 0 && Files::regularFileSize(file.location) == 0) {
    FileDescriptor::create(destination).close();  // nothing is encrypted, so no key is needed
    return 0;
  }
  const SecretBytes key = unlocker_->keyBag.unwrapPersistentKey(*file.encryptionKey);
  return BackupCrypto::decryptFile(file.location, destination, key, file.size, isCancelled);
}

void TemporaryBackupDatabase::copyDatabaseFile(const fs::path& backup, const ManifestFile& file,
                                               const fs::path& destination, const OpenedBackup* opened) {
  if (opened == nullptr) {
    const auto stored = storedFileLocation(backup, file.fileID);
    if (!stored || !Files::isRegularFile(*stored)) failAsMissing(file);
    Files::copy(*stored, destination);
    return;
  }
  ManifestFile uncut = file;
  uncut.plaintextSize = opened->provenSize(file);
  opened->materialize(uncut, destination);
  const auto header = SQLiteHeader::read(destination);
  if (!header || Files::regularFileSize(destination) >= header->databaseSize) return;
  uncut.plaintextSize.reset();
  opened->materialize(uncut, destination);
}
