#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "Tests/Export/ArchiveReading.h"
#include "Tests/Export/ExportScene.h"
#include "TidewellCore/Platform/Text.h"

// What people and damaged databases put into texts, from the backup to the archive.
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using ExportTest::ana;
using ExportTest::firstDate;
using ExportTest::messagesOf;
using ExportTest::Scene;
using ExportTest::textIn;
using ExportTest::textOf;
using testing::HasSubstr;
using testing::Not;

const ExportOptions everything = ExportOptions::defaultOptions();

Fixture::BackupContents saying(const std::vector<std::string>& texts) {
  Fixture::BackupContents contents;
  contents.whatsApp.chats = {{.jid = ana, .name = "Ana"}};
  double date = firstDate;
  for (const std::string& text : texts) {
    contents.whatsApp.messages.push_back({.chat = 1, .date = ++date, .text = text});
  }
  return contents;
}

bool holdsControls(const std::string& text) {
  const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20 && c != '\n' && c != '\t'; };
  return std::ranges::any_of(text, isControl) || text.find('\x7F') != std::string::npos;
}

TEST(ArchiveText, InvalidBytesAndControlsAreReplacedOnce) {
  Scene scene(saying({"bad \xFF byte", "a NUL\0inside"s, "cut \xE2\x82", "bell\x07", "two\r\nlines\rthree"}));
  scene.contents.whatsApp.chats[0].name =
      "An\xFF"
      "a\0!"s;
  scene.contents.whatsApp.mediaFiles = {ExportTest::media(ana, "aa1", "jpg", "a photo", 1)};
  scene.contents.whatsApp.mediaFiles[0].title = "t\xFFi\0tle"s;
  scene.write();
  EXPECT_EQ(scene.run(everything).unresolvedArchiveLinkCount, 0);
  ExportTest::expectWholeArchive(scene.destination);
  const auto chats = ExportTest::listedChats(scene.content);
  ASSERT_EQ(chats.size(), 1U);
  const std::string name = textIn(chats[0], "name");
  EXPECT_THAT(name, testing::StartsWith("An\uFFFDa"));
  const auto messages = messagesOf(scene.content, name);
  ASSERT_EQ(messages.size(), 5U);
  EXPECT_EQ(textIn(messages[0], "text"), "bad \uFFFD byte");
  EXPECT_EQ(textIn(messages[1], "text"), "a NUL\uFFFDinside");
  EXPECT_EQ(textIn(messages[2], "text"), "cut \uFFFD");
  EXPECT_EQ(textIn(messages[3], "text"), "bell\uFFFD");
  EXPECT_EQ(textIn(messages[4], "text"), "two\nlines\nthree");
  for (const auto& [path, text] : ExportTest::filesBelow(scene.content)) {
    if (path.ends_with(".jpg") || path.ends_with(".json")) continue;
    EXPECT_TRUE(Text::isValid(path) && Text::isValid(text)) << path;
    EXPECT_FALSE(holdsControls(text)) << path;
  }
  const std::string page = textOf(scene.content / textIn(chats[0], "folder") / "_transcript.html");
  EXPECT_THAT(page, HasSubstr("<p>two<br>lines<br>three</p>"));
}

TEST(ArchiveText, NothingInAChatClosesScriptsPagesOrTemplates) {
  const std::string text = "</script><!-- \" & ' \\ ` ${x} \\` \\u0060 \u2028\u2029 end";
  Scene scene(saying({text}));
  scene.contents.whatsApp.chats[0].name = "<b>`A&B`</b>";
  scene.write();
  scene.run(everything);
  ExportTest::expectWholeArchive(scene.destination);
  EXPECT_EQ(textIn(messagesOf(scene.content, "<b>`A&B`</b>").at(0), "text"), text);
  const auto files = ExportTest::filesBelow(scene.content);
  for (const auto& [path, content] : files) {
    if (path.starts_with("_viewer/data/")) {
      EXPECT_THAT(content, Not(HasSubstr("<"))) << path;
    } else if (path.ends_with(".html")) {
      EXPECT_THAT(content, Not(HasSubstr("<b>"))) << path;
    }
  }
}

TEST(ArchiveText, AMegabyteOfTextIsExportedWhole) {
  std::string text;
  while (text.size() < (1U << 20)) text += "Zoë <3 & 日本 🎉\n";
  const Scene scene(saying({"before", text, "after"}));
  scene.run(everything);
  ExportTest::expectWholeArchive(scene.destination);
  const auto messages = messagesOf(scene.content, "Ana");
  ASSERT_EQ(messages.size(), 3U);
  EXPECT_EQ(textIn(messages[1], "text"), text);
  EXPECT_THAT(textOf(scene.content / "Ana/_transcript.txt"), HasSubstr(text));
}

TEST(ArchiveText, FiftyThousandMessagesOfOneChatTakeNoQuadraticTime) {
  std::vector<std::string> texts;
  for (int i = 0; i < 50'000; ++i) texts.push_back("This is the message with the number " + std::to_string(i));
  const Scene scene(saying(texts));
  const auto begin = std::chrono::steady_clock::now();
  scene.run(everything);
  const auto seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  RecordProperty("seconds", std::to_string(seconds));
  EXPECT_LT(seconds, 30) << "it takes about a second";
  ExportTest::expectWholeArchive(scene.destination);
  const auto messages = messagesOf(scene.content, "Ana");
  ASSERT_EQ(messages.size(), texts.size());
  EXPECT_EQ(textIn(messages.back(), "text"), texts.back());
}

TEST(ArchiveText, ASenderIsNeverCalledByTheMessageThatStandsWhereANameWas) {
  const std::string blob = "COah/ZEGIAA=";
  const auto said = [&](const std::string& jid, Fixture::SQLValue member) {
    return Fixture::Message{
        .chat = 1, .date = firstDate, .text = "oi", .fromJID = jid, .pushName = blob, .member = std::move(member)};
  };
  Fixture::BackupContents contents;
  contents.whatsApp.chats = {{.jid = ExportTest::group, .name = "Us"}};
  contents.whatsApp.members = {{.jid = ana, .contactName = "Ana"}, {.jid = ExportTest::bea, .contactName = blob}};
  contents.whatsApp.pushNames = {{.jid = ExportTest::bea, .name = blob}};
  contents.whatsApp.messages = {said(ExportTest::group, 1), said(ExportTest::group, 2), said(ExportTest::anaLID, {})};
  const Scene scene(contents);
  scene.run(everything);
  std::vector<std::string> senders;
  for (const auto& message : messagesOf(scene.content, "Us")) senders.push_back(textIn(message, "sender"));
  EXPECT_THAT(senders, testing::ElementsAre("Ana", "+55 11 90000-2222", "Unknown"));
  for (const auto& [file, content] : ExportTest::filesBelow(scene.destination)) {
    EXPECT_THAT(content, Not(HasSubstr("COah"))) << file;
  }
}

}  // namespace
