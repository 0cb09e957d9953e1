#include "TidewellCore/Backup/OpenedBackup.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>

#include "Tests/Backup/OpenedBackupScene.h"
#include "Tests/Support/DatabaseWriter.h"
#include "Tests/Support/Unprivileged.h"

namespace Fixture {
namespace {

namespace fs = std::filesystem;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

TEST_F(OpenedBackupTest, APlainBackupNeedsNeitherPasswordNorWorkingFolder) {
  write(plainContents());
  const OpenedBackup opened = open(std::nullopt);
  EXPECT_EQ(opened.url(), device_);
  EXPECT_EQ(opened.info().deviceName, "Ana's iPhone");
  EXPECT_EQ(opened.manifestDatabaseURL(), device_ / "Manifest.db");
  EXPECT_FALSE(opened.usesTemporaryManifest());
  EXPECT_FALSE(opened.unlocker());
  EXPECT_FALSE(opened.unlockReport());
  EXPECT_THAT(temporary_.names(), IsEmpty());
  EXPECT_THAT(index(opened).media, SizeIs(1));
  EXPECT_THAT(reports_, IsEmpty());
}

TEST_F(OpenedBackupTest, APasswordForAPlainBackupIsIgnored) {
  write(plainContents());
  EXPECT_FALSE(open("whatever").unlocker());
  EXPECT_THAT(reports_, IsEmpty());
}

TEST_F(OpenedBackupTest, AFolderThatIsNoBackupIsRefused) {
  writeFile(device_ / "file", "text");
  rememberBackup();
  EXPECT_THAT([&] { open(std::nullopt); }, failsWith(TidewellError::notABackup(device_.string())));
}

// Whatever the journal, the rows are all there and nothing is written beside the index.
class PlainIndexTest : public OpenedBackupTest, public testing::WithParamInterface<Journal> {};

TEST_P(PlainIndexTest, IsReadWholeWithoutWritingBesideIt) {
  BackupContents contents = plainContents();
  for (int i = 0; i < 20; ++i) {
    contents.whatsApp.files.push_back({"", "Message/Media/b/" + std::to_string(i) + ".jpg", bytesOf("x")});
  }
  contents.manifestJournal = GetParam();
  write(contents);
  const OpenedBackup opened = open(std::nullopt);
  EXPECT_THAT(index(opened).media, SizeIs(21));
  const bool isCopied = GetParam() != Journal::rollback;
  EXPECT_EQ(opened.usesTemporaryManifest(), isCopied);
  EXPECT_THAT(temporary_.names(), SizeIs(isCopied ? 1 : 0));
  EXPECT_THAT(temporary_.names(), testing::Each(StartsWith("Tidewell-manifest-")));
}

INSTANTIATE_TEST_SUITE_P(OfEachJournal, PlainIndexTest,
                         testing::Values(Journal::rollback, Journal::walHeader, Journal::walWithPendingRows));

TEST_F(OpenedBackupTest, AnIndexWithAnEmptyJournalBesideItIsReadFromACopy) {
  write(plainContents());
  writeFile(device_ / "Manifest.db-journal", "");
  rememberBackup();
  const OpenedBackup opened = open(std::nullopt);
  EXPECT_TRUE(opened.usesTemporaryManifest());
  EXPECT_THAT(index(opened).media, SizeIs(1));
}

TEST_F(OpenedBackupTest, AFIFOOrALinkBesideTheIndexIsNeverOpened) {
  const TidewellError unreadable = TidewellError::invalidDatabase(
      "The journal of its file index cannot be read. Copy the backup again from where it came, or make a new one with "
      "the iPhone.");
  write(plainContents());
  writeFile(folder_ / "outside", "text");
  const auto expectUnopened = [&](const std::string& ending) {
    rememberBackup();
    if (ending == "-shm") {
      EXPECT_THAT(index(open(std::nullopt)).media, SizeIs(1)) << "it holds nothing that is not in the journal";
    } else {
      EXPECT_THAT([&] { open(std::nullopt); }, failsWith(unreadable)) << ending;
    }
    EXPECT_EQ(treeSnapshot(device_), before_) << ending;
  };
  for (const char* ending : {"-journal", "-wal", "-shm"}) {
    const fs::path companion = device_ / (std::string("Manifest.db") + ending);
    ASSERT_EQ(::mkfifo(companion.c_str(), 0600), 0);
    expectUnopened(ending);
    fs::remove(companion);
    fs::create_symlink(folder_ / "outside", companion);
    expectUnopened(ending);
    fs::remove(companion);
  }
  EXPECT_EQ(readFile(folder_ / "outside"), bytesOf("text"));
  rememberBackup();
}

TEST_F(OpenedBackupTest, ADamagedJournalOfTheIndexIsAWarning) {
  BackupContents contents = plainContents();
  for (int i = 0; i < 300; ++i) {
    contents.whatsApp.files.push_back({"", "Message/Media/b/" + std::to_string(i) + ".jpg", bytesOf("x")});
  }
  contents.manifestJournal = Journal::walWithPendingRows;
  write(contents);
  EXPECT_THAT(index(open(std::nullopt)).warnings, IsEmpty());
  Bytes journal = readFile(device_ / "Manifest.db-wal");
  journal.at(3000) ^= 1;
  writeFile(device_ / "Manifest.db-wal", journal);
  rememberBackup();
  const ManifestStore store = index(open(std::nullopt));
  EXPECT_THAT(store.media, SizeIs(testing::Lt(301U)));
  EXPECT_THAT(store.warnings, testing::ElementsAre(StartsWith("The newest files may be missing: the journal")));
}

// Of more files than one thread is given.
TEST_F(OpenedBackupTest, TheSizesOfManyFilesAreThoseOfEach) {
  const auto damaged = [](std::size_t number) {
    if (number % 100 == 1) return Fixture::StorageOptions{.missing = true};
    if (number % 100 == 2) return Fixture::StorageOptions{.truncatedTo = 16};
    if (number % 100 == 3) return Fixture::StorageOptions{.recordedSize = 7};
    return Fixture::StorageOptions{};
  };
  for (BackupContents contents : {plainContents(), encryptedContents()}) {
    for (std::size_t i = 0; i < 1500; ++i) {
      contents.whatsApp.files.push_back(
          {"", "Message/Media/b/" + std::to_string(i) + ".jpg", Bytes(i % 90, 0x42), damaged(i)});
    }
    write(contents);
    const OpenedBackup opened = open(contents.encryption ? std::optional<std::string>(password) : std::nullopt);
    const std::vector<ManifestFile> media = index(opened).media;
    ASSERT_GT(media.size(), 1500U);
    const auto sizes = opened.provenSizes(media);
    ASSERT_EQ(sizes.size(), media.size());
    for (std::size_t i = 0; i < media.size(); ++i) {
      EXPECT_EQ(sizes[i], opened.provenSize(media[i])) << media[i].relativePath;
    }
    EXPECT_GE(std::ranges::count(sizes, false, &std::optional<std::int64_t>::has_value), 15);
    EXPECT_THROW(opened.provenSizes(media, [] { return true; }), TidewellError);
  }
}

TEST_F(OpenedBackupTest, CopyingAnIndexAndItsJournalCanBeCancelled) {
  BackupContents contents = plainContents();
  contents.manifestJournal = Journal::walWithPendingRows;
  write(contents);
  rememberBackup();
  for (int stage : {1, 2}) {
    int asked = 0;
    const RunControl control{.isCancelled = [&] { return ++asked == stage; }};
    EXPECT_THAT([&] { OpenedBackup::open(device_, std::nullopt, control); }, failsWith(TidewellError::cancelled()));
  }
}

TEST_F(OpenedBackupTest, ADamagedEndOfTheIndexsJournalIsAWarning) {
  BackupContents contents = plainContents();
  contents.manifestJournal = Journal::walWithPendingRows;
  write(contents);
  Bytes journal = readFile(device_ / "Manifest.db-wal");
  journal.back() ^= 1;
  writeFile(device_ / "Manifest.db-wal", journal);
  rememberBackup();
  EXPECT_THAT(index(open(std::nullopt)).warnings,
              testing::ElementsAre(StartsWith("The newest files may be missing: the journal")));
}

TEST_F(OpenedBackupTest, AnIndexThatIsAFIFOOrALinkIsMissing) {
  write(plainContents());
  fs::rename(device_ / "Manifest.db", folder_ / "Manifest.db");
  ASSERT_EQ(::mkfifo((device_ / "Manifest.db").c_str(), 0600), 0);
  EXPECT_THAT([&] { index(open(std::nullopt)); }, failsWith(TidewellError::missingManifestDB()));
  fs::remove(device_ / "Manifest.db");
  fs::create_symlink(folder_ / "Manifest.db", device_ / "Manifest.db");
  EXPECT_THAT([&] { index(open(std::nullopt)); }, failsWith(TidewellError::missingManifestDB()));
  rememberBackup();
}

TEST_F(OpenedBackupTest, AReadOnlyBackupIsReadWithoutTheRightToWrite) {
  for (const Journal journal : {Journal::rollback, Journal::walHeader, Journal::walWithPendingRows}) {
    BackupContents contents = plainContents();
    contents.manifestJournal = journal;
    fs::remove_all(device_);
    write(contents);
    fs::permissions(folder_.path(), fs::perms(0755));
    fs::permissions(temporary_.path(), fs::perms(0777));
    for (const auto& item : fs::recursive_directory_iterator(device_)) {
      fs::permissions(item, item.is_directory() ? fs::perms(0555) : fs::perms(0444));
    }
    fs::permissions(device_, fs::perms(0555));
    rememberBackup();
    EXPECT_EQ(asUnprivilegedUser([&] { return static_cast<int>(index(open(std::nullopt)).media.size()); }), 1);
    EXPECT_EQ(treeSnapshot(device_), before_);
    for (const auto& item : fs::recursive_directory_iterator(device_)) {
      if (item.is_directory()) fs::permissions(item, fs::perms(0755));
    }
    fs::permissions(device_, fs::perms(0755));
  }
  rememberBackup();
}

}  // namespace
}  // namespace Fixture
