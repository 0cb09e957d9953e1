#include "TidewellCore/Export/ArchiveExport.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "Tests/Export/ArchiveReading.h"
#include "Tests/Export/ExportScene.h"
#include "TidewellCore/Archive/ChatArchiveAssets.h"
#include "TidewellCore/FileNaming.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;
using ExportTest::ana;
using ExportTest::anaLID;
using ExportTest::bea;
using ExportTest::filesBelow;
using ExportTest::firstDate;
using ExportTest::group;
using ExportTest::listedChat;
using ExportTest::listedNames;
using ExportTest::mediumOf;
using ExportTest::messagesOf;
using ExportTest::Scene;
using ExportTest::smallBackup;
using ExportTest::textIn;
using ExportTest::textOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::UnorderedElementsAre;
using Phase = ExportProgress::Phase;

const ExportOptions everything = ExportOptions::defaultOptions();
constexpr const char* beasData = "chat-5511900002222_s.whatsapp.net.js";

Fixture::Bytes picture(const std::string& rest) { return Fixture::bytesOf("\xFF\xD8\xFF" + rest); }

// The small backup with a text to each message and pictures of Ana and the group.
Fixture::BackupContents talkingBackup(bool isEncrypted = false) {
  Fixture::BackupContents contents = smallBackup(isEncrypted);
  auto& app = contents.whatsApp;
  int number = 0;
  for (Fixture::Message& message : app.messages) message.text = "text " + std::to_string(++number);
  app.files.push_back(Fixture::profilePicture("5511900001111", 3, picture("of Ana")));
  app.files.push_back(Fixture::profilePicture("5511900001111-1500000000", 9, picture("of us")));
  return contents;
}

std::set<std::string> namesIn(const fs::path& folder) {
  std::set<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) names.insert(entry.path().filename());
  return names;
}

// Where the medium of a chat's first message stands.
std::string linkOfFirst(const Scene& scene, const std::string& chat) {
  return textIn(mediumOf(messagesOf(scene.content, chat).at(0)), "path");
}

// The JSON of the medium of a chat's message, by the message's place.
std::string medium(const Scene& scene, const std::string& chat, std::size_t message) {
  return Json(mediumOf(messagesOf(scene.content, chat).at(message))).write();
}

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

TEST(ArchiveExport, KindsLeftOutAreNotExportedAndNotMissing) {
  const Scene scene(talkingBackup());
  ExportOptions photos = everything;
  photos.includedKinds = {MediaKind::photos};
  const ExportSummary summary = scene.run(photos);
  EXPECT_EQ(summary.unresolvedArchiveLinkCount, 0);
  EXPECT_EQ(summary.transcriptCount, 6);
  EXPECT_EQ(medium(scene, "Ana", 1), R"({"exported":false,"kind":"videos","name":"ab2.mp4"})");
  EXPECT_THAT(textOf(scene.content / "Ana/_transcript.txt"), Not(HasSubstr("ab2.mp4")));
}

TEST(ArchiveExport, KindsLeftOutLeadToWhatAnEarlierExportCopied) {
  const Scene scene(talkingBackup());
  scene.run(everything);
  const auto before = filesBelow(scene.destination);
  ExportOptions photos = everything;
  photos.includedKinds = {MediaKind::photos};
  const ExportSummary summary = scene.run(photos);
  EXPECT_EQ(summary.copiedCount, 0);
  EXPECT_EQ(summary.skippedExistingCount, 1);
  EXPECT_EQ(summary.unresolvedArchiveLinkCount, 0);
  EXPECT_EQ(filesBelow(scene.destination), before);
}

TEST_P(ArchiveExportTest, ACopyThatFailedIsCountedAndHasNoPath) {
  scene.contents.whatsApp.mediaFiles[0].storage.missing = true;
  scene.write();
  const ExportSummary summary = scene.run(everything);
  EXPECT_EQ(summary.failedCount, 1);
  EXPECT_EQ(summary.unresolvedArchiveLinkCount, 1);
  EXPECT_EQ(medium(scene, "Ana", 0), R"({"exported":false,"kind":"photos","name":"aa1.jpg"})");
  ExportTest::expectWholeArchive(scene.destination);
}

