#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "Tests/Export/ExportScene.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/Destination/FolderManifest.h"
#include "TidewellCore/TidewellError.h"

// Which folder a chat has, from one export to the next.
namespace {

namespace fs = std::filesystem;
using ExportTest::ana;
using ExportTest::anaLID;
using ExportTest::bea;
using ExportTest::filesBelow;
using ExportTest::media;
using ExportTest::Scene;
using ExportTest::smallBackup;

constexpr const char* photo = "2023-03-08_202640_aa1.jpg";

// Ana's second chat record, by her LID, with a file of its own.
Fixture::BackupContents backupWithLID(bool isEncrypted, bool isLinked) {
  Fixture::BackupContents contents = smallBackup(isEncrypted);
  auto& app = contents.whatsApp;
  app.chats.push_back({.pk = 9, .jid = anaLID, .name = "Ana (new number)"});
  app.messages.push_back({.pk = 9, .chat = 9, .date = ExportTest::firstDate + 7200});
  app.mediaFiles.push_back(media(anaLID, "fa6", "jpg", "a newer photo", 9));
  if (isLinked) app.lidPairs = {{.lid = anaLID, .phoneNumber = "5511900001111"}};
  return contents;
}

TEST(ExporterFolders, TwoRecordsOfOnePersonAreOneFolder) {
  const Scene scene(backupWithLID(false, true));
  EXPECT_EQ(scene.run().chatFolderCount, 3);
  EXPECT_TRUE(fs::exists(scene.content / "Ana/2023-03-08_222640_fa6.jpg"));
  EXPECT_EQ(FolderManifest::load(scene.destination).at(ana), "Ana");
  EXPECT_EQ(scene.run().copiedCount, 0);
}

TEST(ExporterFolders, ChatsOfOneTitleHaveFoldersOfTheirOwn) {
  Scene scene;
  scene.contents.whatsApp.chats[2].name = "ANA";
  scene.write();
  scene.run();
  EXPECT_TRUE(fs::exists(scene.content / "Ana" / photo));
  EXPECT_TRUE(fs::exists(scene.content / "ANA-2/2023-03-08_212640_da4.webp"));
  EXPECT_EQ(scene.run().copiedCount, 0);
}

TEST(ExporterFolders, AChatKeepsItsFolderWhenItsTitleChanges) {
  Scene scene;
  scene.run();
  scene.contents.whatsApp.chats[0].name = "Ana Silva";
  scene.contents.whatsApp.chats[2].name = "Ana";
  scene.write();
  const ExportSummary summary = scene.run();
  EXPECT_EQ(summary.copiedCount, 0);
  EXPECT_EQ(summary.skippedExistingCount, 5);
  EXPECT_FALSE(fs::exists(scene.content / "Ana Silva"));
}

TEST(ExporterFolders, AFolderIsFoundByItsFilesWhenTheManifestIsLost) {
  Scene scene;
  scene.run();
  fs::remove(scene.content / ".tidewell-manifest.json");
  fs::remove(scene.content / "_viewer/folders.json");
  scene.contents.whatsApp.chats[0].name = "Ana Silva";
  scene.contents.whatsApp.chats[2].name = "Ana";
  scene.write();
  EXPECT_EQ(scene.run().copiedCount, 0);
  EXPECT_EQ(FolderManifest::load(scene.destination).at(ana), "Ana");
  EXPECT_EQ(FolderManifest::load(scene.destination).at(bea), "Bea");
}

TEST(ExporterFolders, AChatThatThisBackupLacksKeepsItsFolder) {
  Scene scene;
  scene.run();
  const auto before = filesBelow(scene.content / "Bea");
  auto& app = scene.contents.whatsApp;
  app.chats[2] = {.jid = "5511900007777@s.whatsapp.net", .name = "Bea"};
  app.mediaFiles.resize(3);
  app.mediaFiles.push_back(media("5511900007777@s.whatsapp.net", "fc8", "webp", "another Bea's", 4));
  scene.write();
  scene.run();
  EXPECT_EQ(filesBelow(scene.content / "Bea"), before);
  EXPECT_TRUE(fs::exists(scene.content / "Bea-2/2023-03-08_212640_fc8.webp"));
  EXPECT_EQ(FolderManifest::load(scene.destination).at(bea), "Bea");
}

struct LeftoverTest : testing::TestWithParam<bool> {
  // Exports both records as two chats, then learns that they are one.
  LeftoverTest() {
    scene.run();
    scene.contents = backupWithLID(GetParam(), true);
    scene.write();
  }

