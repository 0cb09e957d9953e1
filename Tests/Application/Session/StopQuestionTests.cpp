#include <gmock/gmock.h>

#include "Tests/Application/Session/ManyMessages.h"
#include "Tests/Application/Session/WizardScene.h"

namespace WizardTest {
namespace {

using Lane = BackgroundWork::Lane;

// Somebody closes the window, or presses Escape, while an export runs.
class StopQuestionTest : public testing::Test {
 protected:
  StopQuestionTest() {
    QObject::connect(&wizard, &ExportViewModel::closeConfirmed, &wizard, [this] { ++closings; });
  }

  void reachAnExportThatWaits() {
    ASSERT_TRUE(scene.reachOptions(scene.addBackup("device")));
    held = std::make_unique<HeldLane>(scene.work, Lane::userInitiated, BackgroundWork::userInitiatedThreads);
    wizard.startExport();
    ASSERT_TRUE(state.isExporting());
  }

  testing::AssertionResult letItEnd() {
    held.reset();
    return scene.until([&] { return !state.isExporting(); }, "the end of the export");
  }

  WizardScene scene;
  ExportViewModel& wizard = scene.wizard();
  const ExportState& state = scene.state();
  std::unique_ptr<HeldLane> held;
  int closings = 0;
};

TEST_F(StopQuestionTest, IsNotAskedWhenNothingWouldBeLost) {
  EXPECT_TRUE(wizard.mayClose());
  wizard.askToCancelExport();
  EXPECT_EQ(state.stopQuestion, StopQuestion::none);
  ASSERT_TRUE(scene.choose(scene.addBackup("locked", small(true))));
  wizard.setBackupPassword("correct horse");
  wizard.continueToOptions();
  ASSERT_TRUE(state.isUnlocking());
  EXPECT_TRUE(wizard.mayClose()) << "an unlock is begun again in no time";
  ASSERT_TRUE(scene.untilIdle());
}

TEST_F(StopQuestionTest, KeepsTheExportGoing) {
  reachAnExportThatWaits();
  EXPECT_FALSE(wizard.mayClose());
  EXPECT_EQ(state.stopQuestion, StopQuestion::close);
  wizard.keepExporting();
  EXPECT_EQ(state.stopQuestion, StopQuestion::none);
  ASSERT_TRUE(letItEnd());
  EXPECT_EQ(state.step, WizardStep::done);
  EXPECT_EQ(state.summary->copiedCount, 5);
  EXPECT_EQ(closings, 0);
}

TEST_F(StopQuestionTest, DoesNotHoldTheCopyingUp) {
  ASSERT_TRUE(scene.reachOptions(scene.addBackup("device", manyMessages(0, 200))));
  wizard.startExport();
  wizard.askToCancelExport();
  ASSERT_TRUE(scene.until([&] { return !state.isExporting(); }, "the end of an export that nobody answered for"));
  EXPECT_EQ(state.step, WizardStep::done);
  EXPECT_EQ(state.summary->copiedCount, 200);
  EXPECT_EQ(state.stopQuestion, StopQuestion::none) << "there is nothing left to ask";
}

TEST_F(StopQuestionTest, EndsTheExportAlone) {
  reachAnExportThatWaits();
  wizard.askToCancelExport();
  EXPECT_EQ(state.stopQuestion, StopQuestion::cancel);
  wizard.stopExporting();
  EXPECT_EQ(state.stopQuestion, StopQuestion::none);
  ASSERT_TRUE(letItEnd());
  EXPECT_EQ(state.step, WizardStep::options);
  EXPECT_EQ(state.errorMessage, "The export was cancelled.");
  EXPECT_EQ(closings, 0);
}

TEST_F(StopQuestionTest, IsNotAskedWhenItIsAnsweredAlready) {
  reachAnExportThatWaits();
  wizard.cancelExport();
  wizard.askToCancelExport();
  EXPECT_EQ(state.stopQuestion, StopQuestion::none);
  EXPECT_TRUE(wizard.mayClose());
  ASSERT_TRUE(letItEnd());
}

TEST_F(StopQuestionTest, EndsTheExportWithTheWindow) {
  reachAnExportThatWaits();
  EXPECT_FALSE(wizard.mayClose());
  wizard.stopExporting();
  EXPECT_EQ(closings, 1);
  EXPECT_TRUE(wizard.mayClose()) << "nobody is asked twice";
  ASSERT_TRUE(letItEnd());
}

TEST_F(StopQuestionTest, ALateAnswerEndsNothing) {
  ASSERT_TRUE(scene.reachDone(scene.addBackup("device")));
  wizard.stopExporting();
  EXPECT_EQ(closings, 0);
  EXPECT_EQ(state.step, WizardStep::done);
}

}  // namespace
}  // namespace WizardTest
