#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

#include "Tests/Export/ExportScene.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/TidewellError.h"

// Stored files that are damaged, missing or not what the index says of them.
namespace {

namespace fs = std::filesystem;
using ExportTest::ana;
using ExportTest::media;
using ExportTest::Scene;
using ExportTest::smallBackup;

constexpr const char* photoName = "2023-03-08_202640_aa1.jpg";

struct ExporterDamageTest : testing::TestWithParam<bool> {
  Fixture::MediaFile& photo() { return scene.contents.whatsApp.mediaFiles[0]; }
  Fixture::MediaFile& video() { return scene.contents.whatsApp.mediaFiles[1]; }
  fs::path storedPhoto() const {
    return Fixture::storedPath(
        scene.backup,
        Fixture::fileIDOf(Fixture::consumerDomain, "Message/" + scene.contents.whatsApp.mediaFiles[0].localPath));
  }

  // Of the five files all but so many arrive, and nothing stands for the others.
  void expectFailures(std::int64_t count, FailureReason reason = FailureReason::missing) {
    for (int run = 0; run < 2; ++run) {
      const ExportSummary summary = scene.run();
      EXPECT_EQ(summary.failedCount, count);
      EXPECT_EQ(std::ranges::count(summary.failures, reason, &CopyFailure::reason), count);
      EXPECT_EQ(summary.failures.size(), static_cast<std::size_t>(count));
      EXPECT_EQ(run == 0 ? summary.copiedCount : summary.skippedExistingCount, 5 - count);
      EXPECT_EQ(ExportTest::filesBelow(scene.content).size(), static_cast<std::size_t>(5 - count + 3));
      EXPECT_FALSE(ExportTest::holdsPartials(scene.destination));
    }
  }

