#include <gtest/gtest.h>
#include <sys/stat.h>

#include <limits>

#include "Tests/Support/BackupBuilder.h"
#include "Tests/Support/Failures.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/Backup/OpenedBackup.h"
#include "TidewellCore/TidewellError.h"

namespace Fixture {
namespace {

namespace fs = std::filesystem;

constexpr const char* path = "Message/Media/a/1.jpg";
constexpr std::int64_t huge = std::numeric_limits<std::int64_t>::max();

// One stored file, in a plain or in an encrypted backup.
class StoredFileTest : public testing::TestWithParam<bool> {
 protected:
  OpenedBackup open(Bytes content, StorageOptions storage = {}) {
    return open(GetParam(), std::move(content), storage);
  }

  OpenedBackup open(bool encrypted, Bytes content, StorageOptions storage = {}) {
    BackupContents contents{.whatsApp = {.withChatStorage = false, .withContacts = false}};
    contents.whatsApp.files = {{"", path, std::move(content), std::move(storage)}};
    if (encrypted) contents.encryption = Encryption{};
    fs::remove_all(device_);
    backup_ = writeBackup(contents, device_);
    OpenedBackup opened = OpenedBackup::open(device_, "correct horse");
    file_ = ManifestStore::load(opened.url(), opened.manifestDatabaseURL(), opened.usesTemporaryManifest()).media.at(0);
    before_ = treeSnapshot(device_);
    return opened;
  }

  Bytes materialized(const OpenedBackup& opened) const {
    opened.materialize(file_, target_);
    return readFile(target_);
  }

  fs::path stored() const { return backup_.storedFile(path); }

  void expectMissing(const OpenedBackup& opened) const {
    EXPECT_THAT([&] { opened.materialize(file_, target_); },
                failsWith(TidewellError::chatStorageUnreadable("Missing backup file for Message/Media/a/1.jpg.")));
    EXPECT_FALSE(fs::exists(target_));
    EXPECT_EQ(opened.provenSize(file_), std::nullopt);
  }

  void TearDown() override { EXPECT_EQ(treeSnapshot(device_), before_) << "the backup was touched"; }

