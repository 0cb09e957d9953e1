#include "TidewellCore/Backup/OpenedBackup.h"

#include <algorithm>
#include <array>
#include <numeric>

#include "TidewellCore/Backup/BackupInspector.h"
#include "TidewellCore/Backup/DatabaseCheck.h"
#include "TidewellCore/Backup/StoredFileLocation.h"
#include "TidewellCore/Crypto/BackupCrypto.h"
#include "TidewellCore/Platform/FileDescriptor.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/InParallel.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/SQLiteDB.h"
#include "TidewellCore/Platform/SQLiteHeader.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* indexName = "Manifest.db";
constexpr std::array<const char*, 2> journalEndings{"-wal", "-journal"};
constexpr const char* unreadableJournal =
    "The journal of its file index cannot be read. Copy the backup again from where it came, or make a new one with "
    "the iPhone.";

// Phones leave none beside a locked index, so nobody knows what one would hold.
bool hasJournal(const fs::path& index) {
  return std::ranges::any_of(journalEndings, [&](const char* ending) {
    const fs::path journal = index.native() + ending;
    return Files::kindOf(journal) != Files::Kind::nothing && Files::regularFileSize(journal) != 0;
  });
}

// Reading such an index in place would write beside it, lack its newest rows,
// or wait for a FIFO that somebody put beside it.
bool needsWorkingCopy(const fs::path& index) {
  const bool hasCompanion = std::ranges::any_of(SQLiteHeader::companionEndings, [&](const char* ending) {
    return Files::kindOf(index.native() + ending) != Files::Kind::nothing;
  });
  if (hasCompanion) return true;
  const auto header = SQLiteHeader::read(index);
  return header && header->isWAL;
}

constexpr auto blockSize = static_cast<std::int64_t>(BackupCrypto::blockSize);

bool isWholeBlocks(std::int64_t storedSize) { return storedSize % blockSize == 0; }

// Encryption pads a file to the next whole block, by a full one when it fills its blocks already.
bool isPaddedTo(std::int64_t storedSize, const std::optional<std::int64_t>& recordedSize) {
  return recordedSize && *recordedSize >= 0 && *recordedSize < storedSize && isWholeBlocks(storedSize) &&
         storedSize - *recordedSize <= blockSize;
}

RootFolder rootOf(const fs::path& backup) try { return RootFolder(backup); } catch (const fs::filesystem_error&) {
  BackupInspector::inspect(backup);  // knows better what is amiss
  throw;
}

[[noreturn]] void failAsLocked(const ManifestFile& file) {
  throw TidewellError::chatStorageUnreadable("The backup holds no key that opens " + file.relativePath +
                                             ". Copy the backup again from where it came, or make a new one with the "
                                             "iPhone.");
}

[[noreturn]] void failAsMissing(const ManifestFile& file) {
  throw TidewellError::chatStorageUnreadable("Missing backup file for " + file.relativePath + ".");
}

}  // namespace

OpenedBackup OpenedBackup::open(const fs::path& backup, std::optional<std::string_view> password,
                                const RunControl& control, const UnlockObserver& unlockReport, const KeyReuse& keys) {
  RootFolder root = rootOf(backup);
  OpenedBackup opened(std::move(root), BackupInspector::inspect(backup));
  if (!opened.info_.isEncrypted) {
    if (needsWorkingCopy(backup / indexName)) opened.copyManifest(control.isCancelled);
    return opened;
  }
  const std::string_view given = password.value_or("");
  if (given.empty() && keys.kept == nullptr) throw TidewellError::needsBackupPassword();
  BackupUnlockReport report;
  opened.guard_.emplace();
  try {
    opened.unlocker_ = BackupUnlocker::unlock(opened.url(), given, report, control, keys);
    opened.decryptManifest(control, report);
  } catch (...) {
    if (unlockReport) unlockReport(report);
    throw;
  }
  if (unlockReport) unlockReport(report);
  opened.unlockReport_ = report;
  return opened;
}

void OpenedBackup::decryptManifest(const RunControl& control, BackupUnlockReport& report) {
  throwIfCancelled(control.isCancelled);
  workingFolder_.emplace(TemporaryFolder::manifestPrefix);
  const bool isBorneOut = unlocker_->decryptManifestDatabase(url() / indexName, manifestDatabaseURL(), report);
  unlocker_->manifestKey.reset();
  throwIfCancelled(control.isCancelled);
  const SQLiteDB converted(PathText::text(manifestDatabaseURL()), SQLiteDB::OpenMode::writableCopy,
                           "convert decrypted Manifest.db");
  report.openedAsWritableCopy = true;
  DatabaseFaults faults;
  if (!isBorneOut) faults.insert(DatabaseFault::damaged);
  if (hasJournal(url() / indexName)) faults.insert(DatabaseFault::journalMissing);
  warnings_ = DatabaseCheck::warnings(BackupDatabase::index, faults);
}