TEST(ArchiveExport, AMediumThatTheBackupDoesNotHoldIsCounted) {
  Scene scene(talkingBackup());
  scene.contents.whatsApp.mediaItems = {{.message = 4, .localPath = Fixture::mediaPath(bea, "ff9", "jpg")}};
  scene.contents.whatsApp.mediaFiles.pop_back();
  scene.contents.whatsApp.mediaFiles.pop_back();
  scene.write();
  const ExportSummary summary = scene.run(everything);
  EXPECT_EQ(summary.failedCount, 0);
  EXPECT_EQ(summary.unresolvedArchiveLinkCount, 1);
}

TEST(ArchiveExport, TwoMessagesMayCarryOneMedium) {
  Scene scene(talkingBackup());
  auto& app = scene.contents.whatsApp;
  app.messages.push_back({.chat = 1, .date = firstDate + 90, .text = "once more"});
  app.mediaItems = {{.message = 5, .localPath = app.mediaFiles[0].localPath}};
  scene.write();
  EXPECT_EQ(scene.run(everything).unresolvedArchiveLinkCount, 0);
  EXPECT_NE(linkOfFirst(scene, "Ana"), "");
  EXPECT_EQ(medium(scene, "Ana", 0), medium(scene, "Ana", 2));
  ExportTest::expectWholeArchive(scene.destination);
}

TEST(ArchiveExport, AMediumInAnotherChatsFolderIsLinkedFromBoth) {
  Scene scene(talkingBackup());
  auto& app = scene.contents.whatsApp;
  app.mediaItems = {{.message = 4, .localPath = app.mediaFiles[0].localPath}};
  std::erase_if(app.mediaFiles, [](const auto& file) { return file.message == 4; });
  scene.write();
  EXPECT_EQ(scene.run(everything).unresolvedArchiveLinkCount, 0);
  ExportTest::expectWholeArchive(scene.destination);
  const std::string path = linkOfFirst(scene, "Ana");
  EXPECT_EQ(path, linkOfFirst(scene, "Bea"));
  const std::string owner = path.substr(0, path.find('/'));
  const std::string other = owner == "Ana" ? "Bea" : "Ana";
  EXPECT_THAT(textOf(scene.content / other / "_transcript.html"), HasSubstr("src=\"../" + path + "\""));
  EXPECT_THAT(textOf(scene.content / owner / "_transcript.html"),
              HasSubstr("src=\"" + path.substr(owner.size() + 1) + "\""));
}

TEST(ArchiveExport, NamesThatABrowserWouldCutAreLinked) {
  Scene scene(talkingBackup());
  auto& app = scene.contents.whatsApp;
  app.chats[0].name = "100% #Ana?";
  app.mediaFiles[0] = ExportTest::media(ana, "50% #1? of all", "jpg", "a photo", 1);
  scene.write();
  EXPECT_EQ(scene.run(everything).unresolvedArchiveLinkCount, 0);
  const fs::path folder = scene.content / "100% #Ana?";
  EXPECT_TRUE(fs::exists(folder / "2023-03-08_202640_50% #1? of all.jpg"));
  const std::string page = textOf(folder / "_transcript.html");
  EXPECT_THAT(page, HasSubstr("src=\"2023-03-08_202640_50%25 %231%3F of all.jpg\""));
  EXPECT_THAT(page, HasSubstr("alt=\"2023-03-08_202640_50% #1? of all.jpg\""));
  EXPECT_EQ(linkOfFirst(scene, "100% #Ana?"), "100% #Ana?/2023-03-08_202640_50% #1? of all.jpg");
  ExportTest::expectWholeArchive(scene.destination);
}

TEST_P(ArchiveExportTest, AChatThatIsRenamedKeepsItsFolderAndItsLinks) {
  scene.run(everything);
  scene.contents.whatsApp.chats[0].name = "Ana Maria";
  scene.write();
  const ExportSummary summary = scene.run(everything);
  EXPECT_EQ(summary.copiedCount, 0);
  EXPECT_EQ(summary.unresolvedArchiveLinkCount, 0);
  EXPECT_EQ(textIn(listedChat(scene.content, "Ana Maria"), "folder"), "Ana");
  EXPECT_EQ(linkOfFirst(scene, "Ana Maria"), "Ana/2023-03-08_202640_aa1.jpg");
  EXPECT_FALSE(fs::exists(scene.content / "Ana Maria"));
  EXPECT_THAT(textOf(scene.content / "Ana/_transcript.txt"), testing::StartsWith("=== Ana Maria ==="));
  ExportTest::expectWholeArchive(scene.destination);
}

