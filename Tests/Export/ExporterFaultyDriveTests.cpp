#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <optional>

#include "Tests/Drives/Drive.h"
#include "Tests/Export/ExportScene.h"
#include "TidewellCore/Export/EarlyEnd.h"
#include "TidewellCore/TidewellError.h"

// Exports onto drives that are full, lie, are pulled out, or take no large files.
namespace {

namespace fs = std::filesystem;
using ExportTest::Scene;
using Fixture::Drive;
using testing::AnyOf;
using testing::ElementsAre;
using testing::IsEmpty;
using Phase = ExportProgress::Phase;

const ExportOptions everything = ExportOptions::defaultOptions();
const TidewellError broken = TidewellError::ioFailure(EarlyEnd::destinationBroken);

struct FaultyDriveTest : testing::Test {
  // Skips aloud where there are no such drives.
  bool mount(const Fixture::DriveOptions& options) {
    drive.emplace(scene.folder / "files", scene.folder / "drive", options);
    scene.destination = scene.folder / "drive/Export";
    return drive->isMounted();
  }
  std::optional<TidewellError> failure(const RunControl& control = {}) const {
    try {
      scene.run(everything, control);
    } catch (const TidewellError& error) {
      return error;
    }
    return std::nullopt;
  }
  // The media that stand on the drive under their names.
  std::vector<std::string> media() const {
    std::vector<std::string> names;
    for (const auto& [path, text] : ExportTest::filesBelow(scene.folder / "files")) {
      const std::string name = fs::path(path).filename();
      if (name.starts_with("2023") || name.starts_with("undated")) names.push_back(name);
    }
    return names;
  }
  ProgressObserver atFirstCopy(const std::function<void()>& action) {
    return [this, action](const ExportProgress& progress) {
      if (isDone || progress.phase != Phase::copyingMedia) return;
      isDone = true;
      action();
    };
  }

  Scene scene;
  std::optional<Drive> drive;
  bool isDone = false;
};

TEST_F(FaultyDriveTest, OneThatLiesAboutItsSizeKeepsNoFileUnderItsName) {
  scene.contents.whatsApp.mediaFiles[0].content = Fixture::Bytes(1 << 20, 'x');
  scene.write();
  if (!mount({.losesWhatIsTooMuch = true, .capacity = 1 << 16, .claimedCapacity = 1LL << 40})) {
    GTEST_SKIP() << drive->whyNot();
  }
  try {
    const ExportSummary summary = scene.run(ExportTest::mediaAlone());
    EXPECT_EQ(summary.failedCount + summary.copiedCount, 5);
    EXPECT_GT(summary.failedCount, 0);
    EXPECT_EQ(media().size(), static_cast<std::size_t>(summary.copiedCount));
  } catch (const TidewellError& error) {
    EXPECT_EQ(error, broken);
  }
  for (const auto& [path, text] : ExportTest::filesBelow(scene.folder / "files")) {
    EXPECT_FALSE(path.ends_with("aa1.jpg")) << "its bytes were lost";
  }
}

TEST_F(FaultyDriveTest, OneWhoseFlushesFailKeepsNothingThatItWasNotAskedFor) {
  if (!mount({.failsFlushes = true})) GTEST_SKIP() << drive->whyNot();
  EXPECT_THAT(failure(), AnyOf(broken, TidewellError::destinationNotWritable(scene.destination.string())));
  EXPECT_THAT(media(), IsEmpty());
}

TEST_F(FaultyDriveTest, OneThatIsPulledOutEndsTheRun) {
  if (!mount({})) GTEST_SKIP() << drive->whyNot();
  EXPECT_THAT(failure({.progress = atFirstCopy([&] { drive->pullOut(); })}),
              AnyOf(broken, TidewellError::destinationNotWritable(scene.destination.string())));
}

TEST_F(FaultyDriveTest, OneThatIsUnmountedEndsTheRunAndLeavesNothingInItsPlace) {
  if (!mount({})) GTEST_SKIP() << drive->whyNot();
  EXPECT_THAT(failure({.progress = atFirstCopy([&] { drive->unmount(); })}),
              AnyOf(broken, TidewellError::destinationNotWritable(scene.destination.string())));
  EXPECT_TRUE(fs::is_empty(scene.folder / "drive"));
}

struct SlowDriveTest : FaultyDriveTest {
  using Clock = std::chrono::steady_clock;

