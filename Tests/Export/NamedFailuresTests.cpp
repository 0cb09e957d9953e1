#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "Tests/Export/ExportScene.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/Export/Verification.h"
#include "TidewellCore/TidewellError.h"

// What is not in the export although it was asked for has a name, a chat and a reason; the rest goes on.
namespace {

namespace fs = std::filesystem;
using ExportTest::Scene;
using testing::ElementsAre;
using testing::IsEmpty;

const ExportOptions everything = ExportOptions::defaultOptions();

struct NamedFailuresTest : testing::TestWithParam<bool> {
  Scene scene{ExportTest::smallBackup(GetParam())};

  // A picture of Ana's, as WhatsApp keeps it.
  void addPicture(Fixture::StorageOptions storage) {
    scene.contents.whatsApp.files.push_back({.relativePath = "Media/Profile/5511900001111-1.jpg",
                                             .content = Fixture::bytesOf("\xFF\xD8\xFF" + std::string(60, '.')),
                                             .storage = std::move(storage)});
    scene.write();
  }

  fs::path storedMedium() const {
    const Fixture::WhatsAppContents& app = scene.contents.whatsApp;
    return Fixture::storedPath(scene.backup, Fixture::fileIDOf(app.domain, "Message/" + app.mediaFiles[0].localPath));
  }

