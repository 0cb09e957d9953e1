#include "TidewellCore/Archive/MessageFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "TidewellCore/FolderNames.h"
#include "TidewellCore/Platform/Json.h"

namespace {

using testing::StartsWith;

const TimeZone utc{"UTC"};
const TimeZone saoPaulo{"America/Sao_Paulo"};
constexpr double time = 1'714'613'400.75;  // 2024-05-02T01:30:00.75Z

// Ana's messages, one of each sort that the two formats tell apart.
ArchiveChat chat() {
  ArchiveDetails reply{
      .marks = {.isForwarded = true, .isStarred = true},
      .mentions = {{"15550000002", "Ben"}},
      .quote =
          ArchiveQuote{.isOwner = true, .name = "You", .part = MessagePart::photo, .words = "=the sea", .toID = "2"},
      .reactions = {{.emoji = "👍", .names = {"You", "Ben"}, .count = 2},
                    {.emoji = "❤️", .names = {"Ana"}, .count = 1}}};
  ArchiveDetails place{.kind = ArchiveKind::place, .info = {{"lat", 38.5}, {"lon", -9.25}}};
  ArchiveDetails notice{.kind = ArchiveKind::notice, .info = {{"type", "memberJoined"}}};
  return {.name = "Ana",
          .folder = "Ana",
          .messages = {
              {.id = "1", .sender = "Ana", .senderJID = "15550000001@s.whatsapp.net", .text = "undated"},
              {.id = "2",
               .fromMe = true,
               .sender = "You",
               .timestamp = time,
               .media = ArchiveMedia{.kind = MediaKind::photos,
                                     .relativePath = "Ana/a, b.jpg",
                                     .fileName = "a, b.jpg",
                                     .exported = true}},
              {.id = "3",
               .sender = "+1 555 000 0001",
               .senderJID = "15550000001@s.whatsapp.net",
               .timestamp = time + 60,
               .text = "=SUM(1;2), \"@15550000002\"\r\n- no <b>",
               .details = reply,
               .isDeletedLater = true,
               .isGone = true},
              {.id = "4", .sender = "Ana", .timestamp = time, .text = "Place", .details = place},
              {.id = "5", .timestamp = time, .text = "Ben joined", .details = notice},
              {.id = "6",
               .sender = "Ana",
               .timestamp = time,
               .media = ArchiveMedia{.kind = MediaKind::voiceNotes, .fileName = "lost.opus"}},
              {.id = "7",
               .sender = "Ana",
               .timestamp = time,
               .media = ArchiveMedia{.kind = MediaKind::documents, .relativePath = "Ben/x.pdf", .exported = true}}}};
}

std::vector<Json::Object> linesOf(const std::string& text) {
  std::vector<Json::Object> lines;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = text.find('\n', begin);
    const auto json = Json::parse(std::string_view(text).substr(begin, end - begin));
    const auto* object = json ? json->as<Json::Object>() : nullptr;
    if (object == nullptr || end == std::string::npos) {
      ADD_FAILURE() << "no whole line: " << text.substr(begin);
      break;
    }
    lines.push_back(*object);
    begin = end + 1;
  }
  return lines;
}

std::vector<Json::Object> jsonLines(const ArchiveChat& told, const TimeZone& zone = utc) {
  return linesOf(MessageFiles::renderJSONLines(told, zone));
}

Json::Object parsed(const char* text) { return *Json::parse(text).value().as<Json::Object>(); }

using Row = std::map<std::string, std::string>;

// Reads RFC 4180 letter by letter.
std::vector<std::vector<std::string>> cellsOf(std::string_view table) {
  std::vector<std::vector<std::string>> rows{{""}};
  bool isQuoted = false;
  for (std::size_t i = 0; i < table.size(); ++i) {
    if (isQuoted && table.substr(i).starts_with("\"\"")) {
      rows.back().back() += table[i++];
    } else if (table[i] == '"') {
      isQuoted = !isQuoted;
    } else if (!isQuoted && table[i] == ',') {
      rows.back().emplace_back();
    } else if (!isQuoted && table.substr(i).starts_with("\r\n")) {
      rows.emplace_back(1);
      ++i;
    } else {
      rows.back().back() += table[i];
    }
  }
  EXPECT_EQ(rows.back(), std::vector<std::string>{""}) << "the last row ends with a line break";
  rows.pop_back();
  return rows;
}

