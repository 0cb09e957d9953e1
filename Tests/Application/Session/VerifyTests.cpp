#include <gmock/gmock.h>

#include "Tests/Application/Session/WizardScene.h"
#include "Tests/Export/ExportScene.h"

namespace WizardTest {
namespace {

namespace fs = std::filesystem;
using Lane = BackgroundWork::Lane;
using Phase = ExportProgress::Phase;
using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class VerifyTest : public testing::Test {
 protected:
  testing::AssertionResult verify() {
    wizard.verify();
    if (!state.isVerifying()) return testing::AssertionFailure() << "it has not begun";
    return scene.until([&] { return !state.isVerifying(); }, "the end of the verification");
  }

  void watchPhases() {
    QObject::connect(&wizard, &ExportViewModel::changed, &wizard, [this] {
      if (state.progress) phases.push_back(state.progress->phase);
    });
  }

  fs::path photo() const {
    for (const auto& entry : fs::recursive_directory_iterator(scene.desktop)) {
      if (entry.path().filename().string().ends_with("_aa1.jpg")) return entry.path();
    }
    return {};
  }

  WizardScene scene;
  ExportViewModel& wizard = scene.wizard();
  const ExportState& state = scene.state();
  const fs::path backup = scene.addBackup("device");
  std::vector<Phase> phases;
};

TEST_F(VerifyTest, FindsNothingWrongWithWhatWasExported) {
  ASSERT_TRUE(scene.reachDone(backup));
  watchPhases();
  ASSERT_TRUE(verify());
  ASSERT_TRUE(state.verification.has_value());
  EXPECT_THAT(state.verification->findings, IsEmpty());
  EXPECT_EQ(state.verification->mediaCount, 5);
  EXPECT_EQ(state.verification->chatCount, 3);
  EXPECT_EQ(state.step, WizardStep::done);
  EXPECT_TRUE(state.summary.has_value());
  EXPECT_EQ(state.progress, std::nullopt);
  EXPECT_EQ(state.errorMessage, std::nullopt);
  EXPECT_THAT(phases, AllOf(Contains(Phase::readingChats), Contains(Phase::verifying))) << "the backup is compared";
}

TEST_F(VerifyTest, IsOneThingAtATime) {
  ASSERT_TRUE(scene.reachDone(backup));
  EXPECT_TRUE(state.canVerify() && state.canExport());
  wizard.verify();
  EXPECT_FALSE(state.canVerify() || state.canExport());
  const auto run = std::get<Verifying>(state.work).run;
  wizard.verify();
  wizard.tryAgain();
  EXPECT_TRUE(state.isRunning(run));
  ASSERT_TRUE(scene.until([&] { return !state.isVerifying(); }));
  EXPECT_TRUE(state.canVerify() && state.canExport());
}

TEST_F(VerifyTest, TellsWhatIsWrongAndAnExportHealsIt) {
  ASSERT_TRUE(scene.reachDone(backup));
  fs::remove(photo());
  ASSERT_TRUE(verify());
  ASSERT_EQ(state.verification->findings.size(), 1U);
  EXPECT_THAT(state.verification->findings[0].message, HasSubstr("_aa1.jpg” is missing."));
  wizard.tryAgain();
  EXPECT_EQ(state.verification, std::nullopt) << "it told of the export before";
  ASSERT_TRUE(scene.until([&] { return state.step == WizardStep::done; }));
  EXPECT_EQ(state.summary->copiedCount, 1);
  ASSERT_TRUE(verify());
  EXPECT_THAT(state.verification->findings, IsEmpty());
}

TEST_F(VerifyTest, ComparesAnEncryptedBackupWithItsKeptKey) {
  ASSERT_TRUE(scene.reachDone(scene.addBackup("locked", small(true))));
  watchPhases();
  ASSERT_TRUE(verify());
  EXPECT_THAT(state.verification->findings, IsEmpty());
  EXPECT_THAT(phases, Contains(Phase::readingChats));
}

// What was left out by choice is nothing wrong.
TEST_F(VerifyTest, ComparesNoBackupOfWhichAPartWasChosen) {
  ASSERT_TRUE(scene.reachOptions(backup));
  wizard.setChatIncluded(QString::fromStdString(::ExportTest::ana), false);
  wizard.startExport();
  ASSERT_TRUE(scene.until([&] { return state.step == WizardStep::done; }));
  watchPhases();
  ASSERT_TRUE(verify());
  EXPECT_THAT(state.verification->findings, IsEmpty());
  EXPECT_THAT(phases, Not(Contains(Phase::readingChats)));
}

TEST_F(VerifyTest, NeedsNoBackupThatWasTakenAway) {
  ASSERT_TRUE(scene.reachDone(backup));
  fs::remove_all(backup);
  ASSERT_TRUE(verify());
  ASSERT_TRUE(state.verification.has_value());
  EXPECT_THAT(state.verification->findings, IsEmpty());
}

TEST_F(VerifyTest, CanBeCancelled) {
  ASSERT_TRUE(scene.reachDone(backup));
  {
    const HeldLane held(scene.work, Lane::userInitiated, BackgroundWork::userInitiatedThreads);
    wizard.verify();
    wizard.cancelVerification();
    EXPECT_TRUE(state.isVerifying()) << "until the run has noticed";
  }
  ASSERT_TRUE(scene.until([&] { return !state.isVerifying(); }));
  EXPECT_EQ(state.verification, std::nullopt);
  EXPECT_EQ(state.errorMessage, std::nullopt) << "who cancels needs not be told";
  EXPECT_EQ(state.step, WizardStep::done);
  EXPECT_TRUE(state.canVerify());
}

TEST_F(VerifyTest, EndsWhenTheSummaryIsLeft) {
  ASSERT_TRUE(scene.reachDone(backup));
  {
    const HeldLane held(scene.work, Lane::userInitiated, BackgroundWork::userInitiatedThreads);
    wizard.verify();
    const auto run = std::get<Verifying>(state.work).run;
    wizard.exportAnother();
    EXPECT_TRUE(run->isCancelled());
    EXPECT_EQ(state.work, WizardWork(Idle()));
    EXPECT_EQ(state.progress, std::nullopt);
  }
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_EQ(state.step, WizardStep::backup);
  EXPECT_EQ(state.verification, std::nullopt);
  EXPECT_EQ(state.errorMessage, std::nullopt);
}

TEST_F(VerifyTest, LetsTheWindowClose) {
  ASSERT_TRUE(scene.reachDone(backup));
  wizard.verify();
  EXPECT_TRUE(wizard.mayClose());
  scene.quit();
}

TEST_F(VerifyTest, TellsWhatKeepsItFromWorking) {
  ASSERT_TRUE(scene.reachDone(backup));
  fs::remove_all(scene.desktop);
  ASSERT_TRUE(verify());
  EXPECT_EQ(state.verification, std::nullopt);
  EXPECT_THAT(*state.errorMessage, HasSubstr("There is no export in this folder."));
  EXPECT_EQ(state.step, WizardStep::done);
}

TEST_F(VerifyTest, DoesNothingElsewhere) {
  wizard.verify();
  wizard.cancelVerification();
  EXPECT_EQ(scene.changeCount(), 0);
  ASSERT_TRUE(scene.reachOptions(backup));
  wizard.verify();
  EXPECT_FALSE(state.isVerifying());
}

}  // namespace
}  // namespace WizardTest
