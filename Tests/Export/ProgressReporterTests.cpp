#include "TidewellCore/Export/ProgressReporter.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace {

using Phase = ExportProgress::Phase;

struct Recorder {
  std::vector<ExportProgress> reports;
  ProgressObserver observer = [this](const ExportProgress& progress) { reports.push_back(progress); };
};

TEST(ProgressReporter, ReportsEveryNewPhase) {
  Recorder recorder;
  ProgressReporter progress(recorder.observer);
  progress.begin(Phase::preparing);
  progress.begin(Phase::readingChats);
  progress.begin(Phase::copyingMedia, 7);
  EXPECT_EQ(recorder.reports,
            (std::vector<ExportProgress>{
                {Phase::preparing, "", 0, 1}, {Phase::readingChats, "", 0, 1}, {Phase::copyingMedia, "", 0, 7}}));
}

TEST(ProgressReporter, ReportsTheFirstAndTheLastUnitHoweverFastTheyCome) {
  Recorder recorder;
  ProgressReporter progress(recorder.observer);
  progress.begin(Phase::copyingMedia, 1000);
  recorder.reports.clear();
  for (int done = 0; done <= 1000; ++done) progress.report("file-" + std::to_string(done), done);
  ASSERT_GE(recorder.reports.size(), 2U);
  EXPECT_EQ(recorder.reports.front(), (ExportProgress{Phase::copyingMedia, "file-0", 0, 1000}));
  EXPECT_EQ(recorder.reports.back(), (ExportProgress{Phase::copyingMedia, "file-1000", 1000, 1000}));
}

TEST(ProgressReporter, ReportsAtMostTenTimesASecondInBetween) {
  Recorder recorder;
  ProgressReporter progress(recorder.observer);
  progress.begin(Phase::copyingMedia, 1'000'000);
  recorder.reports.clear();
  const auto start = std::chrono::steady_clock::now();
  std::int64_t done = 1;
  while (std::chrono::steady_clock::now() - start < std::chrono::milliseconds(350)) {
    progress.report("", done++);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  const auto elapsed = std::chrono::steady_clock::now() - start;
  EXPECT_GE(recorder.reports.size(), 1U);
  EXPECT_LE(recorder.reports.size(), static_cast<std::size_t>(elapsed / std::chrono::milliseconds(100)));
}

TEST(ProgressReporter, WorksWithoutAnObserver) {
  const ProgressObserver none;
  ProgressReporter progress(none);
  progress.begin(Phase::copyingMedia, 1);
  EXPECT_NO_THROW(progress.report("file", 1));
}

}  // namespace
