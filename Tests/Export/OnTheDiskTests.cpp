#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>

#include <chrono>
#include <filesystem>
#include <map>
#include <string>
#include <thread>

#include "Tests/Export/ExportScene.h"
#include "Tests/Support/DiskImage.h"
#include "Tests/Support/Failures.h"
#include "Tests/Support/SmallVolume.h"
#include "TidewellCore/Export/EarlyEnd.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/TidewellError.h"

// What the summary calls copied is on the disk: after a power cut, on a stick that lies.
namespace {

namespace fs = std::filesystem;
using ExportTest::filesBelow;
using ExportTest::media;
using ExportTest::Scene;
using Fixture::DiskImage;
using Tree = std::map<std::string, std::string>;

const ExportOptions everything = ExportOptions::defaultOptions();
constexpr std::int64_t megabyte = 1 << 20;

// So many photos of Ana's, each with a text of its own.
Fixture::BackupContents photos(int count, std::size_t size) {
  Fixture::BackupContents contents = ExportTest::smallBackup();
  contents.whatsApp.mediaFiles.clear();
  for (int i = 0; i < count; ++i) {
    const std::string name = "p" + std::to_string(i);
    contents.whatsApp.mediaFiles.push_back(media(ExportTest::ana, name, "jpg", name + std::string(size, '.')));
  }
  return contents;
}

// What the power leaves of the image at this moment, mounted again.
Tree afterPowerCut(const DiskImage& disk, const fs::path& folder) {
  fs::create_directories(folder);
  fs::copy_file(disk.image(), folder / "image", fs::copy_options::overwrite_existing);
  const DiskImage again(folder, folder / "image");
  EXPECT_TRUE(again.isMounted()) << "the volume is broken";
  Tree tree;
  for (auto& [path, text] : filesBelow(again.root())) {
    if (path.find("/.tidewell-") == std::string::npos) tree.emplace(path, text);
  }
  return tree;
}

// The photos of a tree, by their text.
std::size_t wholePhotos(const Tree& tree, std::size_t size) {
  std::size_t count = 0;
  for (const auto& [path, text] : tree) {
    if (!path.ends_with(".jpg")) continue;
    ++count;
    EXPECT_EQ(text.substr(text.find('.')), std::string(size, '.')) << path << " is not whole";
  }
  return count;
}

std::optional<TidewellError> failureOf(const Scene& scene) {
  try {
    scene.run(everything);
  } catch (const TidewellError& error) {
    return error;
  }
  return std::nullopt;
}

TEST(OnTheDisk, AllThatAFinishedExportWroteOutlivesAPowerCut) {
  Scene scene(photos(300, 2000));
  const DiskImage disk(scene.folder.path(), 64 * megabyte);
  if (!disk.isMounted()) GTEST_SKIP() << "This user cannot mount a volume.";
  scene.destination = disk.root() / "export";
  const ExportSummary summary = scene.run(everything);
  const Tree left = afterPowerCut(disk, scene.folder / "after");
  EXPECT_EQ(summary.copiedCount, 300);
  EXPECT_EQ(wholePhotos(left, 2000), 300U);
  for (const char* page :
       {"export/index.html", "export/messages/Ana/_transcript.txt", "export/messages/_viewer/data/chats.js"}) {
    ASSERT_TRUE(left.contains(page)) << page;
    EXPECT_FALSE(left.at(page).empty()) << page;
  }
}

TEST(OnTheDisk, AVolumeThatIsMountedInTheDestinationIsFlushedToo) {
  for (const char* place : {"messages", "messages/Ana"}) {
    Scene scene(photos(30, 2000));
    const DiskImage disk(scene.folder.path(), 64 * megabyte);
    const fs::path mounted = scene.destination / place;
    fs::create_directories(mounted);
    fs::create_directories(scene.destination / "messages/_viewer");
    if (!disk.isMounted()) GTEST_SKIP() << "This user cannot mount a volume.";
    fs::create_directories(disk.root() / "_viewer");
    ASSERT_EQ(::mount(disk.root().c_str(), mounted.c_str(), nullptr, MS_BIND, nullptr), 0);
    const ExportSummary summary = scene.run(everything);
    EXPECT_EQ(summary.copiedCount, 30);
    EXPECT_EQ(wholePhotos(afterPowerCut(disk, scene.folder / "after"), 2000), 30U) << place;
    ::umount(mounted.c_str());
  }
}

TEST(OnTheDisk, APowerCutOnTheWayLeavesWholeFilesAndIsContinued) {
  Scene scene(photos(300, 2000));
  const DiskImage disk(scene.folder.path(), 64 * megabyte);
  if (!disk.isMounted()) GTEST_SKIP() << "This user cannot mount a volume.";
  scene.destination = disk.root() / "export";
  std::size_t left = 0;  // on the disk when the power goes
  const auto cut = [&] {
    if (left > 0 || Files::listVisible(scene.destination / "messages/Ana").empty()) return false;
    // By now the volume has written down the names, and of the bytes what was asked of it.
    std::this_thread::sleep_for(std::chrono::milliseconds(1500));
    left = wholePhotos(afterPowerCut(disk, scene.folder / "after"), 2000);
    return false;
  };
  scene.run(everything, {.isCancelled = cut});
  EXPECT_GE(left, 256U) << "a batch was on the disk by then";
}

TEST(OnTheDisk, AStickThatLiesAboutItsSizeIsFoundOut) {
  Scene scene(photos(40, 256 << 10));
  const Fixture::SmallVolume truth(scene.folder / "stick", 4 * megabyte);
  if (!truth.isMounted()) GTEST_SKIP() << "This user cannot mount a volume.";
  const DiskImage stick(scene.folder / "stick", 64 * megabyte);
  if (!stick.isMounted()) GTEST_SKIP() << "This user cannot mount a volume.";
  scene.destination = stick.root() / "export";
  // Which of the two depends on what such a stick answers.
  EXPECT_THAT(failureOf(scene), testing::AnyOf(TidewellError::ioFailure(EarlyEnd::destinationBroken),
                                               TidewellError::ioFailure(EarlyEnd::fullDestination)));
  EXPECT_THAT(filesBelow(scene.destination), testing::Not(testing::Contains(testing::Key(testing::EndsWith(".jpg")))))
      << "a file that is not on the disk has no name";
}

TEST(OnTheDisk, AFileWithoutContentIsReplacedAndGetsNoSecondName) {
  const Scene scene;
  scene.run();
  const Tree before = filesBelow(scene.content);
  for (const auto& [path, text] : before) {
    if (path.find("/2023") != std::string::npos) fs::resize_file(scene.content / path, 0);
  }
  EXPECT_EQ(scene.run().copiedCount, 4);
  EXPECT_EQ(filesBelow(scene.content), before);
  EXPECT_EQ(scene.run().copiedCount, 0);
}

TEST(OnTheDisk, AFileThatIsEmptyOnThePhoneIsNotCopiedTwice) {
  Scene scene;
  auto& files = scene.contents.whatsApp.mediaFiles;
  files = {media(ExportTest::ana, "aa1", "jpg", ""), media(ExportTest::ana, "aa1", "jpg", "")};
  files[1].localPath.replace(files[1].localPath.find("/a/a/"), 5, "/b/b/");
  scene.write();
  EXPECT_EQ(scene.run().copiedCount, 2);
  EXPECT_EQ(scene.run().copiedCount, 0);
}

}  // namespace
