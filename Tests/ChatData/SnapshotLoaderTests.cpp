#include "TidewellCore/ChatData/SnapshotLoader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <algorithm>
#include <functional>

#include "Tests/ChatData/SnapshotLoaderScene.h"
#include "Tests/Support/BackupBuilder.h"
#include "Tests/Support/ChatDatabase.h"
#include "Tests/Support/Failures.h"
#include "Tests/Support/PrivateTemporaryFolder.h"
#include "TidewellCore/TidewellError.h"

namespace Fixture {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::SizeIs;
using testing::StartsWith;

void flipBit(const fs::path& file, std::size_t offset) {
  Bytes bytes = readFile(file);
  bytes.at(offset) ^= 1;
  writeFile(file, bytes);
}

INSTANTIATE_TEST_SUITE_P(PlainAndEncrypted, SnapshotLoaderTest, testing::Bool());

TEST_P(SnapshotLoaderTest, ReadsChatsAndContactsWithTheRowsOfTheirLogs) {
  const auto [snapshot, warnings] = load();
  EXPECT_EQ(messagesOf(snapshot, 1).at(2).text, "Ana pending");
  EXPECT_EQ(snapshot.chatTitle(phone), "Ana");
}

TEST_P(SnapshotLoaderTest, IsEmptyWhereTheBackupHasNeither) {
  contents_.whatsApp = {.withChatStorage = false, .withContacts = false};
  EXPECT_THAT(load().snapshot.records(), IsEmpty());
}

TEST_P(SnapshotLoaderTest, ReadsEitherDatabaseWithoutTheOther) {
  contents_.whatsApp.withContacts = false;
  EXPECT_EQ(load().snapshot.chatTitle(phone), "+55 11 90000-1111");
  contents_.whatsApp.withContacts = true;
  contents_.whatsApp.withChatStorage = false;
  EXPECT_EQ(load().snapshot.chatTitle(phone), "Ana");
}

TEST_P(SnapshotLoaderTest, NeverMixesTheDatabasesOfTheTwoApps) {
  contents_.businessApp = app(std::string(businessDomain), "Padaria");
  for (const bool businessFirst : {false, true}) {
    if (businessFirst) std::swap(contents_.whatsApp, *contents_.businessApp);
    const std::string name = load().snapshot.chatTitle(phone);
    const auto [snapshot, warnings] = load();
    ASSERT_THAT(messagesOf(snapshot, 1), SizeIs(3));
    EXPECT_EQ(messagesOf(snapshot, 1).at(2).text, name + " pending");
    EXPECT_EQ(messagesOf(snapshot, 1).at(0).text, name + " first");
  }
}

TEST_P(SnapshotLoaderTest, AMissingChatDatabaseIsNamed) {
  contents_.whatsApp.databaseStorage = {{"ChatStorage.sqlite", {.missing = true}}};
  expectUnreadable("Missing backup file for ChatStorage.sqlite.");
}

TEST_P(SnapshotLoaderTest, MissingContactsCostNamesOnly) {
  contents_.whatsApp.databaseStorage = {{"ContactsV2.sqlite", {.missing = true}}};
  const auto [snapshot, warnings] = load();
  EXPECT_THAT(messagesOf(snapshot, 1), SizeIs(3));
  EXPECT_EQ(snapshot.chatTitle(phone), "+55 11 90000-1111");
  EXPECT_THAT(warnings, ElementsAre(StartsWith("Some names may be missing")));
}

TEST_P(SnapshotLoaderTest, ContactsOfWhichOnlyTheJournalIsListedAreAWarning) {
  contents_.whatsApp.withContacts = false;
  contents_.otherFiles = {{std::string(consumerDomain), "ContactsV2.sqlite-wal", bytesOf("x")}};
  EXPECT_THAT(load().warnings, ElementsAre(StartsWith("Some names may be missing")));
}

// A database and its rollback journal, as they stand while a transaction deletes all messages.
std::pair<Bytes, Bytes> interrupted(const Bytes& database) {
  const TemporaryDirectory folder;
  const fs::path file = folder / "database";
  writeFile(file, database);
  sqlite3* handle = nullptr;
  EXPECT_EQ(sqlite3_open(file.c_str(), &handle), SQLITE_OK);
  EXPECT_EQ(sqlite3_exec(handle, "BEGIN; DELETE FROM ZWAMESSAGE", nullptr, nullptr, nullptr), SQLITE_OK);
  EXPECT_EQ(sqlite3_db_cacheflush(handle), SQLITE_OK);
  std::pair<Bytes, Bytes> files(readFile(file), readFile(file.native() + "-journal"));
  sqlite3_close(handle);
  return files;
}

TEST_P(SnapshotLoaderTest, ATransactionThatWasUnderWayIsRolledBack) {
  contents_.whatsApp.journal = Journal::rollback;
  const auto [database, journal] = interrupted(writeChatStorage(contents_.whatsApp).main);
  contents_.whatsApp.withChatStorage = false;
  BackupFile stored{std::string(consumerDomain), "ChatStorage.sqlite", database};
  BackupFile rollback{std::string(consumerDomain), "ChatStorage.sqlite-journal", journal};
  contents_.otherFiles = {stored, rollback};
  const auto [snapshot, warnings] = load();
  EXPECT_THAT(messagesOf(snapshot, 1), SizeIs(3));
  EXPECT_THAT(warnings, IsEmpty());
  rollback.storage.missing = true;
  contents_.otherFiles = {stored, rollback};
  EXPECT_THAT(load().warnings, Contains(StartsWith("The newest messages may be missing")));
}

TEST_P(SnapshotLoaderTest, MessagesOfWhichNoneNamesAFileBesideFilesAreAWarning) {
  contents_.whatsApp.mediaFiles = {{.localPath = "Media/a@g.us/1.jpg", .content = bytesOf("x"), .message = 1}};
  EXPECT_THAT(load().warnings, IsEmpty());
  for (const char* other : {"CAST(ZMEDIALOCALPATH AS BLOB)", "'/' || ZMEDIALOCALPATH", "NULL"}) {
    contents_.whatsApp.chatStorageSQL = std::string("UPDATE ZWAMEDIAITEM SET ZMEDIALOCALPATH = ") + other;
    EXPECT_THAT(load().warnings, ElementsAre(StartsWith("Some messages may be missing"))) << other;
  }
}

TEST_P(SnapshotLoaderTest, OfTwoAppsTheOneThatIsNotReadIsNamed) {
  contents_.businessApp = app(std::string(businessDomain), "Padaria");
  for (const char* read : {"WhatsApp", "WhatsApp Business"}) {
    const auto [snapshot, warnings] = load();
    EXPECT_EQ(snapshot.chatTitle(phone) == "Padaria", read == std::string("WhatsApp Business"));
    EXPECT_THAT(warnings, ElementsAre(StartsWith(std::string("Only the messages of ") + read + " are")));
    std::swap(contents_.whatsApp, *contents_.businessApp);
  }
}

TEST_P(SnapshotLoaderTest, FilesOfAnAppWithoutItsChatDatabaseAreAWarning) {
  const std::string path = "Media/a@g.us/1.jpg";
  contents_.businessApp = WhatsAppContents{
      .domain = std::string(businessDomain), .withChatStorage = false, .mediaFiles = {{path, Bytes(1)}}};
  const auto warnsOf = [](const std::string& app) {
    return StartsWith("The messages of " + app + " are missing: this backup holds its photos");
  };
  EXPECT_THAT(load().warnings, ElementsAre(warnsOf("WhatsApp Business")));
  contents_.whatsApp = {.withChatStorage = false, .withContacts = false, .mediaFiles = {{path, Bytes(1)}}};
  EXPECT_THAT(load().warnings, ElementsAre(warnsOf("WhatsApp"), warnsOf("WhatsApp Business")));
  contents_.businessApp->mediaFiles.clear();
  EXPECT_THAT(load().warnings, ElementsAre(warnsOf("WhatsApp")));
}

TEST_P(SnapshotLoaderTest, AChatDatabaseWhoseKeyIsLostIsNamed) {
  if (!contents_.encryption) GTEST_SKIP() << "A plain backup has no keys.";
  for (const auto& record : lostRecords()) {
    contents_.whatsApp.databaseStorage = {{"ChatStorage.sqlite", record}};
    expectUnreadable(
        "The backup holds no key that opens ChatStorage.sqlite. Copy the backup again from where it came, or make a "
        "new one with the iPhone.");
  }
}

TEST_P(SnapshotLoaderTest, ContactsWhoseKeyIsLostAreAWarning) {
  if (!contents_.encryption) GTEST_SKIP() << "A plain backup has no keys.";
  for (const auto& record : lostRecords()) {
    contents_.whatsApp.databaseStorage = {{"ContactsV2.sqlite", record}};
    EXPECT_THAT(load().warnings, ElementsAre(StartsWith("Some names may be missing")));
  }
}

TEST_P(SnapshotLoaderTest, AJournalWhoseKeyIsLostIsAWarning) {
  if (!contents_.encryption) GTEST_SKIP() << "A plain backup has no keys.";
  for (const auto& record : lostRecords()) {
    contents_.whatsApp.databaseStorage = {{"ChatStorage.sqlite-wal", record}, {"ChatStorage.sqlite-shm", record}};
    const auto [snapshot, warnings] = load();
    EXPECT_THAT(messagesOf(snapshot, 1), SizeIs(2)) << "what the journal held is gone";
    EXPECT_THAT(warnings, Contains(StartsWith("The newest messages may be missing: the journal")));
  }
}

TEST_P(SnapshotLoaderTest, AWholeBackupHasNoWarnings) { EXPECT_THAT(load().warnings, IsEmpty()); }

TEST_P(SnapshotLoaderTest, AMissingJournalIsAWarning) {
  contents_.whatsApp.databaseStorage = {{"ChatStorage.sqlite-wal", {.missing = true}},
                                        {"ContactsV2.sqlite-wal", {.missing = true}}};
  const auto [snapshot, warnings] = load();
  EXPECT_THAT(messagesOf(snapshot, 1), SizeIs(2)) << "what the journal held is gone";
  EXPECT_THAT(warnings, IsSupersetOf({StartsWith("The newest messages may be missing: the journal"),
                                      StartsWith("The newest names may be missing: the journal")}));
}

TEST_P(SnapshotLoaderTest, AMissingIndexOfAJournalIsNone) {
  contents_.whatsApp.databaseStorage = {{"ChatStorage.sqlite-shm", {.missing = true}},
                                        {"ContactsV2.sqlite-shm", {.missing = true}}};
  const auto [snapshot, warnings] = load();
  EXPECT_THAT(messagesOf(snapshot, 1), SizeIs(3));
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_P(SnapshotLoaderTest, AJournalThatIsAFIFOIsAFailure) {
  prepare_ = [&](const WrittenBackup& backup) {
    const fs::path journal = backup.storedFile("ChatStorage.sqlite-wal");
    fs::remove(journal);
    ASSERT_EQ(::mkfifo(journal.c_str(), 0600), 0);
  };
  expectUnreadable("Missing backup file for ChatStorage.sqlite-wal.");
}

TEST_P(SnapshotLoaderTest, OneFlippedBitInTheLastFrameOfAJournalIsAWarning) {
  prepare_ = [](const WrittenBackup& backup) {
    for (const char* name : {"ChatStorage.sqlite-wal", "ContactsV2.sqlite-wal"}) {
      const fs::path journal = backup.storedFile(name);
      flipBit(journal, fs::file_size(journal) - 100);
    }
  };
  const auto [snapshot, warnings] = load();
  EXPECT_THAT(messagesOf(snapshot, 1), SizeIs(2)) << "what the last frame held is gone";
  EXPECT_THAT(warnings, IsSupersetOf({AllOf(StartsWith("The newest messages"), HasSubstr("damaged")),
                                      AllOf(StartsWith("The newest names"), HasSubstr("damaged"))}));
}

TEST_P(SnapshotLoaderTest, OneFlippedBitInAJournalIsAWarning) {
  for (int i = 0; i < 1000; ++i) contents_.whatsApp.messages.push_back({.chat = 1, .text = std::string(100, 'a')});
  ASSERT_THAT(messagesOf(load().snapshot, 1), SizeIs(1003));
  prepare_ = [](const WrittenBackup& backup) {
    flipBit(backup.storedFile("ChatStorage.sqlite-wal"), 2000);
    flipBit(backup.storedFile("ContactsV2.sqlite-wal"), 2000);
  };
  const auto [snapshot, warnings] = load();
  EXPECT_THAT(messagesOf(snapshot, 1), SizeIs(testing::Lt(1003U)));
  EXPECT_THAT(warnings, IsSupersetOf({AllOf(StartsWith("The newest messages"), HasSubstr("damaged")),
                                      AllOf(StartsWith("The newest names"), HasSubstr("damaged"))}));
}

TEST_P(SnapshotLoaderTest, AJournalShorterThanRecordedIsAWarning) {
  for (const std::size_t length : {0UL, 32UL, 4160UL}) {
    contents_.whatsApp.databaseStorage = {{"ChatStorage.sqlite-wal", {.truncatedTo = length}}};
    EXPECT_THAT(load().warnings, Contains(StartsWith("The newest messages may be missing"))) << length;
  }
}

TEST_P(SnapshotLoaderTest, OnlyFilesOfTheAppsOwnCountAsThere) {
  const std::string here = "Media/a@g.us/1.jpg";
  const std::string elsewhere = "Media/a@g.us/2.jpg";
  contents_.whatsApp.messages[0].type = contents_.whatsApp.messages[1].type = 1;
  contents_.whatsApp.mediaItems = {{.message = 2, .localPath = elsewhere}};
  contents_.whatsApp.mediaFiles = {{.localPath = here, .content = bytesOf("one"), .message = 1}};
  contents_.businessApp = {{.domain = std::string(businessDomain),
                            .withChatStorage = false,
                            .withContacts = false,
                            .mediaFiles = {{.localPath = elsewhere, .content = bytesOf("two")}}}};
  const auto [snapshot, warnings] = load();
  const auto messages = messagesOf(snapshot, 1);
  EXPECT_EQ(snapshot.details(messages.at(0)), nullptr);
  ASSERT_NE(snapshot.details(messages.at(1)), nullptr);
  EXPECT_EQ(snapshot.details(messages.at(1))->content, MessageContent(MissingMedia{.part = MessagePart::photo}));
}

TEST_P(SnapshotLoaderTest, ADatabaseThatIsShorterThanNotedIsAWarning) {
  const auto size = static_cast<std::int64_t>(writeChatStorage(contents_.whatsApp).main.size());
  auto& storage = contents_.whatsApp.databaseStorage;
  storage["ChatStorage.sqlite"].recordedSize = size - 4096;
  EXPECT_THAT(load().warnings, IsEmpty()) << "it grew while it was copied";
  storage["ChatStorage.sqlite"].recordedSize = size + 4096;
  EXPECT_THAT(load().warnings, ElementsAre(StartsWith("Some messages may be missing")));
  storage.clear();
  storage["ContactsV2.sqlite"].recordedSize = std::int64_t{1} << 40;
  EXPECT_THAT(load().warnings, ElementsAre(StartsWith("Some names may be missing")));
}

TEST_P(SnapshotLoaderTest, FilesThatAreStoredAndNotListedAreAWarning) {
  const auto warns = ElementsAre(StartsWith("Some files may be missing: the backup’s file index is damaged"));
  const MediaFile photo{.localPath = "Media/a@g.us/1.jpg", .content = bytesOf("x"), .message = 1};
  contents_.whatsApp.mediaFiles = {photo};
  contents_.manifestSQL = "DELETE FROM Files WHERE relativePath LIKE '%/1.jpg'";
  EXPECT_THAT(load().warnings, warns);
  contents_.whatsApp.mediaFiles[0].storage.missing = true;
  EXPECT_THAT(load().warnings, IsEmpty()) << "phones do not keep everything";
  contents_.whatsApp.mediaFiles = {};
  contents_.manifestSQL = "DELETE FROM Files WHERE relativePath LIKE 'ContactsV2.sqlite%'";
  EXPECT_THAT(load().warnings, warns);
}

TEST_P(SnapshotLoaderTest, AHostileIdentifierOfADatabaseIsAMissingFile) {
  contents_.whatsApp.databaseStorage["ChatStorage.sqlite"] = {.fileID = "../device/Manifest.db"};
  expectUnreadable("Missing backup file for ChatStorage.sqlite.");
}

TEST_P(SnapshotLoaderTest, CancellingAtAnyStageLeavesNothingBehind) {
  int checks = 0;
  load([&] { return ++checks < 0; });
  const int stages = checks;
  EXPECT_GE(stages, 2);
  for (int stage = 1; stage <= stages; ++stage) {
    checks = 0;
    EXPECT_THAT([&] { load([&] { return ++checks == stage; }); }, failsWith(TidewellError::cancelled())) << stage;
    EXPECT_THAT(temporary_.names(), IsEmpty()) << stage;
  }
}

}  // namespace
}  // namespace Fixture
