#include <gmock/gmock.h>

#include "Tests/Application/Session/ManyMessages.h"
#include "Tests/Application/Session/WizardScene.h"
#include "Tests/Export/ExportScene.h"
#include "TidewellCore/Platform/RawValue.h"

namespace WizardTest {
namespace {

namespace fs = std::filesystem;
using Lane = BackgroundWork::Lane;
using Phase = ExportProgress::Phase;

class CancelExportTest : public testing::Test {
 protected:
  // As somebody would who presses Cancel the moment that the phase is shown.
  void cancelIn(Phase phase) {
    QObject::connect(&wizard, &ExportViewModel::changed, &wizard, [this, phase] {
      if (!isCancelled && state.isExporting() && state.progress && state.progress->phase == phase) {
        isCancelled = true;
        wizard.cancelExport();
      }
    });
  }

  void expectCancelled() {
    EXPECT_TRUE(isCancelled) << "the phase was never shown";
    EXPECT_EQ(state.step, WizardStep::options);
    EXPECT_EQ(state.errorMessage, "The export was cancelled.");
    EXPECT_EQ(state.recoverySuggestion, std::nullopt);
    EXPECT_EQ(state.summary, std::nullopt);
    EXPECT_TRUE(state.scanResult.has_value());
    EXPECT_TRUE(state.canExport()) << "it can be started again at once";
    EXPECT_FALSE(::ExportTest::holdsPartials(scene.desktop));
  }

  WizardScene scene;
  ExportViewModel& wizard = scene.wizard();
  const ExportState& state = scene.state();
  bool isCancelled = false;
};

TEST_F(CancelExportTest, BeforeItBegins) {
  ASSERT_TRUE(scene.reachOptions(scene.addBackup("device")));
  cancelIn(Phase::preparing);
  wizard.startExport();
  EXPECT_EQ(state.step, WizardStep::exporting) << "until the run has noticed";
  ASSERT_TRUE(scene.until([&] { return !state.isExporting(); }));
  expectCancelled();
}

TEST_F(CancelExportTest, WhileUnlocking) {
  ASSERT_TRUE(scene.reachOptions(scene.addBackup("locked", small(true))));
  // Backed up anew meanwhile: the key that was kept opens it no more.
  Fixture::BackupContents contents = small(true);
  contents.encryption->keyBag.doubleIterations = 200'000;
  scene.addBackup("locked", contents);
  cancelIn(Phase::unlocking);
  wizard.startExport();
  ASSERT_TRUE(scene.until([&] { return !state.isExporting(); }));
  expectCancelled();
}

class CancelLongExportTest : public CancelExportTest, public testing::WithParamInterface<Phase> {};

TEST_P(CancelLongExportTest, InThePhase) {
  // Each phase takes far longer than an event takes to arrive.
  const auto contents = GetParam() == Phase::copyingMedia ? manyMessages(2'000, 3'000) : manyMessages(200'000, 0);
  ASSERT_TRUE(scene.reachOptions(scene.addBackup("device", contents)));
  cancelIn(GetParam());
  wizard.startExport();
  ASSERT_TRUE(scene.until([&] { return !state.isExporting(); }));
  expectCancelled();
}

INSTANTIATE_TEST_SUITE_P(Wizard, CancelLongExportTest,
                         testing::Values(Phase::readingChats, Phase::copyingMedia, Phase::writingTranscripts),
                         [](const auto& test) { return std::string(rawValue(test.param)); });

TEST_F(CancelExportTest, AfterItsLastCheckItIsDone) {
  ASSERT_TRUE(scene.reachOptions(scene.addBackup("device")));
  HeldLane held(scene.work, Lane::userInitiated, BackgroundWork::userInitiatedThreads - 1);
  wizard.startExport();
  held.finishWhatWasAsked();
  wizard.cancelExport();
  ASSERT_TRUE(scene.until([&] { return !state.isExporting(); }));
  EXPECT_EQ(state.step, WizardStep::done);
  EXPECT_EQ(state.summary->copiedCount, 5);
  EXPECT_EQ(state.errorMessage, std::nullopt);
}

TEST_F(CancelExportTest, CanBeStartedAgain) {
  ASSERT_TRUE(scene.reachOptions(scene.addBackup("device")));
  cancelIn(Phase::preparing);
  wizard.startExport();
  ASSERT_TRUE(scene.until([&] { return !state.isExporting(); }));
  wizard.dismissError();
  scene.now += std::chrono::seconds(60);
  wizard.startExport();
  EXPECT_EQ(state.exportStartedAt, scene.now);
  EXPECT_EQ(state.progress, (ExportProgress{.phase = Phase::preparing, .total = 1}));
  ASSERT_TRUE(scene.until([&] { return !state.isExporting(); }));
  EXPECT_EQ(state.step, WizardStep::done);
  EXPECT_EQ(state.errorMessage, std::nullopt);
}

TEST_F(CancelExportTest, DoesNothingElsewhere) {
  wizard.cancelExport();
  EXPECT_EQ(scene.changeCount(), 0);
  ASSERT_TRUE(scene.choose(scene.addBackup("locked", small(true))));
  wizard.setBackupPassword("correct horse");
  wizard.continueToOptions();
  wizard.cancelExport();
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_EQ(state.step, WizardStep::options) << "an unlock is no export";
}

}  // namespace
}  // namespace WizardTest