TEST(ArchiveExport, WhatIsLeftOfAChatThatIsGoneStays) {
  Scene scene(talkingBackup());
  auto& app = scene.contents.whatsApp;
  app.files.push_back(Fixture::profilePicture("5511900002222", 1, picture("of Bea")));
  scene.write();
  scene.run(everything);
  const auto before = filesBelow(scene.content);
  app.chats.pop_back();
  app.messages.pop_back();
  std::erase_if(app.mediaFiles, [](const auto& file) { return file.localPath.find(bea) != std::string::npos; });
  app.files.pop_back();
  scene.write();
  scene.run(everything);
  EXPECT_THAT(listedNames(scene.content), ElementsAre("Us", "Ana"));
  const auto after = filesBelow(scene.content);
  for (const std::string& path : {std::string("_viewer/data/") + beasData, std::string("Bea/_transcript.txt"),
                                  std::string("Bea/_transcript.html"), std::string("Bea/undated_ea5.pdf"),
                                  std::string("avatars/5511900002222_s.whatsapp.net.jpeg")}) {
    ASSERT_TRUE(after.contains(path)) << path;
    EXPECT_EQ(after.at(path), before.at(path)) << path;
  }
  ExportTest::expectWholeArchive(scene.destination);
}

TEST(ArchiveExport, AFileThatThePhoneLostIsLinkedWhereAnEarlierExportPutIt) {
  for (const bool isListed : {true, false}) {
    Scene scene(talkingBackup());
    auto& app = scene.contents.whatsApp;
    scene.run(everything);
    app.mediaItems = {{.message = 1, .localPath = app.mediaFiles[0].localPath}};
    isListed ? void(app.mediaFiles[0].storage.missing = true) : void(app.mediaFiles.erase(app.mediaFiles.begin()));
    if (isListed) app.mediaItems.clear();
    scene.write();
    const ExportSummary summary = scene.run(everything);
    EXPECT_EQ(summary.unresolvedArchiveLinkCount, 0);
    EXPECT_EQ(linkOfFirst(scene, "Ana"), "Ana/2023-03-08_202640_aa1.jpg");
    ExportTest::expectWholeArchive(scene.destination);
  }
}

TEST(ArchiveExport, AFileThatThePhoneLostNeverTakesAnothersPlace) {
  Scene scene(talkingBackup());
  auto& app = scene.contents.whatsApp;
  // Both would be exported under one name; the lost one never was.
  app.messages.push_back({.chat = 1, .date = firstDate, .text = "the twin"});
  app.mediaItems = {{.message = 5, .localPath = "Media/" + ana + "/x/y/aa1.jpg"}};
  scene.write();
  EXPECT_EQ(scene.run(everything).unresolvedArchiveLinkCount, 1);
  EXPECT_EQ(scene.run(everything).unresolvedArchiveLinkCount, 1);
  std::map<std::string, std::string> paths;
  for (const auto& message : messagesOf(scene.content, "Ana")) {
    paths[textIn(message, "text")] = textIn(mediumOf(message), "path");
  }
  EXPECT_EQ(paths.at("text 1"), "Ana/2023-03-08_202640_aa1.jpg");
  EXPECT_EQ(paths.at("the twin"), "");
}

