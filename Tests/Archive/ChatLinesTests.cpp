#include "TidewellCore/Archive/ChatLines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/Export/ExportScene.h"
#include "Tests/Library/LibraryScene.h"
#include "TidewellCore/ChatData/JID.h"

namespace {

using ExportTest::ana;
using ExportTest::anaLID;
using ExportTest::bea;
using ExportTest::group;
using ExportTest::tablesOf;
using testing::ElementsAre;

const std::string unknown(UnknownChatJID);
const TranscriptStyle english = TranscriptStyle::english();

// A message of the chat with that key, its text telling its own key.
MessageRecord& add(ChatTables& tables, std::int64_t pk, std::int64_t chat, std::optional<double> date = std::nullopt) {
  MessageRecord message{.pk = pk, .chatPK = chat, .text = tables.texts.add("text " + std::to_string(pk))};
  if (date) message.date = dateFromUnixTime(*date);
  return tables.messages.emplace_back(message);
}

std::vector<ArchiveMessage> messages(const ChatStorageSnapshot& snapshot, const std::string& jid,
                                     const TranscriptStyle& style = english) {
  LibraryScene scene;
  scene.take(snapshot);
  return scene.messages(jid, style);
}

std::vector<std::string> ids(const ChatStorageSnapshot& snapshot, const std::string& jid) {
  std::vector<std::string> found;
  for (const ArchiveMessage& message : messages(snapshot, jid)) found.push_back(message.id);
  return found;
}

TEST(ChatLines, AMessageKeepsWhatItSays) {
  auto tables = tablesOf({{ana, "Ana"}});
  add(tables, 7, 1, 10.5);
  const ChatStorageSnapshot snapshot(std::move(tables));
  EXPECT_EQ(messages(snapshot, ana),
            (std::vector<ArchiveMessage>{
                {.id = "7", .sender = "Ana", .senderJID = ana, .timestamp = 10.5, .text = "text 7"}}));
}

std::string wordsOf(const ChatStorageSnapshot& snapshot, const std::string& jid) {
  return messages(snapshot, jid).front().text.value_or("");
}

TEST(ChatLines, ALidThatNobodyKnowsIsNobody) {
  auto tables = tablesOf({{group, "Garden"}});
  add(tables, 7, 1, 10).text.reset();
  const Notice removed{
      .kind = NoticeKind::memberRemoved, .actor = Person{.jid = "777000777@lid"}, .targets = {Person{.jid = ana}}};
  tables.details = {{7, {.content = removed}}};
  EXPECT_EQ(wordsOf(ChatStorageSnapshot(std::move(tables)), group), "+55 11 90000-1111 was removed");
}

TEST(ChatLines, TellsTheJIDOfWhoeverElseWroteAMessage) {
  auto tables = tablesOf({{ana, "Ana"}});
  add(tables, 7, 1, 10);
  add(tables, 8, 1, 20).isFromMe = true;
  add(tables, 9, 1, 30);
  tables.details = {{9, {.content = Notice{.kind = NoticeKind::securityCodeChanged}}}};
  const ChatStorageSnapshot snapshot(std::move(tables));
  std::vector<std::string> jids;
  for (const ArchiveMessage& message : messages(snapshot, ana)) jids.push_back(message.senderJID);
  EXPECT_THAT(jids, ElementsAre(ana, "", "")) << "neither the owner's nor that of a notice";
}

// A channel's own JID has digits that are no number.
TEST(ChatLines, OnlyPeopleHaveNumbers) {
  for (const std::string server : {"@newsletter", "@broadcast", "@g.us", "@status"}) {
    auto tables = tablesOf({{group, "Garden"}});
    add(tables, 7, 1, 10);
    tables.details = {{7, {.quote = Quote{.sender = Person{.jid = "120363025246125486" + server}}}}};
    const ChatStorageSnapshot snapshot(std::move(tables));
    EXPECT_EQ(messages(snapshot, group).front().details->quote->name, "Unknown") << server;
  }
}

TEST(ChatLines, APersonsTwoRecordsAreOneRowInTheOrderOfTheirDates) {
  auto tables = tablesOf({{anaLID, "Ana"}, {ana, "Ana"}}, {{anaLID, ana}});
  add(tables, 1, 1, 10);
  add(tables, 2, 1, 30);
  add(tables, 3, 2, 20);
  add(tables, 4, 2, 40);
  const ChatStorageSnapshot snapshot(std::move(tables));
  EXPECT_THAT(ids(snapshot, ana), ElementsAre("1", "3", "2", "4"));
  EXPECT_THAT(ids(snapshot, anaLID), ElementsAre("1", "3", "2", "4")) << "one chat, by either of its JIDs";
}

TEST(ChatLines, OfEqualDatesTheSmallerRecordComesFirst) {
  auto tables = tablesOf({{anaLID, "Ana"}, {ana, "Ana"}}, {{anaLID, ana}});
  add(tables, 9, 1, 10);
  add(tables, 5, 2, 10);
  add(tables, 8, 1, 10);
  const ChatStorageSnapshot snapshot(std::move(tables));
  EXPECT_THAT(ids(snapshot, ana), ElementsAre("8", "9", "5"));
}

TEST(ChatLines, UndatedMessagesOfBothRecordsComeFirst) {
  auto tables = tablesOf({{anaLID, "Ana"}, {ana, "Ana"}}, {{anaLID, ana}});
  add(tables, 1, 1);
  add(tables, 2, 1, -5e9);
  add(tables, 3, 2);
  add(tables, 4, 2, 10);
  const ChatStorageSnapshot snapshot(std::move(tables));
  EXPECT_THAT(ids(snapshot, ana), ElementsAre("1", "3", "2", "4"));
  EXPECT_EQ(messages(snapshot, ana).front().timestamp, std::nullopt);
}

TEST(ChatLines, WhatBelongsToNoChatIsInOneOfItsOwn) {
  auto tables = tablesOf({{ana, "Ana"}, {"", "Nobody"}});
  add(tables, 1, 1, 10);
  add(tables, 2, 2, 30);
  add(tables, 3, 77, 20);
  const ChatStorageSnapshot snapshot(std::move(tables));
  EXPECT_THAT(ids(snapshot, unknown), ElementsAre("3", "2"));
  EXPECT_EQ(messages(snapshot, unknown).front().sender, "Unknown");
}

TEST(ChatLines, RecordsWithoutAndMissingOnesAreInOneOrder) {
  ChatTables tables;
  tables.chats.emplace(5, ChatRecord{.pk = 5});
  add(tables, 1, 5, 10);
  add(tables, 2, 3, 10);
  add(tables, 3, 9, 10);
  const ChatStorageSnapshot snapshot(std::move(tables));
  EXPECT_THAT(ids(snapshot, unknown), ElementsAre("2", "1", "3"));
}

TEST(ChatLines, NamesTheSendersOfAGroup) {
  auto tables = tablesOf({{group, "Us"}, {bea, "Bea"}});
  tables.directory.groupMembers.emplace(4, GroupMemberRecord{.pk = 4, .jid = bea, .contactName = "Bea Lima"});
  add(tables, 1, 1, 1).groupMemberPK = 4;
  add(tables, 2, 1, 2).isFromMe = true;
  add(tables, 3, 1, 3);
  const ChatStorageSnapshot snapshot(std::move(tables));
  const auto found = messages(snapshot, group);
  ASSERT_EQ(found.size(), 3U);
  EXPECT_EQ(found[0].sender, "Bea Lima");
  EXPECT_EQ(found[1].sender, "You");
  EXPECT_TRUE(found[1].fromMe);
  EXPECT_EQ(found[2].sender, "Unknown");
}

TEST(ChatLines, SpeaksTheLanguageOfTheStyle) {
  auto tables = tablesOf({{group, "Nós"}});
  add(tables, 1, 1, 1).isFromMe = true;
  add(tables, 2, 1, 2);
  const ChatStorageSnapshot snapshot(std::move(tables));
  const auto found = messages(snapshot, group, TranscriptStyle::matching(Locale{"pt_BR"}));
  EXPECT_EQ(found[0].sender, "Você");
  EXPECT_EQ(found[1].sender, "Desconhecido");
}

TEST(ChatLines, AnEmptyTextIsNone) {
  auto tables = tablesOf({{ana, "Ana"}});
  add(tables, 1, 1).text = "";
  add(tables, 2, 1).text = std::nullopt;
  const ChatStorageSnapshot snapshot(std::move(tables));
  for (const ArchiveMessage& message : messages(snapshot, ana)) EXPECT_EQ(message.text, std::nullopt);
}

TEST(ChatLines, IDsDoNotDependOnTheDatesOfMessages) {
  for (const std::int64_t newest : {1, 2}) {
    auto tables = tablesOf({{"a:b@x", "One"}, {"a;b@x", "Two"}});
    add(tables, 1, newest, 10);
    LibraryScene scene;
    scene.take(ChatStorageSnapshot(std::move(tables)));
    EXPECT_EQ(scene.chat("a:b@x")->page, "a_b_x");
    EXPECT_EQ(scene.chat("a;b@x")->page, "a_b_x-2");
  }
}

}  // namespace
