#include "TidewellCore/ChatData/CanonicalPeople.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;

const Person owner{.isOwner = true};
const Person byPhone{.jid = "1@s.whatsapp.net"};
const Person byLID{.jid = "77@lid"};
const Person ben{.jid = "2@s.whatsapp.net"};

MessageDetails unified(MessageDetails details, const std::string& senderJID = "", bool isGroup = true) {
  CanonicalPeople::unify(
      details,
      [](const std::string& jid) {
        if (jid == "88@lid") return owner;
        return jid == byLID.jid ? byPhone : Person{.jid = jid};
      },
      senderJID, isGroup);
  return details;
}

TEST(CanonicalPeople, OfOnePersonsReactionsTheNewestCounts) {
  const MessageDetails details{.reactions = {{.emoji = "a", .person = byPhone, .milliseconds = 1},
                                             {.emoji = "b", .person = ben, .milliseconds = 2},
                                             {.emoji = "c", .person = byLID, .milliseconds = 3},
                                             {.emoji = "d", .person = owner, .milliseconds = 4}}};
  EXPECT_THAT(unified(details).reactions, ElementsAre(Reaction{.emoji = "b", .person = ben, .milliseconds = 2},
                                                      Reaction{.emoji = "c", .person = byPhone, .milliseconds = 3},
                                                      Reaction{.emoji = "d", .person = owner, .milliseconds = 4}));
}

TEST(CanonicalPeople, WhatAChannelOnlyCountsStays) {
  const std::vector<Reaction> totals{{.emoji = "a", .count = 3}, {.emoji = "b", .count = 5}};
  EXPECT_EQ(unified({.reactions = totals}).reactions, totals);
}

TEST(CanonicalPeople, TheOwnerIsOneByEveryJID) {
  const Person byOwnLID{.jid = "88@lid"};
  const MessageDetails details = unified({.quote = Quote{.stanzaID = "A", .sender = byOwnLID},
                                          .reactions = {{.emoji = "a", .person = owner, .milliseconds = 1},
                                                        {.emoji = "b", .person = byOwnLID, .milliseconds = 2}}});
  EXPECT_EQ(details.quote->sender, owner);
  EXPECT_THAT(details.reactions, ElementsAre(Reaction{.emoji = "b", .person = owner, .milliseconds = 2}));
}

TEST(CanonicalPeople, NobodyVotesForAnOptionTwice) {
  const Poll poll{
      .options = {{.words = "Monday", .voters = {byPhone, byLID, ben}}, {.words = "Friday", .voters = {byLID}}}};
  const Poll expected{
      .options = {{.words = "Monday", .voters = {byPhone, ben}}, {.words = "Friday", .voters = {byPhone}}}};
  EXPECT_EQ(unified({.content = poll}).content, MessageContent(expected));
}

TEST(CanonicalPeople, NoticesAndQuotesNamePeopleAsTheyAreKnown) {
  const MessageDetails details = unified(
      {.content = Notice{.actor = byLID, .targets = {byLID, ben}}, .quote = Quote{.stanzaID = "A", .sender = byLID}});
  EXPECT_EQ(details.content, MessageContent(Notice{.actor = byPhone, .targets = {byPhone, ben}}));
  EXPECT_EQ(details.quote->sender, byPhone);
}

TEST(CanonicalPeople, WhoAddsThemselvesJoins) {
  const auto kind = [](NoticeKind stored, const Person& actor, const Person& target) {
    const auto details = unified({.content = Notice{.kind = stored, .actor = actor, .targets = {target}}});
    return std::get<Notice>(details.content).kind;
  };
  EXPECT_EQ(kind(NoticeKind::memberAdded, byLID, byPhone), NoticeKind::memberJoined);
  EXPECT_EQ(kind(NoticeKind::memberRemoved, byPhone, byLID), NoticeKind::memberLeft);
  EXPECT_EQ(kind(NoticeKind::memberAdded, byLID, ben), NoticeKind::memberAdded);
}

TEST(CanonicalPeople, ASenderWhoRemovedAMessageIsNoAdmin) {
  const auto remover = [](const Person& person, const std::string& senderJID, bool isGroup) {
    const MessageDetails details = unified({.content = DeletedMessage{.remover = person}}, senderJID, isGroup);
    return std::get<DeletedMessage>(details.content).remover;
  };
  EXPECT_EQ(remover(byLID, byPhone.jid, true), std::nullopt);
  EXPECT_EQ(remover(ben, byPhone.jid, true), ben);
  EXPECT_EQ(remover(ben, byPhone.jid, false), std::nullopt) << "there is no admin in a chat of two";
  EXPECT_EQ(remover(owner, byPhone.jid, false), owner);
}

}  // namespace