  Scene scene{backupWithLID(GetParam(), false)};
  fs::path former = scene.content / "Ana (new number)";
  fs::path moved = scene.content / "Ana/2023-03-08_222640_fa6.jpg";
};
INSTANTIATE_TEST_SUITE_P(Backups, LeftoverTest, testing::Bool(), ExportTest::encryptionName);

TEST_P(LeftoverTest, FilesMoveOutOfTheFormerFolderWhichGoes) {
  ASSERT_TRUE(fs::exists(former));
  Fixture::writeFile(former / "_transcript.txt", "ours");
  const ExportSummary summary = scene.run();
  EXPECT_EQ(summary.copiedCount, 1);
  EXPECT_EQ(summary.skippedExistingCount, 5);
  EXPECT_EQ(ExportTest::textOf(moved), "a newer photo");
  EXPECT_EQ(ExportTest::modified(moved), ExportTest::firstUnixDate + 7200);
  EXPECT_FALSE(fs::exists(former));
  EXPECT_FALSE(FolderManifest::load(scene.destination).contains(anaLID));
}

TEST_P(LeftoverTest, AMovedFileIsNeverDecrypted) {
  Fixture::writeFile(former / "2023-03-08_222640_fa6.jpg", "the same size");
  scene.run();
  EXPECT_EQ(ExportTest::textOf(moved), "the same size") << "it is the earlier export's file that moved";
}

TEST(ExporterFolders, ADamagedFileThatMovesIsTold) {
  Scene scene(backupWithLID(true, false));
  const auto damage = [&scene] {
    const auto& app = scene.contents.whatsApp;
    const std::string path = "Message/" + app.mediaFiles.back().localPath;
    const fs::path stored = Fixture::storedPath(scene.backup, Fixture::fileIDOf(app.domain, path));
    Fixture::Bytes bytes = Fixture::readFile(stored);
    bytes.back() ^= 0x40;
    Fixture::writeFile(stored, bytes);
  };
  const auto isTold = testing::ElementsAre(testing::HasSubstr("fa6.jpg” is damaged in the backup"));
  damage();
  EXPECT_THAT(scene.run().warnings, isTold);
  scene.contents = backupWithLID(true, true);
  scene.write();
  damage();
  EXPECT_THAT(scene.run().warnings, isTold);
  EXPECT_FALSE(fs::exists(scene.content / "Ana (new number)"));
  scene.write();
  const ExportSummary mended = scene.run();
  EXPECT_EQ(mended.copiedCount, 1);
  EXPECT_THAT(mended.warnings, testing::IsEmpty());
}

TEST_P(LeftoverTest, TheUsersFilesStayInTheFormerFolder) {
  Fixture::writeFile(former / "notes.txt", "notes");
  Fixture::writeFile(former / "_transcript.txt", "ours");
  scene.run();
  EXPECT_EQ(filesBelow(former),
            (std::map<std::string, std::string>{{"notes.txt", "notes"}, {"_transcript.txt", "ours"}}));
}

TEST_P(LeftoverTest, AnInterruptedMoveIsContinued) {
  bool isCopying = false;
  const RunControl control{
      .progress =
          [&](const ExportProgress& report) { isCopying = report.phase == ExportProgress::Phase::copyingMedia; },
      .isCancelled = [&] { return isCopying; }};
  EXPECT_THROW(scene.run(ExportOptions::defaultOptions(), control), TidewellError);
  ASSERT_TRUE(fs::exists(former));
  scene.run();
  EXPECT_EQ(ExportTest::textOf(moved), "a newer photo");
  EXPECT_FALSE(fs::exists(former));
}

struct FormerFolderTest : LeftoverTest {
  bool isLinkedInFormerFolder() const {
    for (const auto& [name, data] : filesBelow(scene.content / "_viewer/data")) {
      if (data.find("\"Ana (new number)/2023-03-08_222640_fa6.jpg\"") != std::string::npos) return true;
    }
    return false;
  }
  std::string rememberedFolder(const std::string& jid) const {
    const FolderAssignment all = FolderManifest::load(scene.destination);
    return all.contains(jid) ? all.at(jid) : "";
  }
  void expectAllMoved() const {
    EXPECT_EQ(scene.run(everything).copiedCount, 1);
    EXPECT_EQ(ExportTest::textOf(moved), "a newer photo");
    EXPECT_FALSE(fs::exists(former));
    EXPECT_EQ(rememberedFolder(anaLID), "");
  }

