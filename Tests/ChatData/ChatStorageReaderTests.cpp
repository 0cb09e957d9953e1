#include "TidewellCore/ChatData/ChatStorageReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "Tests/ChatData/ReadDatabases.h"
#include "Tests/Support/Failures.h"
#include "Tests/Support/TestCrypto.h"
#include "TidewellCore/TidewellError.h"

namespace Fixture {
namespace {

using testing::ElementsAre;
using testing::Field;

constexpr const char* ana = "5511900001111@s.whatsapp.net";

MessageRecord onlyMessage(const Message& message) {
  static ChatStorageSnapshot snapshot;  // in which the texts of the last one asked for stand
  snapshot = readChats({.chats = {{.jid = ana}}, .messages = {message}});
  return messagesOf(snapshot, 1).at(0);
}

TEST(ChatStorageReader, ReadsChatsMessagesMembersAndMedia) {
  const std::string local = mediaPath(ana, "ab0c1d2e-0000-4000-8000-000000000001", "jpg");
  const ChatStorageSnapshot snapshot =
      readChats({.chats = {{.pk = 7, .jid = ana, .name = "Ana"}},
                 .messages = {{.pk = 40,
                               .chat = 7,
                               .date = 700000000.25,
                               .text = "oi 👋",
                               .isFromMe = 1,
                               .fromJID = ana,
                               .pushName = "Aninha",
                               .member = 3}},
                 .members = {{.pk = 3, .chat = 7, .jid = ana, .contactName = "Ana Souza", .firstName = "Ana"}},
                 .mediaFiles = {{.localPath = local, .message = 40}}});
  EXPECT_EQ(snapshot.records().at(7), (ChatRecord{.pk = 7, .jid = ana, .name = "Ana"}));
  EXPECT_EQ(snapshot.chat(ana)->pk, 7);
  const std::string path = "Message/" + local;
  const std::string stanzaID = sha1Hex(bytesOf("40")).substr(0, 20);
  const MessageRecord expected{.pk = 40,
                               .chatPK = 7,
                               .date = dateFromUnixTime(978307200 + 700000000.25),
                               .sort = 40,
                               .text = "oi 👋",
                               .isFromMe = true,
                               .fromJID = ana,
                               .pushName = "Aninha",
                               .groupMemberPK = 3,
                               .stanzaID = stanzaID,
                               .mediaLocalPath = path};
  EXPECT_EQ(messagesOf(snapshot, 7).at(0), expected);
  EXPECT_EQ(snapshot.directory().groupMembers.at(3),
            (GroupMemberRecord{.pk = 3, .jid = ana, .contactName = "Ana Souza", .firstName = "Ana", .chatPK = 7}));
  EXPECT_EQ(*snapshot.mediaMessage("Message/" + local), expected);
}

TEST(ChatStorageReader, AFileThatTheBackupLacksIsAMissingMedium) {
  const WhatsAppContents app{.chats = {{.jid = ana}},
                             .messages = {{.chat = 1, .type = 3}, {.chat = 1, .type = 3}},
                             .mediaItems = {{.message = 1, .localPath = "Media/a/1.opus", .duration = 7},
                                            {.message = 2, .localPath = "Media/a/2.opus", .duration = 8}}};
  const auto isSecond = [](const std::string& path) { return path == "Message/Media/a/2.opus"; };
  const ChatStorageSnapshot snapshot(readTables(app, {.hasFile = isSecond}));
  const std::vector<MessageRecord> messages = messagesOf(snapshot, 1);
  ASSERT_NE(snapshot.details(messages.at(0)), nullptr);
  EXPECT_EQ(snapshot.details(messages.at(0))->content,
            MessageContent(MissingMedia{.part = MessagePart::voiceMessage, .seconds = 7}));
  EXPECT_EQ(snapshot.details(messages.at(1)), nullptr);
  EXPECT_TRUE(messages.at(0).mediaLocalPath) << "an older export may have it";
}

TEST(ChatStorageReader, WhatHangsOnMessagesEndsNothing) {
  WhatsAppContents app{.chats = {{.jid = ana}},
                       .messages = {{.chat = 1, .text = "one"}},
                       .mediaItems = {{.message = 1, .title = "a title"}}};
  app.chatStorageSQL = "UPDATE ZWAMEDIAITEM SET ZMETADATA = zeroblob(70000000)";
  EXPECT_EQ(messagesOf(readChats(app), 1).at(0).text, "one") << "a blob that nobody could hold";
  for (const std::string table : {"ZWAMESSAGEINFO", "ZWAMESSAGEDATAITEM", "ZWAGROUPINFO"}) {
    app.chatStorageSQL =
        "PRAGMA writable_schema = ON; UPDATE sqlite_master SET rootpage = (SELECT rootpage FROM "
        "sqlite_master WHERE name = 'ZWAMESSAGE_ZCHATSESSION_INDEX') WHERE name = '" +
        table + "'";
    const ChatStorageSnapshot snapshot = readChats(app);
    EXPECT_EQ(messagesOf(snapshot, 1).at(0).text, "one") << table;
    EXPECT_TRUE(snapshot.unread().isPartial) << table;
  }
}

TEST(ChatStorageReader, TheOwnerIsWhoNoticesThatComeInAreAddressedTo) {
  const std::string me = "5511900009999@s.whatsapp.net";
  const auto isRemovedByOwner = [&](const SQLValue& addressee, std::int64_t isFromMe, const std::string& remover) {
    const ChatStorageSnapshot snapshot = readChats(
        {.chats = {{.jid = ana}},
         .messages = {{.chat = 1, .isFromMe = isFromMe, .toJID = addressee, .type = 10}, {.chat = 1, .type = 14}},
         .mediaItems = {{.message = 2, .vCard = remover}}});
    const MessageDetails* details = snapshot.details(messagesOf(snapshot, 1).at(1));
    return std::get<DeletedMessage>(details->content).remover.value_or(Person()).isOwner;
  };
  EXPECT_TRUE(isRemovedByOwner(me, 0, me));
  EXPECT_FALSE(isRemovedByOwner(ana, 1, ana)) << "a notice of a chat that the owner began";
  EXPECT_FALSE(isRemovedByOwner("123@g.us", 0, "123@g.us"));
}

TEST(ChatStorageReader, AnItemThatItsMessageDoesNotNameIsItsOwnAllTheSame) {
  const std::string other = "UPDATE ZWAMESSAGE SET ZMEDIAITEM = 2 WHERE Z_PK = 1";
  for (const std::string& sql : {std::string("UPDATE ZWAMESSAGE SET ZMEDIAITEM = NULL"), other,
                                 std::string("UPDATE ZWAMEDIAITEM SET ZMESSAGE = NULL")}) {
    const ChatStorageSnapshot snapshot =
        readChats({.chats = {{.jid = ana}},
                   .messages = {{.chat = 1, .type = 1}, {.chat = 1, .type = 1}},
                   .mediaItems = {{.message = 1, .localPath = "Media/a/1.jpg", .title = "one"},
                                  {.message = 2, .localPath = "Media/a/2.jpg", .title = "two"}},
                   .chatStorageSQL = sql});
    const std::vector<MessageRecord> messages = messagesOf(snapshot, 1);
    EXPECT_EQ(messages.at(0).text, "one") << sql;
    EXPECT_EQ(messages.at(1).text, "two") << sql;
    EXPECT_EQ(snapshot.details(messages.at(0)), nullptr) << sql;
  }
}

TEST(ChatStorageReader, CutsNamesThatNoScreenShowsAndNoMessages) {
  std::string name;
  while (name.size() < 30'000) name += "Ana Maria ";
  const std::string cut = name.substr(0, 10'000);
  const ChatStorageSnapshot snapshot = readChats(
      {.chats = {{.jid = ana, .name = name}, {.jid = std::string(10'001, '5') + "@s.whatsapp.net"}},
       .messages = {{.chat = 1, .text = name, .fromJID = std::string(20'000, '5'), .pushName = name, .member = 1}},
       .members = {{.chat = 1, .jid = ana, .contactName = name, .firstName = name}},
       .pushNames = {{.jid = ana, .name = name}}});
  EXPECT_EQ(snapshot.records().at(1).name, cut);
  EXPECT_EQ(snapshot.records().at(2).jid, std::string(10'000, '5'));
  EXPECT_EQ(snapshot.directory().groupMembers.at(1).contactName, cut);
  EXPECT_EQ(snapshot.directory().groupMembers.at(1).firstName, cut);
  EXPECT_EQ(snapshot.directory().pushName(ana), cut);
  const MessageRecord message = messagesOf(snapshot, 1).at(0);
  EXPECT_EQ(message.pushName, cut);
  EXPECT_EQ(message.fromJID, std::string(10'000, '5'));
  EXPECT_EQ(message.text, name);
}

TEST(ChatStorageReader, ReadsTheRowsOfEveryJournal) {
  for (const Journal journal : {Journal::rollback, Journal::walHeader, Journal::walWithPendingRows}) {
    WhatsAppContents app{.chats = {{.jid = ana}}, .journal = journal};
    for (int i = 0; i < 8; ++i) app.messages.push_back({.chat = 1, .date = i});
    EXPECT_EQ(readChats(app).messages().size(), 8U);
  }
}

TEST(ChatStorageReader, ReadsEveryCandidateColumnInAnyLetterCase) {
  const std::string columns[] = {
      "ZCHATSESSION, ZMESSAGEDATE, ZTEXT, ZISFROMME, ZFROMJID, ZPUSHNAME, ZGROUPMEMBER, Z_PK",
      "ZCHATSESSION, ZDATE, ZMESSAGETEXT, ZFROMMe, ZSENDERJID, ZPUSHNAME, ZGROUPMEMBER, Z_PK",
      "ZCHATSESSION, ZDATE, ZMESSAGETEXT, ZFROMME, ZSENDERJID, ZPUSHNAME, ZGROUPMEMBER, Z_PK",
      "zchatsession, zmessagedate, zText, zIsFromMe, zfromjid, zpushname, zgroupmember, z_pk"};
  const MessageRecord expected{.pk = 3,
                               .chatPK = 1,
                               .date = dateFromAppleTime(10),
                               .text = "a",
                               .isFromMe = true,
                               .fromJID = "j",
                               .pushName = "p",
                               .groupMemberPK = 2};
  for (const std::string& names : columns) {
    const ChatStorageSnapshot snapshot = readChatSQL(
        "CREATE TABLE ZWAMESSAGE (" + names + "); INSERT INTO ZWAMESSAGE VALUES (1, 10, 'a', 1, 'j', 'p', 2, 3)");
    ASSERT_THAT(messagesOf(snapshot, 1), testing::SizeIs(1)) << names;
    EXPECT_EQ(messagesOf(snapshot, 1).at(0), expected) << names;
  }
}

TEST(ChatStorageReader, TakesTheFirstCandidateThatIsThere) {
  const ChatStorageSnapshot snapshot = readChatSQL(
      "CREATE TABLE ZWACHATSESSION (Z_PK, ZPARTNERJID, ZJID, ZCONTACTNAME, ZPARTNER);"
      "INSERT INTO ZWACHATSESSION VALUES (1, 'partner', 'jid', 'contact', 'name');"
      "CREATE TABLE ZWAGROUPMEMBER (Z_PK, ZJID, ZMEMBERNAME, ZNAME);"
      "INSERT INTO ZWAGROUPMEMBER VALUES (1, 'jid', 'Member', 'Name');"
      "CREATE TABLE ZWAPROFILEPUSHNAME (ZCONTACTJID, ZNAME);"
      "INSERT INTO ZWAPROFILEPUSHNAME VALUES ('a@s', 'Ana')");
  EXPECT_EQ(snapshot.records().at(1), (ChatRecord{.pk = 1, .jid = "jid", .name = "name"}));
  EXPECT_EQ(snapshot.directory().groupMembers.at(1), (GroupMemberRecord{.pk = 1, .jid = "jid", .contactName = "Name"}));
  EXPECT_EQ(snapshot.directory().pushName("a@s"), "Ana");
}

TEST(ChatStorageReader, RowsWithoutAUsableKeyOrChatAreSkipped) {
  const ChatStorageSnapshot snapshot = readChatSQL(
      "CREATE TABLE ZWACHATSESSION (Z_PK, ZCONTACTJID); INSERT INTO ZWACHATSESSION VALUES"
      " ('x', 'a'), (NULL, 'b'), (x'31', 'c'), (1.5, 'd'), ('4', 'e');"
      "CREATE TABLE ZWAMESSAGE (Z_PK, ZCHATSESSION); INSERT INTO ZWAMESSAGE VALUES"
      " (1, NULL), ('x', 1), (NULL, 1), (2, 'x'), ('3', '1'), (4, 1)");
  EXPECT_EQ(snapshot.records().size(), 1U);
  EXPECT_EQ(snapshot.records().at(4).jid, "e");
  ASSERT_EQ(snapshot.messages().size(), 2U);
  EXPECT_THAT(messagesOf(snapshot, 1), ElementsAre(Field(&MessageRecord::pk, 3), Field(&MessageRecord::pk, 4)));
}

TEST(ChatStorageReader, NumbersBecomeTextAndBytesAreNone) {
  EXPECT_EQ(onlyMessage({.chat = 1, .text = bytesOf("bytes")}).text, std::nullopt);
  const ChatStorageSnapshot snapshot = readChatSQL(
      "CREATE TABLE ZWAMESSAGE (Z_PK, ZCHATSESSION, ZTEXT BLOB, ZFROMJID BLOB);"
      "INSERT INTO ZWAMESSAGE VALUES (1, 1, 42, 5511900001111), (2, 1, 1.5, NULL)");
  EXPECT_EQ(messagesOf(snapshot, 1)[0].text, "42");
  EXPECT_EQ(messagesOf(snapshot, 1)[0].fromJID, "5511900001111");
  EXPECT_EQ(messagesOf(snapshot, 1)[1].text, "1.5");
  EXPECT_EQ(messagesOf(snapshot, 1)[1].fromJID, std::nullopt);
}

TEST(ChatStorageReader, AMessageIsFromMeForEveryIntegerButZero) {
  const std::pair<SQLValue, bool> cases[] = {{0, false},   {1, true},           {-1, true},           {2, true},
                                             {"x", false}, {SQLValue{}, false}, {bytesOf("1"), false}};
  for (const auto& [value, expected] : cases) {
    EXPECT_EQ(onlyMessage({.chat = 1, .isFromMe = value}).isFromMe, expected);
  }
}

TEST(ChatStorageReader, AMessagesPushNameIsJudgedOnlyWhenItIsStoredAsBytes) {
  const std::string blob = "CgtKb2huIFNtaXRoEgA=";
  EXPECT_EQ(onlyMessage({.chat = 1, .pushName = blob}).pushName, blob);
  EXPECT_EQ(onlyMessage({.chat = 1, .pushName = bytesOf(blob)}).pushName, std::nullopt);
  EXPECT_EQ(onlyMessage({.chat = 1, .pushName = bytesOf("João")}).pushName, "João");
  EXPECT_EQ(onlyMessage({.chat = 1, .pushName = Bytes{'A', 0xFF, 'b'}}).pushName, std::nullopt);
  EXPECT_EQ(onlyMessage({.chat = 1, .pushName = bytesOf("")}).pushName, std::nullopt);
}

TEST(ChatStorageReader, AProfilesPushNameIsAlwaysJudged) {
  const ContactDirectory directory = readChats({.pushNames = {{.jid = "1@s", .name = "CgtKb2huIFNtaXRoEgA="},
                                                              {.jid = "2@s", .name = bytesOf("João")},
                                                              {.jid = "3@s", .name = Bytes{0xFF, 0xFE}},
                                                              {.jid = "4@s", .name = "  "},
                                                              {.jid = "", .name = "Nobody"},
                                                              {.jid = "6@s", .name = "Rui"}}})
                                         .directory();
  EXPECT_EQ(directory.pushName("1@s"), std::nullopt);
  EXPECT_EQ(directory.pushName("2@s"), "João");
  EXPECT_EQ(directory.pushName("3@s"), std::nullopt);
  EXPECT_EQ(directory.pushName("4@s"), std::nullopt);
  EXPECT_EQ(directory.pushName("6@s"), "Rui");
  EXPECT_FALSE(directory.profilePushName.contains(""));
}

TEST(ChatStorageReader, ImplausibleMemberNamesAreDropped) {
  const auto members = readChats({.members = {{.contactName = "0123456789abcdef0123", .firstName = " "},
                                              {.contactName = "Ana", .firstName = "Rui"}}})
                           .directory()
                           .groupMembers;
  EXPECT_EQ(members.at(1), (GroupMemberRecord{.pk = 1}));
  EXPECT_EQ(members.at(2), (GroupMemberRecord{.pk = 2, .contactName = "Ana", .firstName = "Rui"}));
}

TEST(ChatStorageReader, MediaPathsBelowMediaGainTheirContainersPrefix) {
  const ChatStorageSnapshot snapshot = readChats({.messages = {{.chat = 1}, {.chat = 1}, {.chat = 1}, {.chat = 1}},
                                                  .mediaItems = {{.message = 1, .localPath = "Media/a/1.jpg"},
                                                                 {.message = 2, .localPath = "Message/Media/a/2.jpg"},
                                                                 {.message = 3, .localPath = "Elsewhere/3.jpg"},
                                                                 {.message = 4, .localPath = "MEDIA/a/4.jpg"},
                                                                 {.message = 99, .localPath = "Media/a/99.jpg"},
                                                                 {.message = "x", .localPath = "Media/a/x.jpg"}}});
  const auto messages = messagesOf(snapshot, 1);
  EXPECT_EQ(messages[0].mediaLocalPath, "Message/Media/a/1.jpg");
  EXPECT_EQ(messages[1].mediaLocalPath, std::nullopt) << "such a path does not begin with Media/";
  EXPECT_EQ(messages[2].mediaLocalPath, std::nullopt);
  EXPECT_EQ(messages[3].mediaLocalPath, "Message/MEDIA/a/4.jpg");
  EXPECT_EQ(snapshot.mediaPaths().size(), 2U);
}

TEST(ChatStorageReader, MediaFollowTheirMessageThroughTheSorting) {
  const ChatStorageSnapshot snapshot = readChats({.messages = {{.chat = 1, .date = 3}, {.chat = 1, .date = 1}},
                                                  .mediaItems = {{.message = 1, .localPath = "Media/a/1.jpg"}}});
  ASSERT_NE(snapshot.mediaMessage("Message/Media/a/1.jpg"), nullptr);
  EXPECT_EQ(snapshot.mediaMessage("Message/Media/a/1.jpg")->pk, 1);
}

TEST(ChatStorageReader, ADatabaseWithoutChatsStillGivesMessagesAndMedia) {
  const ChatStorageSnapshot snapshot = readChats({.messages = {{.chat = 1}},
                                                  .mediaItems = {{.message = 1, .localPath = "Media/a@s/1.jpg"}},
                                                  .journal = Journal::rollback,
                                                  .chatStorageSQL = "DROP TABLE ZWACHATSESSION"});
  EXPECT_EQ(messagesOf(snapshot, 1).size(), 1U);
  EXPECT_EQ(snapshot.chat("a@s"), nullptr);
  EXPECT_EQ(snapshot.ownerJID("Message/Media/a@s/1.jpg", "a@s"), "a@s");
  EXPECT_EQ(snapshot.ownerJID("Message/Media/a@s/1.jpg", std::nullopt), "Unknown");
}

// A table that is missing, or that has none of the columns it is read by.
class IncompleteDatabase : public testing::TestWithParam<const char*> {
 protected:
  void expectOnlyThatPartEmpty(const std::string& sql) const {
    const ChatStorageSnapshot snapshot = readChats({.chats = {{.jid = ana, .name = "Ana"}},
                                                    .messages = {{.chat = 1, .date = 1}},
                                                    .members = {{.jid = ana, .contactName = "Ana"}},
                                                    .pushNames = {{.jid = ana, .name = "Ana"}},
                                                    .mediaItems = {{.message = 1, .localPath = "Media/a/1.jpg"}},
                                                    .journal = Journal::rollback,
                                                    .chatStorageSQL = sql});
    const auto isWhole = [](std::string_view table) { return table != GetParam(); };
    EXPECT_EQ(!snapshot.records().empty(), isWhole("ZWACHATSESSION")) << sql;
    EXPECT_EQ(!snapshot.directory().groupMembers.empty(), isWhole("ZWAGROUPMEMBER")) << sql;
    EXPECT_EQ(!snapshot.directory().profilePushName.empty(), isWhole("ZWAPROFILEPUSHNAME")) << sql;
    EXPECT_EQ(!snapshot.messages().empty(), isWhole("ZWAMESSAGE")) << sql;
    EXPECT_EQ(snapshot.hasMedia(), isWhole("ZWAMEDIAITEM") && isWhole("ZWAMESSAGE")) << sql;
  }
};

TEST_P(IncompleteDatabase, LeavesOnlyThatPartEmpty) {
  const std::string table = GetParam();
  expectOnlyThatPartEmpty("DROP TABLE " + table);
  expectOnlyThatPartEmpty("DROP TABLE " + table + "; CREATE TABLE " + table + " (odd); INSERT INTO " + table +
                          " VALUES (1)");
}

INSTANTIATE_TEST_SUITE_P(OfEachTable, IncompleteDatabase,
                         testing::Values("ZWACHATSESSION", "ZWAGROUPMEMBER", "ZWAPROFILEPUSHNAME", "ZWAMESSAGE",
                                         "ZWAMEDIAITEM"));

TEST(ChatStorageReader, LidsAndNumbersArePairedByTheirOwnTable) {
  const std::vector<LidPair> pairs = {{.lid = "777@lid", .phoneNumber = ana},
                                      {.lid = "888", .phoneNumber = "+49 30 001111"},
                                      {.lid = " ", .phoneNumber = "1"},
                                      {.lid = "999", .phoneNumber = SQLValue{}}};
  const ContactDirectory directory = readChats({.lidPairs = pairs}).directory();
  EXPECT_EQ(directory.phoneJID("777@lid"), ana);
  EXPECT_EQ(directory.phoneJID("888@lid"), "4930001111@s.whatsapp.net");
  EXPECT_EQ(directory.lidJID(ana), "777@lid");
  EXPECT_EQ(directory.phoneJID("999@lid"), std::nullopt);
}

TEST(ChatStorageReader, InvalidUTF8InTextIsReplaced) {
  const ChatStorageSnapshot snapshot = readChatSQL(
      "CREATE TABLE ZWAMESSAGE (Z_PK, ZCHATSESSION, ZTEXT);"
      "INSERT INTO ZWAMESSAGE VALUES (1, 1, CAST(x'61FF62' AS TEXT))");
  EXPECT_EQ(messagesOf(snapshot, 1)[0].text, "a\uFFFDb");
}

TEST(ChatStorageReader, AnAbsentDatabaseIsUnreadableWithTheReason) {
  const TemporaryDirectory folder;
  try {
    ChatStorageReader::load(folder / "absent.sqlite");
    ADD_FAILURE() << "there is no such file";
  } catch (const TidewellError& error) {
    ASSERT_TRUE(error.is<TidewellError::ChatStorageUnreadable>());
    EXPECT_THAT(error.errorDescription(), testing::HasSubstr("unable to open database file"));
  }
}

TEST(ChatStorageReader, DamagedPagesAreReportedAndGiveNoPartOfASnapshot) {
  WhatsAppContents app{.chats = {{.jid = ana}}, .journal = Journal::rollback};
  for (int i = 0; i < 500; ++i) app.messages.push_back({.chat = 1, .date = i, .text = std::string(100, 'a')});
  const TemporaryDirectory folder;
  Bytes bytes = writeChatStorage(app).main;
  std::fill(bytes.end() - 30 * 4096, bytes.end(), std::uint8_t{0xEE});
  writeFile(folder / "db", bytes);
  EXPECT_THAT([&] { ChatStorageReader::load(folder / "db"); },
              failsWith(TidewellError::invalidDatabase("database disk image is malformed")));
}

}  // namespace
}  // namespace Fixture
