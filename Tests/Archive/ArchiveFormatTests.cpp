#include "TidewellCore/Archive/ArchiveFormat.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TidewellCore/Archive/ArchiveScripts.h"
#include "TidewellCore/Archive/ChatArchiveJSON.h"

namespace {

using ArchiveFormat::changed;
using testing::ElementsAre;
using testing::IsEmpty;

Json::Object object(std::string_view json) { return *Json::parse(json)->as<Json::Object>(); }

std::optional<std::string> text(const std::optional<Json::Object>& json) {
  return json ? std::optional(ChatArchiveJSON::stringify(*json)) : std::nullopt;
}

const ArchiveMessage full{
    .id = "7",
    .fromMe = true,
    .sender = "Ana",
    .timestamp = 12,
    .text = "a\nb",
    .media = ArchiveMedia{
        .kind = MediaKind::stickers, .relativePath = "Ana/a.webp", .fileName = "a.webp", .exported = true}};

ArchiveMessage detailed(ArchiveDetails details) { return {.id = "7", .text = "a", .details = std::move(details)}; }

const ArchiveMessage everything = detailed(
    {.kind = ArchiveKind::place,
     .info = {{"lat", 1.5}, {"live", true}, {"name", "Blue Cafe"}},
     .marks = {.isForwarded = true, .isStarred = true, .isViewOnce = true, .isGIF = true, .isRound = true},
     .mentions = {{"15550000002", "Ben"}},
     .quote = ArchiveQuote{.isOwner = true, .name = "You", .part = MessagePart::photo, .words = "sea", .toID = "5"},
     .reactions = {{.emoji = "👍", .names = {"You", "Ana"}, .count = 2}, {.emoji = "❤️", .names = {}, .count = 9}}});

TEST(ArchiveFormat, ReadsTheMessagesThatItWrites) {
  for (const ArchiveMessage& message :
       {full, ArchiveMessage{}, ArchiveMessage{.id = "1", .media = ArchiveMedia{.kind = MediaKind::videos}}, everything,
        detailed({.kind = ArchiveKind::waiting}), detailed({.quote = ArchiveQuote{.name = "Ana"}})}) {
    EXPECT_EQ(ArchiveFormat::message(ArchiveFormat::json(message)), message);
  }
}

TEST(ArchiveFormat, WritesDetailsBetweenTheOtherMembers) {
  EXPECT_EQ(text(ArchiveFormat::json(everything)),
            R"({"id":"7","info":{"lat":1.5,"live":true,"name":"Blue Cafe"},"kind":"place",)"
            R"("marks":["forwarded","gif","round","starred","viewOnce"],"me":false,"mentions":{"15550000002":"Ben"},)"
            R"("quote":{"me":true,"name":"You","part":"photo","thing":"sea","to":"5"},)"
            R"("reactions":[{"emoji":"👍","names":["You","Ana"]},{"count":9,"emoji":"❤️","names":[]}],)"
            R"("sender":"","text":"a"})");
}

TEST(ArchiveFormat, APlainMessageHasNoMembersOfDetails) {
  EXPECT_EQ(text(ArchiveFormat::json({.id = "7", .fromMe = true, .sender = "Ana", .timestamp = 12, .text = "a"})),
            R"({"id":"7","me":true,"sender":"Ana","text":"a","ts":12})");
  EXPECT_EQ(text(ArchiveFormat::json(detailed({.kind = ArchiveKind::waiting}))),
            R"({"id":"7","kind":"waiting","me":false,"sender":"","text":"a"})");
  EXPECT_FALSE(ArchiveFormat::message(object(R"({"id":"7","text":"a","marks":[],"kind":"hologram"})")).details);
}

TEST(ArchiveFormat, DetailsThatAreOfAnotherKindAreAbsent) {
  for (const char* json :
       {R"({"info":1,"kind":2,"marks":{},"mentions":[],"quote":"a","reactions":{}})",
        R"({"info":[],"kind":null,"marks":[1,null,"holy"],"mentions":{"1":2},"quote":[],"reactions":[1,"a"]})"}) {
    EXPECT_EQ(ArchiveFormat::message(object(json)), ArchiveMessage()) << json;
  }
}

TEST(ArchiveFormat, AChangeKeepsDetailsThatItDoesNotKnow) {
  const std::string rest =
      R"("info":{"floors":3},"kind":"hologram","marks":["holy"],"quote":{"depth":2,"me":1,"thing":"a"},)"
      R"("reactions":[{"skin":1}],)";
  const auto move = [](ArchiveMessage& message) { message.sender = "Ben"; };
  EXPECT_EQ(text(changed(object("{" + rest + R"("sender":"Ana"})"), move)), "{" + rest + R"("sender":"Ben"})");
}

TEST(ArchiveFormat, TellsWhatBecameOfAMessageAmongItsMarks) {
  const ArchiveMessage plain{.id = "7", .text = "a", .isDeletedLater = true, .isGone = true};
  EXPECT_EQ(text(ArchiveFormat::json(plain)),
            R"({"id":"7","marks":["deletedLater","gone"],"me":false,"sender":"","text":"a"})");
  EXPECT_EQ(ArchiveFormat::message(ArchiveFormat::json(plain)), plain);
  EXPECT_FALSE(ArchiveFormat::message(ArchiveFormat::json(plain)).details);
  for (const bool isDeleted : {false, true}) {
    ArchiveMessage one = everything;
    one.isDeletedLater = isDeleted;
    one.isGone = !isDeleted;
    EXPECT_EQ(ArchiveFormat::message(ArchiveFormat::json(one)), one);
  }
  ArchiveMessage marked = everything;
  marked.isDeletedLater = marked.isGone = true;
  const std::vector<std::string> all{"deletedLater", "forwarded", "gif", "gone", "round", "starred", "viewOnce"};
  EXPECT_EQ(ArchiveFormat::json(marked).at("marks"), Json(Json::Array(all.begin(), all.end())));
}

TEST(ArchiveFormat, AChangeMaySetAndTakeBackWhatBecameOfAMessage) {
  const auto lose = [](ArchiveMessage& message) { message.isGone = true; };
  const auto find = [](ArchiveMessage& message) { message.isGone = false; };
  const Json::Object there = object(R"({"id":"7","later":1,"marks":["starred"],"text":"a"})");
  const Json::Object gone = object(R"({"id":"7","later":1,"marks":["gone","starred"],"text":"a"})");
  EXPECT_EQ(changed(there, lose), gone);
  EXPECT_EQ(changed(gone, find), there);
  EXPECT_EQ(changed(gone, lose), std::nullopt);
  EXPECT_EQ(text(changed(object(R"({"id":"7","marks":["gone"]})"), find)), R"({"id":"7"})");
}

TEST(ArchiveFormat, AChatThatIsGoneSaysSoInTheList) {
  EXPECT_EQ(ArchiveFormat::json(ArchiveChatSummary{.isGone = true}).at("gone"), Json(true));
  EXPECT_FALSE(ArchiveFormat::json(ArchiveChatSummary{}).contains("gone"));
  EXPECT_FALSE(ArchiveFormat::chatSummary(object(R"({"gone":"yes"})")).isGone);
  const auto find = [](ArchiveChatSummary& chat) { chat.isGone = false; };
  EXPECT_EQ(text(changed(object(R"({"gone":true,"id":"1"})"), find)), R"({"id":"1"})");
}

TEST(ArchiveFormat, ReadsTheChatsAndBlocksThatItWrites) {
  const ArchiveChatSummary chat{.id = "1",
                                .name = "Ana",
                                .jid = "1@s.whatsapp.net",
                                .folder = "Ana",
                                .dataFile = "chat-1.js",
                                .isGroup = true,
                                .preview = "hi",
                                .messageCount = 3,
                                .lastTimestamp = -5,
                                .avatarRelativePath = "avatars/1.jpeg",
                                .isGone = true};
  const ArchiveBlock block{.file = "block-1.js", .parts = {{"1", 0, 3}, {"2", 4, 1}}};
  for (const ArchiveChatSummary& each : {chat, ArchiveChatSummary{}}) {
    EXPECT_EQ(ArchiveFormat::chatSummary(ArchiveFormat::json(each)), each);
  }
  for (const ArchiveBlock& each : {block, ArchiveBlock{}}) {
    EXPECT_EQ(ArchiveFormat::block(ArchiveFormat::json(each)), each);
  }
  const std::string list = ArchiveScripts::list({.title = "A", .timeZone = "UTC", .blocks = {block}}, {chat});
  EXPECT_THAT(ArchiveScripts::chats(list), ElementsAre(chat));
}

TEST(ArchiveFormat, WhatIsOfAnotherKindHasItsDefault) {
  EXPECT_EQ(ArchiveFormat::message(object(R"({"id":1,"me":"x","sender":null,"ts":"9","text":[],"media":[]})")),
            ArchiveMessage());
  EXPECT_EQ(ArchiveFormat::message(object(R"({"media":{"kind":"holograms","exported":1,"path":{},"name":2}})")).media,
            ArchiveMedia());
  EXPECT_EQ(ArchiveFormat::message(object(R"({"ts":1.5})")).timestamp, 1.5);
  EXPECT_EQ(ArchiveFormat::chatSummary(object(R"({"id":{},"count":1.5,"lastTs":"1","avatar":7})")),
            ArchiveChatSummary());
  EXPECT_THAT(ArchiveFormat::block(object(R"({"chats":[[],["a",1],["a",1,"2"],7,["a",1,2,3]]})")).parts, IsEmpty());
}

TEST(ArchiveFormat, AChangeLeavesAllThatItDoesNotTouch) {
  const Json::Object json = object(
      R"({"id":5,"later":{"text":"x"},"media":{"kind":"holograms","path":"A/a","width":3},"text":"a","ts":1.5})");
  const auto move = [](ArchiveMessage& message) { message.media->relativePath = "B/b"; };
  EXPECT_EQ(text(changed(json, move)),
            R"({"id":5,"later":{"text":"x"},"media":{"kind":"holograms","path":"B/b","width":3},"text":"a","ts":1.5})");
  const auto rename = [](ArchiveChatSummary& chat) { chat.folder = "B"; };
  EXPECT_EQ(text(changed(object(R"({"count":"many","new":[1.5,null]})"), rename)),
            R"({"count":"many","folder":"B","new":[1.5,null]})");
}

TEST(ArchiveFormat, AChangeMayTakeMembersAwayAndAddThem) {
  const auto silence = [](ArchiveMessage& message) {
    message.text.reset(), message.media.reset(), message.timestamp = 9;
  };
  EXPECT_EQ(text(changed(object(R"({"id":"1","media":{"width":3},"more":0,"text":"a"})"), silence)),
            R"({"id":"1","more":0,"ts":9})");
  const auto illustrate = [](ArchiveMessage& message) { message.media = ArchiveMedia{.kind = MediaKind::photos}; };
  EXPECT_EQ(text(changed(object(R"({"media":"?","more":0})"), illustrate)),
            R"({"media":{"exported":false,"kind":"photos"},"more":0})");
}

TEST(ArchiveFormat, ANothingOfAChangeChangesNothing) {
  EXPECT_EQ(changed(object(R"({"text":"a"})"), [](ArchiveMessage& message) { message.text = "a"; }), std::nullopt);
  EXPECT_EQ(changed({}, [](ArchiveBlock&) {}), std::nullopt);
}

TEST(ArchiveFormat, TellsMessagesThatNameNoFileWithoutReadingThem) {
  EXPECT_TRUE(ArchiveFormat::mayNameFile(text(ArchiveFormat::json(full)).value()));
  EXPECT_FALSE(ArchiveFormat::mayNameFile(text(ArchiveFormat::json(ArchiveMessage{.text = "the \"path\""})).value()));
}

TEST(ArchiveScripts, ReadsTheLinesOfABlock) {
  EXPECT_EQ(ArchiveScripts::lines(ArchiveScripts::block("a\nb")), "a\nb");
  EXPECT_THAT(ArchiveScripts::lines("window.__BLOCK_PAYLOAD = 1;\n"), IsEmpty());
  EXPECT_THAT(ArchiveScripts::lines(""), IsEmpty());
}

TEST(ArchiveScripts, AChangeKeepsTheBytesOfWhatItDoesNotTouch) {
  const auto move = [](ArchiveMessage& message) {
    if (message.media) message.media->relativePath = "B";
  };
  const std::string before = R"(window.__CHAT_PAYLOAD = {"messages":[{"n":1e400,"n":1.50}, )";
  const std::string after = R"( ,{"path":"x","text" : "a"}],"v":1.0};// end)";
  const std::string message = R"({"media":{"path":"A"}})";
  EXPECT_EQ(ArchiveScripts::changedChat(before + message + after, move), before + R"({"media":{"path":"B"}})" + after);
  EXPECT_EQ(ArchiveScripts::changedChat(before + "{\"path\":1e400}" + after, move), std::nullopt);
}

}  // namespace