  static void damageEnd(const fs::path& stored) {
    Fixture::Bytes bytes = Fixture::readFile(stored);
    bytes.back() ^= 0x40;
    Fixture::writeFile(stored, bytes);
  }
};
INSTANTIATE_TEST_SUITE_P(Backups, NamedFailuresTest, testing::Bool(), ExportTest::encryptionName);

TEST_P(NamedFailuresTest, ATranscriptThatCannotBeWrittenKeepsNothingElseBack) {
  fs::create_directories(scene.content / "_viewer");
  fs::create_directories(scene.content / "Ana/_transcript.txt/own");
  const ExportSummary summary = scene.run(everything);
  EXPECT_THAT(summary.failures,
              ElementsAre(CopyFailure{.name = "_transcript.txt", .chat = "Ana", .reason = FailureReason::unwritable}));
  EXPECT_EQ(summary.failedCount, 1);
  EXPECT_EQ(summary.transcriptCount, 5);
  EXPECT_EQ(summary.copiedCount, 5);
  EXPECT_TRUE(fs::exists(scene.destination / "index.html"));
  EXPECT_FALSE(ExportTest::holdsPartials(scene.destination));

  fs::remove_all(scene.content / "Ana/_transcript.txt");
  EXPECT_THAT(scene.run(everything).failures, IsEmpty());
}

TEST_P(NamedFailuresTest, AChatWhoseDataCannotBeWrittenStandsInTheArchivesListAllTheSame) {
  scene.run(everything);
  const fs::path data = scene.content / "_viewer/data/chat-5511900001111_s.whatsapp.net.js";
  ASSERT_TRUE(fs::remove(data));
  fs::create_directories(data / "own");
  const ExportSummary summary = scene.run(everything);
  EXPECT_THAT(summary.failures,
              ElementsAre(CopyFailure{.name = "index.html", .chat = "Ana", .reason = FailureReason::unwritable}));
  EXPECT_NE(ExportTest::textOf(scene.content / "_viewer/data/chats.js").find("\"name\":\"Ana\""), std::string::npos);
}

TEST_P(NamedFailuresTest, AProfilePictureThatIsMissingIsNamed) {
  addPicture({.missing = true});
  const ExportSummary summary = scene.run(everything);
  EXPECT_THAT(summary.failures,
              ElementsAre(CopyFailure{.name = "5511900001111-1.jpg", .chat = "Ana", .reason = FailureReason::missing}));
  EXPECT_EQ(summary.failedCount, 1);
  EXPECT_EQ(summary.copiedCount, 5);
}

TEST_P(NamedFailuresTest, AProfilePictureThatCannotBeReadIsNamed) {
  addPicture({.truncatedTo = 0});
  EXPECT_THAT(
      scene.run(everything).failures,
      ElementsAre(CopyFailure{.name = "5511900001111-1.jpg", .chat = "Ana", .reason = FailureReason::cutShort}));
}

TEST_P(NamedFailuresTest, AProfilePictureThatMayHaveLostItsEndIsCopiedAndTold) {
  if (GetParam()) GTEST_SKIP() << "In an encrypted backup its padding tells.";
  addPicture({.truncatedTo = 8});
  const ExportSummary summary = scene.run(everything);
  EXPECT_THAT(summary.failures, IsEmpty());
  EXPECT_THAT(summary.warnings, ElementsAre(testing::StartsWith("“5511900001111-1.jpg” is shorter in the backup")));
  EXPECT_TRUE(summary.mayBeIncomplete);
}

TEST_P(NamedFailuresTest, AProfilePictureWhoseKeyIsLostIsNamed) {
  if (!GetParam()) GTEST_SKIP() << "A plain backup has no keys.";
  for (const auto& record : {Fixture::Bytes(), Fixture::Bytes(200, 0), Fixture::bytesOf(std::string(99, '\t'))}) {
    Fixture::StorageOptions storage{.withoutRecord = record.empty(), .record = record};
    scene.contents.whatsApp.files.clear();
    addPicture(storage);
    EXPECT_THAT(
        scene.run(everything).failures,
        ElementsAre(CopyFailure{.name = "5511900001111-1.jpg", .chat = "Ana", .reason = FailureReason::keyMissing}));
  }
}

// A failing disk leaves zeroes; their length is right.
TEST_P(NamedFailuresTest, AFileWhoseEndDoesNotDecryptIsCopiedAndTold) {
  if (!GetParam()) GTEST_SKIP() << "A plain backup has nothing to tell it by.";
  const fs::path stored = storedMedium();
  Fixture::writeFile(stored, Fixture::Bytes(fs::file_size(stored)));
  const ExportSummary summary = scene.run(everything);
  EXPECT_EQ(summary.copiedCount, 5);
  EXPECT_THAT(summary.warnings, ElementsAre(testing::HasSubstr("aa1.jpg” is damaged in the backup, or locked with")));
  EXPECT_TRUE(summary.mayBeIncomplete);
}

// Only its last block, so that everything else of it can be read.
TEST_P(NamedFailuresTest, AFileWhoseEndDoesNotDecryptIsToldUntilTheBackupHasItWhole) {
  if (!GetParam()) GTEST_SKIP() << "A plain backup has nothing to tell it by.";
  const fs::path stored = storedMedium();
  const Fixture::Bytes whole = Fixture::readFile(stored);
  damageEnd(stored);
  const auto isTold = testing::Contains(testing::HasSubstr("aa1.jpg” is damaged in the backup"));
  const auto stopsEarly = [&] { return fs::exists(scene.content / "Ana"); };
  try {
    scene.run(everything, {.isCancelled = stopsEarly});
  } catch (const TidewellError&) {
  }
  EXPECT_TRUE(fs::exists(scene.content / "Ana"));
  for (int times = 0; times < 2; ++times) EXPECT_THAT(scene.run(everything).warnings, isTold) << times;
  EXPECT_THAT(Verification::run({.destination = scene.destination}).findings,
              ElementsAre(testing::Field(&VerifySummary::Finding::message, testing::HasSubstr("may be damaged"))));
  const std::size_t before = ExportTest::filesBelow(scene.content / "Ana").size();

  Fixture::writeFile(stored, whole);
  const ExportSummary mended = scene.run(everything);
  EXPECT_EQ(mended.copiedCount, 1);
  EXPECT_THAT(mended.warnings, IsEmpty());
  EXPECT_EQ(ExportTest::filesBelow(scene.content / "Ana").size(), before + 1) << "beside the damaged one";
  EXPECT_EQ(scene.run(everything).copiedCount, 0);
  EXPECT_THAT(Verification::run({.destination = scene.destination}).findings, IsEmpty());
}

TEST_P(NamedFailuresTest, AProfilePictureWhoseEndDoesNotDecryptIsToldEachTime) {
  if (!GetParam()) GTEST_SKIP() << "A plain backup has nothing to tell it by.";
  addPicture({});
  damageEnd(Fixture::storedPath(
      scene.backup, Fixture::fileIDOf(scene.contents.whatsApp.domain, "Media/Profile/5511900001111-1.jpg")));
  for (int times = 0; times < 2; ++times) {
    const ExportSummary summary = scene.run(everything);
    EXPECT_THAT(summary.warnings, ElementsAre(testing::StartsWith("“5511900001111-1.jpg” is damaged in the backup")));
    EXPECT_TRUE(summary.mayBeIncomplete);
  }
}

// SQLite sees nothing amiss in a page whose last bytes are other ones.
TEST_P(NamedFailuresTest, ADatabaseWhoseEndDoesNotDecryptIsTold) {
  if (!GetParam()) GTEST_SKIP() << "A plain backup has nothing to tell it by.";
  damageEnd(Fixture::storedPath(scene.backup, Fixture::fileIDOf(scene.contents.whatsApp.domain, "ChatStorage.sqlite")));
  EXPECT_THAT(scene.run(everything).warnings,
              ElementsAre(testing::HasSubstr("Some messages may be missing: WhatsApp’s chat database is damaged.")));
}

TEST_P(NamedFailuresTest, AnIndexWhoseEndDoesNotDecryptIsTold) {
  if (!GetParam()) GTEST_SKIP() << "A plain backup has nothing to tell it by.";
  damageEnd(scene.backup / "Manifest.db");
  EXPECT_THAT(scene.run(everything).warnings,
              ElementsAre(testing::HasSubstr("Some files may be missing: the backup’s file index is damaged.")));
}

TEST_P(NamedFailuresTest, AProfilePictureThatCannotBeWrittenIsNamed) {
  addPicture({});
  fs::create_directories(scene.content / "_viewer");
  fs::create_directories(scene.content / "avatars/5511900001111_s.whatsapp.net.jpeg/own");
  EXPECT_THAT(
      scene.run(everything).failures,
      ElementsAre(CopyFailure{.name = "5511900001111-1.jpg", .chat = "Ana", .reason = FailureReason::unwritable}));
}

}  // namespace
