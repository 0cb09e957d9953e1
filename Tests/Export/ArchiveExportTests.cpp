#include "TidewellCore/Export/ArchiveExport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/Export/ArchiveReading.h"
#include "Tests/Export/ExportScene.h"

namespace {

namespace fs = std::filesystem;
using ExportTest::anaLID;
using ExportTest::everything;
using ExportTest::filesBelow;
using ExportTest::firstDate;
using ExportTest::linkOfFirst;
using ExportTest::listedChat;
using ExportTest::listedNames;
using ExportTest::messagesOf;
using ExportTest::namesIn;
using ExportTest::Scene;
using ExportTest::talkingBackup;
using ExportTest::textIn;
using ExportTest::textOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

// What holds of plain and of encrypted backups alike.
struct ArchiveExportTest : testing::TestWithParam<bool> {
  Scene scene{talkingBackup(GetParam())};
};
INSTANTIATE_TEST_SUITE_P(Backups, ArchiveExportTest, testing::Bool(), ExportTest::encryptionName);

TEST_P(ArchiveExportTest, EndsWithAnArchiveThatIsWhole) {
  const ExportSummary summary = scene.run(everything);
  EXPECT_EQ(summary.transcriptCount, 6);
  EXPECT_EQ(summary.archiveIndexURL, scene.destination / "index.html");
  EXPECT_EQ(summary.unresolvedArchiveLinkCount, 0);
  ExportTest::expectWholeArchive(scene.destination);
  EXPECT_THAT(listedNames(scene.content), ElementsAre("Bea", "Us", "Ana"));
  EXPECT_EQ(linkOfFirst(scene, "Ana"), "Ana/2023-03-08_202640_aa1.jpg");
}

TEST_P(ArchiveExportTest, LeavesTheSameTreeAgainByteForByteAndDateForDate) {
  scene.run(everything);
  const auto before = Fixture::treeSnapshot(scene.destination);
  const ExportSummary summary = scene.run(everything);
  EXPECT_EQ(Fixture::treeSnapshot(scene.destination), before);
  EXPECT_EQ(summary.transcriptCount, 6);
}

TEST_P(ArchiveExportTest, DressesChatsWithTheirPictures) {
  scene.run(everything);
  EXPECT_EQ(textIn(listedChat(scene.content, "Ana"), "avatar"), "avatars/5511900001111_s.whatsapp.net.jpeg");
  EXPECT_EQ(textIn(listedChat(scene.content, "Us"), "avatar"), "avatars/5511900001111-1500000000_g.us.jpeg");
  EXPECT_FALSE(listedChat(scene.content, "Bea").contains("avatar"));
  EXPECT_EQ(filesBelow(scene.content / "avatars"),
            (std::map<std::string, std::string>{{"5511900001111_s.whatsapp.net.jpeg", "\xFF\xD8\xFFof Ana"},
                                                {"5511900001111-1500000000_g.us.jpeg", "\xFF\xD8\xFFof us"}}));
}

TEST(ArchiveExport, OfAnEncryptedBackupIsThatOfAPlainOne) {
  const Scene plain(talkingBackup(false));
  const Scene encrypted(talkingBackup(true));
  plain.run(everything);
  encrypted.run(everything);
  EXPECT_EQ(filesBelow(encrypted.destination), filesBelow(plain.destination));
}

TEST_P(ArchiveExportTest, SavesMessagesForProgramsInTheFormatsThatAreWanted) {
  ExportOptions options = everything;
  options.formats = {MessageFormat::csv};
  EXPECT_EQ(scene.run(options).transcriptCount, 9);
  EXPECT_TRUE(fs::exists(scene.content / "Ana/_messages.csv"));
  EXPECT_FALSE(fs::exists(scene.content / "Ana/_messages.jsonl"));
  options.formats = {MessageFormat::csv, MessageFormat::json};
  const ExportSummary summary = scene.run(options);
  EXPECT_EQ(summary.transcriptCount, 12);
  EXPECT_EQ(summary.copiedCount, 0);
  EXPECT_THAT(textOf(scene.content / "Ana/_messages.csv"), HasSubstr(",photo,"));
  const std::string lines = textOf(scene.content / "Ana/_messages.jsonl");
  EXPECT_THAT(lines, HasSubstr("\"path\":\"2023-03-08_202640_aa1.jpg\""));
  EXPECT_THAT(lines, HasSubstr("\"senderJID\":\"5511900001111@s.whatsapp.net\""));
  EXPECT_THAT(textOf(scene.content / "_viewer/data/chat-5511900001111_s.whatsapp.net.js"), Not(HasSubstr("senderJID")));
  EXPECT_EQ(scene.run(options).failedCount, 0);
  const auto before = Fixture::treeSnapshot(scene.destination);
  scene.run(options);
  EXPECT_EQ(Fixture::treeSnapshot(scene.destination), before);
}

TEST(ArchiveExport, LeavesFilesForProgramsThatNobodyWantsAgain) {
  const Scene scene(talkingBackup());
  ExportOptions options = everything;
  options.formats = {MessageFormat::json};
  scene.run(options);
  const std::string before = textOf(scene.content / "Ana/_messages.jsonl");
  EXPECT_EQ(scene.run(everything).failedCount, 0);
  EXPECT_EQ(textOf(scene.content / "Ana/_messages.jsonl"), before);
}

TEST(ArchiveExport, NamesAFileForProgramsThatCannotBeWritten) {
  const Scene scene(talkingBackup());
  ExportOptions options = everything;
  options.formats = {MessageFormat::csv};
  scene.run(options);
  fs::remove(scene.content / "Ana/_messages.csv");
  Fixture::writeFile(scene.content / "Ana/_messages.csv/in the way", "x");
  const ExportSummary summary = scene.run(options);
  EXPECT_EQ(summary.transcriptCount, 8);
  ASSERT_EQ(summary.failures.size(), 1U);
  EXPECT_EQ(summary.failures[0].name, "_messages.csv");
  EXPECT_EQ(summary.failures[0].chat, "Ana");
}

TEST(ArchiveExport, IsLeftOutWhenItIsNotWanted) {
  const Scene scene(talkingBackup());
  const ExportSummary summary = scene.run(ExportTest::mediaAlone());
  EXPECT_EQ(summary.transcriptCount, 0);
  EXPECT_EQ(summary.archiveIndexURL, std::nullopt);
  EXPECT_THAT(namesIn(scene.destination), ElementsAre("messages"));
  EXPECT_THAT(namesIn(scene.content), Not(testing::Contains("avatars")));
  EXPECT_FALSE(fs::exists(scene.content / "_viewer/data"));
  EXPECT_FALSE(fs::exists(scene.content / "Ana/_transcript.txt"));
}

TEST(ArchiveExport, AChatOfMessagesAloneGetsAFolderWithTranscripts) {
  Scene scene(talkingBackup());
  scene.contents.whatsApp.mediaFiles.clear();
  scene.contents.whatsApp.files.clear();
  scene.write();
  const ExportSummary summary = scene.run(everything);
  EXPECT_EQ(summary.transcriptCount, 6);
  EXPECT_EQ(summary.chatFolderCount, 3);
  EXPECT_THAT(namesIn(scene.content / "Ana"), ElementsAre("_transcript.html", "_transcript.txt"));
  EXPECT_EQ(textOf(scene.content / "Ana/_transcript.txt"),
            "=== Ana ===\n[2023-03-08 20:26:40] Ana: text 1\n[2023-03-08 20:26:41] You: text 2\n");
  ExportTest::expectWholeArchive(scene.destination);
}

TEST(ArchiveExport, AnEmptyChatIsListedAndGetsNothingElse) {
  Scene scene(talkingBackup());
  scene.contents.whatsApp.chats.push_back({.jid = "5511900003333@s.whatsapp.net", .name = "Caio"});
  scene.write();
  const ExportSummary summary = scene.run(everything);
  EXPECT_EQ(summary.transcriptCount, 6);
  EXPECT_EQ(listedNames(scene.content).back(), "Caio");
  const Json::Object caio = listedChat(scene.content, "Caio");
  EXPECT_EQ(*caio.at("count").as<std::int64_t>(), 0);
  EXPECT_EQ(textIn(caio, "folder"), "");
  EXPECT_EQ(textIn(caio, "preview"), "");
  EXPECT_FALSE(caio.contains("lastTs"));
  EXPECT_FALSE(fs::exists(scene.content / "Caio"));
}

TEST(ArchiveExport, AChatOfMediaAloneIsListedWithItsFolder) {
  Scene scene(talkingBackup());
  scene.contents.whatsApp.mediaFiles = {ExportTest::media("5511900003333@s.whatsapp.net", "aa1", "jpg", "a photo")};
  scene.write();
  EXPECT_EQ(scene.run(everything).transcriptCount, 8);
  const Json::Object chat = listedChat(scene.content, "+55 11 90000-3333");
  EXPECT_EQ(*chat.at("count").as<std::int64_t>(), 0);
  EXPECT_EQ(textIn(chat, "folder"), "+55 11 90000-3333");
  EXPECT_THAT(namesIn(scene.content / "+55 11 90000-3333"),
              ElementsAre("_transcript.html", "_transcript.txt", "undated_aa1.jpg"));
  EXPECT_EQ(textOf(scene.content / "+55 11 90000-3333/_transcript.txt"), "=== +55 11 90000-3333 ===\n");
}

TEST(ArchiveExport, WhatBelongsToNoChatIsInOneOfItsOwn) {
  Scene scene(talkingBackup());
  auto& app = scene.contents.whatsApp;
  app.chats.push_back({.name = "Nobody"});
  app.messages.push_back({.chat = 4, .date = firstDate + 9000, .text = "without a JID"});
  app.messages.push_back({.chat = 99, .date = firstDate + 8000, .text = "without a record"});
  scene.write();
  scene.run(everything);
  EXPECT_EQ(listedNames(scene.content).front(), "Unknown");
  const auto messages = messagesOf(scene.content, "Unknown");
  ASSERT_EQ(messages.size(), 2U);
  EXPECT_EQ(textIn(messages[0], "text"), "without a record");
  EXPECT_EQ(textIn(messages[1], "text"), "without a JID");
  EXPECT_TRUE(fs::exists(scene.content / "Unknown/_transcript.html"));
}

TEST(ArchiveExport, APersonsTwoRecordsAreOneChat) {
  Scene scene(talkingBackup());
  auto& app = scene.contents.whatsApp;
  app.lidPairs = {{.lid = anaLID, .phoneNumber = "5511900001111"}};
  app.chats.push_back({.jid = anaLID, .name = "Ana"});
  app.messages.push_back({.chat = 4, .date = firstDate + 0.5, .text = "in between"});
  app.messages.push_back({.chat = 4, .text = "undated"});
  scene.write();
  EXPECT_EQ(scene.run(everything).transcriptCount, 6);
  std::vector<std::string> texts;
  for (const auto& message : messagesOf(scene.content, "Ana")) texts.push_back(textIn(message, "text"));
  EXPECT_THAT(texts, ElementsAre("undated", "text 1", "in between", "text 2"));
  EXPECT_THAT(textOf(scene.content / "Ana/_transcript.txt"), HasSubstr("[undated] Ana: undated\n"));
}

TEST(ArchiveExport, MessagesWithoutAnythingToShowAreShownAsSuch) {
  Scene scene;
  scene.contents.whatsApp.mediaFiles.clear();
  scene.write();
  scene.run(everything);
  EXPECT_EQ(textOf(scene.content / "Bea/_transcript.txt"), "=== Bea ===\n[2023-03-08 21:26:40] Bea: [media]\n");
  EXPECT_THAT(textOf(scene.content / "Bea/_transcript.html"), HasSubstr("<p>[media]</p>"));
  EXPECT_EQ(textIn(listedChat(scene.content, "Bea"), "preview"), "");
  const auto message = messagesOf(scene.content, "Bea").at(0);
  EXPECT_FALSE(message.contains("text") || message.contains("media"));
}

TEST(ArchiveExport, SpeaksPortuguese) {
  const Scene scene(talkingBackup());
  const Exporter exporter{.timeZone = TimeZone{"America/Sao_Paulo"},
                          .locale = Locale{"pt_BR"},
                          .transcriptStyle = TranscriptStyle::portuguese()};
  exporter.exportBackup({.backup = scene.backup, .destination = scene.destination});
  EXPECT_THAT(textOf(scene.destination / "index.html"), HasSubstr("<html lang=\"pt-BR\""));
  EXPECT_EQ(textIn(listedChat(scene.content, "Ana"), "preview"), "Você: text 2");
  const std::string page = textOf(scene.content / "Ana/_transcript.html");
  EXPECT_THAT(page, HasSubstr("<html lang=\"pt-BR\">"));
  EXPECT_THAT(page, HasSubstr("quarta-feira, 8 de março de 2023"));
  EXPECT_THAT(page, HasSubstr("Você · 17:26:41"));
}

}  // namespace
