#include <fmt/format.h>
#include <sqlite3.h>

#include <cstdlib>

#include "Benchmarks/Exports.h"
#include "Benchmarks/Measures.h"
#include "Benchmarks/PhoneData.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tests/Support/TestCrypto.h"
#include "TidewellCore/Backup/ManifestStore.h"
#include "TidewellCore/Backup/OpenedBackup.h"

namespace {

namespace fs = std::filesystem;
using Fixture::Bytes;
using Fixture::Digest;

constexpr std::uint32_t firstRounds = 10'000;

Bytes bytesOf(std::string_view text) { return {text.begin(), text.end()}; }

void derive(const Sizes& sizes) {
  const Bytes salt(20);
  const Bytes first = Fixture::pbkdf2(Digest::sha256, bytesOf(PhoneData::password), salt,
                                      static_cast<std::uint32_t>(sizes.unlockRounds));
  Fixture::pbkdf2(Digest::sha1, first, salt, firstRounds);
}

void scanIndex(const fs::path& index) {
  sqlite3* handle = nullptr;
  sqlite3_stmt* statement = nullptr;
  constexpr const char* rows =
      "SELECT fileID, domain, relativePath, flags, file FROM Files NOT INDEXED WHERE domain LIKE "
      "'%whatsapp.WhatsApp.shared'";
  if (sqlite3_open(index.c_str(), &handle) != SQLITE_OK ||
      sqlite3_prepare_v2(handle, rows, -1, &statement, nullptr) != SQLITE_OK) {
    std::abort();
  }
  while (sqlite3_step(statement) == SQLITE_ROW) {
    for (int i = 0; i < 5; ++i) sqlite3_column_blob(statement, i);
  }
  sqlite3_finalize(statement);
  sqlite3_close(handle);
}

// With any key: what comes out need not be right to take as long.
void decryptAll(const fs::path& file) {
  Fixture::aesCbcDecrypt(Bytes(32), Fixture::readFile(file), Fixture::Padding::none);
}

}  // namespace

bool measureUnlocking(const Workshop& workshop) {
  const Sizes& sizes = workshop.sizes;
  const fs::path backup = workshop.folder / "backup";
  Measure::of([&] {
    PhoneData::writeBackup({.chats = {.messages = sizes.scannedMedia * 2, .messagesToAMedium = 2},
                            .bytesOfAMedium = 100,
                            .isEncrypted = true,
                            .rounds = {.first = firstRounds, .second = static_cast<std::uint32_t>(sizes.unlockRounds)}},
                           backup);
  });
  const auto unlock = [&] {
    BackupUnlockReport report;
    BackupUnlocker::unlock(backup, PhoneData::password, report);
  };
  const bool isReached =
      Measure::compare({.what = fmt::format("Unlocking, {} and {} rounds", sizes.unlockRounds, firstRounds),
                        .reference = "OpenSSL's PBKDF2",
                        .ours = unlock,
                        .other = [&] { derive(sizes); },
                        .limit = 1.05},
                       workshop.rounds);
  return Measure::compare({.what = fmt::format("Scanning {} encrypted media", sizes.scannedMedia),
                           .reference = "unlocking them",
                           .ours = [&] { Exports::scan(backup, PhoneData::password); },
                           .other = unlock,
                           .limit = 1.5},
                          workshop.rounds) &&
         isReached;
}

bool measureIndex(const Workshop& workshop) {
  const Sizes& sizes = workshop.sizes;
  const fs::path backup = workshop.folder / "backup";
  const fs::path plain = workshop.folder / "plain.db";
  const int ofApp = sizes.indexRows / 5;
  Measure::of([&] {
    PhoneData::writeBackup({.chats = {.messages = ofApp * 2, .messagesToAMedium = 2},
                            .bytesOfAMedium = 16,
                            .isEncrypted = true,
                            .filesOfOtherApps = sizes.indexRows - ofApp},
                           backup);
    const OpenedBackup opened = OpenedBackup::open(backup, PhoneData::password);
    fs::copy_file(opened.manifestDatabaseURL(), plain);
  });
  return Measure::compare({.what = fmt::format("Loading an encrypted index of {} rows", sizes.indexRows),
                           .reference = "decrypting it, a scan of our rows",
                           .ours =
                               [&] {
                                 const OpenedBackup opened = OpenedBackup::open(backup, PhoneData::password);
                                 ManifestStore::load(backup, opened.manifestDatabaseURL(), true);
                               },
                           .other =
                               [&] {
                                 decryptAll(backup / "Manifest.db");
                                 scanIndex(plain);
                               },
                           .limit = 1.3},
                          workshop.rounds);
}