TEST(ArchiveExport, CancellingAtAnyCheckLeavesAWholeArchive) {
  const Scene expected(talkingBackup());
  expected.run(everything);
  Fixture::BackupContents grown = talkingBackup();
  grown.whatsApp.messages.push_back({.chat = 1, .date = firstDate + 90, .text = "something new"});
  grown.whatsApp.messages.push_back({.chat = 3, .date = firstDate + 95, .text = "here too"});
  const Scene whole(grown);
  whole.run(everything);
  const auto final = filesBelow(whole.destination);
  bool isFinished = false;
  std::size_t stops = 0;
  for (int calls = 0; !isFinished; ++calls) {
    ASSERT_LT(calls, 1000);
    Scene scene(grown);
    fs::copy(expected.destination, scene.destination, fs::copy_options::recursive);
    int left = calls;
    try {
      scene.run(everything, {.isCancelled = [&] { return left-- <= 0; }});
      isFinished = true;
    } catch (const TidewellError& error) {
      EXPECT_EQ(error, TidewellError::cancelled());
      ++stops;
    }
    EXPECT_FALSE(ExportTest::holdsPartials(scene.destination));
    const auto chats = ExportTest::listedChats(scene.content);
    EXPECT_EQ(chats.size(), 3U);
    EXPECT_TRUE(fs::exists(scene.destination / "index.html"));
    for (const auto& chat : chats) EXPECT_GE(messagesOf(scene.content, textIn(chat, "name")).size(), 1U);
    scene.run(everything);
    ExportTest::expectWholeArchive(scene.destination);
    EXPECT_EQ(filesBelow(scene.destination), final);
  }
  EXPECT_GE(stops, 3U + 3U) << "a check for each picture and each chat";
}

TEST(ArchiveExport, TellsHowManyChatsAreWritten) {
  Scene scene(talkingBackup());
  scene.contents.whatsApp.chats.push_back({.jid = "5511900003333@s.whatsapp.net", .name = "Caio"});
  scene.write();
  std::vector<ExportProgress> reports;
  bool hadPictures = false;
  scene.run(everything, {.progress = [&](const ExportProgress& report) {
              if (report.phase != Phase::writingTranscripts) return;
              if (reports.empty()) hadPictures = fs::exists(scene.content / "avatars");
              reports.push_back(report);
            }});
  ASSERT_GE(reports.size(), 2U);
  EXPECT_EQ(reports.front(), (ExportProgress{.phase = Phase::writingTranscripts, .completed = 0, .total = 4}));
  EXPECT_EQ(reports.back().completed, 4);
  EXPECT_EQ(reports.back().total, 4);
  EXPECT_FALSE(hadPictures) << "pictures belong to this phase";
}

TEST(ArchiveExport, AFullVolumeLeavesTheOldArchiveWhole) {
  Scene scene(talkingBackup());
  const ExportTest::SmallVolume volume(scene.destination, 1 << 20);
  if (!volume.isMounted()) GTEST_SKIP() << "This user cannot mount a volume.";
  scene.run(everything);
  const auto before = filesBelow(scene.destination);
  scene.contents.whatsApp.messages[0].text = std::string(1 << 20, 'x');
  scene.write();
  EXPECT_THROW(scene.run(everything), fs::filesystem_error);
  EXPECT_FALSE(ExportTest::holdsPartials(scene.destination));
  ExportTest::expectWholeArchive(scene.destination);
  scene.contents = talkingBackup();
  scene.write();
  scene.run(everything);
  EXPECT_EQ(filesBelow(scene.destination), before);
}

TEST(ArchiveExport, KeepsAPageOfTheUsers) {
  const Scene scene(talkingBackup());
  Fixture::writeFile(scene.destination / "index.html", "my own page");
  scene.run(everything);
  scene.run(everything);
  EXPECT_THAT(namesIn(scene.destination), ElementsAre("index-2.html", "index.html", "messages"));
  EXPECT_EQ(textOf(scene.destination / "index-2.html"), "my own page");
  ExportTest::expectWholeArchive(scene.destination);
}

TEST(ArchiveExport, ContinuesAnOlderFlatExport) {
  const Scene scene(talkingBackup());
  scene.run(everything);
  const auto expected = filesBelow(scene.destination);
  for (const std::string& name : namesIn(scene.content)) fs::rename(scene.content / name, scene.destination / name);
  fs::remove(scene.content);
  Fixture::writeFile(scene.destination / "index.html",
                     ChatArchiveAssets::indexHTML(ChatArchiveStrings::english(), "_viewer/"));
  ExportTest::expectWholeArchive(scene.destination);

  const ExportSummary summary = scene.run(everything);
  EXPECT_EQ(summary.copiedCount, 0);
  EXPECT_EQ(summary.skippedExistingCount, 5);
  ExportTest::expectWholeArchive(scene.destination);
  auto after = filesBelow(scene.destination);
  // The older place of the pictures is nobody's chat and stays.
  std::erase_if(after, [](const auto& file) { return file.first.starts_with("avatars/"); });
  EXPECT_EQ(after, expected);
}

