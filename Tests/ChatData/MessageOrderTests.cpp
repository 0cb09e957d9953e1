#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/ChatData/ReadDatabases.h"
#include "TidewellCore/ChatData/ChatStorageReader.h"

// When messages were written, and in which order they are read.
namespace Fixture {
namespace {

using testing::ElementsAre;

constexpr const char* ana = "5511900001111@s.whatsapp.net";

std::vector<std::int64_t> keysOf(const std::vector<MessageRecord>& messages) {
  std::vector<std::int64_t> keys;
  for (const MessageRecord& message : messages) keys.push_back(message.pk);
  return keys;
}

TEST(MessageOrder, OrdersMessagesByDate) {
  const ChatStorageSnapshot snapshot = readChats({.messages = {{.chat = 1, .date = 30},
                                                               {.chat = 1, .date = 10.5, .sort = 5.5},
                                                               {.chat = 1},
                                                               {.chat = 1, .date = 10, .sort = 5},
                                                               {.chat = 1, .date = 30},
                                                               {.chat = 1, .date = 10.25},
                                                               {.chat = 1},
                                                               {.chat = 1, .date = 30}}});
  EXPECT_THAT(keysOf(messagesOf(snapshot, 1)), ElementsAre(3, 7, 4, 2, 6, 1, 5, 8));
}

TEST(MessageOrder, MessagesOfOneDateStandInThePhonesOrder) {
  const ChatStorageSnapshot snapshot =
      readChats({.messages = {{.pk = 4, .chat = 1, .date = 30, .sort = 3},
                              {.pk = 9, .chat = 1, .date = 30, .sort = -7},  // as history that was synchronised twice
                              {.pk = 2, .chat = 1, .date = 30, .sort = 5.5},
                              {.pk = 8, .chat = 1, .date = 30, .sort = 5},
                              {.pk = 7, .chat = 1, .sort = 2},
                              {.pk = 3, .chat = 1, .date = 30, .sort = 3},
                              {.pk = 1, .chat = 1, .date = 20, .sort = 9},
                              {.pk = 6, .chat = 1, .sort = 1}}});
  EXPECT_THAT(keysOf(messagesOf(snapshot, 1)), ElementsAre(6, 7, 1, 9, 3, 4, 8, 2));
}

TEST(MessageOrder, WithoutAPlaceInThatOrderTheKeyCounts) {
  const auto keysWithout = [](const std::string& sql) {
    return keysOf(messagesOf(readChats({.messages = {{.pk = 5, .chat = 1, .date = 30},
                                                     {.pk = 9, .chat = 1, .date = 30},
                                                     {.pk = 2, .chat = 1},
                                                     {.pk = 1, .chat = 1, .date = 30},
                                                     {.pk = 3, .chat = 1}},
                                        .chatStorageSQL = sql}),
                             1));
  };
  const std::string reversed = "UPDATE ZWAMESSAGE SET ZSORT = -Z_PK";
  EXPECT_THAT(keysWithout(reversed), ElementsAre(3, 2, 9, 5, 1));
  for (const char* none : {"ALTER TABLE ZWAMESSAGE DROP COLUMN ZSORT", "UPDATE ZWAMESSAGE SET ZSORT = NULL",
                           "UPDATE ZWAMESSAGE SET ZSORT = 'z' || (10 - Z_PK)", "UPDATE ZWAMESSAGE SET ZSORT = x'39'"}) {
    EXPECT_THAT(keysWithout(reversed + ";" + none), ElementsAre(2, 3, 1, 5, 9)) << none;
  }
}

TEST(MessageOrder, ARowThatIsReadLateStandsWhereItsKeySays) {
  // Without a primary key rows come as they were inserted.
  const ChatStorageSnapshot snapshot = readChatSQL(
      "CREATE TABLE ZWAMESSAGE (Z_PK, ZCHATSESSION, ZMESSAGEDATE, ZSORT);"
      "INSERT INTO ZWAMESSAGE VALUES (3, 1, 10, '1'), (2, 1, 10, 9e999), (1, 1, 10, NULL), (5, 1, 10, 4), (4, 1, 10, "
      "4)");
  EXPECT_THAT(keysOf(messagesOf(snapshot, 1)), ElementsAre(1, 3, 4, 5, 2));
}

TEST(MessageOrder, SentinelDatesNeitherCrashNorShiftAnything) {
  const ChatStorageSnapshot snapshot = readChats(
      {.messages = {
           {.chat = 1, .date = 63113904000}, {.chat = 1, .date = 10}, {.chat = 1}, {.chat = 1, .date = -63114076800}}});
  const auto messages = messagesOf(snapshot, 1);
  EXPECT_THAT(keysOf(messages), ElementsAre(3, 4, 2, 1));
  EXPECT_EQ(messages[1].date, dateFromUnixTime(-62135769600)) << "0001-01-01";
  EXPECT_EQ(messages[2].date, dateFromAppleTime(10));
  EXPECT_EQ(messages[3].date, dateFromUnixTime(64092211200)) << "4001-01-01";
}

TEST(MessageOrder, DateZeroIsTheFirstDayOf2001) {
  const ChatStorageSnapshot snapshot = readChats({.chats = {{.jid = ana}}, .messages = {{.chat = 1, .date = 0}}});
  EXPECT_EQ(messagesOf(snapshot, 1).at(0).date, dateFromUnixTime(978307200));
}

TEST(MessageOrder, DatesMayBeWrittenAsText) {
  // A column of any other type would turn such text into a number by itself.
  const auto dateOf = [](const std::string& value) {
    return readChatSQL(
               "CREATE TABLE ZWAMESSAGE (Z_PK INTEGER PRIMARY KEY, ZCHATSESSION, ZMESSAGEDATE BLOB);"
               "INSERT INTO ZWAMESSAGE VALUES (1, 1, " +
               value + ")")
        .messages()
        .front()
        .date;
  };
  EXPECT_EQ(dateOf("'700000000.25'"), dateFromAppleTime(700000000.25));
  EXPECT_EQ(dateOf("'-5'"), dateFromAppleTime(-5));
  for (const char* none :
       {"'yesterday'", "'12 o clock'", "''", "x'3132'", "NULL", "'nan'", "'inf'", "9e999", "-9e999"}) {
    EXPECT_EQ(dateOf(none), std::nullopt) << none;
  }
}

TEST(MessageOrder, TakesTheOlderDateColumnWhenTheNewerIsMissing) {
  const ChatStorageSnapshot snapshot =
      readChats({.messages = {{.chat = 1, .date = 20}, {.chat = 1, .date = 10}},
                 .chatStorageSQL = "ALTER TABLE ZWAMESSAGE RENAME COLUMN ZMESSAGEDATE TO ZDATE"});
  EXPECT_THAT(keysOf(messagesOf(snapshot, 1)), ElementsAre(2, 1));
}

TEST(MessageOrder, WithoutADateColumnEveryMessageIsUndatedAndKeepsItsPlace) {
  const ChatStorageSnapshot snapshot =
      readChats({.messages = {{.pk = 5, .chat = 1, .date = 20}, {.pk = 9, .chat = 1, .date = 10}},
                 .chatStorageSQL = "ALTER TABLE ZWAMESSAGE DROP COLUMN ZMESSAGEDATE"});
  EXPECT_THAT(keysOf(messagesOf(snapshot, 1)), ElementsAre(5, 9));
  EXPECT_EQ(messagesOf(snapshot, 1)[0].date, std::nullopt);
}

}  // namespace
}  // namespace Fixture