  // Fifty files take more than seven seconds to be flushed.
  bool mountSlow() {
    auto& files = scene.contents.whatsApp.mediaFiles;
    files.clear();
    for (int i = 0; i < 60; ++i) {
      files.push_back(ExportTest::media(ExportTest::ana, "p" + std::to_string(i), "jpg", "x"));
    }
    scene.write();
    return mount({.flushTakes = 150});
  }
  // Cancels when `isTime` says so for the so many times that were asked while files are copied.
  void expectSoonEnd(const std::function<bool(int asked, const ExportProgress& last)>& isTime) {
    ExportProgress last;
    int asked = 0;
    std::optional<Clock::time_point> cancelled;
    const auto look = [&] {
      if (!cancelled && last.phase == Phase::copyingMedia && isTime(asked, last)) cancelled = Clock::now();
    };
    const auto watch = [&](const ExportProgress& progress) {
      last = progress;
      look();
    };
    const auto isCancelled = [&] {
      asked += last.phase == Phase::copyingMedia ? 1 : 0;
      look();
      return cancelled.has_value();
    };
    EXPECT_EQ(failure({.progress = watch, .isCancelled = isCancelled}), TidewellError::cancelled());
    ASSERT_TRUE(cancelled);
    EXPECT_LT(Clock::now() - *cancelled, std::chrono::seconds(4));
    EXPECT_FALSE(ExportTest::holdsPartials(scene.destination));
  }
};

TEST_F(SlowDriveTest, IsNotWaitedForByWhoCancelsAmongTheFiles) {
  if (!mountSlow()) GTEST_SKIP() << drive->whyNot();
  expectSoonEnd([](int asked, const ExportProgress&) { return asked == 100; });
  EXPECT_THAT(media(), testing::Not(IsEmpty())) << "what the drive took in that time is kept";
}

TEST_F(SlowDriveTest, IsNotWaitedForByWhoCancelsAfterTheLastFile) {
  if (!mountSlow()) GTEST_SKIP() << drive->whyNot();
  expectSoonEnd([](int, const ExportProgress& last) { return last.completed == 60; });
}

TEST_F(FaultyDriveTest, OneThatTakesNoLargeFileIsToldSoAtOnceAndGetsTheRest) {
  scene.contents.whatsApp.mediaFiles[0].content = Fixture::Bytes(3 << 20, 'x');
  scene.write();
  if (!mount({.largestFile = 2 << 20})) GTEST_SKIP() << drive->whyNot();
  const ExportSummary summary = scene.run(everything);
  EXPECT_THAT(
      summary.failures,
      ElementsAre(CopyFailure{.name = "2023-03-08_202640_aa1.jpg", .chat = "Ana", .reason = FailureReason::tooLarge}));
  EXPECT_EQ(summary.copiedCount, 4);
  EXPECT_TRUE(fs::exists(scene.destination / "index.html"));
}

TEST_F(FaultyDriveTest, OneThatRefusesDatesGetsItsFilesAllTheSame) {
  if (!mount({.refusesDates = true})) GTEST_SKIP() << drive->whyNot();
  scene.contents.whatsApp.messages[0].date = -5'000'000'000;  // a century before any drive's first day
  scene.write();
  const ExportSummary summary = scene.run(everything);
  EXPECT_EQ(summary.copiedCount, 5);
  EXPECT_EQ(summary.failedCount, 0);
}

}  // namespace
