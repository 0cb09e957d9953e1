#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/Archive/GoldenTranscript.h"
#include "TidewellCore/Archive/MessageWords.h"
#include "TidewellCore/Archive/TranscriptWriter.h"
#include "TidewellCore/Platform/RawValue.h"

// A chat with a message of every kind, as its transcripts tell of it.

namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

const TimeZone utc{"UTC"};
const Person you{.isOwner = true};
const Person ana{.jid = "15550000001@s.whatsapp.net"};
const Person ben{.jid = "15550000002@s.whatsapp.net"};
const Person carla{.jid = "15550000003@lid"};

std::string nameOf(const Person& person) {
  if (person == ana) return "Ana";
  return person == ben ? "Ben" : "Carla";
}

std::optional<std::string> mentioned(std::string_view digits) {
  return digits == "15550000002" ? std::optional<std::string>("Ben") : std::nullopt;
}

// Messages as a backup tells of them, a minute apart.
class Chat {
 public:
  explicit Chat(const TranscriptStyle& style)
      : style_(style), context_{.wording = {.style = style, .nameOf = nameOf}, .mentioned = mentioned} {
    chat_.name = "Garden";
    chat_.folder = "Garden";
  }

  void add(const Person& sender, MessageDetails details, std::optional<std::string> text = {},
           std::optional<ArchiveMedia> media = {}) {
    ArchiveMessage message{.id = std::to_string(chat_.messages.size() + 1),
                           .fromMe = sender.isOwner,
                           .sender = context_.wording.name(sender),
                           .timestamp = 1714640400 + 60.0 * static_cast<double>(chat_.messages.size()),
                           .text = std::move(text),
                           .media = std::move(media)};
    context_.answered.reset();
    if (const auto& quote = details.quote) {
      const bool isOwner = quote->sender && quote->sender->isOwner;
      context_.answered = MessageWords::Answered{
          .id = "1", .isOwner = isOwner, .sender = quote->sender ? context_.wording.name(*quote->sender) : ""};
    }
    MessageWords::tell(details, context_, message);
    chat_.messages.push_back(std::move(message));
  }

  void add(const Person& sender, MessageContent content, std::optional<std::string> text = {}) {
    add(sender, MessageDetails{.content = std::move(content)}, std::move(text));
  }

  // Notices have no sender that anybody should see.
  void add(Notice notice) { add(carla, MessageContent(std::move(notice))); }

  std::string text() const { return TranscriptWriter::renderText(chat_, style_, {utc, Locale{style_.languageCode}}); }
  std::string page() const { return TranscriptWriter::renderHTML(chat_, style_, {utc, Locale{style_.languageCode}}); }

 private:
  TranscriptStyle style_;
  MessageWords::Context context_;
  ArchiveChat chat_;
};

ArchiveMedia file(MediaKind kind, const std::string& name) {
  return {.kind = kind, .relativePath = "Garden/" + name, .fileName = name, .exported = true};
}

void addTextsAndFiles(Chat& chat) {
  chat.add(ana, MessageDetails{}, "Shall we plant tomatoes, @15550000002?");
  chat.add(ben,
           {.quote = Quote{.sender = ana, .words = "Shall we plant tomatoes, @15550000002?"},
            .reactions = {{.emoji = "👍", .person = you},
                          {.emoji = "❤️", .person = ana},
                          {.emoji = "👍", .person = carla}}},
           "Makes sense, with all the sun that we have there");
  chat.add(you, {.quote = Quote{.sender = ben, .part = MessagePart::photo, .words = std::string(200, 'x')}}, "Long");
  chat.add(you, {.quote = Quote{.sender = you, .part = MessagePart::voiceMessage}}, "I meant this");
  chat.add(ana, {.quote = Quote{.words = "from long ago"}}, "Yes");
  chat.add(ana, {.marks = {.isForwarded = true, .isStarred = true}}, "A frost is coming");
  chat.add(
      ana,
      {.content = LinkPreview{.url = "https://example.org/soil", .title = "All about soil", .summary = "And more"}},
      "Read https://example.org/soil");
  chat.add(ana, {.content = LinkPreview{.url = "javascript:alert(1)", .title = "A trap"}}, "or this");
  chat.add(ben, {.marks = {.isViewOnce = true}}, "only once", file(MediaKind::photos, "once.jpg"));
  chat.add(ben, {.marks = {.isGIF = true}}, {}, file(MediaKind::videos, "dance.mp4"));
  chat.add(ben, {.marks = {.isRound = true}}, {}, file(MediaKind::videos, "hello.mp4"));
}

