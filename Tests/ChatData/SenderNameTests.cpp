#include <gtest/gtest.h>

#include "Tests/ChatData/ReadDatabases.h"

namespace Fixture {
namespace {

constexpr const char* group = "1-2@g.us";
constexpr const char* phone = "5511900001111@s.whatsapp.net";
constexpr const char* lid = "77001122334455@lid";
const std::vector<LidPair> pair = {{.lid = lid, .phoneNumber = phone}};

// Who sent the first message of the first chat.
std::string senderIn(const WhatsAppContents& app, const TranscriptStyle& style = TranscriptStyle::english()) {
  const ChatStorageSnapshot snapshot = readApp(app);
  return snapshot.senderName(messagesOf(snapshot, 1).at(0), style);
}

std::string senderInGroup(Message message, WhatsAppContents app = {}) {
  message.chat = 1;
  app.chats = {{.jid = group, .name = "Us"}};
  app.messages = {message};
  return senderIn(app);
}

std::string senderInChat(const Chat& chat, WhatsAppContents app = {}) {
  app.chats = {chat};
  app.messages = {{.chat = 1, .fromJID = chat.jid, .pushName = "Pushed"}};
  return senderIn(app);
}

TEST(SenderName, TheOwnerIsAlwaysYou) {
  EXPECT_EQ(senderInGroup({.isFromMe = 1, .fromJID = phone, .pushName = "Ana"}), "You");
  const WhatsAppContents app{.chats = {{.jid = phone, .name = "Ana"}}, .messages = {{.chat = 1, .isFromMe = 1}}};
  EXPECT_EQ(senderIn(app), "You");
  EXPECT_EQ(senderIn(app, TranscriptStyle::portuguese()), TranscriptStyle::portuguese().youLabel);
}

TEST(SenderName, TheOtherSideOfAChatHasTheChatsName) {
  EXPECT_EQ(senderInChat({.jid = phone, .name = "Ana"}), "Ana");
  EXPECT_EQ(senderInChat({.jid = phone}), "+55 11 90000-1111");
  EXPECT_EQ(senderInChat({.jid = phone}, {.contacts = {{.fullName = "Ana S", .whatsAppID = phone}}}), "Ana S");
}

TEST(SenderName, TheAddressBookComesFirstInAGroup) {
  EXPECT_EQ(senderInGroup({.fromJID = phone, .pushName = "Pushed", .member = 1},
                          {.members = {{.jid = phone, .contactName = "Member"}},
                           .pushNames = {{.jid = phone, .name = "Profile"}},
                           .contacts = {{.fullName = "Ana Souza", .whatsAppID = phone}}}),
            "Ana Souza");
}

TEST(SenderName, ThenTheMemberThenTheProfileThenTheMessageThenTheNumber) {
  WhatsAppContents app{.members = {{.jid = phone, .contactName = " Member ", .firstName = "First"}},
                       .pushNames = {{.jid = phone, .name = "Profile"}},
                       .contacts = {{.fullName = "0123456789abcdef0123", .whatsAppID = phone}}};
  const Message message{.fromJID = phone, .pushName = " Pushed ", .member = 1};
  EXPECT_EQ(senderInGroup(message, app), "Member");
  app.members[0].contactName = "CgtKb2huIFNtaXRoEgA=";
  EXPECT_EQ(senderInGroup(message, app), "First");
  app.members.clear();
  EXPECT_EQ(senderInGroup(message, app), "Profile");
  app.pushNames.clear();
  EXPECT_EQ(senderInGroup(message, app), "Pushed");
  EXPECT_EQ(senderInGroup({.fromJID = phone, .pushName = "CgtKb2huIFNtaXRoEgA="}), "+55 11 90000-1111");
  EXPECT_EQ(senderInGroup({.fromJID = "1234567@s.whatsapp.net"}), "Unknown") << "too short to be a number";
}

TEST(SenderName, TheMemberTellsTheJidWhenTheMessagesIsMissingOrTheGroups) {
  const WhatsAppContents app{.members = {{.jid = phone}}, .contacts = {{.fullName = "Ana", .whatsAppID = phone}}};
  EXPECT_EQ(senderInGroup({.member = 1}, app), "Ana");
  EXPECT_EQ(senderInGroup({.fromJID = group, .member = 1}, app), "Ana");
  EXPECT_EQ(senderInGroup({.fromJID = " ", .member = 1}, app), "Ana");
  EXPECT_EQ(senderInGroup({.fromJID = "4930001111@s.whatsapp.net", .member = 1}, app), "+4930001111");
  EXPECT_EQ(senderInGroup({.member = 1}, {.members = {{.jid = phone}}}), "+55 11 90000-1111");
}

TEST(SenderName, NobodyIsNamedAfterTheGroup) {
  EXPECT_EQ(senderInGroup({.fromJID = "5511900001111-1400000000@g.us"}), "Unknown");
  EXPECT_EQ(senderInGroup({}), "Unknown");
  EXPECT_EQ(senderInGroup({.member = 99}), "Unknown");
}

TEST(SenderName, ALidInAGroupShowsItsContactAPushNameOrUnknownAndNeverDigits) {
  const Message message{.fromJID = lid};
  EXPECT_EQ(senderInGroup(message), "Unknown");
  EXPECT_EQ(senderInGroup(message, {.lidPairs = pair}), "Unknown");
  EXPECT_EQ(senderInGroup({.fromJID = lid, .pushName = "Pushed"}), "Pushed");
  EXPECT_EQ(senderInGroup(message, {.contacts = {{.fullName = "Ana", .whatsAppID = phone, .lid = lid}}}), "Ana");
  EXPECT_EQ(senderInGroup(message, {.lidPairs = pair, .contacts = {{.fullName = "Ana", .whatsAppID = phone}}}), "Ana");
  EXPECT_EQ(senderInGroup(message, {.pushNames = {{.jid = phone, .name = "Profile"}}, .lidPairs = pair}), "Profile");
}

TEST(SenderName, ALidInItsOwnChatNeverShowsDigits) {
  EXPECT_EQ(senderInChat({.jid = lid, .name = "Ana"}), "Ana");
  EXPECT_EQ(senderInChat({.jid = lid}), "Unknown");
  EXPECT_EQ(senderInChat({.jid = " 77001122334455@LID"}), "Unknown");
  EXPECT_EQ(senderInChat({.jid = lid}, {.contacts = {{.fullName = "Ana", .lid = lid}}}), "Ana");
}

TEST(SenderName, AChatWithoutNameAndJidHasAnUnknownSender) {
  EXPECT_EQ(senderInChat({.jid = "", .name = ""}), "Unknown");
  EXPECT_EQ(senderInChat({.jid = "", .name = "Ana"}), "Ana");
}

TEST(SenderName, AMessageOfALostChatIsNamedByItself) {
  const WhatsAppContents app{.messages = {{.chat = 1, .fromJID = phone}}};
  EXPECT_EQ(senderIn(app), "+55 11 90000-1111");
}

TEST(SenderName, BothRecordsOfOnePersonNameTheSenderAlike) {
  const ChatStorageSnapshot snapshot =
      readApp({.chats = {{.jid = lid, .name = "Aninha"}, {.jid = phone, .name = "Ana"}},
               .messages = {{.chat = 1}, {.chat = 2}},
               .contacts = {{.whatsAppID = phone, .lid = lid}}});
  for (const std::int64_t pk : {1, 2}) {
    EXPECT_EQ(snapshot.senderName(messagesOf(snapshot, pk).at(0), TranscriptStyle::english()), "Ana");
  }
}

}  // namespace
}  // namespace Fixture