std::vector<Row> csv(const ArchiveChat& told, const TimeZone& zone = utc,
                     const TranscriptStyle& style = TranscriptStyle::english()) {
  const std::string table = MessageFiles::renderCSV(told, style, zone);
  EXPECT_THAT(table, StartsWith("\xEF\xBB\xBF"));
  const auto cells = cellsOf(std::string_view(table).substr(3));
  std::vector<Row> rows;
  for (std::size_t number = 1; number < cells.size(); ++number) {
    EXPECT_EQ(cells[number].size(), cells[0].size()) << number;
    Row row;
    for (std::size_t column = 0; column < cells[number].size(); ++column) {
      if (!cells[number][column].empty()) row[cells[0].at(column)] = cells[number][column];
    }
    rows.push_back(std::move(row));
  }
  return rows;
}

TEST(MessageFiles, StandBesideTheTranscripts) {
  EXPECT_STREQ(MessageFiles::nameOf(MessageFormat::json), FolderNames::jsonMessages);
  EXPECT_STREQ(MessageFiles::nameOf(MessageFormat::csv), FolderNames::csvMessages);
  const TranscriptStyle style = TranscriptStyle::english();
  EXPECT_EQ(MessageFiles::render(MessageFormat::json, chat(), style, utc), MessageFiles::renderJSONLines(chat(), utc));
  EXPECT_EQ(MessageFiles::render(MessageFormat::csv, chat(), style, utc), MessageFiles::renderCSV(chat(), style, utc));
}

TEST(MessageFiles, JSONHasALineForEachMessage) {
  const std::vector<Json::Object> lines = jsonLines(chat(), saoPaulo);
  ASSERT_EQ(lines.size(), 7U);
  EXPECT_EQ(lines[0], parsed(R"({"id":"1","kind":"text","me":false,"sender":"Ana","text":"undated",
                                 "senderJID":"15550000001@s.whatsapp.net"})"));
  EXPECT_EQ(lines[1], parsed(R"({"id":"2","kind":"photo","me":true,"sender":"You",
                                 "time":"2024-05-02T01:30:00Z","localTime":"2024-05-01T22:30:00-03:00",
                                 "media":{"exported":true,"kind":"photos","name":"a, b.jpg","path":"a, b.jpg"}})"));
  EXPECT_EQ(lines[4], parsed(R"({"id":"5","kind":"notice","me":false,"sender":"","text":"Ben joined",
                                 "info":{"type":"memberJoined"},
                                 "time":"2024-05-02T01:30:00Z","localTime":"2024-05-01T22:30:00-03:00"})"));
}

TEST(MessageFiles, JSONHasTheDetailsOfTheArchive) {
  const std::vector<Json::Object> lines = jsonLines(chat());
  EXPECT_EQ(lines.at(2), parsed(R"({"id":"3","kind":"text","me":false,"sender":"+1 555 000 0001",
      "senderJID":"15550000001@s.whatsapp.net","text":"=SUM(1;2), \"@15550000002\"\n- no <b>",
      "time":"2024-05-02T01:31:00Z","localTime":"2024-05-02T01:31:00+00:00",
      "marks":["deletedLater","forwarded","gone","starred"],"mentions":{"15550000002":"Ben"},
      "quote":{"me":true,"name":"You","part":"photo","thing":"=the sea","to":"2"},
      "reactions":[{"emoji":"👍","names":["You","Ben"]},{"emoji":"❤️","names":["Ana"]}]})"));
  EXPECT_EQ(lines.at(3).at("kind"), Json("place"));
  EXPECT_EQ(lines.at(3).at("info"), Json(parsed(R"({"lat":38.5,"lon":-9.25})")));
}

TEST(MessageFiles, MediaAreNamedAsSeenFromTheChatsFolder) {
  const std::vector<Json::Object> lines = jsonLines(chat());
  EXPECT_EQ(lines.at(5).at("media"), Json(parsed(R"({"exported":false,"kind":"voiceNotes","name":"lost.opus"})")));
  EXPECT_EQ(lines.at(6).at("media"), Json(parsed(R"({"exported":true,"kind":"documents","path":"../Ben/x.pdf"})")));
  const std::vector<Row> rows = csv(chat());
  EXPECT_EQ(rows.at(1).at("media"), "a, b.jpg");
  EXPECT_FALSE(rows.at(5).contains("media"));
  EXPECT_EQ(rows.at(5).at("kind"), "voiceMessage");
  EXPECT_EQ(rows.at(6).at("media"), "../Ben/x.pdf");
}