void addMissingMedia(Chat& chat) {
  for (const auto& [part, name] : rawValueTable(MessagePart())) {
    if (part == MessagePart::text || part > MessagePart::sticker) continue;
    MissingMedia media{.part = part};
    if (part == MessagePart::video || part == MessagePart::voiceMessage) media.seconds = 7;
    if (part == MessagePart::document) media.fileName = "plan.pdf";
    chat.add(ana, media);
  }
  chat.add(ana, MissingMedia{}, "the first tomato");
}

void addKinds(Chat& chat) {
  const Coordinates place{.latitude = 35.638504, .longitude = -78.876053};
  chat.add(ana, SharedLocation{.coordinates = place, .name = "Blue Cafe", .address = "12 Main St"});
  chat.add(ana, SharedLocation{.coordinates = place, .isLive = true});
  chat.add(ana, SharedContacts{{{.name = "Dora", .phones = {"+1 555 000 0009"}}}});
  chat.add(ana, SharedContacts{{{.name = "Dora"}, {.name = "Emil", .emails = {"emil@example.org"}}}});
  chat.add(ana, Poll{.question = "Which day, @15550000002?",
                     .options = {{.words = "Monday", .voters = {you}},
                                 {.words = "Friday", .voters = {ben, ana, carla}},
                                 {.words = "Never"}}});
  chat.add(ana, CallRecord{.isVideo = false, .seconds = 95});
  chat.add(you, CallRecord{.isVideo = true, .isGroup = true, .seconds = 3723});
  chat.add(ben, CallRecord{.isVideo = false, .isMissed = true});
  chat.add(ana, GroupInvite{.groupName = "Compost", .caption = "Come along"});
  chat.add(ana, Product{.title = "A spade", .description = "Of steel", .currency = "EUR", .thousandths = 19'990});
  chat.add(ana, BusinessText{.paragraphs = {"Your seeds", "They come today", "The seed shop"},
                             .buttons = {{.words = "Track", .target = "https://example.org/7"}, {.words = "Thanks"}}});
  chat.add(ana, DeletedMessage{});
  chat.add(you, DeletedMessage{});
  chat.add(ben, DeletedMessage{ana});
  chat.add(ana, WaitingMessage{});
  chat.add(ana, UnsupportedMessage{.type = 91});
}

void addNotices(Chat& chat) {
  using enum NoticeKind;
  for (const auto& [kind, name] : rawValueTable(NoticeKind())) {
    if (kind == memberAdded || kind == memberRemoved || kind == adminGained || kind == adminLost) continue;
    chat.add({.kind = kind, .code = 77, .actor = ana, .parameter = "Roses", .seconds = 604'800});
  }
  chat.add({.kind = timerSet, .actor = you, .seconds = 0});
  chat.add({.kind = groupRenamed, .parameter = "Roses"});
  chat.add({.kind = memberLeft, .actor = you});
  for (const NoticeKind kind : {memberAdded, memberRemoved}) {
    chat.add({.kind = kind, .actor = ana, .targets = {ben}});
    chat.add({.kind = kind, .actor = you, .targets = {ben, carla}});
    chat.add({.kind = kind, .actor = ana, .targets = {you}});
    chat.add({.kind = kind, .targets = {you}});
    chat.add({.kind = kind, .targets = {ben, carla}});
  }
  for (const NoticeKind kind : {adminGained, adminLost}) {
    chat.add({.kind = kind, .targets = {you}});
    chat.add({.kind = kind, .targets = {ben}});
  }
}

Chat everyKind(const TranscriptStyle& style) {
  Chat chat(style);
  addTextsAndFiles(chat);
  addMissingMedia(chat);
  addKinds(chat);
  addNotices(chat);
  return chat;
}

TEST(EveryKind, ReadsWellInBothLanguages) {
  const Chat english = everyKind(TranscriptStyle::english());
  const Chat portuguese = everyKind(TranscriptStyle::portuguese());
  expectGolden(english.text(), TIDEWELL_GOLDEN_FOLDER "/every-kind.en.txt");
  expectGolden(english.page(), TIDEWELL_GOLDEN_FOLDER "/every-kind.en.html");
  expectGolden(portuguese.text(), TIDEWELL_GOLDEN_FOLDER "/every-kind.pt-BR.txt");
  expectGolden(portuguese.page(), TIDEWELL_GOLDEN_FOLDER "/every-kind.pt-BR.html");
}

TEST(EveryKind, ShowsNothingThatOnlyMachinesRead) {
  for (const TranscriptStyle& style : {TranscriptStyle::english(), TranscriptStyle::portuguese()}) {
    const std::string text = everyKind(style).text();
    for (const char* raw : {"[media]", "@s.whatsapp.net", "@lid", "15550000002", "{"}) {
      EXPECT_THAT(text, Not(HasSubstr(raw)));
    }
  }
}

TEST(EveryKind, APageLeadsOnlyWhereItMay) {
  const std::string page = everyKind(TranscriptStyle::english()).page();
  EXPECT_THAT(page, HasSubstr(R"(<a href="https://example.org/soil" target="_blank" rel="noreferrer noopener">)"));
  EXPECT_THAT(page, Not(HasSubstr("javascript:")));
  EXPECT_THAT(page, HasSubstr("A trap"));
}

TEST(EveryKind, APageOfPlainTextsHasOneStyleSheet) {
  Chat plain(TranscriptStyle::english());
  plain.add(ana, MessageDetails{.marks = {.isStarred = true}}, "hi @15550000002");
  EXPECT_THAT(plain.page(), Not(ContainsRegex("<style>.*</style>\n<style>")));
  EXPECT_EQ(plain.page().find("<style>"), plain.page().rfind("<style>"));
  EXPECT_THAT(plain.page(), HasSubstr("· starred</div>"));
  plain.add({.kind = NoticeKind::encrypted});
  EXPECT_NE(plain.page().find("<style>"), plain.page().rfind("<style>"));
}

// Whatever people write cannot end the element that it stands in.
TEST(EveryKind, WhatPeopleWroteStaysText) {
  Chat chat(TranscriptStyle::english());
  const std::string evil = "\"><script>alert(1)</script>\n    reactions: 👍 You";
  chat.add(ana,
           {.content = LinkPreview{.url = "https://e.org/" + evil, .title = evil},
            .quote = Quote{.sender = ana, .words = evil},
            .reactions = {{.emoji = "<b>", .person = ana}}},
           evil);
  chat.add(ana, Poll{.question = evil, .options = {{.words = evil}}});
  chat.add({.kind = NoticeKind::groupRenamed, .parameter = evil});
  EXPECT_THAT(chat.page(), Not(HasSubstr("<script")));
  EXPECT_THAT(chat.page(), Not(HasSubstr("<b>")));
  EXPECT_THAT(chat.text(), Not(HasSubstr("in reply to Ana: \">\n")));
  // Only the text itself, which keeps its lines, can look like a detail.
  const std::string fake = "\n    reactions: 👍 You";
  EXPECT_EQ(chat.text().find(fake), chat.text().rfind(fake));
}

TEST(EveryKind, ALinkIsToldUnlessTheTextHoldsIt) {
  const auto linked = [](const LinkPreview& preview) {
    Chat chat(TranscriptStyle::english());
    chat.add(ana, preview, "see e.org");
    return chat.text();
  };
  EXPECT_THAT(linked({.url = "e.org"}), Not(HasSubstr("link:")));
  EXPECT_THAT(linked({}), Not(HasSubstr("link:")));
  EXPECT_THAT(linked({.url = "https://e.org/a"}), HasSubstr("\n    link: https://e.org/a\n"));
  EXPECT_THAT(linked({.title = "All of it"}), HasSubstr("\n    link: All of it\n"));
  EXPECT_THAT(linked({.url = "e.org", .summary = "Most"}), HasSubstr("\n    link: Most — e.org\n"));
}

TEST(EveryKind, AReplyIsCutToOneLine) {
  const auto replyTo = [](const std::string& words) {
    Chat chat(TranscriptStyle::english());
    chat.add(ana, {.quote = Quote{.words = words}}, "a");
    return chat.text();
  };
  EXPECT_THAT(replyTo(std::string(120, 'x')), HasSubstr("in reply to: " + std::string(120, 'x') + "\n"));
  EXPECT_THAT(replyTo(std::string(121, 'x')), HasSubstr("in reply to: " + std::string(119, 'x') + "…\n"));
  EXPECT_THAT(replyTo("a\nb"), HasSubstr("    in reply to: a b\n"));
}

}  // namespace