  Scene scene{smallBackup(GetParam())};
};
INSTANTIATE_TEST_SUITE_P(Backups, ExporterDamageTest, testing::Bool(), ExportTest::encryptionName);

TEST_P(ExporterDamageTest, AMissingFileIsACountedFailure) {
  photo().storage.missing = true;
  scene.write();
  expectFailures(1);
}

TEST_P(ExporterDamageTest, AJournalThatIsMissingIsAWarningBeforeAnythingIsCopied) {
  scene.contents.whatsApp.databaseStorage["ChatStorage.sqlite-wal"] = {.missing = true};
  scene.write();
  std::vector<std::string> told;
  const ExportSummary summary =
      scene.run(ExportTest::mediaAlone(), {.warned = [&](const std::string& text) { told.push_back(text); }});
  ASSERT_EQ(summary.warnings.size(), 1U);
  EXPECT_TRUE(summary.warnings[0].starts_with("The newest messages may be missing")) << summary.warnings[0];
  EXPECT_EQ(told, summary.warnings);
}

TEST_P(ExporterDamageTest, AllOfAChatsFilesMissingMakesNoFolder) {
  photo().storage.missing = true;
  video().storage.missing = true;
  scene.write();
  expectFailures(2);
  EXPECT_FALSE(fs::exists(scene.content / "Ana"));
}

TEST_P(ExporterDamageTest, AFileThatIsGoneStaysInTheExport) {
  scene.run();
  const auto before = ExportTest::filesBelow(scene.destination);
  photo().storage.missing = true;
  scene.write();
  EXPECT_EQ(scene.run().failedCount, 0) << "the export has it";
  EXPECT_EQ(ExportTest::filesBelow(scene.destination), before);
}

TEST_P(ExporterDamageTest, AFIFOIsACountedFailureAndIsNotWaitedFor) {
  fs::remove(storedPhoto());
  ASSERT_EQ(::mkfifo(storedPhoto().c_str(), 0600), 0);
  expectFailures(1, FailureReason::unreadable);
}

TEST_P(ExporterDamageTest, ALinkedFileIsNotFollowed) {
  Fixture::writeFile(scene.folder / "secret", "0123456789abcdef");
  fs::remove(storedPhoto());
  fs::create_symlink(scene.folder / "secret", storedPhoto());
  expectFailures(1, FailureReason::unreadable);
}

TEST_P(ExporterDamageTest, AFolderInAFilesPlaceIsACountedFailure) {
  fs::remove(storedPhoto());
  fs::create_directory(storedPhoto());
  expectFailures(1, FailureReason::unreadable);
}

TEST_P(ExporterDamageTest, AnIdentifierThatLeadsOutOfTheBackupIsACountedFailure) {
  Fixture::writeFile(scene.folder / "secret", "0123456789abcdef");
  photo().storage.fileID = "../secret";
  video().storage.fileID = "";
  scene.write();
  expectFailures(2);
}

TEST_P(ExporterDamageTest, AFileThatMayHaveLostItsEndIsCopiedAndTold) {
  scene.contents.whatsApp.mediaFiles[0].storage.recordedSize = 1000;
  scene.write();
  const ExportSummary summary = scene.run();
  EXPECT_EQ(summary.failedCount, 0);
  EXPECT_EQ(summary.copiedCount, 5);
  ASSERT_EQ(summary.warnings.size(), 1U);
  EXPECT_TRUE(summary.warnings[0].starts_with("“2023-03-08_202640_aa1.jpg” is shorter in the backup"));
  EXPECT_TRUE(summary.mayBeIncomplete);

  scene.contents.whatsApp.mediaFiles[1].storage.recordedSize = 1000;
  scene.contents.whatsApp.mediaFiles[2].storage.recordedSize = 1;
  scene.write();
  EXPECT_NE(scene.run().warnings.at(0).find("” and 1 more are shorter"), std::string::npos);
}

TEST_P(ExporterDamageTest, WrongRecordedSizesBringNoSecondCopy) {
  photo().storage.recordedSize = 100'000;
  video().storage.recordedSize = 3;
  scene.contents.whatsApp.mediaFiles[2].storage.recordedSize = std::numeric_limits<std::int64_t>::max();
  scene.contents.whatsApp.mediaFiles[3].storage.recordedSize = -1;
  scene.contents.whatsApp.mediaFiles[4].storage.withoutSize = true;
  scene.write();
  expectFailures(0);
  EXPECT_EQ(ExportTest::textOf(scene.content / "Ana/2023-03-08_202641_ab2.mp4"), "a video, sixteen");
  EXPECT_EQ(ExportTest::textOf(scene.content / "Bea/undated_ea5.pdf"), "a document that no message carries");
}

// Without its record there is no key: what is stored is not the photo, however it is called.
TEST_P(ExporterDamageTest, AFileWhoseRecordIsLostIsCopiedFromAPlainBackupOnly) {
  using Fixture::Bytes;
  for (const auto& record :
       {Bytes(), Bytes(200, 0), Fixture::bytesOf("bplist00"), Fixture::bytesOf(std::string(99, '\t'))}) {
    photo().storage = {.withoutRecord = record.empty(), .record = record};
    scene.write();
    expectFailures(GetParam() ? 1 : 0, FailureReason::keyMissing);
    const fs::path copy = scene.content / "Ana/2023-03-08_202640_aa1.jpg";
    EXPECT_EQ(fs::exists(copy) ? ExportTest::textOf(copy) : "", GetParam() ? "" : "a photo");
    fs::remove_all(scene.destination);
  }
}

TEST_P(ExporterDamageTest, AFileThatItsRecordCallsUnprotectedIsCopiedAsItIsStored) {
  photo().storage = {.withoutKey = true, .protectionClass = 0};
  scene.write();
  expectFailures(0);
  EXPECT_EQ(ExportTest::textOf(scene.content / "Ana/2023-03-08_202640_aa1.jpg"), "a photo");
}

TEST(ExporterDamage, AFileThatIsPaddedAsEncryptedOnesAreIsNotCopiedAsItIsStored) {
  Scene scene(smallBackup(true));
  auto& photo = scene.contents.whatsApp.mediaFiles[0];
  photo.content = Fixture::Bytes(16, 0xA7);
  photo.storage = {.recordedSize = 7, .withoutKey = true, .protectionClass = 0};
  scene.write();
  const ExportSummary summary = scene.run();
  EXPECT_EQ(summary.failures,
            (std::vector<CopyFailure>{{.name = photoName, .chat = "Ana", .reason = FailureReason::keyMissing}}));
  EXPECT_FALSE(fs::exists(scene.content / "Ana/2023-03-08_202640_aa1.jpg"));
}

TEST_P(ExporterDamageTest, AnEmptyFileIsExportedEmpty) {
  photo().content.clear();
  photo().storage.recordedSize = 0;
  photo().storage.truncatedTo = 0;
  video().content.clear();
  video().storage.withoutSize = true;
  video().storage.truncatedTo = 0;
  scene.write();
  expectFailures(0);
  EXPECT_EQ(ExportTest::textOf(scene.content / "Ana/2023-03-08_202640_aa1.jpg"), "");
  EXPECT_EQ(ExportTest::textOf(scene.content / "Ana/2023-03-08_202641_ab2.mp4"), "");
}

TEST_P(ExporterDamageTest, AFileThatIsEmptyAlthoughTheIndexKnowsBetterIsACountedFailure) {
  photo().storage.truncatedTo = 0;
  scene.write();
  expectFailures(1, FailureReason::cutShort);
}

struct CutFileTest : testing::TestWithParam<std::size_t> {};
INSTANTIATE_TEST_SUITE_P(Lengths, CutFileTest, testing::Values(0, 1, 15, 16, 17, 31, 32, 40, 4096));

TEST_P(CutFileTest, AnEncryptedFileThatWasCutIsACountedFailure) {
  Scene scene(smallBackup(true));
  auto& photo = scene.contents.whatsApp.mediaFiles[0];
  photo.content = Fixture::Bytes(5000, 'x');
  photo.storage.truncatedTo = GetParam();
  scene.write();
  const ExportSummary summary = scene.run();
  EXPECT_EQ(summary.failedCount, 1);
  EXPECT_EQ(summary.failures,
            (std::vector<CopyFailure>{{.name = photoName, .chat = "Ana", .reason = FailureReason::cutShort}}));
  EXPECT_EQ(summary.copiedCount, 4);
  EXPECT_FALSE(fs::exists(scene.content / "Ana/2023-03-08_202640_aa1.jpg"));
  EXPECT_FALSE(ExportTest::holdsPartials(scene.destination));
}

TEST(ExporterDamage, AFileUnderAClassThatThePasswordDoesNotOpenIsACountedFailure) {
  Scene scene(smallBackup(true));
  scene.contents.whatsApp.mediaFiles[0].storage.protectionClass = 11;
  scene.write();
  const ExportSummary summary = scene.run();
  EXPECT_EQ(summary.failedCount, 1);
  EXPECT_EQ(summary.failures,
            (std::vector<CopyFailure>{{.name = photoName, .chat = "Ana", .reason = FailureReason::keyMissing}}));
  EXPECT_EQ(summary.copiedCount, 4);
  EXPECT_FALSE(ExportTest::holdsPartials(scene.destination));
}

TEST(ExporterDamage, ChatDatabasesThatCannotBeReadEndTheRunBeforeAnythingIsWritten) {
  Scene scene;
  scene.contents.whatsApp.databaseStorage["ChatStorage.sqlite"].truncatedTo = 1000;
  scene.write();
  EXPECT_THROW(scene.run(), TidewellError);
  EXPECT_FALSE(fs::exists(scene.destination));
}

TEST(ExporterDamage, ABackupWithoutWhatsAppSaysSo) {
  Scene scene({.whatsApp = {.withChatStorage = false, .withContacts = false}});
  try {
    scene.run();
    FAIL() << "nothing was thrown";
  } catch (const TidewellError& error) {
    EXPECT_TRUE(error.is<TidewellError::ChatStorageUnreadable>()) << error.what();
  }
  EXPECT_FALSE(fs::exists(scene.destination));
}

TEST(ExporterDamage, AChatWithoutAnythingToReadInItsJIDIsExported) {
  Scene scene;
  scene.contents.whatsApp.mediaFiles.push_back(media(" ", "fa6", "jpg", "whose?"));
  scene.contents.whatsApp.mediaFiles.push_back({.localPath = "Media", .content = {}});
  scene.write();
  const ExportSummary summary = scene.run();
  EXPECT_EQ(summary.failedCount, 0);
  EXPECT_EQ(summary.copiedCount, 6);
}

TEST(ExporterDamage, NamesThatWouldLeadOutOfTheContentRootAreCleaned) {
  Scene scene;
  scene.contents.whatsApp.chats[0].name = "../../up";
  scene.contents.whatsApp.chats[1].jid = "../../../etc@g.us";
  scene.contents.whatsApp.chats[1].name = "";
  scene.contents.whatsApp.chats[2].name = "_viewer";
  scene.contents.whatsApp.mediaFiles.push_back(media("..", "fb7", "jpg", "x"));
  scene.write();
  EXPECT_EQ(scene.run().failedCount, 0);
  std::size_t outside = 0;
  for (const auto& [path, text] : ExportTest::filesBelow(scene.folder.path())) {
    if (!path.starts_with("device/") && !path.starts_with("Desktop/messages/")) ++outside;
  }
  EXPECT_EQ(outside, 0U);
  EXPECT_TRUE(fs::exists(scene.content / "_viewer-2/2023-03-08_212640_da4.webp"));
}

}  // namespace