  TemporaryDirectory folder_;
  fs::path device_ = folder_ / "device";
  fs::path target_ = folder_ / "out.jpg";
  WrittenBackup backup_;
  ManifestFile file_;
  std::map<std::string, TreeEntry> before_;
};

INSTANTIATE_TEST_SUITE_P(PlainAndEncrypted, StoredFileTest, testing::Bool());

TEST_P(StoredFileTest, ComesOutAsItWasOnThePhone) {
  for (const std::size_t size : {0U, 1U, 15U, 16U, 17U, 4096U, 262'144U, 300'001U}) {
    const Bytes content(size, 0x5A);
    const OpenedBackup opened = open(content);
    EXPECT_EQ(materialized(opened), content) << size;
    EXPECT_EQ(opened.sourceSize(file_), static_cast<std::int64_t>(size));
    EXPECT_EQ(opened.provenSize(file_), static_cast<std::int64_t>(size));
  }
}

TEST_P(StoredFileTest, TellsItsFirstBytes) {
  Bytes content;
  for (std::size_t i = 0; i < 300; ++i) content.push_back(static_cast<std::uint8_t>(i % 251));
  for (const std::size_t size : {0U, 1U, 15U, 16U, 17U, 32U, 300U}) {
    const Bytes whole(content.begin(), content.begin() + static_cast<std::ptrdiff_t>(size));
    const OpenedBackup opened = open(whole);
    for (const std::size_t count : {0U, 1U, 12U, 16U, 17U, 299U, 300U, 5000U}) {
      const Bytes expected(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(std::min(count, size)));
      EXPECT_EQ(opened.firstBytes(file_, count), expected) << count << " of " << size;
    }
  }
}

TEST_P(StoredFileTest, TellsNoFirstBytesOfWhatCannotBeRead) {
  EXPECT_THROW(open(bytesOf("x"), {.missing = true}).firstBytes(file_, 16), fs::filesystem_error);
  EXPECT_THAT([&] { open(bytesOf("x"), {.fileID = "../out"}).firstBytes(file_, 16); },
              failsWith(TidewellError::chatStorageUnreadable("Missing backup file for Message/Media/a/1.jpg.")));
  writeFile(folder_ / "secret", "0123456789abcdef");
  const OpenedBackup opened = open(bytesOf("x"), {.missing = true});
  fs::create_directories(stored().parent_path());
  fs::create_symlink(folder_ / "secret", stored());
  before_ = treeSnapshot(device_);
  EXPECT_THROW(opened.firstBytes(file_, 16), fs::filesystem_error);
}

TEST_P(StoredFileTest, TellsTheFirstBytesWhateverSizeWasRecorded) {
  for (const std::int64_t size : {std::int64_t{-5}, std::int64_t{0}, std::int64_t{500}, huge}) {
    EXPECT_EQ(open(Bytes(100, 'x'), {.recordedSize = size}).firstBytes(file_, 16), Bytes(16, 'x')) << size;
  }
}

TEST_P(StoredFileTest, ReplacesWhatStoodAtTheDestination) {
  const OpenedBackup opened = open(bytesOf("new"));
  writeFile(target_, "a longer file that stood here");
  EXPECT_EQ(materialized(opened), bytesOf("new"));
  fs::remove(target_);
  writeFile(folder_ / "elsewhere", "untouched");
  fs::create_symlink(folder_ / "elsewhere", target_);
  EXPECT_EQ(materialized(opened), bytesOf("new"));
  EXPECT_EQ(readFile(folder_ / "elsewhere"), bytesOf("untouched"));
}

TEST_P(StoredFileTest, IsReportedByItsPathWhenItIsAbsent) { expectMissing(open(bytesOf("x"), {.missing = true})); }

TEST_P(StoredFileTest, CountsAsMissingWhenItIsAFIFO) {
  const OpenedBackup opened = open(bytesOf("x"), {.missing = true});
  fs::create_directories(stored().parent_path());
  ASSERT_EQ(::mkfifo(stored().c_str(), 0600), 0);
  before_ = treeSnapshot(device_);
  expectMissing(opened);
}

TEST_P(StoredFileTest, CountsAsMissingWhenItIsALinkOrAFolder) {
  const OpenedBackup opened = open(bytesOf("x"), {.missing = true});
  fs::create_directories(stored().parent_path());
  writeFile(folder_ / "secret", "0123456789abcdef");
  fs::create_symlink(folder_ / "secret", stored());
  before_ = treeSnapshot(device_);
  expectMissing(opened);
  fs::remove(stored());
  fs::create_directory(stored());
  before_ = treeSnapshot(device_);
  expectMissing(opened);
}

TEST_P(StoredFileTest, CountsAsMissingWhenItsIdentifierIsHostile) {
  for (const std::string fileID : {"../out", "..", ".hidden", "", "ab/../../secret", "ab\ncd"}) {
    writeFile(folder_ / "out", "outside");
    const OpenedBackup opened = open(bytesOf("x"), {.fileID = fileID});
    EXPECT_EQ(opened.location(file_), std::nullopt) << fileID;
    expectMissing(opened);
  }
}

TEST_P(StoredFileTest, LiesInTheFolderOfItsFirstTwoCharacters) {
  const OpenedBackup opened = open(bytesOf("x"), {.fileID = "3dabc"});
  EXPECT_EQ(opened.location(file_), device_ / "3d" / "3dabc");
  EXPECT_EQ(materialized(opened), bytesOf("x"));
}

TEST_P(StoredFileTest, HasTheRecordedSizeWhateverIsStored) {
  for (const std::int64_t size : {std::int64_t{-5}, std::int64_t{0}, std::int64_t{7}, huge}) {
    EXPECT_EQ(open(Bytes(100), {.recordedSize = size}).sourceSize(file_), size);
  }
}

TEST_P(StoredFileTest, IsProvenToHaveItsTrueSizeWhateverWasRecorded) {
  for (const std::int64_t size :
       {-huge - 1, std::int64_t{-5}, std::int64_t{0}, std::int64_t{7}, std::int64_t{500}, huge}) {
    EXPECT_EQ(open(Bytes(100), {.recordedSize = size}).provenSize(file_), 100) << size;
  }
  EXPECT_EQ(open(Bytes(100), {.withoutSize = true}).provenSize(file_), 100);
}

TEST_P(StoredFileTest, HasTheSizeOfItsStoredFileWithoutARecord) {
  EXPECT_EQ(open(Bytes(100), {.withoutSize = true}).sourceSize(file_), GetParam() ? 112 : 100);
  EXPECT_EQ(open(Bytes(100), {.withoutSize = true, .missing = true}).sourceSize(file_), 0);
  EXPECT_EQ(open(Bytes(100), {.withoutSize = true, .fileID = "../x"}).sourceSize(file_), 0);
}

TEST_P(StoredFileTest, WithoutARecordedSizeItsPaddingTellsTheEnd) {
  EXPECT_EQ(materialized(open(Bytes(100, 1), {.withoutSize = true})), Bytes(100, 1));
}

TEST_P(StoredFileTest, StopsWhenItIsCancelled) {
  const OpenedBackup opened = open(Bytes(600'000, 1));
  const StoredFile file{.location = stored(), .encryptionKey = file_.encryptionKey, .size = file_.plaintextSize};
  FileDescriptor target = FileDescriptor::create(target_);
  EXPECT_THAT([&] { opened.writePlaintext(file, target, [] { return true; }); }, failsWith(TidewellError::cancelled()));
}

using EncryptedFileTest = StoredFileTest;
INSTANTIATE_TEST_SUITE_P(Encrypted, EncryptedFileTest, testing::Values(true));

TEST_P(EncryptedFileTest, AFileWithoutAKeyIsCopiedAsItIs) {
  const OpenedBackup opened = open(bytesOf("clear"), {.withoutKey = true, .withoutRecord = true});
  EXPECT_EQ(materialized(opened), bytesOf("clear"));
  EXPECT_EQ(opened.provenSize(file_), std::nullopt) << "nobody knows whether it is locked";
}

TEST_P(EncryptedFileTest, ARecordedSizeThatFillsAllBlocksCountsOnlyWithoutPadding) {
  // 100 bytes are stored in 112, so a stale size of 112 would keep the padding.
  EXPECT_EQ(open(Bytes(100, 0x5A), {.recordedSize = 112}).provenSize(file_), 100);
  // Cut by the block of padding that follows full blocks, nothing is missing.
  EXPECT_EQ(open(Bytes(96, 0x5A), {.truncatedTo = 96}).provenSize(file_), 96);
}

TEST_P(EncryptedFileTest, ACutFileHasNoProvenSize) {
  for (const std::size_t length : {0U, 48U, 50U, 111U}) {
    EXPECT_EQ(open(Bytes(100, 0x5A), {.truncatedTo = length}).provenSize(file_), std::nullopt) << length;
  }
}

TEST_P(EncryptedFileTest, AFileOfALockedClassIsReportedAndHasNoProvenSize) {
  const OpenedBackup opened = open(Bytes(100, 1), {.withoutSize = true, .protectionClass = 11});
  EXPECT_EQ(opened.provenSize(file_), std::nullopt);
  EXPECT_THAT([&] { opened.materialize(file_, target_); }, failsWith("This backup is missing protection class 11."));
}

TEST_P(EncryptedFileTest, AnEmptyStoredFileNeedsNoKey) {
  const OpenedBackup opened = open(Bytes{}, {.protectionClass = 11, .truncatedTo = 0});
  EXPECT_EQ(materialized(opened), Bytes{});
  EXPECT_EQ(opened.provenSize(file_), 0);
  const OpenedBackup sizeless = open(Bytes{}, {.withoutSize = true, .protectionClass = 11, .truncatedTo = 0});
  EXPECT_EQ(materialized(sizeless), Bytes{});
  EXPECT_EQ(sizeless.provenSize(file_), 0);
}

TEST(OpenedPlainBackup, IgnoresKeysInItsRecords) {
  const TemporaryDirectory folder;
  BackupContents contents{.encryption = Encryption{}, .whatsApp = {.withChatStorage = false, .withContacts = false}};
  contents.whatsApp.files = {{"", path, bytesOf("x")}};
  writeBackup(contents, folder / "encrypted");
  const OpenedBackup encrypted = OpenedBackup::open(folder / "encrypted", "correct horse");
  ManifestFile file = ManifestStore::load(encrypted.url(), encrypted.manifestDatabaseURL(), true).media.at(0);
  ASSERT_TRUE(file.encryptionKey);
  contents.encryption.reset();
  writeBackup(contents, folder / "plain");
  const OpenedBackup plain = OpenedBackup::open(folder / "plain", std::nullopt);
  plain.materialize(file, folder / "out");
  EXPECT_EQ(readFile(folder / "out"), bytesOf("x"));
  EXPECT_EQ(plain.provenSize(file), 1);
}

}  // namespace
}  // namespace Fixture
