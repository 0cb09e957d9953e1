#include "TidewellCore/ChatData/GroupEvents.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <map>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::array<std::string, 1> own = {"15550000001@s.whatsapp.net"};
constexpr const char* anaJID = "15550000002@s.whatsapp.net";
constexpr const char* benJID = "15550000003@s.whatsapp.net";

const Person owner{.isOwner = true};
const Person ana{.jid = anaJID};
const Person ben{.jid = benJID};

// An event of Ana's.
Notice event(std::int64_t code, std::optional<std::string_view> text = std::nullopt) {
  return GroupEvents::read({.code = code, .text = text, .memberJID = anaJID, .ownJIDs = own});
}

Notice ownEvent(std::int64_t code, std::optional<std::string_view> text = std::nullopt) {
  return GroupEvents::read({.code = code, .text = text, .isFromMe = true, .ownJIDs = own});
}

Notice nobodysEvent(std::int64_t code, std::optional<std::string_view> text = std::nullopt) {
  return GroupEvents::read({.code = code, .text = text, .ownJIDs = own});
}

Notice unknown(std::int64_t code) { return {.kind = NoticeKind::unknownGroupEvent, .code = code}; }

TEST(GroupEvents, EveryKnownCodeHasItsKind) {
  using enum NoticeKind;
  const std::map<std::int64_t, NoticeKind> kinds = {{4, groupPictureChanged},
                                                    {5, groupPictureRemoved},
                                                    {9, memberChangedNumber},
                                                    {13, communityUnavailable},
                                                    {15, memberJoinedByLink},
                                                    {17, groupDescriptionChanged},
                                                    {18, infoEditedByAdmins},
                                                    {19, infoEditedByAll},
                                                    {20, messagesSentByAdmins},
                                                    {21, messagesSentByAll},
                                                    {22, groupDescriptionRemoved},
                                                    {23, memberJoinedByInvitation},
                                                    {30, memberJoinedFromCommunity},
                                                    {31, communityJoined},
                                                    {33, communityLeft},
                                                    {43, communityForeign},
                                                    {57, communityDescriptionChanged},
                                                    {60, communityWelcome},
                                                    {61, communityJoined}};
  for (const auto& [code, kind] : kinds) {
    EXPECT_EQ(event(code, anaJID), (Notice{.kind = kind, .code = code, .actor = ana})) << code;
    EXPECT_EQ(ownEvent(code), (Notice{.kind = kind, .code = code, .actor = owner})) << code;
    EXPECT_EQ(nobodysEvent(code), (Notice{.kind = kind, .code = code})) << code;
  }
}

TEST(GroupEvents, ACodeThatNobodyKnowsIsKept) {
  for (const std::int64_t code : {0, 36, 37, 58, 68, 77, 91, -1}) EXPECT_EQ(event(code, "{}"), unknown(code));
  EXPECT_EQ(event(INT64_MAX, anaJID), unknown(INT64_MAX));
}

TEST(GroupEvents, ANameIsGiven) {
  EXPECT_EQ(event(1, " Garden\n"),
            (Notice{.kind = NoticeKind::groupRenamed, .code = 1, .actor = ana, .parameter = "Garden"}));
  EXPECT_EQ(event(1).parameter, std::nullopt);
  EXPECT_EQ(event(1, anaJID).parameter, std::nullopt) << "a JID is no name";
  EXPECT_EQ(event(1, R"({"a":1)").parameter, std::nullopt) << "nor is JSON";
  EXPECT_EQ(event(1, R"([{"a":1}])").parameter, std::nullopt);
  EXPECT_EQ(event(1, "COah/ZEGIAA=").parameter, std::nullopt) << "nor what only machines read";
  EXPECT_EQ(event(12, "COah/ZEGIAA=").parameter, std::nullopt);
  EXPECT_EQ(event(1, "{braces}").parameter, "{braces}");
  EXPECT_EQ(event(1, std::string(1 << 17, 'a')).parameter, std::nullopt);
}

