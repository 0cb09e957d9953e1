#include <gtest/gtest.h>
#include <sys/stat.h>

#include <limits>

#include "Tests/Support/BackupBuilder.h"
#include "Tests/Support/Failures.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/Backup/OpenedBackup.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/SQLiteDB.h"
#include "TidewellCore/TidewellError.h"

namespace Fixture {
namespace {

namespace fs = std::filesystem;

constexpr const char* name = "ChatStorage.sqlite";
constexpr std::int64_t rowCount = 400;

class TemporaryBackupDatabaseTest : public testing::Test {
 protected:
  BackupContents contents(Journal journal = Journal::walHeader) {
    BackupContents backup{.encryption = Encryption{}};
    for (std::int64_t i = 0; i < rowCount; ++i) {
      backup.whatsApp.messages.push_back({.chat = 1, .date = i, .text = std::string(100, 'a')});
    }
    backup.whatsApp.journal = journal;
    return backup;
  }

  void write(const BackupContents& backup) {
    written_ = writeBackup(backup, device_);
    opened_ = OpenedBackup::open(device_, "correct horse");
    store_ = ManifestStore::load(device_, opened_->manifestDatabaseURL(), opened_->usesTemporaryManifest());
    before_ = treeSnapshot(device_);
  }

  void copy(const std::optional<ManifestFile>& file) const {
    TemporaryBackupDatabase::copyDatabaseFile(device_, *file, folder_ / file->relativePath, &*opened_);
  }

  // Of the working copy, after SQLite found no fault in it.
  std::int64_t messageCount() const {
    const SQLiteDB database(PathText::text(folder_ / name), SQLiteDB::OpenMode::writableCopy);
    std::string verdict;
    database.query("PRAGMA integrity_check", {},
                   [&](const SQLiteRow& row) { verdict = row.textValue("integrity_check").value_or("none"); });
    EXPECT_EQ(verdict, "ok");
    std::int64_t count = -1;
    database.query("SELECT count(*) AS n FROM ZWAMESSAGE", {},
                   [&](const SQLiteRow& row) { count = row.intValue("n").value_or(-1); });
    return count;
  }

  void TearDown() override { EXPECT_EQ(treeSnapshot(device_), before_) << "the backup was touched"; }