  const ExportOptions everything = ExportOptions::defaultOptions();
  const ExportOptions videos{.includedKinds = {MediaKind::videos}, .exportTranscripts = true};
};
INSTANTIATE_TEST_SUITE_P(Backups, FormerFolderTest, testing::Bool(), ExportTest::encryptionName);

TEST_P(FormerFolderTest, WhatThePhoneLostMovesWithItsChat) {
  scene.contents.whatsApp.mediaFiles.back().storage.missing = true;
  scene.write();
  expectAllMoved();
}

// Without a library there is only its name to tell, and that another file may have had.
TEST_P(FormerFolderTest, WhatThePhoneLostStaysLinkedThereWhereNoLibraryKnowsIt) {
  ExportTest::forgetLibrary(scene.destination);
  scene.contents.whatsApp.mediaFiles.back().storage.missing = true;
  scene.write();
  scene.run(everything);
  EXPECT_TRUE(isLinkedInFormerFolder());
  EXPECT_EQ(rememberedFolder(anaLID), "Ana (new number)");
  expectAllMoved();
}

TEST_P(FormerFolderTest, KindsThatAreLeftOutStayLinkedThereAndMoveLater) {
  scene.run(videos);
  EXPECT_TRUE(isLinkedInFormerFolder());
  EXPECT_EQ(rememberedFolder(ana), "Ana");
  EXPECT_EQ(rememberedFolder(anaLID), "Ana (new number)");
  expectAllMoved();
}

TEST_P(FormerFolderTest, NoOtherChatGetsItWhileItIsRemembered) {
  const std::string carla = "5511900003333@s.whatsapp.net";
  auto& app = scene.contents.whatsApp;
  app.chats.push_back({.pk = 12, .jid = carla, .name = "Ana (new number)"});
  app.messages.push_back({.pk = 12, .chat = 12, .date = ExportTest::firstDate, .text = "Hello"});
  scene.write();
  scene.run(videos);
  EXPECT_EQ(rememberedFolder(carla), "Ana (new number)-2");
  EXPECT_EQ(rememberedFolder(anaLID), "Ana (new number)");
}

// A photo lies in Bea's media folder, but a message of Ana's carries it.
TEST(ExporterFolders, TheFolderOfAnotherChatIsNotRemovedForAFileThatMovedOutOfIt) {
  Scene scene;
  auto& app = scene.contents.whatsApp;
  app.mediaFiles = {media(bea, "aa1", "jpg", "a photo")};
  scene.write();
  scene.run();
  ASSERT_TRUE(fs::exists(scene.content / "Bea/undated_aa1.jpg"));
  fs::rename(scene.content / "Bea/undated_aa1.jpg", scene.content / "Bea" / photo);
  Fixture::writeFile(scene.content / "Bea/_transcript.txt", "all that is left of Bea's chat");
  app.mediaFiles = {media(bea, "aa1", "jpg", "a photo", 1)};
  scene.write();
  scene.run();
  EXPECT_EQ(ExportTest::textOf(scene.content / "Ana" / photo), "a photo");
  EXPECT_EQ(ExportTest::textOf(scene.content / "Bea/_transcript.txt"), "all that is left of Bea's chat");
  EXPECT_EQ(FolderManifest::load(scene.destination).at(bea), "Bea");
  // Neither is it without the manifest, when it is called by Bea's JID.
  fs::rename(scene.content / "Bea", scene.content / bea);
  fs::remove(scene.content / ".tidewell-manifest.json");
  fs::remove(scene.content / "_viewer/folders.json");
  scene.run();
  EXPECT_TRUE(fs::exists(scene.content / bea / "_transcript.txt"));
}

// The message of a deleted chat: its file stands under the JID of its path, a chat without messages.
TEST(ExporterFolders, AFileOfADeletedChatStaysLinkedWhenItsKindIsLeftOutLater) {
  Scene scene;
  scene.contents.whatsApp.chats.push_back({.jid = "5511900003333@s.whatsapp.net", .name = "Carla"});
  scene.contents.whatsApp.messages.push_back({.pk = 9, .chat = 99, .date = ExportTest::firstDate});
  scene.contents.whatsApp.mediaFiles.push_back(media("5511900003333@s.whatsapp.net", "fa6", "pdf", "a bill", 9));
  scene.write();
  scene.run(ExportOptions::defaultOptions());
  const fs::path data = scene.content / "_viewer/data/chat-Unknown.js";
  const std::string before = ExportTest::textOf(data);
  ASSERT_THAT(before, testing::HasSubstr("/2023-03-08_202640_fa6.pdf\""));
  scene.run({.includedKinds = {MediaKind::photos}, .exportTranscripts = true});
  EXPECT_EQ(ExportTest::textOf(data), before);
}

TEST(ExporterFolders, AManifestFromElsewhereLeadsNowhere) {
  const Scene scene;
  fs::create_directories(scene.content / "_viewer");
  Fixture::writeFile(scene.content / ".tidewell-manifest.json",
                     R"({"folders": {")" + ana + R"(": "../../up", ")" + bea + R"(": "_viewer"}, "version": 1})");
  scene.run();
  EXPECT_TRUE(fs::exists(scene.content / "Ana" / photo));
  EXPECT_TRUE(fs::exists(scene.content / "Bea"));
  EXPECT_FALSE(fs::exists(scene.folder / "up"));
}

}  // namespace
