#include <gmock/gmock.h>

#include "Tests/Application/Session/WizardScene.h"
#include "TidewellCore/TidewellError.h"

namespace WizardTest {
namespace {

namespace fs = std::filesystem;
using Lane = BackgroundWork::Lane;
using testing::ElementsAre;

class ScanTest : public testing::Test {
 protected:
  // Chooses the locked backup and gives its password.
  void readyToUnlock() {
    ASSERT_TRUE(scene.choose(locked));
    wizard.setBackupPassword("correct horse");
  }

  void expectNothingHappened() const {
    EXPECT_EQ(state.step, WizardStep::backup);
    EXPECT_EQ(state.scanResult, std::nullopt);
    EXPECT_EQ(state.errorMessage, std::nullopt);
    EXPECT_FALSE(state.isScanning() || state.isUnlocking() || state.isCancellingUnlock() || state.focusBackupPassword);
    EXPECT_TRUE(state.canContinueFromBackup()) << "and it can be tried again at once";
    EXPECT_TRUE(scene.passwords.content().empty());
  }

  WizardScene scene;
  ExportViewModel& wizard = scene.wizard();
  const ExportState& state = scene.state();
  const fs::path plain = scene.addBackup("plain", small(false, "plain"));
  const fs::path locked = scene.addBackup("locked", small(true, "locked"));
};

TEST_F(ScanTest, ReadsThePlainBackup) {
  ASSERT_TRUE(scene.choose(plain));
  wizard.continueToOptions();
  EXPECT_TRUE(state.isScanning());
  EXPECT_FALSE(state.isUnlocking()) << "there is nothing to unlock";
  EXPECT_FALSE(state.canContinueFromBackup());
  ASSERT_TRUE(scene.untilIdle());
  ASSERT_TRUE(state.scanResult.has_value());
  EXPECT_EQ(state.scanResult->chatCount, 3);
  EXPECT_EQ(state.scanResult->mediaFileCount, 5);
  EXPECT_EQ(state.selectedCount(), 5);
  EXPECT_EQ(state.step, WizardStep::options);
  EXPECT_FALSE(state.isScanning());
  EXPECT_TRUE(state.canExport());
  EXPECT_THAT(scene.steps(), ElementsAre(WizardStep::backup, WizardStep::options));
}

TEST_F(ScanTest, ReadsTheSameOfAnEncryptedBackup) {
  ASSERT_TRUE(scene.reachOptions(plain));
  const ScanResult ofPlain = *state.scanResult;
  wizard.goBackToBackup();
  readyToUnlock();
  wizard.continueToOptions();
  EXPECT_TRUE(state.isScanning() && state.isUnlocking());
  EXPECT_FALSE(state.isCancellingUnlock());
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_EQ(state.scanResult, ofPlain);
  EXPECT_EQ(state.step, WizardStep::options);
}

TEST_F(ScanTest, TellsWhyABackupCannotBeRead) {
  ASSERT_TRUE(scene.choose(plain));
  fs::remove(plain / "Manifest.db");
  wizard.continueToOptions();
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_EQ(state.step, WizardStep::backup);
  EXPECT_EQ(state.scanResult, std::nullopt);
  EXPECT_TRUE(state.errorMessage.has_value());
  EXPECT_FALSE(state.focusBackupPassword) << "no password would help";
  EXPECT_FALSE(state.isScanning());
}

TEST_F(ScanTest, AFailureForgetsTheResultBefore) {
  ASSERT_TRUE(scene.reachOptions(plain));
  wizard.goBackToBackup();
  EXPECT_TRUE(state.scanResult.has_value()) << "going back clears nothing";
  fs::remove(plain / "Manifest.db");
  wizard.continueToOptions();
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_EQ(state.scanResult, std::nullopt);
}

TEST_F(ScanTest, BeginsOnceAtATime) {
  ASSERT_TRUE(scene.choose(plain));
  wizard.continueToOptions();
  const int changes = scene.changeCount();
  wizard.continueToOptions();
  EXPECT_EQ(scene.changeCount(), changes);
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_THAT(scene.steps(), ElementsAre(WizardStep::backup, WizardStep::options));
}

TEST_F(ScanTest, BeginsOnTheFirstStepAlone) {
  ASSERT_TRUE(scene.reachOptions(plain));
  wizard.continueToOptions();
  EXPECT_FALSE(state.isScanning());
  wizard.startExport();
  wizard.continueToOptions();
  EXPECT_FALSE(state.isScanning());
  ASSERT_TRUE(scene.until([&] { return !state.isExporting(); }));
  EXPECT_EQ(state.step, WizardStep::done);
  wizard.continueToOptions();
  EXPECT_FALSE(state.isScanning());
}

TEST_F(ScanTest, NeedsABackup) {
  wizard.continueToOptions();
  EXPECT_EQ(scene.changeCount(), 0);
}

TEST_F(ScanTest, CancelledBeforeItsFirstCheck) {
  readyToUnlock();
  {
    const HeldLane held(scene.work, Lane::userInitiated, BackgroundWork::userInitiatedThreads);
    wizard.continueToOptions();
    wizard.cancelUnlock();
    EXPECT_TRUE(state.isCancellingUnlock());
    EXPECT_TRUE(state.isUnlocking() && state.isScanning()) << "until the scan has returned";
  }
  ASSERT_TRUE(scene.untilIdle());
  expectNothingHappened();
}

TEST_F(ScanTest, CancelledWhileUnlocking) {
  Fixture::BackupContents contents = small(true, "slow");
  contents.encryption->keyBag.doubleIterations = 200'000;
  const fs::path slow = scene.addBackup("slow", contents);
  ASSERT_TRUE(scene.choose(slow));
  wizard.setBackupPassword("correct horse");
  wizard.continueToOptions();
  QObject context;
  bool begun = false;
  scene.work.run(
      Lane::userInitiated, &context, [] {}, [&](const std::future<void>&) { begun = true; });
  ASSERT_TRUE(scene.until([&] { return begun; }));
  wizard.cancelUnlock();
  ASSERT_TRUE(scene.untilIdle());
  expectNothingHappened();
  wizard.continueToOptions();
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_EQ(state.step, WizardStep::options);
}

TEST_F(ScanTest, CancelledAfterItsLastCheck) {
  readyToUnlock();
  wizard.setRememberBackupPassword(true);
  HeldLane held(scene.work, Lane::userInitiated, BackgroundWork::userInitiatedThreads - 1);
  wizard.continueToOptions();
  held.finishWhatWasAsked();
  wizard.cancelUnlock();
  EXPECT_TRUE(state.isCancellingUnlock());
  ASSERT_TRUE(scene.until([&] { return !state.isScanning(); }));
  expectNothingHappened();
}

TEST_F(ScanTest, CancelledWhenItHasFailed) {
  ASSERT_TRUE(scene.choose(locked));
  wizard.setBackupPassword("wrong");
  HeldLane held(scene.work, Lane::userInitiated, BackgroundWork::userInitiatedThreads - 1);
  wizard.continueToOptions();
  held.finishWhatWasAsked();
  wizard.cancelUnlock();
  ASSERT_TRUE(scene.until([&] { return !state.isScanning(); }));
  expectNothingHappened();
}

TEST_F(ScanTest, CancelledScansKeepTheResultBefore) {
  readyToUnlock();
  wizard.continueToOptions();
  ASSERT_TRUE(scene.untilIdle());
  wizard.goBackToBackup();
  HeldLane held(scene.work, Lane::userInitiated, BackgroundWork::userInitiatedThreads - 1);
  wizard.continueToOptions();
  held.finishWhatWasAsked();
  wizard.cancelUnlock();
  ASSERT_TRUE(scene.until([&] { return !state.isScanning(); }));
  EXPECT_TRUE(state.scanResult.has_value());
  EXPECT_EQ(state.step, WizardStep::backup);
}

TEST_F(ScanTest, IsCancelledOnlyWhileUnlocking) {
  wizard.cancelUnlock();
  EXPECT_EQ(scene.changeCount(), 0);
  ASSERT_TRUE(scene.choose(plain));
  wizard.continueToOptions();
  wizard.cancelUnlock();
  EXPECT_FALSE(state.isCancellingUnlock());
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_EQ(state.step, WizardStep::options);
}

TEST_F(ScanTest, ACancelledUnlockDoesNotCancelTheNext) {
  readyToUnlock();
  wizard.continueToOptions();
  wizard.cancelUnlock();
  ASSERT_TRUE(scene.until([&] { return !state.isScanning(); }));
  wizard.continueToOptions();
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_EQ(state.step, WizardStep::options);
}

TEST_F(ScanTest, AnotherBackupCancelsThePlainScan) {
  ASSERT_TRUE(scene.choose(plain));
  HeldLane held(scene.work, Lane::userInitiated, BackgroundWork::userInitiatedThreads - 1);
  wizard.continueToOptions();
  held.finishWhatWasAsked();
  wizard.setBackup(locked);
  EXPECT_FALSE(state.canContinueFromBackup());
  ASSERT_TRUE(scene.until([&] { return !state.isScanning() && !state.isInspecting(); }));
  EXPECT_EQ(state.step, WizardStep::backup);
  EXPECT_EQ(state.scanResult, std::nullopt) << "it is the other backup's";
  EXPECT_EQ(state.backupInfo->url, locked);
  EXPECT_EQ(state.errorMessage, std::nullopt);
}

TEST_F(ScanTest, LeavesNothingInTheBackupChanged) {
  for (const fs::path& backup : {plain, locked}) {
    const auto before = Fixture::treeSnapshot(backup);
    ASSERT_TRUE(scene.reachOptions(backup));
    wizard.goBackToBackup();
    EXPECT_EQ(Fixture::treeSnapshot(backup), before);
  }
}

}  // namespace
}  // namespace WizardTest