TEST(ArchiveExport, ALinkInATranscriptsPlaceIsReplacedAndItsTargetStays) {
  const Scene scene(talkingBackup());
  Fixture::writeFile(scene.folder / "mine", "mine");
  scene.run(everything);
  fs::remove(scene.content / "Ana/_transcript.txt");
  fs::create_symlink(scene.folder / "mine", scene.content / "Ana/_transcript.txt");
  scene.run(everything);
  EXPECT_EQ(textOf(scene.folder / "mine"), "mine");
  EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(scene.content / "Ana/_transcript.txt")));
}

TEST(ArchiveExport, RemovesTheWorkingFilesOfACrash) {
  const Scene scene(talkingBackup());
  scene.run(everything);
  for (const char* folder : {"_viewer/data", "avatars", "_viewer", "Ana"}) {
    Fixture::writeFile(scene.content / folder / ".tidewell-partial-9-9", "half");
  }
  scene.run(everything);
  EXPECT_FALSE(ExportTest::holdsPartials(scene.destination));
}

TEST(ArchiveExport, BothAppsOfABackupAreInOneArchive) {
  Scene scene(talkingBackup());
  scene.contents.businessApp =
      Fixture::WhatsAppContents{.domain = std::string(Fixture::businessDomain),
                                .chats = {{.jid = bea, .name = "Bea's bakery"}},
                                .messages = {{.chat = 1, .date = firstDate, .text = "business"}},
                                .mediaFiles = {ExportTest::media(bea, "fb7", "jpg", "a cake", 1),
                                               ExportTest::media(ana, "aa1", "jpg", "of the same name")}};
  scene.write();
  const ExportSummary summary = scene.run(everything);
  EXPECT_EQ(summary.copiedCount, 7);
  EXPECT_EQ(summary.failedCount, 0);
  EXPECT_EQ(summary.unresolvedArchiveLinkCount, 0);
  EXPECT_THAT(listedNames(scene.content), UnorderedElementsAre("Ana", "Us", "Bea"));
  EXPECT_EQ(textOf(scene.content / linkOfFirst(scene, "Ana")), "a photo");
  ExportTest::expectWholeArchive(scene.destination);
}

// Path and size of every entry, with the dates of media that messages date. The viewer's own files and
// those that carry its texts are without their size.
std::string listing(const fs::path& root) {
  std::map<std::string, std::string> lines;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    const std::string path = entry.path().lexically_relative(root).generic_string();
    const std::string name = entry.path().filename();
    if (entry.is_directory()) {
      lines[path] = path + "/\n";
      continue;
    }
    const bool isViewers = name.starts_with("app.") || name == "index.html" || name == "chats.js";
    const bool isDated = FileNaming::hasExportStamp(name) && !name.starts_with("undated");
    const auto modified = static_cast<double>(ExportTest::modified(entry.path()));
    lines[path] = fmt::format("{}  {}  {}\n", path, isViewers ? "-" : std::to_string(entry.file_size()),
                              isDated ? iso8601(dateFromUnixTime(modified)) : "-");
  }
  std::string text;
  for (const auto& [path, line] : lines) text += line;
  return text;
}

TEST(ArchiveExport, LeavesTheGoldenTree) {
  const Scene scene(talkingBackup(true));
  scene.run(everything);
  const std::string text = listing(scene.destination);
  const fs::path golden = fs::path(TIDEWELL_GOLDEN_FOLDER) / "archive-export.txt";
  if (std::getenv("TIDEWELL_UPDATE_GOLDEN") != nullptr) Fixture::writeFile(golden, text);
  EXPECT_EQ(text, textOf(golden)) << "TIDEWELL_UPDATE_GOLDEN=1 writes the listing anew";
}

}  // namespace
