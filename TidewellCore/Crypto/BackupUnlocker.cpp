#include "TidewellCore/Crypto/BackupUnlocker.h"

#include <fmt/format.h>

#include <limits>

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

void writeFile(const fs::path& path, ByteView content) {
  Files::makeFolder(path.parent_path());
  FileDescriptor file = FileDescriptor::create(path, FileAccess::ownerOnly);
  file.write(content);
  file.close();
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

void BackupUnlocker::decryptManifestDatabase(const fs::path& encrypted, const fs::path& copy,
                                             BackupUnlockReport& report) const {
  if (!manifestKey) throw TidewellError::manifestDecryptFailed("ManifestKey is missing after the key bag unlocked.");
  if (!Files::isRegularFile(encrypted)) throw TidewellError::missingManifestDB();
  const Bytes ciphertext = Files::read(encrypted, std::numeric_limits<std::int64_t>::max());
  report.manifestCipherByteCount = static_cast<std::int64_t>(ciphertext.size());
  const SecretBytes padded = BackupCrypto::aesCBC(*manifestKey, BackupCrypto::zeroIV, ciphertext, {});
  const ByteView plaintext = ByteView(padded).first(BackupCrypto::pkcs7UnpaddedSize(padded).value_or(padded.size()));
  report.manifestDecryptedByteCount = static_cast<std::int64_t>(plaintext.size());
  report.sqliteHeaderOK = textOf(plaintext).starts_with(SQLiteHeader::magic);
  if (!report.sqliteHeaderOK) {
    throw TidewellError::manifestDecryptFailed(
        fmt::format("Decrypted {} bytes from {}-byte Manifest.db, but the file does not start with a SQLite header.",
                    plaintext.size(), ciphertext.size()));
  }
  writeFile(copy, plaintext);
  report.sqliteJournal = sqliteJournalName(plaintext);
}

std::string BackupUnlocker::sqliteJournalName(ByteView header) {
  if (header.size() <= SQLiteHeader::writeVersionOffset) return "unknown";
  const unsigned version = header[SQLiteHeader::writeVersionOffset];
  if (version == 1) return "delete";
  return version == 2 ? "wal" : fmt::format("other({})", version);
}
