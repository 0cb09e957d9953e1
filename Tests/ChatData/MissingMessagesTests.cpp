#include "TidewellCore/ChatData/MissingMessages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/ChatData/SnapshotLoaderScene.h"

// What a chat database lacks although SQLite reads it, as it is told.
namespace Fixture {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

TEST_P(SnapshotLoaderTest, AChatDatabaseWithoutMessagesIsUnreadable) {
  const std::string missing =
      "Its list of messages is missing, so it is empty or damaged. Copy the backup again from where it came, or make a "
      "new one with the iPhone.";
  for (const char* sql :
       {"DROP TABLE ZWAMESSAGE", "DROP TABLE ZWAMESSAGE; CREATE VIEW ZWAMESSAGE AS SELECT 1 AS Z_PK, 1 AS ZCHATSESSION",
        "DROP TABLE ZWAMESSAGE; CREATE VIRTUAL TABLE ZWAMESSAGE USING fts5(Z_PK, ZCHATSESSION)"}) {
    contents_.whatsApp.chatStorageSQL = sql;
    expectUnreadable(missing);
  }
  contents_.whatsApp.chatStorageSQL.clear();
  prepare_ = [](const WrittenBackup& backup) { writeFile(backup.storedFile("ChatStorage.sqlite"), ""); };
  expectUnreadable(missing);
}

TEST_P(SnapshotLoaderTest, WhatStandsInForAnotherTableIsAWarning) {
  contents_.whatsApp.chatStorageSQL =
      "DROP TABLE ZWACHATSESSION; CREATE VIEW ZWACHATSESSION AS SELECT 1 AS Z_PK, 'x' AS ZCONTACTJID";
  const auto [snapshot, warnings] = load();
  EXPECT_THAT(messagesOf(snapshot, 1), SizeIs(3));
  EXPECT_THAT(warnings, Contains(StartsWith("Some messages may be missing")));
}

TEST_P(SnapshotLoaderTest, MessagesOfChatsThatAreNotListedAreAWarning) {
  for (const char* sql : {"DROP TABLE ZWACHATSESSION", "DELETE FROM ZWACHATSESSION",
                          "ALTER TABLE ZWACHATSESSION RENAME COLUMN Z_PK TO Z_OLD",
                          "ALTER TABLE ZWACHATSESSION RENAME COLUMN ZCONTACTJID TO ZOLD",
                          "UPDATE ZWACHATSESSION SET ZCONTACTJID = ' '", "UPDATE ZWAMESSAGE SET ZCHATSESSION = 99"}) {
    contents_.whatsApp.chatStorageSQL = sql;
    const auto [snapshot, warnings] = load();
    EXPECT_THAT(snapshot.messages(), SizeIs(3)) << sql;
    EXPECT_THAT(warnings, Contains(StartsWith("3 messages belong to chats that are missing"))) << sql;
  }
}

TEST_P(SnapshotLoaderTest, AColumnThatEveryPhoneHasIsMissed) {
  for (const char* sql :
       {"ALTER TABLE ZWAMESSAGE RENAME COLUMN ZMESSAGEDATE TO ZMESSAGEDAUE",
        "ALTER TABLE ZWAMESSAGE RENAME COLUMN ZISFROMME TO ZISFROMLE",
        "ALTER TABLE ZWAMESSAGE RENAME COLUMN ZFROMJID TO ZFROMJIE",
        "ALTER TABLE ZWAMESSAGE RENAME COLUMN ZGROUPMEMBER TO ZGROUPMEMBES",
        "ALTER TABLE ZWACHATSESSION RENAME COLUMN ZPARTNERNAME TO ZPARTNERNAMD",
        "ALTER TABLE ZWAGROUPMEMBER RENAME COLUMN ZMEMBERJID TO ZMEMBERJIE",
        "ALTER TABLE ZWAMEDIAITEM RENAME COLUMN ZMEDIALOCALPATH TO ZMEDIALOCALPATI",
        "ALTER TABLE ZWAPROFILEPUSHNAME RENAME COLUMN ZPUSHNAME TO ZPUSHNAMD",
        "UPDATE ZWAMESSAGE SET ZMESSAGEDATE = 'garbage'", "DROP TABLE ZWAMEDIAITEM", "DROP TABLE ZWAGROUPMEMBER"}) {
    contents_.whatsApp.chatStorageSQL = sql;
    EXPECT_THAT(load().warnings, ElementsAre(StartsWith("Some messages may be missing"))) << sql;
  }
}

TEST_P(SnapshotLoaderTest, AColumnThatItsNeighbourHasSwallowedIsAWarning) {
  contents_.whatsApp.chatStorageSQL =
      "PRAGMA writable_schema = ON; UPDATE sqlite_master SET sql = replace(sql, 'ZFROMJID VARCHAR,', 'ZFROMJID "
      "VARCHARl') "
      "WHERE name = 'ZWAMESSAGE'";
  EXPECT_THAT(load().warnings, Contains(StartsWith("Some messages may be missing")));
}

TEST_P(SnapshotLoaderTest, ATableWhoseNameIsDamagedIsAWarning) {
  contents_.whatsApp.lidPairs = {{{.lid = "77@lid", .phoneNumber = phone}}};
  contents_.whatsApp.chatStorageSQL =
      "PRAGMA writable_schema = ON; UPDATE sqlite_master SET name = 'ZWAPHONENUMBERlIDPAIR' WHERE name = "
      "'ZWAPHONENUMBERLIDPAIR'";
  EXPECT_THAT(load().warnings, Contains(StartsWith("Some messages may be missing")));
}

TEST_P(SnapshotLoaderTest, PairsOfIdentitiesWithoutAColumnAreAWarning) {
  contents_.whatsApp.lidPairs = {{{.lid = "77@lid", .phoneNumber = phone}}};
  EXPECT_THAT(load().warnings, IsEmpty());
  contents_.whatsApp.chatStorageSQL = "ALTER TABLE ZWAPHONENUMBERLIDPAIR RENAME COLUMN ZPHONENUMBER TO ZPHONENUMBEP";
  EXPECT_THAT(load().warnings, ElementsAre(StartsWith("Some messages may be missing")));
}

TEST_P(SnapshotLoaderTest, MessagesThatSayNoChatAreAWarning) {
  for (const char* sql :
       {"UPDATE ZWAMESSAGE SET ZCHATSESSION = NULL WHERE Z_PK = 2",
        "UPDATE ZWAMESSAGE SET ZCHATSESSION = x'01' "
        "WHERE Z_PK = 2",
        "UPDATE ZWAMESSAGE SET ZCHATSESSION = 'one' WHERE Z_PK = 2",
        "UPDATE ZWAMESSAGE SET ZCHATSESSION = NULL, ZTEXT = x'FF' WHERE Z_PK = 2",
        "UPDATE ZWAMESSAGE SET ZCHATSESSION = NULL, ZTEXT = NULL WHERE Z_PK = 2;"
        "INSERT INTO ZWAMEDIAITEM (Z_PK, ZMESSAGE, ZMEDIALOCALPATH) VALUES (1, 2, 'Media/a@g.us/1.jpg')"}) {
    contents_.whatsApp.chatStorageSQL = sql;
    const auto [snapshot, warnings] = load();
    EXPECT_THAT(messagesOf(snapshot, 1), SizeIs(2)) << sql;
    EXPECT_THAT(warnings, ElementsAre(StartsWith("1 message is missing: "))) << sql;
  }
}

TEST_P(SnapshotLoaderTest, RowsThatShowNothingAreNotMissed) {
  contents_.whatsApp.chatStorageSQL =
      "UPDATE ZWAMESSAGE SET ZCHATSESSION = NULL, ZTEXT = NULL WHERE Z_PK = 1;"
      "UPDATE ZWAMESSAGE SET ZCHATSESSION = 99, ZTEXT = '' WHERE Z_PK = 2";
  const auto [snapshot, warnings] = load();
  EXPECT_THAT(messagesOf(snapshot, 1), SizeIs(1));
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_P(SnapshotLoaderTest, APlaceHasNeitherTextNorFileAndIsMissedAllTheSame) {
  contents_.whatsApp.chatStorageSQL =
      "UPDATE ZWAMESSAGE SET ZCHATSESSION = 99, ZTEXT = NULL, ZMESSAGETYPE = 5 WHERE Z_PK = 2";
  EXPECT_THAT(load().warnings, Contains(StartsWith("1 message belongs to a chat that is missing")));
}

TEST_P(SnapshotLoaderTest, MessagesOfWhichNoneSaysItsChatAreUnreadable) {
  for (const char* sql :
       {"ALTER TABLE ZWAMESSAGE RENAME COLUMN Z_PK TO Z_OLD", "UPDATE ZWAMESSAGE SET ZCHATSESSION = NULL",
        "ALTER TABLE ZWAMESSAGE RENAME COLUMN ZCHATSESSION TO ZOLD",
        "CREATE TABLE Z AS SELECT * FROM ZWAMESSAGE; UPDATE Z SET Z_PK = 'key' || Z_PK; DROP TABLE ZWAMESSAGE;"
        "CREATE TABLE ZWAMESSAGE (Z_PK TEXT, ZCHATSESSION INTEGER, ZTEXT VARCHAR);"
        "INSERT INTO ZWAMESSAGE SELECT Z_PK, ZCHATSESSION, ZTEXT FROM Z"}) {
    contents_.whatsApp.chatStorageSQL = sql;
    expectUnreadable(
        "It does not say which chats its messages belong to, so it is damaged. Copy the backup again from where it "
        "came, or make a new one with the iPhone.");
  }
}

TEST_P(SnapshotLoaderTest, TextsThatCannotBeReadAreAWarning) {
  contents_.whatsApp.chatStorageSQL = "UPDATE ZWAMESSAGE SET ZTEXT = CAST(ZTEXT AS BLOB) WHERE Z_PK = 2";
  EXPECT_THAT(load().warnings, ElementsAre(StartsWith("The text of 1 message cannot be read")));
  contents_.whatsApp.chatStorageSQL = "ALTER TABLE ZWAMESSAGE RENAME COLUMN ZTEXT TO ZOLD";
  EXPECT_THAT(load().warnings, ElementsAre(StartsWith("The texts of 3 messages cannot be read")));
}

TEST_P(SnapshotLoaderTest, MessagesOfWhichNoneIsDatedAreAWarning) {
  contents_.whatsApp.chatStorageSQL = "UPDATE ZWAMESSAGE SET ZMESSAGEDATE = NULL WHERE Z_PK > 1";
  EXPECT_THAT(load().warnings, IsEmpty());
  contents_.whatsApp.chatStorageSQL = "UPDATE ZWAMESSAGE SET ZMESSAGEDATE = NULL";
  EXPECT_THAT(load().warnings, ElementsAre(StartsWith("Some messages may be missing")));
}

TEST_P(SnapshotLoaderTest, NoMessagesAtAllBesideTheirFilesIsAWarning) {
  contents_.whatsApp.chatStorageSQL = "DELETE FROM ZWAMESSAGE";
  EXPECT_THAT(load().warnings, IsEmpty()) << "somebody may have deleted them";
  contents_.whatsApp.mediaItems = {{.message = 1, .localPath = "Media/a@g.us/1.jpg"}};
  EXPECT_THAT(load().warnings, ElementsAre(StartsWith("Some messages may be missing")));
}

TEST_P(SnapshotLoaderTest, FilesOfWhichNoneHasItsMessageAreAWarning) {
  contents_.whatsApp.mediaItems = {{.message = 1, .localPath = "Media/a@g.us/1.jpg"},
                                   {.message = 2, .localPath = "Media/a@g.us/2.jpg"}};
  contents_.whatsApp.chatStorageSQL = "UPDATE ZWAMEDIAITEM SET ZMESSAGE = 99 WHERE Z_PK = 1";
  EXPECT_THAT(load().warnings, IsEmpty()) << "the phone may have deleted that message";
  contents_.whatsApp.chatStorageSQL = "UPDATE ZWAMEDIAITEM SET ZMESSAGE = NULL";
  EXPECT_THAT(load().warnings, ElementsAre(StartsWith("Some messages may be missing")));
}

TEST_P(SnapshotLoaderTest, ContactsWithoutTheirTableOrItsColumnsAreAWarning) {
  const auto warns = ElementsAre(StartsWith("Some names may be missing"));
  for (const char* sql :
       {"DROP TABLE ZWAADDRESSBOOKCONTACT", "ALTER TABLE ZWAADDRESSBOOKCONTACT RENAME COLUMN ZFULLNAME TO ZFULLNAMD",
        "ALTER TABLE ZWAADDRESSBOOKCONTACT RENAME COLUMN ZWHATSAPPID TO ZWHATSAPPIE"}) {
    contents_.whatsApp.contactsSQL = sql;
    EXPECT_THAT(load().warnings, warns) << sql;
  }
  contents_.whatsApp.contactsSQL.clear();
  prepare_ = [](const WrittenBackup& backup) {
    for (const char* name : {"ContactsV2.sqlite", "ContactsV2.sqlite-wal"}) writeFile(backup.storedFile(name), "");
  };
  EXPECT_THAT(load().warnings, Contains(StartsWith("Some names may be missing")));
}

}  // namespace
}  // namespace Fixture
