#include "TidewellCore/Backup/ManifestStore.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Tests/Support/BackupBuilder.h"
#include "Tests/Support/DatabaseWriter.h"
#include "Tests/Support/Failures.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/TidewellError.h"

namespace Fixture {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

class ManifestStoreTest : public testing::Test {
 protected:
  ManifestStore load(const BackupContents& contents) {
    writeBackup(contents, device_);
    return unchanged([&] { return ManifestStore::load(device_); });
  }

  // Loads an index of that very schema and content.
  ManifestStore loadIndex(const std::string& sql) {
    DatabaseWriter writer(Journal::rollback);
    writer.execute(sql);
    writeFile(device_ / "Manifest.db", writer.finish().main);
    return unchanged([&] { return ManifestStore::load(device_); });
  }

  template <typename Load>
  ManifestStore unchanged(Load load) const {
    const auto before = treeSnapshot(device_);
    const ManifestStore store = load();
    EXPECT_EQ(treeSnapshot(device_), before);
    return store;
  }

  TemporaryDirectory folder_;
  fs::path device_ = folder_ / "device";
};

std::vector<std::string> pathsOf(const std::vector<ManifestFile>& files) {
  std::vector<std::string> paths;
  for (const ManifestFile& file : files) paths.push_back(file.relativePath);
  return paths;
}

std::string domainOf(const std::optional<ManifestFile>& file) { return file ? file->domain : "none"; }

BackupContents withFiles(std::vector<BackupFile> files) {
  return {.whatsApp = {.withChatStorage = false, .withContacts = false, .files = std::move(files)}};
}

TEST_F(ManifestStoreTest, FindsTheDatabasesWithTheirCompanions) {
  const ManifestStore store = load({.whatsApp = {.chats = {{.name = "Ana"}}, .contacts = {{.fullName = "Ana"}}}});
  ASSERT_TRUE(store.chatStorage && store.chatStorageWAL && store.chatStorageSHM);
  ASSERT_TRUE(store.contacts && store.contactsWAL && store.contactsSHM);
  EXPECT_EQ(store.chatStorage->relativePath, "ChatStorage.sqlite");
  EXPECT_EQ(store.chatStorageWAL->relativePath, "ChatStorage.sqlite-wal");
  EXPECT_EQ(store.chatStorageSHM->relativePath, "ChatStorage.sqlite-shm");
  EXPECT_EQ(store.contacts->relativePath, "ContactsV2.sqlite");
  EXPECT_EQ(store.contactsWAL->relativePath, "ContactsV2.sqlite-wal");
  EXPECT_EQ(store.contactsSHM->relativePath, "ContactsV2.sqlite-shm");
  EXPECT_EQ(store.chatStorage->fileID, fileIDOf(consumerDomain, "ChatStorage.sqlite"));
  EXPECT_EQ(store.chatStorage->flags, 1);
  EXPECT_EQ(store.files.size(), 6U);
}

TEST_F(ManifestStoreTest, ABackupWithoutWhatsAppIsNoError) {
  BackupContents contents = withFiles({});
  contents.otherFiles = {{"AppDomain-com.example.notes", "ChatStorage.sqlite", bytesOf("x")}};
  EXPECT_EQ(load(contents), ManifestStore{});
}

TEST_F(ManifestStoreTest, TakesTheSharedContainersOfBothAppsAndNoOther) {
  BackupContents contents = withFiles({});
  for (const char* domain :
       {"AppDomainGroup-group.net.whatsapp.WhatsApp.shared", "x-whatsapp.WhatsApp.shared",
        "AppDomainGroup-group.net.whatsapp.WhatsAppSMB.shared", "AppDomainGroup-group.net.whatsapp.WhatsApp.private",
        "AppDomain-net.whatsapp.WhatsApp", "AppDomainGroup-group.net.whatsapp.WhatsApp.shared.more", "HomeDomain"}) {
    contents.otherFiles.push_back({domain, "Message/Media/a/b.jpg", bytesOf("x")});
  }
  std::vector<std::string> domains;
  for (const ManifestFile& file : load(contents).media) domains.push_back(file.domain);
  EXPECT_THAT(domains, testing::UnorderedElementsAre("AppDomainGroup-group.net.whatsapp.WhatsApp.shared",
                                                     "x-whatsapp.WhatsApp.shared",
                                                     "AppDomainGroup-group.net.whatsapp.WhatsAppSMB.shared"));
}

TEST_F(ManifestStoreTest, TakesTheInterestingPathsAlone) {
  const ManifestStore store = load(withFiles({{"", "Message/Media/a/1.jpg"},
                                              {"", "Message/Elsewhere/2.jpg"},
                                              {"", "Media/Profile/3.jpg"},
                                              {"", "Media/4.jpg"},
                                              {"", "Library/ChatStorage.sqlite"},
                                              {"", "ChatStorage.sqlite-journals"},
                                              {"", "xMessage/Media/a/5.jpg"}}));
  EXPECT_THAT(pathsOf(store.files), ElementsAre("Message/Media/a/1.jpg", "Media/Profile/3.jpg"));
  EXPECT_FALSE(store.chatStorage);
}

TEST_F(ManifestStoreTest, FoldersAndLinksAreNeverReturned) {
  BackupContents contents = withFiles({{"", "Message/Media/a/1.jpg"}});
  contents.indexRows = {{std::string(consumerDomain), "Message/Media/a", 2},
                        {std::string(consumerDomain), "Message/Media/a/link.jpg", 4},
                        {std::string(consumerDomain), "ChatStorage.sqlite", 4},
                        {std::string(consumerDomain), "Message/Media/a/zero.jpg", 0}};
  EXPECT_THAT(pathsOf(load(contents).files), ElementsAre("Message/Media/a/1.jpg"));
}

TEST_F(ManifestStoreTest, ThumbnailsAreCountedApartInAnyLetterCase) {
  const ManifestStore store = load(withFiles({{"", "Message/Media/a/1.jpg"},
                                              {"", "Message/Media/a/1.thumb"},
                                              {"", "Message/Media/a/2.THUMB"},
                                              {"", "Message/Media/a/3.jpg.Thumb"},
                                              {"", "Message/Media/a/4.mmsthumb"},
                                              {"", "Message/Media/a/5.FavIcon"},
                                              {"", "Message/Media/a.thumb/6.jpg"},
                                              {"", "Message/Media/a/thumb"},
                                              {"", "Message/Media/a/.thumb"}}));
  EXPECT_THAT(pathsOf(store.media),
              ElementsAre("Message/Media/a/1.jpg", "Message/Media/a.thumb/6.jpg", "Message/Media/a/thumb"));
  EXPECT_EQ(store.skippedThumbnails.size(), 6U);
  EXPECT_EQ(store.files.size(), 9U);
}

TEST_F(ManifestStoreTest, ProfilePicturesAreAListOfTheirOwn) {
  const ManifestStore store =
      load(withFiles({{"", "Media/Profile/5511900001111-1.jpg"}, {"", "Media/Profile/2.thumb"}}));
  EXPECT_THAT(pathsOf(store.profilePictures),
              ElementsAre("Media/Profile/5511900001111-1.jpg", "Media/Profile/2.thumb"));
  EXPECT_THAT(store.media, IsEmpty());
  EXPECT_THAT(store.skippedThumbnails, IsEmpty());
}

TEST_F(ManifestStoreTest, CompanionsComeFromTheDomainOfTheirDatabase) {
  // The business app's database, journals and contacts are listed before and after the consumer app's.
  BackupContents contents = withFiles({});
  const std::string consumer(consumerDomain);
  const std::string business(businessDomain);
  contents.otherFiles = {{business, "ChatStorage.sqlite-wal"}, {business, "ContactsV2.sqlite"},
                         {business, "ContactsV2.sqlite-wal"},  {consumer, "ChatStorage.sqlite"},
                         {business, "ChatStorage.sqlite"},     {consumer, "ChatStorage.sqlite-wal"},
                         {consumer, "ContactsV2.sqlite"},      {business, "ChatStorage.sqlite-shm"}};
  const ManifestStore store = load(contents);
  EXPECT_EQ(domainOf(store.chatStorage), consumer);
  EXPECT_EQ(domainOf(store.chatStorageWAL), consumer);
  EXPECT_EQ(domainOf(store.chatStorageSHM), "none") << "the other app's journal is not this database's";
  EXPECT_EQ(domainOf(store.contacts), consumer);
  EXPECT_EQ(domainOf(store.contactsWAL), "none");
}

TEST_F(ManifestStoreTest, ContactsOfTheOtherAppAreBetterThanNone) {
  BackupContents contents = withFiles({});
  contents.otherFiles = {{std::string(consumerDomain), "ContactsV2.sqlite-wal"},
                         {std::string(consumerDomain), "ChatStorage.sqlite"},
                         {std::string(businessDomain), "ContactsV2.sqlite"},
                         {std::string(businessDomain), "ContactsV2.sqlite-wal"}};
  const ManifestStore store = load(contents);
  EXPECT_EQ(domainOf(store.contacts), businessDomain);
  EXPECT_EQ(domainOf(store.contactsWAL), businessDomain);
}

TEST_F(ManifestStoreTest, AJournalWithoutItsDatabaseIsNotTaken) {
  const ManifestStore store = load(withFiles({{"", "ChatStorage.sqlite-wal"}, {"", "ContactsV2.sqlite-shm"}}));
  EXPECT_FALSE(store.chatStorageWAL);
  EXPECT_FALSE(store.contactsSHM);
  EXPECT_EQ(store.files.size(), 2U);
}

TEST_F(ManifestStoreTest, ReadsSizeAndKeyFromTheRecords) {
  BackupContents contents = withFiles({{"", "Message/Media/a/1.jpg", Bytes(42)}});
  contents.encryption = Encryption{};
  const WrittenBackup backup = writeBackup(contents, device_);
  writeFile(folder_ / "plain/Manifest.db", backup.manifestDatabase);
  const ManifestStore store = ManifestStore::load(device_, folder_ / "plain/Manifest.db", /*isWritableCopy=*/true);
  ASSERT_EQ(store.media.size(), 1U);
  EXPECT_EQ(store.media[0].plaintextSize, 42);
  ASSERT_TRUE(store.media[0].encryptionKey);
  EXPECT_EQ(store.media[0].encryptionKey->size(), 44U);
}

TEST_F(ManifestStoreTest, ARecordThatIsMissingOrDamagedLeavesSizeAndKeyAbsent) {
  const ManifestStore store = load(withFiles({{"", "Message/Media/a/1.jpg", Bytes(4), {.withoutRecord = true}},
                                              {"", "Message/Media/a/2.jpg", Bytes(4), {.record = bytesOf("bplist00")}},
                                              {"", "Message/Media/a/3.jpg", Bytes(4), {.record = Bytes{}}}}));
  ASSERT_EQ(store.media.size(), 3U);
  for (const ManifestFile& file : store.media) {
    EXPECT_FALSE(file.plaintextSize) << file.relativePath;
    EXPECT_FALSE(file.encryptionKey) << file.relativePath;
  }
}

TEST_F(ManifestStoreTest, AnOlderIndexWithoutRecordsLoads) {
  const ManifestStore store = loadIndex(
      "CREATE TABLE Files (fileID TEXT, domain TEXT, relativePath TEXT, flags INTEGER);"
      "INSERT INTO Files VALUES ('ab', 'whatsapp.WhatsApp.shared', 'ChatStorage.sqlite', 1)");
  EXPECT_EQ(
      store.chatStorage,
      (ManifestFile{
          .fileID = "ab", .domain = "whatsapp.WhatsApp.shared", .relativePath = "ChatStorage.sqlite", .flags = 1}));
}

TEST_F(ManifestStoreTest, ColumnNamesMayBeInAnyLetterCase) {
  const ManifestStore store = loadIndex(
      "CREATE TABLE Files (FILEID TEXT, Domain TEXT, RELATIVEPATH TEXT, Flags INTEGER, FILE BLOB);"
      "INSERT INTO Files VALUES ('ab', 'whatsapp.WhatsApp.shared', 'ChatStorage.sqlite', 1, NULL)");
  ASSERT_EQ(store.files.size(), 1U);
  EXPECT_EQ(store.files[0].fileID, "ab");
  EXPECT_EQ(store.files[0].relativePath, "ChatStorage.sqlite");
}

// Four files of WhatsApp's and one of another app; then rows are changed behind the index's back.
class DamagedNames : public ManifestStoreTest {
 protected:
  std::vector<std::string> warningsAfter(const std::string& sql) {
    BackupContents contents = withFiles({{"", "ChatStorage.sqlite"},
                                         {"", "Message/Media/a/1.jpg"},
                                         {"", "Message/Media/a/2.jpg"},
                                         {"", "Library/Preferences/some.plist"}});
    contents.otherFiles = {{"AppDomain-com.example.notes", "Message/Media/3.jpg", bytesOf("x")}};
    contents.manifestSQL = sql;
    return load(contents).warnings;
  }
};

TEST_F(DamagedNames, NamesThatFitTheirIdentifiersAreNoDamage) { EXPECT_THAT(warningsAfter(""), IsEmpty()); }

TEST_F(DamagedNames, APathThatDoesNotFitItsIdentifierIsAWarning) {
  constexpr const char* one =
      "Some files may be missing: 1 name in the backup’s file index is damaged. Copy the backup again from where it "
      "came, or make a new one with the iPhone.";
  for (const char* sql : {"UPDATE Files SET relativePath = 'ChatStorage.sqlitd' WHERE relativePath LIKE 'Chat%'",
                          "UPDATE Files SET relativePath = 'Message/Oedia/a/1.jpg' WHERE relativePath LIKE '%1.jpg'",
                          "UPDATE Files SET relativePath = 'Message/Media/a/0.jpg' WHERE relativePath LIKE '%1.jpg'",
                          "UPDATE Files SET fileID = 'x' || fileID WHERE relativePath LIKE '%1.jpg'",
                          "UPDATE Files SET relativePath = x'00' WHERE relativePath LIKE '%1.jpg'"}) {
    EXPECT_THAT(warningsAfter(sql), ElementsAre(one)) << sql;
  }
}

TEST_F(DamagedNames, ARowThatIsOfNeitherFileNorFolderNorLinkIsAWarning) {
  for (const char* flags : {"0", "3", "5", "NULL", "'x'"}) {
    EXPECT_THAT(warningsAfter("UPDATE Files SET flags = " + std::string(flags) + " WHERE relativePath LIKE '%1.jpg'"),
                ElementsAre(testing::StartsWith("Some files may be missing: 1 name")))
        << flags;
  }
  for (const char* flags : {"2", "4"}) {
    EXPECT_THAT(warningsAfter("UPDATE Files SET flags = " + std::string(flags) + " WHERE relativePath LIKE '%1.jpg'"),
                IsEmpty())
        << flags;
  }
}

TEST_F(DamagedNames, ADomainThatDoesNotFitItsIdentifierIsAWarning) {
  EXPECT_THAT(warningsAfter("UPDATE Files SET domain = replace(domain, 'whats', 'wiats') WHERE relativePath LIKE "
                            "'Message/Media/a/%'"),
              ElementsAre("Some files may be missing: 2 names in the backup’s file index are damaged. Copy the backup "
                          "again from where it came, or make a new one with the iPhone."));
}

TEST_F(DamagedNames, ARowThatOnlyTheIndexOfDomainsKnowsIsAWarning) {
  // The index holds what the row was before its domain and its path were lost.
  EXPECT_THAT(warningsAfter("ALTER TABLE Files ADD COLUMN was TEXT; UPDATE Files SET was = domain;"
                            "UPDATE Files SET domain = 'AppDom', relativePath = 'essage/' WHERE relativePath LIKE "
                            "'%1.jpg'; DROP INDEX FilesDomainIdx; CREATE INDEX FilesDomainIdx ON Files (was);"
                            "PRAGMA writable_schema = ON; UPDATE sqlite_master SET sql = 'CREATE INDEX "
                            "FilesDomainIdx ON Files(domain)' WHERE name = 'FilesDomainIdx'"),
              Contains(testing::StartsWith("Some files may be missing: the backup’s file index is damaged")));
}

TEST_F(DamagedNames, IdentifiersOfAnotherMakingSayNothing) {
  EXPECT_THAT(warningsAfter("UPDATE Files SET fileID = upper(fileID)"), IsEmpty());
  EXPECT_THAT(warningsAfter("UPDATE Files SET fileID = 'x' || fileID WHERE relativePath LIKE '%.jpg'"), IsEmpty())
      << "as many that fit as that do not";
}

TEST_F(ManifestStoreTest, AnIndexOfTheTableThatIsDamagedHidesNoFile) {
  BackupContents contents = withFiles({{"", "Message/Media/a/1.jpg"}, {"", "Message/Media/a/2.jpg"}});
  contents.manifestSQL =
      "DROP INDEX FilesFlagsIdx; CREATE INDEX FilesFlagsIdx ON Files (flags) WHERE relativePath LIKE '%1.jpg';"
      "PRAGMA writable_schema = ON; UPDATE sqlite_master SET sql = 'CREATE INDEX FilesFlagsIdx ON Files(flags)' "
      "WHERE name = 'FilesFlagsIdx'";
  EXPECT_EQ(load(contents).media.size(), 2U);
}

TEST_F(ManifestStoreTest, SaysThatTheFilesTableIsMissing) {
  EXPECT_THAT([&] { loadIndex("CREATE TABLE Other (a)"); },
              failsWith(TidewellError::invalidDatabase("Manifest.db has no Files table.")));
}

TEST_F(ManifestStoreTest, NothingStandsInForTheFilesTable) {
  for (const char* sql : {"CREATE VIEW Files AS SELECT 1 AS fileID, 2 AS domain, 3 AS relativePath, 1 AS flags",
                          "CREATE VIRTUAL TABLE Files USING fts5(fileID, domain, relativePath, flags)",
                          "CREATE TABLE t (a); CREATE INDEX Files ON t (a)"}) {
    EXPECT_THAT([&] { loadIndex(sql); }, failsWith(TidewellError::invalidDatabase("Manifest.db has no Files table.")))
        << sql;
  }
}

TEST_F(ManifestStoreTest, NamesTheFirstMissingColumn) {
  const auto missing = [](const std::string& name) {
    return TidewellError::invalidDatabase("Manifest.db is missing column " + name + ".");
  };
  const auto loading = [&](const std::string& columns) {
    return [this, columns] { loadIndex("CREATE TABLE Files (" + columns + ")"); };
  };
  EXPECT_THAT(loading("other"), failsWith(missing("FILEID")));
  EXPECT_THAT(loading("fileID, flags"), failsWith(missing("DOMAIN")));
  EXPECT_THAT(loading("fileID, domain, flags"), failsWith(missing("RELATIVEPATH")));
  EXPECT_THAT(loading("fileID, domain, relativePath"), failsWith(missing("FLAGS")));
}

TEST_F(ManifestStoreTest, SaysThatTheIndexIsMissing) {
  fs::create_directories(device_);
  EXPECT_THAT([&] { ManifestStore::load(device_); }, failsWith(TidewellError::missingManifestDB()));
  EXPECT_THAT([&] { ManifestStore::load(device_, folder_ / "absent", true); },
              failsWith(TidewellError::missingManifestDB()));
}

TEST_F(ManifestStoreTest, AnIndexThatIsALinkOrAFIFOIsMissing) {
  writeBackup(withFiles({}), folder_ / "other");
  fs::create_directories(device_);
  fs::create_symlink(folder_ / "other/Manifest.db", device_ / "Manifest.db");
  EXPECT_THAT([&] { ManifestStore::load(device_); }, failsWith(TidewellError::missingManifestDB()));
  fs::remove(device_ / "Manifest.db");
  ASSERT_EQ(::mkfifo((device_ / "Manifest.db").c_str(), 0600), 0);
  EXPECT_THAT([&] { ManifestStore::load(device_); }, failsWith(TidewellError::missingManifestDB()));
}

TEST_F(ManifestStoreTest, AnIndexThatIsNoDatabaseIsReported) {
  writeFile(device_ / "Manifest.db", std::string(8192, 'x'));
  EXPECT_THAT([&] { ManifestStore::load(device_); },
              failsWith(TidewellError::invalidDatabase("file is not a database")));
}

TEST_F(ManifestStoreTest, DamagedPagesOfTheIndexAreReported) {
  std::vector<BackupFile> files;
  for (int i = 0; i < 300; ++i) files.push_back({"", "Message/Media/a/" + std::to_string(i) + ".jpg", bytesOf("x")});
  writeBackup(withFiles(std::move(files)), device_);
  Bytes index = readFile(device_ / "Manifest.db");
  ASSERT_GT(index.size(), 16U * 4096);
  std::fill(index.begin() + 2 * 4096, index.end(), std::uint8_t{0xEE});
  writeFile(device_ / "Manifest.db", index);
  EXPECT_THAT([&] { ManifestStore::load(device_); },
              failsWith(TidewellError::invalidDatabase("database disk image is malformed")));
}

TEST_F(ManifestStoreTest, RowsOfUnexpectedTypesAreTakenAsTheyAre) {
  const ManifestStore store = loadIndex(
      "CREATE TABLE Files (fileID, domain, relativePath, flags, file);"
      "INSERT INTO Files VALUES (NULL, 'whatsapp.WhatsApp.shared', 'Message/Media/a/1.jpg', 1, 'text');"
      "INSERT INTO Files VALUES (x'6162', 'whatsapp.WhatsApp.shared', 'Message/Media/a/2.jpg', 1, 7);"
      "INSERT INTO Files VALUES (12, 'whatsapp.WhatsApp.shared', 'Message/Media/a/3.jpg', 1, x'00');"
      "INSERT INTO Files VALUES ('d', 'whatsapp.WhatsApp.shared', NULL, 1, NULL)");
  ASSERT_EQ(store.media.size(), 3U);
  EXPECT_EQ(store.media[0].fileID, "");
  EXPECT_EQ(store.media[1].fileID, "");
  EXPECT_EQ(store.media[2].fileID, "12");
}

}  // namespace
}  // namespace Fixture
