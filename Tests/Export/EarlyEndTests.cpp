#include "TidewellCore/Export/EarlyEnd.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <functional>
#include <set>

#include "Tests/Export/ExportScene.h"
#include "Tests/Support/Failures.h"
#include "Tests/Support/SmallVolume.h"
#include "Tests/Support/Unprivileged.h"
#include "TidewellCore/TidewellError.h"

// Exports during which the disk fills up or the backup is taken away.
namespace {

namespace fs = std::filesystem;
using ExportTest::filesBelow;
using ExportTest::Scene;
using ExportTest::smallBackup;
using Fixture::failsWith;
using Fixture::SmallVolume;
using Phase = ExportProgress::Phase;

const ExportOptions everything = ExportOptions::defaultOptions();
constexpr std::int64_t page = 4096;  // tmpfs gives whole pages

struct EarlyEndTest : testing::TestWithParam<bool> {
  // Five files of three pages each.
  void enlarge() {
    for (auto& file : scene.contents.whatsApp.mediaFiles) file.content = Fixture::Bytes(3 * page, 'x');
    scene.write();
  }
  void addMediaUpTo(std::int64_t count) {
    auto& files = scene.contents.whatsApp.mediaFiles;
    while (std::ssize(files) < count) {
      files.push_back({.localPath = Fixture::mediaPath("5511988887777@s.whatsapp.net",
                                                       "ab" + std::to_string(files.size()), "jpg")});
    }
  }
  // Calls `action` once, when the phase has completed so much.
  ProgressObserver when(Phase phase, std::int64_t completed, std::function<void()> action) {
    return [=, this](const ExportProgress& progress) {
      if (isDone || progress.phase != phase || progress.completed != completed) return;
      isDone = true;
      action();
    };
  }
  static void moveAll(const fs::path& from, const fs::path& to) {
    fs::create_directories(to);
    for (const fs::directory_entry& entry : fs::directory_iterator(from)) {
      fs::rename(entry.path(), to / entry.path().filename());
    }
  }
  // Not the folder itself: what was opened before it was moved can still be read.
  void takeBackup() const { moveAll(scene.backup, scene.folder / "taken"); }
  void bringBackup() const { moveAll(scene.folder / "taken", scene.backup); }
  // Leaves so many pages of the volume.
  void fillVolume(std::int64_t pagesLeft) const {
    const auto available = static_cast<std::int64_t>(fs::space(scene.destination).available);
    Fixture::writeFile(scene.destination / "filling",
                       std::string(static_cast<std::size_t>(available - pagesLeft * page), 'f'));
  }
  std::int64_t mediaCount() const {
    std::int64_t count = 0;
    for (const auto& [path, text] : filesBelow(scene.content)) count += text == std::string(3 * page, 'x') ? 1 : 0;
    return count;
  }

