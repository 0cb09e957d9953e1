#include "TidewellCore/ChatData/ChatStorageSnapshot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/ChatData/ReadDatabases.h"
#include "TidewellCore/ChatData/JID.h"

namespace Fixture {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* phone = "5511900001111@s.whatsapp.net";
constexpr const char* lid = "77001122334455@lid";

// The address book knows Ana by her number and by her LID.
WhatsAppContents ana(std::vector<Chat> chats) {
  return {.chats = std::move(chats), .contacts = {{.fullName = "Ana Souza", .whatsAppID = phone, .lid = lid}}};
}

TEST(ChatStorageSnapshot, ALidBecomesTheNumberThatTheDirectoryKnows) {
  const ChatStorageSnapshot snapshot = readApp(ana({}));
  EXPECT_EQ(snapshot.canonicalChatJID(lid), phone);
  EXPECT_EQ(snapshot.canonicalChatJID("  77001122334455@LID\n"), phone);
  EXPECT_EQ(snapshot.canonicalChatJID(phone), phone);
}

TEST(ChatStorageSnapshot, AnUnknownLidStaysAsItIsWrittenWithoutBlanks) {
  const ChatStorageSnapshot snapshot = readApp(ana({}));
  EXPECT_EQ(snapshot.canonicalChatJID(" 99@LID "), "99@LID");
  EXPECT_EQ(snapshot.canonicalChatJID(" Us-1@g.us "), "Us-1@g.us");
  EXPECT_EQ(snapshot.canonicalChatJID(" \n"), "");
  EXPECT_EQ(snapshot.canonicalChatJID("77001122334455@lid@x"), "77001122334455@lid@x")
      << "the server is all that follows the first @";
}

TEST(ChatStorageSnapshot, ThePairsOfTheChatDatabaseServeAsWellAsTheAddressBook) {
  const std::vector<LidPair> pairs = {{.lid = lid, .phoneNumber = phone}};
  EXPECT_EQ(readChats({.lidPairs = pairs}).canonicalChatJID(lid), phone);
}

TEST(ChatStorageSnapshot, ALidIsLinkedToANumberAlone) {
  const std::vector<LidPair> pairs = {{.lid = "1@lid", .phoneNumber = "2@lid"},
                                      {.lid = "2@lid", .phoneNumber = "1@lid"}};
  const ChatStorageSnapshot snapshot =
      readChats({.chats = {{.jid = "1@lid"}, {.jid = "2@lid"}},
                 .messages = {{.chat = 1, .text = "of one"}, {.chat = 2, .text = "of two"}},
                 .lidPairs = pairs});
  for (const auto& [jid, text] : {std::pair("1@lid", "of one"), std::pair("2@lid", "of two")}) {
    const CanonicalJID chat = snapshot.canonicalChatJID(jid);
    EXPECT_EQ(chat, jid);
    ASSERT_EQ(snapshot.messages(chat).size(), 1) << jid;
    EXPECT_EQ(snapshot.messages(chat)[0].text, text);
  }
}

TEST(ChatStorageSnapshot, TheStatusPostsOfOnePersonAreOneChat) {
  const std::vector<LidPair> pairs = {{.lid = lid, .phoneNumber = phone}};
  const ChatStorageSnapshot snapshot = readChats({.lidPairs = pairs});
  EXPECT_EQ(snapshot.canonicalChatJID("77001122334455@lid.status"), "5511900001111@status");
  EXPECT_EQ(snapshot.canonicalChatJID("5511900001111@status"), "5511900001111@status");
  EXPECT_EQ(snapshot.canonicalChatJID("99@lid.status"), "99@lid.status");
}

TEST(ChatStorageSnapshot, PeopleHaveTheNameOfTheirChatBeforeANumber) {
  const TranscriptStyle style = TranscriptStyle::english();
  const ChatStorageSnapshot snapshot = readChats({.chats = {{.jid = phone, .name = "Ana"}}});
  EXPECT_EQ(snapshot.name({.jid = phone}), "Ana");
  EXPECT_EQ(snapshot.nameOfDigits("5511900001111", style), "Ana");
  EXPECT_EQ(snapshot.name({.jid = "5511900002222@s.whatsapp.net"}), "+55 11 90000-2222");
  EXPECT_EQ(snapshot.nameOfDigits("5511900002222", style), std::nullopt);
}

TEST(ChatStorageSnapshot, OnlyAChatOfTwoHasAPartner) {
  const ChatStorageSnapshot snapshot = readChats({.chats = {{.jid = phone, .name = "Ana"},
                                                            {.jid = "1-2@g.us", .name = "Us"},
                                                            {.jid = "5511900001111@status"},
                                                            {.jid = "99@lid"},
                                                            {.jid = "12@newsletter", .name = "News"}}});
  EXPECT_EQ(snapshot.partnerName(phone), "Ana");
  for (const char* jid : {"1-2@g.us", "5511900001111@status", "99@lid", "12@newsletter", "Unknown", ""}) {
    EXPECT_EQ(snapshot.partnerName(jid), "") << jid;
  }
}

TEST(ChatStorageSnapshot, TheOwnerIsTheOwnerByNumberAndByLid) {
  const TranscriptStyle style = TranscriptStyle::english();
  const ChatStorageSnapshot snapshot =
      readChats({.chats = {{.jid = "15550000002@s.whatsapp.net"}},
                 .messages = {{.chat = 1, .toJID = phone, .type = 10}, {.chat = 1, .type = 14}},
                 .mediaItems = {{.message = 2, .vCard = lid}},
                 .lidPairs = {{{.lid = lid, .phoneNumber = phone}}}});
  EXPECT_EQ(snapshot.nameOfDigits("77001122334455", style), "You");
  EXPECT_EQ(snapshot.nameOfDigits("5511900001111", style), "You");
  const MessageDetails* removed = snapshot.details(messagesOf(snapshot, 1).at(1));
  ASSERT_NE(removed, nullptr);
  EXPECT_EQ(removed->content, MessageContent(DeletedMessage{.remover = Person{.isOwner = true}}));
}

TEST(ChatStorageSnapshot, AliasesAreTheCanonicalJidThenItsCounterpart) {
  const ChatStorageSnapshot snapshot = readApp(ana({}));
  EXPECT_THAT(snapshot.aliasJIDs(phone), ElementsAre(phone, lid));
  EXPECT_THAT(snapshot.aliasJIDs(lid), ElementsAre(phone, lid));
  EXPECT_THAT(snapshot.aliasJIDs("99@lid"), ElementsAre("99@lid"));
  EXPECT_THAT(snapshot.aliasJIDs("1-2@g.us"), ElementsAre("1-2@g.us"));
  const std::string user(JID::userPart(phone));
  const std::string status = user + "@status";
  const std::string anonymous = std::string(JID::userPart(lid)) + "@lid.status";
  EXPECT_THAT(snapshot.aliasJIDs(status), ElementsAre(status, anonymous)) << "and not the person's chat";
  EXPECT_THAT(snapshot.aliasJIDs(anonymous), ElementsAre(status, anonymous));
  EXPECT_THAT(snapshot.aliasJIDs("99@lid.status"), ElementsAre("99@lid.status"));
  EXPECT_THAT(snapshot.aliasJIDs("  "), IsEmpty());
}

TEST(ChatStorageSnapshot, AChatIsFoundByItsJidByItsCanonicalJidAndByItsCounterpart) {
  const ChatStorageSnapshot both = readApp(ana({{.jid = lid}, {.jid = phone}}));
  EXPECT_EQ(both.chat(lid)->pk, 1) << "the record of that very JID comes first";
  EXPECT_EQ(both.chat(phone)->pk, 2);
  EXPECT_EQ(both.chat(" 77001122334455@LID ")->pk, 2);
  const ChatStorageSnapshot alone = readApp(ana({{.jid = "77001122334455@LID"}}));
  EXPECT_EQ(alone.chat(phone)->pk, 1);
  EXPECT_EQ(alone.chat(lid)->pk, 1);
  EXPECT_EQ(alone.chat("99@lid"), nullptr);
  EXPECT_EQ(alone.chat(""), nullptr);
}

TEST(ChatStorageSnapshot, OfChatsWithOneJidTheLaterCounts) {
  const WhatsAppContents app{.chats = {{.jid = phone, .name = "A"}, {.jid = phone, .name = "B"}}};
  EXPECT_EQ(readChats(app).chat(phone)->name, "B");
}

TEST(ChatStorageSnapshot, TwoRecordsOfOnePersonShareTheTitleOfThePhones) {
  const ChatStorageSnapshot snapshot = readApp(ana({{.jid = lid, .name = "Aninha"}, {.jid = phone, .name = "Ana"}}));
  EXPECT_EQ(snapshot.chatTitle(lid), "Ana");
  EXPECT_EQ(snapshot.chatTitle(phone), "Ana");
  ASSERT_EQ(snapshot.chats().size(), 1U);
  EXPECT_EQ(snapshot.chats().front().jid, phone);
  EXPECT_EQ(readApp(ana({{.jid = lid, .name = "Aninha"}})).chatTitle(phone), "Aninha");
}

TEST(ChatStorageSnapshot, MediaWithoutAKnownChatHaveATitleOfTheirOwn) {
  const ChatStorageSnapshot snapshot = readApp(ana({}));
  EXPECT_EQ(snapshot.chatTitle("Unknown"), "Unknown");
  EXPECT_EQ(snapshot.chatTitle(""), "Unknown");
  EXPECT_EQ(snapshot.chatTitle("4930001111@s.whatsapp.net"), "+4930001111");
  EXPECT_EQ(snapshot.chatTitle(phone), "Ana Souza") << "nobody chatted with her";
}

TEST(ChatStorageSnapshot, MediaAreFoundWithAndWithoutTheirContainersPrefix) {
  const ChatStorageSnapshot snapshot =
      readChats({.messages = {{.chat = 1}}, .mediaItems = {{.message = 1, .localPath = "Media/a/1.jpg"}}});
  ASSERT_NE(snapshot.mediaMessage("Message/Media/a/1.jpg"), nullptr);
  EXPECT_EQ(snapshot.mediaMessage("Media/a/1.jpg"), snapshot.mediaMessage("Message/Media/a/1.jpg"));
  EXPECT_EQ(snapshot.mediaMessage("Message/Media/a/2.jpg"), nullptr);
  EXPECT_EQ(snapshot.mediaMessage(""), nullptr);
}

TEST(ChatStorageSnapshot, AMediaFileBelongsToTheChatOfItsMessage) {
  WhatsAppContents app = ana({{.jid = lid}, {.jid = ""}});
  app.messages = {{.chat = 1}, {.chat = 2}, {.chat = 99}};
  app.mediaItems = {{.message = 1, .localPath = "Media/x/1.jpg"},
                    {.message = 2, .localPath = "Media/x/2.jpg"},
                    {.message = 3, .localPath = "Media/x/3.jpg"}};
  const ChatStorageSnapshot snapshot = readApp(app);
  EXPECT_EQ(snapshot.ownerJID("Message/Media/x/1.jpg", "x@g.us"), phone);
  EXPECT_EQ(snapshot.ownerJID("Message/Media/x/2.jpg", "x@g.us"), "x@g.us") << "its chat has no JID";
  EXPECT_EQ(snapshot.ownerJID("Message/Media/x/3.jpg", lid), phone) << "its chat is not there";
  EXPECT_EQ(snapshot.ownerJID("Message/Media/x/4.jpg", lid), phone) << "no message carries it";
  EXPECT_EQ(snapshot.ownerJID("Message/Media/x/4.jpg", ""), "Unknown");
  EXPECT_EQ(snapshot.ownerJID("Message/Media/x/4.jpg", std::nullopt), "Unknown");
}

}  // namespace
}  // namespace Fixture
