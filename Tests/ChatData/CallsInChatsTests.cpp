#include "TidewellCore/ChatData/CallsInChats.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TidewellCore/ChatData/ChatStorageSnapshot.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* ana = "15550000002@s.whatsapp.net";
constexpr const char* anaLID = "77001122334455@lid";
constexpr const char* group = "15550000001-1500000000@g.us";

Date at(double seconds) { return dateFromUnixTime(seconds); }

// Ana's chat and a group, the first without a message.
ChatTables tables() {
  ChatTables made;
  made.chats.emplace(1, ChatRecord{.pk = 1, .jid = ana, .name = "Ana"});
  made.chats.emplace(2, ChatRecord{.pk = 2, .jid = group, .name = "Us"});
  return made;
}

PastCall incoming(std::int64_t pk, double seconds, const std::string& from = ana) {
  return {.pk = pk,
          .date = at(seconds),
          .isIncoming = true,
          .call = {.isVideo = true, .seconds = 95},
          .participantJIDs = {from}};
}

// A message of Ana's that tells of a call.
void tell(ChatTables& made, std::int64_t pk, double seconds, const char* stanzaID = "") {
  made.messages.push_back({.pk = pk, .chatPK = 1, .date = at(seconds), .stanzaID = stanzaID});
  made.details.emplace_back(pk, MessageDetails{.content = CallRecord{.seconds = 95}});
}

struct Shown {
  std::vector<std::int64_t> keys;
  std::vector<MessageDetails> details;
};

Shown shownIn(ChatTables made, const char* jid, std::vector<PastCall> calls) {
  CallsInChats::add(std::move(calls), made);
  const ChatStorageSnapshot snapshot(std::move(made));
  Shown shown;
  for (const MessageRecord& message : snapshot.messages(snapshot.canonicalChatJID(jid))) {
    shown.keys.push_back(message.pk);
    if (const MessageDetails* details = snapshot.details(message)) shown.details.push_back(*details);
  }
  return shown;
}

TEST(CallsInChats, WhoeverSpokeWasNotMissed) {
  ChatTables made = tables();
  made.messages.push_back({.pk = 7, .chatPK = 1, .date = at(100)});
  made.details.emplace_back(7, MessageDetails{.content = CallRecord{.isMissed = true}});
  EXPECT_THAT(shownIn(std::move(made), ana, {incoming(1, 100)}).details,
              ElementsAre(MessageDetails{.content = CallRecord{.isVideo = true, .seconds = 95}}));
}

TEST(CallsInChats, KeysThatAreTakenAreNotTakenAgain) {
  ChatTables made = tables();
  made.chats.emplace(INT64_MIN, ChatRecord{.pk = INT64_MIN});
  made.messages.push_back({.pk = -2, .chatPK = -1, .date = at(1)});
  const ChatStorageSnapshot snapshot = [&] {
    CallsInChats::add({incoming(1, 100, "15550000009@s.whatsapp.net")}, made);
    return ChatStorageSnapshot(std::move(made));
  }();
  ASSERT_EQ(snapshot.messages().size(), 2);
  EXPECT_EQ(snapshot.messages(snapshot.canonicalChatJID("15550000009@s.whatsapp.net")).size(), 1);
}

TEST(CallsInChats, TheOwnerIsNobodyToTalkWith) {
  ChatTables made = tables();
  made.ownJIDs = {"15550000001@s.whatsapp.net"};
  PastCall call = incoming(1, 100);
  call.participantJIDs = {"15550000001@s.whatsapp.net", ana};
  EXPECT_THAT(shownIn(std::move(made), ana, {call}).details,
              ElementsAre(MessageDetails{.content = CallRecord{.isVideo = true, .seconds = 95}}));
}

TEST(CallsInChats, SeveralPeopleAreAGroup) {
  PastCall call = incoming(1, 100);
  call.participantJIDs = {ana, "15550000009@s.whatsapp.net"};
  EXPECT_TRUE(std::get<CallRecord>(shownIn(tables(), ana, {call}).details.at(0).content).isGroup);
}

TEST(CallsInChats, OnePersonUnderTwoJIDsIsNoGroup) {
  ChatTables made = tables();
  made.directory.link(anaLID, ana);
  PastCall call = incoming(1, 100);
  call.participantJIDs = {ana, anaLID};
  EXPECT_FALSE(std::get<CallRecord>(shownIn(std::move(made), ana, {call}).details.at(0).content).isGroup);
}