TEST(MessageFiles, ATableHasARowForEachMessage) {
  const std::vector<Row> rows = csv(chat(), saoPaulo);
  ASSERT_EQ(rows.size(), 7U);
  EXPECT_EQ(rows[0], (Row{{"id", "1"},
                          {"me", "false"},
                          {"sender", "Ana"},
                          {"sender_jid", "15550000001@s.whatsapp.net"},
                          {"kind", "text"},
                          {"text", "undated"}}));
  EXPECT_EQ(rows[1], (Row{{"id", "2"},
                          {"utc", "2024-05-02 01:30:00"},
                          {"local", "2024-05-01 22:30:00"},
                          {"offset", "-03:00"},
                          {"me", "true"},
                          {"sender", "You"},
                          {"kind", "photo"},
                          {"media", "a, b.jpg"}}));
  EXPECT_EQ(rows[4], (Row{{"id", "5"},
                          {"utc", "2024-05-02 01:30:00"},
                          {"local", "2024-05-01 22:30:00"},
                          {"offset", "-03:00"},
                          {"me", "false"},
                          {"kind", "notice"},
                          {"text", "Ben joined"}}));
}

TEST(MessageFiles, ATableTellsDetailsAsWordsAndRunsNoneOfThem) {
  EXPECT_EQ(csv(chat()).at(2), (Row{{"id", "3"},
                                    {"utc", "2024-05-02 01:31:00"},
                                    {"local", "2024-05-02 01:31:00"},
                                    {"offset", "+00:00"},
                                    {"me", "false"},
                                    {"sender", "'+1 555 000 0001"},
                                    {"sender_jid", "15550000001@s.whatsapp.net"},
                                    {"kind", "text"},
                                    {"text", "'=SUM(1;2), \"@Ben\"\n- no <b>"},
                                    {"reply_to", "2"},
                                    {"reply_name", "You"},
                                    {"reply_text", "'=the sea"},
                                    {"reactions", "👍 You and Ben, ❤️ Ana"},
                                    {"marks", "deletedLater forwarded gone starred"}}));
  EXPECT_EQ(csv(chat(), utc, TranscriptStyle::portuguese()).at(2).at("reactions"), "👍 You e Ben, ❤️ Ana");
}

TEST(MessageFiles, NumbersOfATableStayPlainAndNothingElseInTheirPlaceDoes) {
  ArchiveChat told;
  for (const char* id : {"-6", "12", "-", "-1+1", "=1"}) {
    told.messages.push_back({.id = id, .details = ArchiveDetails{.quote = ArchiveQuote{.toID = id}}});
  }
  std::vector<std::string> ids;
  for (const Row& row : csv(told)) {
    ids.push_back(row.at("id"));
    EXPECT_EQ(row.at("reply_to"), row.at("id"));
  }
  EXPECT_EQ(ids, (std::vector<std::string>{"-6", "12", "'-", "'-1+1", "'=1"}));
}

TEST(MessageFiles, AnEmptyChatHasNoLinesAndATableItsColumns) {
  EXPECT_EQ(MessageFiles::renderJSONLines({}, utc), "");
  EXPECT_EQ(MessageFiles::renderCSV({}, TranscriptStyle::english(), utc),
            "\xEF\xBB\xBF"
            "id,utc,local,offset,me,sender,sender_jid,kind,text,media,reply_to,reply_name,reply_text,reactions,"
            "marks\r\n");
}

TEST(MessageFiles, NoTextBreaksALine) {
  ArchiveChat told;
  told.messages = {{.id = "1", .sender = "a\nb", .text = "one\u2028two\u2029three\u0085four\rfive\x0Bsix"}};
  const std::string text = MessageFiles::renderJSONLines(told, utc);
  EXPECT_EQ(std::ranges::count(text, '\n'), 1);
  for (const char* separator : {"\u2028", "\u2029", "\u0085", "\r", "\x0B"}) {
    EXPECT_EQ(text.find(separator), std::string::npos);
  }
  EXPECT_EQ(linesOf(text).at(0).at("text"), Json("one\u2028two\u2029three\uFFFDfour\nfive\uFFFDsix"));
}

}  // namespace