  TemporaryDirectory folder_;
  fs::path device_ = folder_ / "device";
  WrittenBackup written_;
  std::optional<OpenedBackup> opened_;
  ManifestStore store_;
  std::map<std::string, TreeEntry> before_;
};

TEST_F(TemporaryBackupDatabaseTest, ADatabaseIsCopiedWholeWhateverSizeWasRecorded) {
  constexpr std::int64_t huge = std::numeric_limits<std::int64_t>::max();
  for (const std::int64_t size : {-huge - 1, std::int64_t{-1}, std::int64_t{0}, std::int64_t{50}, std::int64_t{4096},
                                  std::int64_t{12'000}, std::int64_t{9'000'000}, huge}) {
    BackupContents backup = contents();
    backup.whatsApp.databaseStorage[name] = {.recordedSize = size};
    fs::remove_all(device_);
    write(backup);
    copy(store_.chatStorage);
    EXPECT_EQ(messageCount(), rowCount) << size;
  }
}

TEST_F(TemporaryBackupDatabaseTest, ADatabaseThatGrewByLessThanABlockIsCopiedWhole) {
  write(contents());
  const auto stored = static_cast<std::int64_t>(fs::file_size(written_.storedFile(name)));
  for (std::int64_t size = stored - 17; size <= stored; ++size) {
    BackupContents backup = contents();
    backup.whatsApp.databaseStorage[name] = {.recordedSize = size};
    fs::remove_all(device_);
    write(backup);
    copy(store_.chatStorage);
    EXPECT_EQ(messageCount(), rowCount) << size - stored;
  }
}

TEST_F(TemporaryBackupDatabaseTest, ADatabaseWithoutPaddingAndWithAStaleSizeIsCopiedWhole) {
  write(contents());
  const auto whole = static_cast<std::int64_t>(fs::file_size(written_.storedFile(name))) - 16;
  for (const std::int64_t size :
       {std::int64_t{-1}, std::int64_t{0}, std::int64_t{60}, std::int64_t{4096}, whole - 1, whole - 16}) {
    BackupContents backup = contents();
    backup.whatsApp.databaseStorage[name] = {.recordedSize = size};
    fs::remove_all(device_);
    write(backup);
    const fs::path stored = written_.storedFile(name);
    fs::resize_file(stored, fs::file_size(stored) - 16);  // the block that holds nothing but padding
    before_ = treeSnapshot(device_);
    copy(store_.chatStorage);
    EXPECT_EQ(fs::file_size(folder_ / name), static_cast<std::uintmax_t>(whole)) << size;
    EXPECT_EQ(messageCount(), rowCount) << size;
  }
}

TEST_F(TemporaryBackupDatabaseTest, RowsThatStandOnlyInTheLogAreThere) {
  write(contents(Journal::walWithPendingRows));
  copy(store_.chatStorage);
  copy(store_.chatStorageWAL);
  copy(store_.chatStorageSHM);
  EXPECT_EQ(messageCount(), rowCount);
}

TEST_F(TemporaryBackupDatabaseTest, ALogIsCopiedWholeWhateverSizeWasRecorded) {
  for (const std::int64_t size : {-1, 0, 1000}) {
    BackupContents backup = contents(Journal::walWithPendingRows);
    backup.whatsApp.databaseStorage["ChatStorage.sqlite-wal"] = {.recordedSize = size};
    fs::remove_all(device_);
    for (const char* ending : {"", "-wal", "-shm"}) fs::remove(folder_ / (name + std::string(ending)));
    write(backup);
    copy(store_.chatStorage);
    copy(store_.chatStorageWAL);
    EXPECT_EQ(messageCount(), rowCount) << size;
  }
}

TEST_F(TemporaryBackupDatabaseTest, AMissingCompanionIsNamed) {
  BackupContents backup = contents(Journal::walWithPendingRows);
  backup.whatsApp.databaseStorage["ChatStorage.sqlite-wal"] = {.missing = true};
  write(backup);
  EXPECT_THAT([&] { copy(store_.chatStorageWAL); },
              failsWith(TidewellError::chatStorageUnreadable("Missing backup file for ChatStorage.sqlite-wal.")));
}

TEST_F(TemporaryBackupDatabaseTest, AStoredFileIsCopiedAsItIsWithoutAnOpenedBackup) {
  write(contents());
  const fs::path target = folder_ / "copy";
  writeFile(target, "replaced");
  TemporaryBackupDatabase::copyDatabaseFile(device_, *store_.chatStorage, target, nullptr);
  EXPECT_EQ(readFile(target), readFile(written_.storedFile(name)));
}

TEST_F(TemporaryBackupDatabaseTest, AMissingFileIsNamedWithoutAnOpenedBackupToo) {
  write(contents());
  const fs::path stored = written_.storedFile(name);
  const auto copying = [&](const ManifestFile& file) {
    return [&, file] { TemporaryBackupDatabase::copyDatabaseFile(device_, file, folder_ / "copy", nullptr); };
  };
  const TidewellError missing = TidewellError::chatStorageUnreadable("Missing backup file for ChatStorage.sqlite.");
  fs::remove(stored);
  EXPECT_THAT(copying(*store_.chatStorage), failsWith(missing));
  ASSERT_EQ(::mkfifo(stored.c_str(), 0600), 0);
  EXPECT_THAT(copying(*store_.chatStorage), failsWith(missing));
  before_ = treeSnapshot(device_);
  ManifestFile hostile = *store_.chatStorage;
  hostile.fileID = "../device/Manifest.db";
  EXPECT_THAT(copying(hostile), failsWith(missing));
}

}  // namespace
}  // namespace Fixture
