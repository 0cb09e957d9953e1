#include <gmock/gmock.h>

#include "Tests/Application/Session/ManyMessages.h"
#include "Tests/Application/Session/WizardScene.h"
#include "Tests/Export/ExportScene.h"

namespace WizardTest {
namespace {

namespace fs = std::filesystem;
using Lane = BackgroundWork::Lane;
using Phase = ExportProgress::Phase;

// The wizard ends while something is under way, and with the scene every
// worker: nothing hangs, nothing is written to what is gone, no folder stays open.
class EndingTest : public testing::Test {
 protected:
  ~EndingTest() override {
    scene.passwords.release();
    scene.quit();
    EXPECT_TRUE(scene.untilIdle());
    for (const auto& [folder, count] : scene.permissions.running) EXPECT_EQ(count, 0) << folder;
  }

  void quit() {
    scene.quit();
    scene.takeUpEvents();
  }

  WizardScene scene;
  ExportViewModel& wizard = scene.wizard();
  const ExportState& state = scene.state();
  const fs::path backup = scene.addBackup("device");
  const fs::path locked = scene.addBackup("locked", small(true));
};

TEST_F(EndingTest, WhileLookingForBackups) {
  HeldLane held(scene.work, Lane::userInitiated, BackgroundWork::userInitiatedThreads);
  wizard.startUp();
  quit();
}

TEST_F(EndingTest, WithTheListOnItsWay) {
  HeldLane held(scene.work, Lane::userInitiated, BackgroundWork::userInitiatedThreads - 1);
  wizard.startUp();
  held.finishWhatWasAsked();
  quit();
}

TEST_F(EndingTest, WhileMeasuring) {
  HeldLane held(scene.work, Lane::utility, 1);
  wizard.startUp();
  ASSERT_TRUE(scene.until([&] { return state.library.backups.size() == 2; }));
  quit();
}

TEST_F(EndingTest, WhileInspecting) {
  HeldLane held(scene.work, Lane::userInitiated, BackgroundWork::userInitiatedThreads);
  wizard.setBackup(backup);
  quit();
}

TEST_F(EndingTest, WhileThePasswordIsLookedUp) {
  scene.passwords.hold();
  wizard.setBackup(locked);
  ASSERT_TRUE(scene.until([&] { return !scene.passwords.calls().empty(); }));
  quit();
}

TEST_F(EndingTest, WhileUnlocking) {
  ASSERT_TRUE(scene.choose(locked));
  wizard.setBackupPassword("correct horse");
  wizard.continueToOptions();
  quit();
}

TEST_F(EndingTest, WithTheScanOnItsWay) {
  ASSERT_TRUE(scene.choose(locked));
  wizard.setBackupPassword("correct horse");
  wizard.setRememberBackupPassword(true);
  HeldLane held(scene.work, Lane::userInitiated, BackgroundWork::userInitiatedThreads - 1);
  wizard.continueToOptions();
  held.finishWhatWasAsked();
  quit();
}

TEST_F(EndingTest, WhileTheFreeSpaceIsLookedUp) {
  HeldLane held(scene.work, Lane::userInitiated, BackgroundWork::userInitiatedThreads);
  wizard.setDestination(scene.desktop);
  quit();
}

TEST_F(EndingTest, WithTheSummaryOnItsWay) {
  ASSERT_TRUE(scene.reachOptions(backup));
  HeldLane held(scene.work, Lane::userInitiated, BackgroundWork::userInitiatedThreads - 1);
  wizard.startExport();
  held.finishWhatWasAsked();
  quit();
}

TEST_F(EndingTest, BeforeTheExportBegins) {
  ASSERT_TRUE(scene.reachOptions(backup));
  {
    HeldLane held(scene.work, Lane::userInitiated, BackgroundWork::userInitiatedThreads);
    wizard.startExport();
    quit();
  }
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_TRUE(fs::is_empty(scene.desktop)) << "the run was cancelled";
}

TEST_F(EndingTest, WhileExporting) {
  constexpr int photoCount = 3'000;
  ASSERT_TRUE(scene.reachOptions(scene.addBackup("big", manyMessages(1'000, photoCount))));
  wizard.startExport();
  ASSERT_TRUE(scene.until([&] { return state.progress->phase == Phase::copyingMedia || !state.isExporting(); }));
  ASSERT_TRUE(state.isExporting());
  quit();
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_FALSE(::ExportTest::holdsPartials(scene.desktop));
  EXPECT_FALSE(fs::exists(scene.desktop / "index.html")) << "the run was cancelled";
}

TEST_F(EndingTest, AndBeginningAnew) {
  wizard.startUp();
  scene.launch();
  scene.wizard().startUp();
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_EQ(scene.state().library.backups.size(), 2U);
  EXPECT_FALSE(scene.state().isRefreshingLibrary);
}

}  // namespace
}  // namespace WizardTest
