#include "TidewellCore/Archive/TranscriptWriter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/Archive/GoldenTranscript.h"

namespace {

using testing::AllOf;
using testing::ContainsRegex;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const TimeZone utc{"UTC"};
const TimeZone saoPaulo{"America/Sao_Paulo"};
const Locale american{"en_US"};
const Locale brazilian{"pt_BR"};

Date at(const char* time) { return dateFromISO8601(time).value(); }

// A message as these tests tell of it.
struct Line {
  std::optional<Date> date;
  std::string sender;
  bool fromMe = false;
  std::optional<std::string> text;
  std::optional<std::string> mediaFileName;  // of a file in the chat's folder
  MediaKind mediaKind = MediaKind::documents;
};

ArchiveChat chatOf(const std::vector<Line>& lines, const std::string& name = "Ana") {
  ArchiveChat chat{.name = name, .folder = "Folder"};
  for (const Line& line : lines) {
    ArchiveMessage message{.fromMe = line.fromMe, .sender = line.sender, .text = line.text};
    if (line.date) message.timestamp = unixTime(*line.date);
    if (line.mediaFileName) {
      message.media = {.kind = line.mediaKind, .relativePath = "Folder/" + *line.mediaFileName, .exported = true};
    }
    chat.messages.push_back(std::move(message));
  }
  return chat;
}

std::string pageOf(const ArchiveChat& chat, const TimeZone& zone = utc) {
  return TranscriptWriter::renderHTML(chat, TranscriptStyle::english(), {zone, american});
}

std::string textOf(const ArchiveChat& chat) {
  return TranscriptWriter::renderText(chat, TranscriptStyle::english(), {utc, american});
}

std::string html(const std::vector<Line>& lines, const TimeZone& zone = utc) { return pageOf(chatOf(lines), zone); }

std::string text(const std::vector<Line>& lines) { return textOf(chatOf(lines)); }

std::size_t count(const std::string& text, const std::string& part) {
  std::size_t found = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++found;
  return found;
}

// Every sort of line, as the owner of the phone and Ana exchange them around a midnight.
std::vector<Line> conversation(const TranscriptStyle& style) {
  return {
      {.sender = "Ana", .text = "from before there were dates"},
      {.date = at("2024-05-02T01:30:00Z"), .sender = "Ana", .text = "Tea & <cake> \"now\"?\r\nOr later\rOr never\n"},
      {.date = at("2024-05-02T02:59:59Z"),
       .sender = style.youLabel,
       .fromMe = true,
       .text = "a caption",
       .mediaFileName = "100% #1?.jpg",
       .mediaKind = MediaKind::photos},
      {.date = at("2024-05-02T03:00:00Z"),
       .sender = style.youLabel,
       .fromMe = true,
       .mediaFileName = "clip.mp4",
       .mediaKind = MediaKind::videos},
      {.date = at("2024-05-02T17:00:09Z"),
       .sender = "Ana",
       .mediaFileName = "note.opus",
       .mediaKind = MediaKind::voiceNotes},
      {.date = at("2024-05-02T17:00:10Z"),
       .sender = "Ana",
       .mediaFileName = "smile.webp",
       .mediaKind = MediaKind::stickers},
      {.date = at("2024-05-02T17:00:11Z"),
       .sender = style.unknownSenderLabel,
       .mediaFileName = "plan \"B\".pdf",
       .mediaKind = MediaKind::documents},
      {.date = at("2024-05-02T17:00:12Z"), .sender = "Ana", .mediaFileName = "no kind"},
      {.date = at("2024-05-02T17:00:13Z"), .sender = "Ana", .text = "", .mediaKind = MediaKind::photos},
      {.date = at("2024-05-02T17:00:14Z"), .sender = "ليلى", .text = "مرحبا \x01 bell"}};
}

TEST(TranscriptWriter, ThePageShowsMarksAndTheTextTranscriptHasThemAsTyped) {
  const std::vector<Line> marked{{.sender = "Ana", .text = "*a* <b>"}};
  EXPECT_THAT(html(marked), HasSubstr("<p><strong>a</strong> &lt;b&gt;</p>"));
  EXPECT_EQ(count(html(marked), "<style>"), 1U) << "which need no style sheet";
  EXPECT_THAT(text(marked), HasSubstr("Ana: *a* <b>"));
  const std::vector<Line> quoting{{.sender = "Ana", .text = "> a"}};
  EXPECT_THAT(html(quoting), HasSubstr("<p><span class=\"quoted\" dir=\"auto\">a</span></p>"));
  EXPECT_EQ(count(html(quoting), "<style>"), 2U);
  EXPECT_THAT(text(quoting), HasSubstr("Ana: > a"));
}

TEST(TranscriptWriter, AMessageDeletedLaterSaysSoInBothLanguages) {
  ArchiveChat chat = chatOf({{.date = at("2024-05-02T10:00:00Z"), .sender = "Ana", .text = "hi"}});
  chat.messages.front().isDeletedLater = true;
  EXPECT_THAT(textOf(chat), HasSubstr("Ana [deleted later]: hi\n"));
  EXPECT_THAT(pageOf(chat), ContainsRegex("<div class=\"meta\">Ana · 10:00:00.{1,3}AM · deleted later</div>"));
  const TranscriptStyle portuguese = TranscriptStyle::portuguese();
  EXPECT_THAT(TranscriptWriter::renderText(chat, portuguese, {utc, brazilian}),
              HasSubstr("Ana [apagada depois]: hi\n"));
  EXPECT_THAT(TranscriptWriter::renderHTML(chat, portuguese, {utc, brazilian}),
              HasSubstr("<div class=\"meta\">Ana · 10:00:00 · apagada depois</div>"));
  chat.messages.front().details = ArchiveDetails{.marks = {.isStarred = true}};
  EXPECT_THAT(textOf(chat), HasSubstr("Ana [starred] [deleted later]: hi\n"));
}

TEST(TranscriptWriter, WhatThePhoneNoLongerHasReadsLikeAllElse) {
  const ArchiveChat there = chatOf(conversation(TranscriptStyle::english()));
  ArchiveChat gone = there;
  gone.isGone = true;
  for (ArchiveMessage& message : gone.messages) message.isGone = true;
  EXPECT_EQ(textOf(gone), textOf(there));
  EXPECT_EQ(pageOf(gone), pageOf(there));
}

TEST(TranscriptWriter, RendersTheGoldenPages) {
  const TranscriptStyle english = TranscriptStyle::english();
  const TranscriptStyle portuguese = TranscriptStyle::portuguese();
  const ArchiveChat spoken = chatOf(conversation(english), "Ana & <Co>");
  const ArchiveChat portugueseChat = chatOf(conversation(portuguese), "Ana & <Co>");
  expectGolden(TranscriptWriter::renderHTML(spoken, english, {saoPaulo, american}), TIDEWELL_GOLDEN_FOLDER "/en.html");
  expectGolden(TranscriptWriter::renderHTML(portugueseChat, portuguese, {saoPaulo, brazilian}),
               TIDEWELL_GOLDEN_FOLDER "/pt-BR.html");
  expectGolden(TranscriptWriter::renderText(spoken, english, {saoPaulo, american}), TIDEWELL_GOLDEN_FOLDER "/en.txt");
  expectGolden(TranscriptWriter::renderText(portugueseChat, portuguese, {saoPaulo, brazilian}),
               TIDEWELL_GOLDEN_FOLDER "/pt-BR.txt");
}

TEST(TranscriptWriter, BeginsAndEndsThePage) {
  const std::string page =
      TranscriptWriter::renderHTML(chatOf({}, "A&B"), TranscriptStyle::portuguese(), {utc, brazilian});
  EXPECT_THAT(page, StartsWith("<!DOCTYPE html>\n<html lang=\"pt-BR\">\n"));
  EXPECT_THAT(page, HasSubstr("<title>A&amp;B</title>"));
  EXPECT_THAT(page, EndsWith("<h1>A&amp;B</h1>\n</body>\n</html>"));
}

TEST(TranscriptWriter, HeadsEachDayOfTheChosenZone) {
  const std::vector<Line> lines{{.date = at("2024-05-02T02:59:59Z"), .sender = "Ana", .text = "late"},
                                {.date = at("2024-05-02T03:00:00Z"), .sender = "Ana", .text = "early"}};
  EXPECT_EQ(count(html(lines), "<div class=\"day\">"), 1U);
  const std::string there = html(lines, saoPaulo);
  EXPECT_THAT(there, HasSubstr("<div class=\"day\">Wednesday, May 1, 2024</div>"));
  EXPECT_THAT(there, HasSubstr("<div class=\"day\">Thursday, May 2, 2024</div>"));
}

TEST(TranscriptWriter, AnUndatedLineHasNoDayAndDoesNotPartOne) {
  const std::vector<Line> lines{{.sender = "Ana", .text = "?"},
                                {.date = at("2024-05-02T10:00:00Z"), .sender = "Ana", .text = "a"},
                                {.sender = "Ana", .text = "?"},
                                {.date = at("2024-05-02T11:00:00Z"), .sender = "Ana", .text = "b"}};
  EXPECT_EQ(count(html(lines), "<div class=\"day\">"), 1U);
  EXPECT_THAT(html(lines), HasSubstr("<div class=\"meta\">Ana</div>"));
  EXPECT_THAT(text(lines), HasSubstr("[undated] Ana: ?\n[2024-05-02 10:00:00] Ana: a\n"));
}

TEST(TranscriptWriter, NobodyIsTakenForTheOwnerByAName) {
  EXPECT_THAT(html({{.sender = "You", .fromMe = true, .text = "a"}}), HasSubstr("<article class=\"msg me\">"));
  EXPECT_THAT(html({{.sender = "You", .text = "a"}}), Not(HasSubstr("<article class=\"msg me\">")));
}

TEST(TranscriptWriter, SeesMediaFromItsChatsFolder) {
  const auto link = [](const std::string& path) {
    ArchiveChat chat{.folder = "Ana"};
    chat.messages = {{.id = "1", .media = ArchiveMedia{.kind = MediaKind::documents, .relativePath = path}}};
    return pageOf(chat);
  };
  EXPECT_THAT(link("Ana/a.pdf"), HasSubstr("href=\"a.pdf\""));
  EXPECT_THAT(link("Ana-2/a.pdf"), HasSubstr("href=\"../Ana-2/a.pdf\""));
  EXPECT_THAT(link("An/a.pdf"), HasSubstr("href=\"../An/a.pdf\""));
}

TEST(TranscriptWriter, SaysWhatIsNotExportedAndDoesNotLinkToIt) {
  ArchiveChat chat{.folder = "Ana"};
  chat.messages = {{.id = "1", .sender = "Ana", .media = ArchiveMedia{.kind = MediaKind::videos, .fileName = "a.mp4"}}};
  EXPECT_THAT(pageOf(chat), AllOf(HasSubstr("<p>Video (not exported)</p>"), Not(HasSubstr("a.mp4"))));
  EXPECT_THAT(textOf(chat), HasSubstr("Ana: Video (not exported)\n"));
  chat.messages[0].text = "look";
  EXPECT_THAT(textOf(chat), HasSubstr("Ana: look [Video (not exported)]\n"));
}

TEST(TranscriptWriter, AVoiceNoteAloneHasNoParagraphOfText) {
  EXPECT_THAT(html({{.sender = "Ana", .mediaFileName = "a.opus", .mediaKind = MediaKind::voiceNotes}}),
              HasSubstr("<div class=\"bubble\" dir=\"auto\"><p><audio controls src=\"a.opus\"></audio></p></div>"));
}

TEST(TranscriptWriter, LinksToNamesThatABrowserWouldCut) {
  const std::string page =
      html({{.sender = "Ana", .mediaFileName = "50% #2 ok?.jpg", .mediaKind = MediaKind::photos},
            {.sender = "Ana", .mediaFileName = "a&b \"c\".pdf", .mediaKind = MediaKind::documents}});
  EXPECT_THAT(page, HasSubstr("<p><img src=\"50%25 %232 ok%3F.jpg\" alt=\"50% #2 ok?.jpg\""));
  EXPECT_THAT(page, HasSubstr("<p><a href=\"a&amp;b &quot;c&quot;.pdf\">a&amp;b &quot;c&quot;.pdf</a></p>"));
}

// HTML strips blanks from the ends of an address.
TEST(TranscriptWriter, LinksToANameThatEndsInABlank) {
  EXPECT_THAT(html({{.sender = "Ana", .mediaFileName = "a b ", .mediaKind = MediaKind::documents}}),
              HasSubstr("<p><a href=\"a b%20\">a b </a></p>"));
}

TEST(TranscriptWriter, EveryLineBreakOfATextIsOne) {
  EXPECT_THAT(html({{.sender = "Ana", .text = "a\r\nb\rc\nd"}}), HasSubstr("<p>a<br>b<br>c<br>d</p>"));
}

TEST(TranscriptWriter, PutsMediaInBracketsBehindTheText) {
  EXPECT_EQ(text({{.sender = "Ana", .text = "look", .mediaFileName = "a.jpg"}}),
            "=== Ana ===\n[undated] Ana: look [a.jpg]\n");
  EXPECT_EQ(text({{.sender = "Ana", .mediaFileName = "a.jpg"}}), "=== Ana ===\n[undated] Ana: [a.jpg]\n");
}

TEST(TranscriptWriter, ShowsALineWithoutContent) {
  EXPECT_EQ(text({{.sender = "Ana"}, {.sender = "Ana", .text = ""}}),
            "=== Ana ===\n[undated] Ana: [media]\n[undated] Ana: [media]\n");
  EXPECT_THAT(html({{.sender = "Ana"}}), HasSubstr("<p>[media]</p>"));
}

TEST(TranscriptWriter, NoNameBeginsALineOfItsOwn) {
  const std::string rendered =
      TranscriptWriter::renderText(chatOf({{.sender = "Eve\n[2024-01-01 00:00:00] Ana", .text = "hi"}}, "A\nB"),
                                   TranscriptStyle::english(), {utc, american});
  EXPECT_EQ(rendered, "=== A B ===\n[undated] Eve [2024-01-01 00:00:00] Ana: hi\n");
}

TEST(TranscriptWriter, UsesTheLocalesOwnSpaces) {
  // A narrow no-break space stands before "PM".
  EXPECT_THAT(html({{.date = at("2024-05-02T17:00:09Z"), .sender = "Ana", .text = "a"}}),
              HasSubstr("<div class=\"meta\">Ana · 5:00:09\u202FPM</div>"));
}

}  // namespace
