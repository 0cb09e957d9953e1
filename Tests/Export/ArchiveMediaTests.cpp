#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/Export/ArchiveReading.h"
#include "Tests/Export/ExportScene.h"

// Where messages find their media in the export.
namespace {

namespace fs = std::filesystem;
using ExportTest::ana;
using ExportTest::bea;
using ExportTest::everything;
using ExportTest::filesBelow;
using ExportTest::firstDate;
using ExportTest::linkOfFirst;
using ExportTest::listedChat;
using ExportTest::listedNames;
using ExportTest::medium;
using ExportTest::mediumOf;
using ExportTest::messagesOf;
using ExportTest::picture;
using ExportTest::Scene;
using ExportTest::talkingBackup;
using ExportTest::textIn;
using ExportTest::textOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr const char* beasData = "chat-5511900002222_s.whatsapp.net.js";

// What holds of plain and of encrypted backups alike.
struct ArchiveMediaTest : testing::TestWithParam<bool> {
  Scene scene{talkingBackup(GetParam())};
};
INSTANTIATE_TEST_SUITE_P(Backups, ArchiveMediaTest, testing::Bool(), ExportTest::encryptionName);

TEST(ArchiveMedia, KindsLeftOutAreNotExportedAndNotMissing) {
  const Scene scene(talkingBackup());
  ExportOptions photos = everything;
  photos.includedKinds = {MediaKind::photos};
  const ExportSummary summary = scene.run(photos);
  EXPECT_EQ(summary.unresolvedArchiveLinkCount, 0);
  EXPECT_EQ(summary.transcriptCount, 6);
  EXPECT_EQ(medium(scene, "Ana", 1), R"({"exported":false,"kind":"videos","name":"ab2.mp4"})");
  EXPECT_THAT(textOf(scene.content / "Ana/_transcript.txt"), Not(HasSubstr("ab2.mp4")));
}

TEST(ArchiveMedia, KindsLeftOutLeadToWhatAnEarlierExportCopied) {
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

TEST_P(ArchiveMediaTest, ACopyThatFailedIsCountedAndHasNoPath) {
  scene.contents.whatsApp.mediaFiles[0].storage.missing = true;
  scene.write();
  const ExportSummary summary = scene.run(everything);
  EXPECT_EQ(summary.failedCount, 1);
  EXPECT_EQ(summary.unresolvedArchiveLinkCount, 1);
  EXPECT_EQ(medium(scene, "Ana", 0), R"({"exported":false,"kind":"photos","name":"aa1.jpg"})");
  ExportTest::expectWholeArchive(scene.destination);
}

TEST(ArchiveMedia, AMediumThatTheBackupDoesNotHoldIsCounted) {
  Scene scene(talkingBackup());
  scene.contents.whatsApp.mediaItems = {{.message = 4, .localPath = Fixture::mediaPath(bea, "ff9", "jpg")}};
  scene.contents.whatsApp.mediaFiles.pop_back();
  scene.contents.whatsApp.mediaFiles.pop_back();
  scene.write();
  const ExportSummary summary = scene.run(everything);
  EXPECT_EQ(summary.failedCount, 0);
  EXPECT_EQ(summary.unresolvedArchiveLinkCount, 1);

  scene.contents.whatsApp.messages[3].type = 1;  // for which words stand that say so
  scene.write();
  EXPECT_EQ(scene.run(everything).unresolvedArchiveLinkCount, 1);
  ExportOptions documents = everything;
  documents.includedKinds = {MediaKind::documents};
  EXPECT_EQ(scene.run(documents).unresolvedArchiveLinkCount, 0) << "a photo is none that was asked for";
}

TEST(ArchiveMedia, TwoMessagesMayCarryOneMedium) {
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

TEST(ArchiveMedia, AMediumInAnotherChatsFolderIsLinkedFromBoth) {
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

TEST(ArchiveMedia, NamesThatABrowserWouldCutAreLinked) {
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

TEST_P(ArchiveMediaTest, AChatThatIsRenamedKeepsItsFolderAndItsLinks) {
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

TEST(ArchiveMedia, AChatThatIsGoneStaysInTheArchive) {
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
  EXPECT_THAT(listedNames(scene.content), ElementsAre("Bea", "Us", "Ana"));
  const auto after = filesBelow(scene.content);
  for (const std::string& path : {std::string("_viewer/data/") + beasData, std::string("Bea/_transcript.txt"),
                                  std::string("Bea/_transcript.html"), std::string("Bea/undated_ea5.pdf"),
                                  std::string("avatars/5511900002222_s.whatsapp.net.jpeg")}) {
    ASSERT_TRUE(after.contains(path)) << path;
    EXPECT_EQ(after.at(path), before.at(path)) << path;
  }
  ExportTest::expectWholeArchive(scene.destination);
}

TEST(ArchiveMedia, AFileThatThePhoneLostIsLinkedWhereAnEarlierExportPutIt) {
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

TEST(ArchiveMedia, AFileThatThePhoneLostNeverTakesAnothersPlace) {
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

}  // namespace