  Scene scene{smallBackup(GetParam())};
  bool isDone = false;
};
INSTANTIATE_TEST_SUITE_P(Backups, EarlyEndTest, testing::Bool(), ExportTest::encryptionName);

TEST_P(EarlyEndTest, ADiskThatFillsUpEndsTheCopying) {
  enlarge();
  const SmallVolume volume(scene.destination, 128 * page);
  if (!volume.isMounted()) GTEST_SKIP() << "This user cannot mount a volume.";
  const auto fill = when(Phase::copyingMedia, 0, [&] { fillVolume(8); });
  EXPECT_THAT([&] { scene.run(everything, {.progress = fill}); }, failsWith(EarlyEnd::fullDestination));
  const std::int64_t copied = mediaCount();
  EXPECT_GT(copied, 0);
  EXPECT_LT(copied, 4) << "the copying would have gone on";
  EXPECT_FALSE(ExportTest::holdsPartials(scene.destination));

  fs::remove(scene.destination / "filling");
  const ExportSummary next = scene.run(everything);
  EXPECT_EQ(next.skippedExistingCount, copied);
  EXPECT_EQ(next.copiedCount, 5 - copied);
}

TEST_P(EarlyEndTest, ADestinationThatIsTakenAwayWhileTranscriptsAreWrittenSaysSo) {
  const auto take = when(Phase::writingTranscripts, 0, [&] { fs::remove_all(scene.destination); });
  EXPECT_THAT([&] { scene.run(everything, {.progress = take}); },
              failsWith(TidewellError::destinationNotWritable(scene.destination)));
}

TEST_P(EarlyEndTest, ADiskThatFillsUpWhileTranscriptsAreWrittenSaysSo) {
  const SmallVolume volume(scene.destination, 256 * page);
  if (!volume.isMounted()) GTEST_SKIP() << "This user cannot mount a volume.";
  for (std::int64_t left = 0; left < 3; ++left) {
    fs::remove_all(scene.content);
    fs::remove(scene.destination / "filling");
    isDone = false;
    const auto fill = when(Phase::writingTranscripts, 0, [&] { fillVolume(left); });
    EXPECT_THAT([&] { scene.run(everything, {.progress = fill}); }, failsWith(EarlyEnd::fullDestination)) << left;
    EXPECT_FALSE(ExportTest::holdsPartials(scene.destination));
  }
  fs::remove(scene.destination / "filling");
  EXPECT_EQ(scene.run(everything).skippedExistingCount, 5);
}

TEST_P(EarlyEndTest, ADiskThatIsFullFromTheBeginningSaysSo) {
  const SmallVolume volume(scene.destination, 256 * page);
  if (!volume.isMounted()) GTEST_SKIP() << "This user cannot mount a volume.";
  scene.run();
  fs::remove(scene.content / ".tidewell-manifest.json");
  fillVolume(0);
  EXPECT_THAT([&] { scene.run(); }, failsWith(EarlyEnd::fullDestination));
}

TEST_P(EarlyEndTest, AFullTemporaryFolderIsNotTakenForTheDestination) {
  const Fixture::TemporaryDirectory folder;
  const SmallVolume volume(folder / "small", 2 * page);
  if (!volume.isMounted()) GTEST_SKIP() << "This user cannot mount a volume.";
  const char* former = std::getenv("TMPDIR");
  const std::string before = former == nullptr ? "/tmp" : former;
  ::setenv("TMPDIR", (folder / "small").c_str(), 1);
  EXPECT_THAT([&] { scene.run(); }, failsWith(EarlyEnd::fullTemporaryFolder));
  ::setenv("TMPDIR", before.c_str(), 1);
}

TEST_P(EarlyEndTest, ABackupThatIsTakenAwayEndsTheCopying) {
  constexpr std::int64_t fileCount = 300;  // more than are written ahead of their turns
  addMediaUpTo(fileCount);
  enlarge();
  // Asked before each copy, while progress is only told ten times a second.
  const auto take = [&] {
    if (!isDone && fs::exists(scene.content) && mediaCount() >= 2) {
      isDone = true;
      takeBackup();
    }
    return false;
  };
  EXPECT_THAT([&] { scene.run(everything, {.isCancelled = take}); }, failsWith(EarlyEnd::backupGone));
  const std::int64_t copied = mediaCount();
  EXPECT_GE(copied, 2);
  EXPECT_LT(copied, fileCount);
  EXPECT_FALSE(ExportTest::holdsPartials(scene.destination));

  bringBackup();
  const ExportSummary next = scene.run(everything);
  EXPECT_EQ(next.skippedExistingCount, copied);
  EXPECT_EQ(next.copiedCount, fileCount - copied);
  EXPECT_EQ(next.failedCount, 0);
}

TEST_P(EarlyEndTest, ABackupThatIsMovedAsAWholeIsReadToItsEnd) {
  enlarge();
  const auto move = when(Phase::copyingMedia, 0, [&] { fs::rename(scene.backup, scene.folder / "moved"); });
  const ExportSummary summary = scene.run(everything, {.progress = move});
  EXPECT_EQ(summary.copiedCount, 5);
  EXPECT_EQ(summary.failedCount, 0);
}

TEST_P(EarlyEndTest, ABackupThatIsTakenAwayBeforeItsPicturesAreReadIsMissed) {
  const auto take = when(Phase::writingTranscripts, 0, [&] { takeBackup(); });
  EXPECT_THAT([&] { scene.run(everything, {.progress = take}); }, failsWith(EarlyEnd::backupGone));
  EXPECT_FALSE(fs::exists(scene.destination / "index.html")) << "an archive without pictures would look whole";
  bringBackup();
  EXPECT_EQ(scene.run(everything).skippedExistingCount, 5);
}

TEST_P(EarlyEndTest, ABackupThatIsTakenAwayWhileChatsAreReadIsMissed) {
  const auto take = when(Phase::readingChats, 0, [&] { takeBackup(); });
  EXPECT_THAT([&] { scene.run(everything, {.progress = take}); }, failsWith(EarlyEnd::backupGone));
  EXPECT_FALSE(fs::exists(scene.destination));
}

TEST_P(EarlyEndTest, AScanMissesItsBackupAtEveryStageToo) {
  const Exporter exporter;
  std::optional<std::string_view> password;
  if (scene.contents.encryption) password = scene.contents.encryption->keyBag.password;
  int checks = 0;
  exporter.scan({.backup = scene.backup, .password = password}, [&] { return ++checks < 0; });
  const int stages = checks;
  for (int stage = 1; stage <= stages; ++stage) {
    checks = 0;
    const auto take = [&] {
      if (++checks == stage) takeBackup();
      return false;
    };
    EXPECT_THAT([&] { exporter.scan({.backup = scene.backup, .password = password}, take); },
                failsWith(EarlyEnd::backupGoneWhileRead))
        << stage << " of " << stages;
    bringBackup();
  }
}

TEST_P(EarlyEndTest, WhatCannotBeLookedAtIsNeitherABackupNorGone) {
  fs::permissions(scene.folder.path(), fs::perms::owner_all | fs::perms::others_exec);
  fs::permissions(scene.backup, fs::perms::owner_all | fs::perms::others_read);
  enum { known, unknown, taken };
  const int result = Fixture::asUnprivilegedUser([&] {
    try {
      EarlyEnd::requireBackup({.backup = &scene.backup, .destination = &scene.destination});
    } catch (const TidewellError&) {
      return taken;
    }
    try {
      EarlyEnd::isBackup(scene.backup);
      return known;
    } catch (const fs::filesystem_error&) {
      return unknown;
    }
  });
  EXPECT_EQ(result, unknown);
}

TEST_P(EarlyEndTest, AFolderThatNeverWasABackupIsNotMissed) {
  fs::remove(scene.backup / "Manifest.plist");
  EXPECT_THAT([&] { scene.run(); },
              testing::Throws<TidewellError>(testing::Property(&TidewellError::caseName, testing::Ne("ioFailure"))));
}

}  // namespace
