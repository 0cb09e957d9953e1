#include "TidewellCore/Crypto/BackupUnlocker.h"

#include <fmt/format.h>

#include "TidewellCore/Crypto/BackupCrypto.h"
#include "TidewellCore/Platform/FileDescriptor.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PlistSupport.h"
#include "TidewellCore/Platform/SQLiteHeader.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;

BackupKeyBag readKeyBag(const PropertyListDictionary& manifest, BackupUnlockReport& report) {
  const Bytes* data = PlistSupport::data(entry(manifest, "BackupKeyBag"));
  if (data == nullptr) throw TidewellError::ioFailure("This encrypted backup is missing BackupKeyBag.");
  BackupKeyBag keyBag = BackupKeyBag::parse(*data);
  report.keyBagParsed = true;
  report.classKeyCount = static_cast<std::int64_t>(keyBag.classKeys.size());
  return keyBag;
}

void tellOfUnlocking(const RunControl& control) {
  if (!control.progress) return;
  control.progress({.phase = ExportProgress::Phase::unlocking, .currentFileName = "Unlocking backup…", .total = 1});
}

void unlock(BackupKeyBag& keyBag, std::string_view password, const RunControl& control, const KeyReuse& keys) {
  if (keys.kept != nullptr) {
    if (keyBag.unlock(*keys.kept)) {
      if (keys.used != nullptr) *keys.used = *keys.kept;
      return;
    }
    tellOfUnlocking(control);
  }
  if (password.empty()) throw TidewellError::needsBackupPassword();
  PasswordKey key = keyBag.unlock(password, control.isCancelled);
  if (keys.used != nullptr) *keys.used = std::move(key);
}

// The first two blocks, as far as there are so many. Throws when the file is not whole blocks, or empty.
Bytes decryptedHeader(const fs::path& encrypted, ByteView key) {
  FileDescriptor file = FileDescriptor::openForReading(encrypted);
  if (file.size() % std::int64_t{BackupCrypto::blockSize} != 0) {
    throw TidewellError::ioFailure("Could not decrypt a backup file.");
  }
  Bytes header(2 * BackupCrypto::blockSize);
  header.resize(file.read(header));
  return BackupCrypto::cbcDecryptRaw(key, BackupCrypto::zeroIV, header);
}

}  // namespace

BackupUnlocker BackupUnlocker::unlock(const fs::path& backup, std::string_view password, BackupUnlockReport& report,
                                      const RunControl& control, const KeyReuse& keys) {
  throwIfCancelled(control.isCancelled);
  if (keys.kept == nullptr) tellOfUnlocking(control);
  const PropertyListDictionary manifest = PlistSupport::dictionary(backup / "Manifest.plist");
  BackupUnlocker unlocker{.keyBag = readKeyBag(manifest, report)};
  throwIfCancelled(control.isCancelled);
  ::unlock(unlocker.keyBag, password, control, keys);
  report.classKeysUnwrapped = static_cast<std::int64_t>(unlocker.keyBag.unwrappedClassKeyCount());
  if (const Bytes* manifestKey = PlistSupport::data(entry(manifest, "ManifestKey"))) {
    report.manifestKeyClass = BackupKeyBag::protectionClass(*manifestKey);
    unlocker.manifestKey = unlocker.keyBag.unwrapPersistentKey(*manifestKey);
  }
  return unlocker;
}

bool BackupUnlocker::decryptManifestDatabase(const fs::path& encrypted, const fs::path& copy,
                                             BackupUnlockReport& report) const {
  if (!manifestKey) throw TidewellError::manifestDecryptFailed("ManifestKey is missing after the key bag unlocked.");
  if (!Files::isRegularFile(encrypted)) throw TidewellError::missingManifestDB();
  const std::int64_t size = Files::regularFileSize(encrypted).value_or(0);
  report.manifestCipherByteCount = size;
  report.manifestDecryptedByteCount = BackupCrypto::paddedFileSize(encrypted, *manifestKey).value_or(size);
  const Bytes header = decryptedHeader(encrypted, *manifestKey);
  report.sqliteHeaderOK = textOf(header).starts_with(SQLiteHeader::magic);
  if (!report.sqliteHeaderOK) {
    throw TidewellError::manifestDecryptFailed(
        fmt::format("Decrypted {} bytes from {}-byte Manifest.db, but the file does not start with a SQLite header.",
                    report.manifestDecryptedByteCount, size));
  }
  Files::makeFolder(copy.parent_path());
  FileDescriptor output = FileDescriptor::create(copy, FileAccess::ownerOnly);
  const auto [byteCount, isBorneOut] = BackupCrypto::decryptFile(encrypted, output, *manifestKey, {});
  output.close();
  report.sqliteJournal = sqliteJournalName(header);
  // One need not be padded. Padding after whole pages takes a block of its own, so that with a damaged one they are
  // whole no more.
  return isBorneOut || byteCount % SQLiteHeader::smallestPage == 0;
}

std::string BackupUnlocker::sqliteJournalName(ByteView header) {
  if (header.size() <= SQLiteHeader::writeVersionOffset) return "unknown";
  const unsigned version = header[SQLiteHeader::writeVersionOffset];
  if (version == 1) return "delete";
  return version == 2 ? "wal" : fmt::format("other({})", version);
}
