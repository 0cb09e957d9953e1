#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "Tests/Export/ExportScene.h"
#include "Tests/Support/TemporaryDirectory.h"

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

TEST_P(NamedFailuresTest, AProfilePictureThatCannotBeWrittenIsNamed) {
  addPicture({});
  fs::create_directories(scene.content / "_viewer");
  fs::create_directories(scene.content / "avatars/5511900001111_s.whatsapp.net.jpeg/own");
  EXPECT_THAT(
      scene.run(everything).failures,
      ElementsAre(CopyFailure{.name = "5511900001111-1.jpg", .chat = "Ana", .reason = FailureReason::unwritable}));
}

}  // namespace