TEST(GroupEvents, ANewNameMayStandInJson) {
  const Notice renamed{.kind = NoticeKind::groupRenamed, .code = 56, .actor = ana, .parameter = "New"};
  EXPECT_EQ(event(56, R"({"previous_subject":"Old","new_subject":"New"})"), renamed);
  EXPECT_EQ(event(56, R"({"new_subject":"New","author":null})"), renamed);
  EXPECT_EQ(nobodysEvent(56, R"({"new_subject":"New","author":"15550000002@s.whatsapp.net"})"), renamed);
  for (const char* text : {"", "[]", "New", R"({"new_subject":7})", R"({"new_subject":"New")", R"("New")"}) {
    EXPECT_EQ(event(56, text), (Notice{.kind = NoticeKind::groupRenamed, .code = 56, .actor = ana})) << text;
  }
}

TEST(GroupEvents, SomebodyCreatedTheGroup) {
  const auto created = [](std::optional<Person> actor, std::optional<std::string> name) {
    return Notice{.kind = NoticeKind::groupCreated, .code = 12, .actor = actor, .parameter = name};
  };
  EXPECT_EQ(event(12, R"({"subject":"Garden","author":"15550000003@s.whatsapp.net"})"), created(ben, "Garden"));
  EXPECT_EQ(event(12, R"({"subject":"Garden","author":null})"), created(ana, "Garden"));
  EXPECT_EQ(event(12, R"({"subject":null,"author":"x"})"), created(ana, std::nullopt));
  EXPECT_EQ(event(12, R"({"subject":"Gar)"), created(ana, std::nullopt));
  EXPECT_EQ(event(12, "Garden"), created(ana, "Garden"));
  EXPECT_EQ(ownEvent(12, "Garden"), created(owner, "Garden"));
  EXPECT_EQ(nobodysEvent(12), created(std::nullopt, std::nullopt));
  EXPECT_EQ(GroupEvents::read({.code = 12, .creatorJID = own[0], .ownJIDs = own}), created(owner, std::nullopt));
  EXPECT_EQ(GroupEvents::read({.code = 12, .memberJID = anaJID, .creatorJID = benJID}), created(ana, std::nullopt));
  EXPECT_EQ(event(12, std::string(60'000, '[')).kind, NoticeKind::groupCreated) << "deep, and no JSON";
}

TEST(GroupEvents, SomebodyIsAddedOrJoins) {
  const auto added = [](std::optional<Person> actor, const Person& target) {
    return Notice{.kind = NoticeKind::memberAdded, .code = 2, .actor = actor, .targets = {target}};
  };
  EXPECT_EQ(event(2, benJID), added(ben, ana));
  EXPECT_EQ(event(2, own[0]), added(owner, ana));
  EXPECT_EQ(event(2), added(std::nullopt, ana));
  EXPECT_EQ(event(2, anaJID), (Notice{.kind = NoticeKind::memberJoined, .code = 2, .actor = ana}));
  EXPECT_EQ(nobodysEvent(2), added(std::nullopt, owner)) << "you were added";
  EXPECT_EQ(nobodysEvent(2, benJID), added(ben, owner));
  EXPECT_EQ(nobodysEvent(2, "words"), added(std::nullopt, owner));
  EXPECT_EQ(ownEvent(2), added(std::nullopt, owner));
  EXPECT_EQ(ownEvent(2, benJID), added(owner, ben));
  EXPECT_EQ(GroupEvents::read({.code = 2, .text = benJID, .memberJID = anaJID, .isFromMe = true}), added(owner, ana));
}

TEST(GroupEvents, SomebodyIsRemovedOrLeaves) {
  const auto removed = [](std::optional<Person> actor, const Person& target) {
    return Notice{.kind = NoticeKind::memberRemoved, .code = 7, .actor = actor, .targets = {target}};
  };
  EXPECT_EQ(event(7, benJID), removed(ben, ana));
  EXPECT_EQ(event(7, own[0]), removed(owner, ana));
  EXPECT_EQ(event(7), removed(std::nullopt, ana));
  EXPECT_EQ(event(7, anaJID), removed(std::nullopt, ana)) << "nobody removes himself";
  EXPECT_EQ(ownEvent(7, benJID), removed(owner, ben));
  EXPECT_EQ(nobodysEvent(7, benJID), unknown(7)) << "whom?";
  EXPECT_EQ(event(3), (Notice{.kind = NoticeKind::memberLeft, .code = 3, .actor = ana}));
  EXPECT_EQ(nobodysEvent(3, benJID), (Notice{.kind = NoticeKind::memberLeft, .code = 3, .actor = ben}));
}

TEST(GroupEvents, SeveralAreAddedAtOnce) {
  const auto several = [](const std::string& text) { return nobodysEvent(50, text); };
  EXPECT_EQ(several(std::string(anaJID) + ";" + benJID + "," + own[0]),
            (Notice{.kind = NoticeKind::memberAdded, .code = 50, .actor = ana, .targets = {ben, owner}}));
  EXPECT_EQ(several(";" + std::string(benJID)),
            (Notice{.kind = NoticeKind::memberAdded, .code = 50, .targets = {ben}}));
  EXPECT_EQ(event(50, ";" + std::string(benJID)).actor, ana);
  EXPECT_THAT(several(std::string(anaJID) + ";x,," + benJID + ",a/b@c").targets, ElementsAre(ben));
  for (const std::string& text : {std::string(), std::string(anaJID), std::string(anaJID) + ";", std::string(";;;,,,"),
                                  std::string(50'000, ',')}) {
    EXPECT_EQ(several(text), unknown(50)) << text.substr(0, 40);
  }
  std::string many = std::string(anaJID) + ";";
  for (int i = 0; i < 3'000; ++i) many += std::to_string(i) + "@lid,";
  EXPECT_EQ(several(many).targets.size(), GroupEvents::mostTargets);
  for (int i = 0; i < 100'000; ++i) many += "5@lid,";
  EXPECT_EQ(several(many), unknown(50)) << "longer than any parameter";
}

TEST(GroupEvents, AdminsAreTheOwnerOrAMember) {
  EXPECT_EQ(event(10), (Notice{.kind = NoticeKind::adminGained, .code = 10, .targets = {owner}}));
  EXPECT_EQ(nobodysEvent(11), (Notice{.kind = NoticeKind::adminLost, .code = 11, .targets = {owner}}));
  EXPECT_EQ(event(39), (Notice{.kind = NoticeKind::adminGained, .code = 39, .targets = {ana}}));
  EXPECT_EQ(nobodysEvent(39), unknown(39));
}

TEST(GroupEvents, ATimerIsSetInSeconds) {
  EXPECT_EQ(event(26, "604800"), (Notice{.kind = NoticeKind::timerSet, .code = 26, .actor = ana, .seconds = 604'800}));
  EXPECT_EQ(event(26, "0").seconds, 0);
  for (const char* text : {"", "-1", "9223372036854775808", "9223372036854775807", "7 days", "1e5", "0x10", " 5"}) {
    EXPECT_EQ(event(26, text), unknown(26)) << text;
  }
}

TEST(GroupEvents, ACommunityHasItsName) {
  EXPECT_EQ(nobodysEvent(51, R"({"author":"15550000002@s.whatsapp.net","subject":null,"parent_group_name":"Village"})"),
            (Notice{.kind = NoticeKind::communityLinked, .code = 51, .actor = ana, .parameter = "Village"}));
  EXPECT_EQ(event(51, "{}"), (Notice{.kind = NoticeKind::communityLinked, .code = 51, .actor = ana}));
}

TEST(GroupEvents, RightsAreForAdminsOrForAll) {
  EXPECT_EQ(event(42, "0").kind, NoticeKind::membersAddedByAdmins);
  EXPECT_EQ(event(42, "1").kind, NoticeKind::membersAddedByAll);
  EXPECT_EQ(event(64).kind, NoticeKind::groupsAddedByAdmins);
  EXPECT_EQ(event(64, "1").kind, NoticeKind::groupsAddedByAll);
}

TEST(GroupEvents, WhoIsNobodyIsAbsent) {
  for (const char* jid : {"", "nobody", "../x@y", "<b>@lid"}) {
    EXPECT_EQ(GroupEvents::read({.code = 4, .memberJID = jid, .ownJIDs = own}).actor, std::nullopt) << jid;
  }
  EXPECT_EQ(GroupEvents::read({.code = 4, .memberJID = own[0], .ownJIDs = own}).actor, owner);
}

}  // namespace
