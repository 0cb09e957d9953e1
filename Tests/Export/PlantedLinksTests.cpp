#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "Tests/Export/ExportScene.h"
#include "Tests/Support/BackupBuilder.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/Destination/FolderManifest.h"

// Links that somebody put into a backup or a destination lead an export nowhere.
namespace {

namespace fs = std::filesystem;
using ExportTest::filesBelow;
using ExportTest::Scene;
using ExportTest::smallBackup;
using testing::IsEmpty;

const ExportOptions everything = ExportOptions::defaultOptions();

// A folder of the user's that no export may read or write, and links to it.
struct PlantedLinksTest : testing::TestWithParam<const char*> {
  PlantedLinksTest() {
    Fixture::writeFile(secret / "id", "secret");
    scene.contents.whatsApp.files.push_back(
        {.relativePath = "Media/Profile/5511900001111-1.jpg", .content = Fixture::bytesOf("\xFF\xD8\xFF and so on")});
    scene.write();
  }

  bool isUntouched() const { return filesBelow(secret) == std::map<std::string, std::string>{{"id", "secret"}}; }
  void link(const fs::path& place) const {
    fs::create_directories(place.parent_path());
    fs::create_directory_symlink(secret, place);
  }

  Scene scene;
  fs::path secret = scene.folder / "secret";
};

// "messages" itself, and what stands in it.
INSTANTIATE_TEST_SUITE_P(Places, PlantedLinksTest,
                         testing::Values("messages", "messages/_viewer", "messages/_viewer/data", "messages/avatars",
                                         "messages/Ana", "index.html", "messages/.tidewell-manifest.json",
                                         "messages/.tidewell-names.json"));

TEST_P(PlantedLinksTest, InAFreshDestinationMakeRoom) {
  link(scene.destination / GetParam());
  const ExportSummary summary = scene.run(everything);
  EXPECT_EQ(summary.copiedCount, 5);
  EXPECT_THAT(summary.failures, IsEmpty());
  EXPECT_TRUE(isUntouched());
  EXPECT_FALSE(fs::is_symlink(scene.destination / GetParam()));
  EXPECT_EQ(scene.run(everything).copiedCount, 0);
}

TEST_P(PlantedLinksTest, InThePlaceOfWhatAnExportWroteMakeRoom) {
  scene.run(everything);
  const fs::path place = scene.destination / GetParam();
  fs::rename(place, scene.folder / "taken");
  link(place);
  const ExportSummary summary = scene.run(everything);
  EXPECT_THAT(summary.failures, IsEmpty());
  EXPECT_TRUE(isUntouched());
  EXPECT_FALSE(fs::is_symlink(place));
  EXPECT_EQ(scene.run(everything).copiedCount, 0);
}

TEST_F(PlantedLinksTest, WhereAnOlderExportHadItsViewerAreLeftAlone) {
  link(scene.destination / "_viewer");
  EXPECT_EQ(scene.run(everything).copiedCount, 5);
  EXPECT_EQ(scene.run(everything).copiedCount, 0);
  EXPECT_TRUE(isUntouched());
  EXPECT_TRUE(fs::is_symlink(scene.destination / "_viewer"));
}

TEST_F(PlantedLinksTest, OfOwnFilesInTheExportAreReplacedOrKept) {
  scene.run(everything);
  const fs::path photo = scene.content / "Ana/2023-03-08_202640_aa1.jpg";
  for (const fs::path& place : {photo, scene.content / "Ana/_transcript.txt", scene.content / "_viewer/app.js"}) {
    fs::remove(place);
    fs::create_symlink(secret / "id", place);
  }
  EXPECT_EQ(scene.run(everything).copiedCount, 1);
  EXPECT_TRUE(isUntouched());
  EXPECT_EQ(ExportTest::textOf(photo), "a photo");
  EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(scene.content / "_viewer/app.js")));
  EXPECT_TRUE(fs::is_symlink(scene.content / "Ana/2023-03-08_202640_aa1-2.jpg")) << "somebody may need it";
}

TEST_F(PlantedLinksTest, ToFoldersInABackupAreNotFollowed) {
  const std::string photo = "Message/" + scene.contents.whatsApp.mediaFiles[0].localPath;
  const fs::path folder =
      Fixture::storedPath(scene.backup, Fixture::fileIDOf(Fixture::consumerDomain, photo)).parent_path();
  fs::rename(folder, scene.folder / "elsewhere");
  fs::create_directory_symlink(scene.folder / "elsewhere", folder);
  const ExportSummary summary = scene.run();
  EXPECT_EQ(summary.failedCount, 1);
  EXPECT_EQ(summary.copiedCount, 4);
}

TEST_F(PlantedLinksTest, AboveTheRootsAreTheUsers) {
  fs::create_directories(scene.folder / "drive");
  fs::create_directory_symlink(scene.folder / "drive", scene.destination);
  fs::rename(scene.backup, scene.folder / "phone");
  fs::create_directory_symlink(scene.folder / "phone", scene.backup);
  EXPECT_EQ(scene.run(everything).copiedCount, 5);
  EXPECT_TRUE(fs::exists(scene.folder / "drive/messages/Ana"));
}

}  // namespace