// The third companion, -shm, is only an index of the -wal, which SQLite makes anew.
void OpenedBackup::copyManifest(const CancellationCheck& isCancelled) {
  workingFolder_.emplace(TemporaryFolder::manifestPrefix);
  const auto copy = [&](const fs::path& from, const fs::path& to) {
    throwIfCancelled(isCancelled);
    Files::copy(from, to, isCancelled, FileAccess::ownerOnly);
  };
  copy(url() / indexName, manifestDatabaseURL());
  for (const char* ending : journalEndings) {
    const fs::path journal = (url() / indexName).native() + ending;
    const Files::Kind kind = Files::kindOf(journal);
    if (kind == Files::Kind::nothing) continue;
    if (kind != Files::Kind::file) throw TidewellError::invalidDatabase(unreadableJournal);
    copy(journal, manifestDatabaseURL().native() + ending);
  }
}

fs::path OpenedBackup::manifestDatabaseURL() const {
  return (workingFolder_ ? workingFolder_->path() : url()) / indexName;
}

std::optional<fs::path> OpenedBackup::location(const ManifestFile& file) const {
  return storedFileLocation(url(), file.fileID);
}

bool OpenedBackup::isStored(const ManifestFile& file) const {
  const auto stored = location(file);
  try {
    return !stored || Files::kindOf(*stored) != Files::Kind::nothing;
  } catch (const fs::filesystem_error&) {
    return true;  // reading it will tell
  }
}

std::optional<Bytes> OpenedBackup::keyOf(const ManifestFile& file) const {
  if (!unlocker_) return std::nullopt;
  const bool isPlain = file.isUnprotected && !isStoredPadded(file);
  // What looks like a key in such a record need not be one.
  if (isPlain && !isOpenedBy(file.encryptionKey)) return std::nullopt;
  const bool mayLackKey = isPlain || file.plaintextSize == 0;
  return file.encryptionKey || mayLackKey ? file.encryptionKey : Bytes();
}

bool OpenedBackup::isStoredPadded(const ManifestFile& file) const {
  const auto stored = location(file);
  const auto storedSize = stored ? Files::regularFileSize(*stored) : std::nullopt;
  return storedSize && isPaddedTo(*storedSize, file.plaintextSize);
}

bool OpenedBackup::isOpenedBy(const std::optional<Bytes>& key) const try {
  if (key && unlocker_) unlocker_->keyBag.unwrapPersistentKey(*key);
  return true;
} catch (const TidewellError&) {
  return false;
}

std::int64_t OpenedBackup::sourceSize(const ManifestFile& file) const {
  if (file.plaintextSize) return *file.plaintextSize;
  const auto stored = location(file);
  return stored ? Files::regularFileSize(*stored).value_or(0) : 0;
}

std::optional<std::int64_t> OpenedBackup::provenSize(const ManifestFile& file) const {
  const auto stored = location(file);
  return stored ? provenSize(file, *stored, Files::regularFileSize(*stored)) : std::nullopt;
}

std::vector<std::optional<std::int64_t>> OpenedBackup::provenSizes(std::span<const ManifestFile> files,
                                                                   const CancellationCheck& isCancelled) const {
  std::vector<std::uint32_t> order(files.size());
  std::iota(order.begin(), order.end(), 0U);
  // Identifiers begin with the names of their folders.
  std::ranges::sort(order, {}, [&](std::uint32_t number) { return std::string_view(files[number].fileID); });
  std::vector<std::optional<std::int64_t>> sizes(files.size());
  const auto measure = [&](std::size_t begin, std::size_t end) {
    Files::Lengths lengths;
    for (const std::uint32_t number : std::span(order).subspan(begin, end - begin)) {
      const auto stored = location(files[number]);
      if (stored) sizes[number] = provenSize(files[number], *stored, lengths.of(*stored));
    }
  };
  InParallel::forEachBlock(files.size(), measure, isCancelled);
  return sizes;
}

std::optional<std::int64_t> OpenedBackup::provenSize(const ManifestFile& file, const fs::path& stored,
                                                     std::optional<std::int64_t> storedSize) const {
  if (storedSize == 0) return file.plaintextSize.value_or(0) == 0 ? storedSize : std::nullopt;
  const auto wrappedKey = keyOf(file);
  if (!storedSize || !wrappedKey) return storedSize;
  if (isPaddedTo(*storedSize, file.plaintextSize)) return file.plaintextSize;
  try {
    const SecretBytes key = unlocker_->keyBag.unwrapPersistentKey(*wrappedKey);
    if (const auto size = BackupCrypto::paddedFileSize(stored, key)) return size;
  } catch (const std::exception&) {
    return std::nullopt;  // a key that does not open, or a file that does not read
  }
  // Without padding, only a size that fills all blocks is whole.
  return file.plaintextSize == storedSize && isWholeBlocks(*storedSize) ? storedSize : std::nullopt;
}