TEST(CallsInChats, ACallByItsIDComesBeforeOneByTime) {
  ChatTables made = tables();
  tell(made, 7, 140, "B");
  PastCall deleted = incoming(1, 100);
  deleted.id = "A";
  PastCall told = incoming(2, 140);
  told.id = "B";
  EXPECT_THAT(shownIn(std::move(made), ana, {deleted, told}).keys, ElementsAre(-2, 7));
}

TEST(CallsInChats, ACallThatNoMessageTellsOfStandsInItsChat) {
  const Shown shown = shownIn(tables(), ana, {incoming(4, 100)});
  EXPECT_THAT(shown.keys, ElementsAre(-5));
  EXPECT_THAT(shown.details, ElementsAre(MessageDetails{.content = CallRecord{.isVideo = true, .seconds = 95}}));
}

TEST(CallsInChats, ACallThatAMessageTellsOfIsToldOnceAndCompleted) {
  ChatTables made = tables();
  tell(made, 7, 130);
  const Shown shown = shownIn(std::move(made), ana, {incoming(4, 100)});
  EXPECT_THAT(shown.keys, ElementsAre(7));
  EXPECT_THAT(shown.details, ElementsAre(MessageDetails{.content = CallRecord{.isVideo = true, .seconds = 95}}));
}

TEST(CallsInChats, TheListSaysOfAMessageWhetherItWasMissedAndOfAGroup) {
  const auto completed = [](const CallRecord& told, const CallRecord& listed, std::vector<std::string> people = {ana}) {
    ChatTables made = tables();
    made.messages.push_back({.pk = 7, .chatPK = 1, .date = at(100)});
    made.details.emplace_back(7, MessageDetails{.content = told});
    PastCall call = incoming(4, 100);
    call.call = listed;
    call.participantJIDs = std::move(people);
    return std::get<CallRecord>(shownIn(std::move(made), ana, {call}).details.at(0).content);
  };
  const CallRecord missed{.isVideo = false, .isMissed = true};
  EXPECT_EQ(completed(CallRecord{}, missed), missed);
  EXPECT_EQ(completed(missed, CallRecord{.seconds = 95}), (CallRecord{.isVideo = false, .seconds = 95}));
  EXPECT_TRUE(completed(CallRecord{}, CallRecord{.isGroup = true}, {ana, "15550000009@s.whatsapp.net"}).isGroup);
}

TEST(CallsInChats, OneMessageStandsForOneCall) {
  ChatTables made = tables();
  tell(made, 7, 100);
  EXPECT_THAT(shownIn(std::move(made), ana, {incoming(4, 100), incoming(5, 130)}).keys, ElementsAre(7, -6));
}

TEST(CallsInChats, APersonIsOneUnderBothIdentities) {
  ChatTables made = tables();
  made.directory.link(anaLID, ana);
  tell(made, 7, 100);
  EXPECT_THAT(shownIn(std::move(made), ana, {incoming(4, 100, anaLID), incoming(5, 9000, anaLID)}).keys,
              ElementsAre(7, -6));
}

TEST(CallsInChats, AGroupCallStandsInItsGroup) {
  PastCall call = incoming(4, 100);
  call.groupJID = group;
  EXPECT_THAT(shownIn(tables(), group, {call}).keys, ElementsAre(-5));
  EXPECT_THAT(shownIn(tables(), ana, {call}).keys, IsEmpty());
}

TEST(CallsInChats, SomebodyWhoOnlyCalledGetsAChat) {
  constexpr const char* ben = "15550000003@s.whatsapp.net";
  EXPECT_THAT(shownIn(tables(), ben, {incoming(4, 100, ben), incoming(5, 200, ben)}).keys, ElementsAre(-5, -6));
}

TEST(CallsInChats, ACallOfNobodyKnownIsLeftOut) {
  ChatTables made = tables();
  CallsInChats::add({{.pk = 1, .date = at(1)}, {.pk = -3, .participantJIDs = {ana}}}, made);
  EXPECT_THAT(made.messages, IsEmpty());
  EXPECT_EQ(made.chats.size(), 2U);
}

}  // namespace