Bytes OpenedBackup::firstBytes(const ManifestFile& file, std::size_t count) const {
  const auto stored = location(file);
  if (!stored) failAsMissing(file);
  FileDescriptor input = FileDescriptor::openForReading(*stored);
  Bytes bytes((count + BackupCrypto::blockSize - 1) / BackupCrypto::blockSize * BackupCrypto::blockSize);
  bytes.resize(input.read(bytes));
  const auto wrappedKey = keyOf(file);
  if (wrappedKey && !bytes.empty()) {
    const SecretBytes key = unlocker_->keyBag.unwrapPersistentKey(*wrappedKey);
    const ByteView blocks = ByteView(bytes).first(bytes.size() / BackupCrypto::blockSize * BackupCrypto::blockSize);
    bytes = BackupCrypto::cbcDecryptRaw(key, BackupCrypto::zeroIV, blocks);
  }
  const auto known = provenSize(file);
  if (!known) throw fs::filesystem_error("Could not read the file", *stored, std::make_error_code(std::errc::io_error));
  bytes.resize(std::min({bytes.size(), count, static_cast<std::size_t>(*known)}));
  return bytes;
}

std::optional<Bytes> OpenedBackup::wholeEnd(const StoredFile& file) const {
  if (!file.encryptionKey || !unlocker_) {
    return Files::lastBytes(file.location, BackupCrypto::blockSize);
  }
  if (file.size.value_or(0) == 0 && Files::regularFileSize(file.location) == 0) return Bytes();
  const SecretBytes key = unlocker_->keyBag.unwrapPersistentKey(*file.encryptionKey);
  return BackupCrypto::wholeEnd(file.location, key, file.size.value_or(0));
}

bool OpenedBackup::isDoubtful(const ManifestFile& file) const {
  const auto stored = location(file);
  const auto key = keyOf(file);
  return stored && key && !wholeEnd({.location = *stored, .encryptionKey = key, .size = provenSize(file)});
}

WrittenPlaintext OpenedBackup::materialize(const ManifestFile& file, const fs::path& destination,
                                           const CancellationCheck& isCancelled) const {
  const auto stored = location(file);
  if (!stored || !Files::isRegularFile(*stored)) failAsMissing(file);
  FileDescriptor output = FileDescriptor::create(destination, FileAccess::ownerOnly);
  const WrittenPlaintext written = writePlaintext(
      {.location = *stored, .encryptionKey = file.encryptionKey, .size = file.plaintextSize}, output, isCancelled);
  output.close();
  return written;
}

WrittenPlaintext OpenedBackup::writePlaintext(const StoredFile& file, FileDescriptor& output,
                                              const CancellationCheck& isCancelled) const {
  if (!file.encryptionKey || !unlocker_) return {Files::copy(file.location, output, isCancelled)};
  // Nothing is encrypted in an empty file, so no key is needed.
  if (file.size.value_or(0) == 0 && Files::regularFileSize(file.location) == 0) return {};
  const SecretBytes key = unlocker_->keyBag.unwrapPersistentKey(*file.encryptionKey);
  const auto [byteCount, isBorneOut] = BackupCrypto::decryptFile(file.location, output, key, file.size, isCancelled);
  return {.byteCount = byteCount, .isDoubtful = !isBorneOut};
}

WrittenPlaintext TemporaryBackupDatabase::copyDatabaseFile(const fs::path& backup, const ManifestFile& file,
                                                           const fs::path& destination, const OpenedBackup* opened,
                                                           const CancellationCheck& isCancelled) {
  const auto stored = storedFileLocation(backup, file.fileID);
  if (!stored || !Files::isRegularFile(*stored)) failAsMissing(file);
  if (opened == nullptr) return {Files::copy(*stored, destination, isCancelled, FileAccess::ownerOnly)};
  const auto key = opened->keyOf(file);
  const bool isLocked = !opened->isOpenedBy(key);
  if (isLocked && !key->empty()) failAsLocked(file);
  ManifestFile uncut = file;
  uncut.plaintextSize = opened->provenSize(file);
  const WrittenPlaintext written = opened->materialize(uncut, destination, isCancelled);
  const auto header = SQLiteHeader::read(destination);
  if (isLocked && !header) failAsLocked(file);
  const bool isWhole = !header || Files::regularFileSize(destination) >= header->databaseSize;
  if (isWhole || !uncut.plaintextSize) return written;
  uncut.plaintextSize.reset();
  return opened->materialize(uncut, destination, isCancelled);
}
