#include <gmock/gmock.h>

#include <fstream>

#include "Tests/Application/Session/WizardScene.h"
#include "TidewellCore/TidewellError.h"

namespace WizardTest {
namespace {

namespace fs = std::filesystem;
using Lane = BackgroundWork::Lane;
using testing::ElementsAre;
using testing::IsEmpty;

class ChoosingTest : public testing::Test {
 protected:
  void expectFailure(const TidewellError& error) const {
    EXPECT_EQ(state.errorMessage, error.errorDescription());
    EXPECT_EQ(state.recoverySuggestion, error.recoverySuggestion());
  }

  WizardScene scene;
  ExportViewModel& wizard = scene.wizard();
  const ExportState& state = scene.state();
};

TEST_F(ChoosingTest, LooksIntoTheChosenFolder) {
  const fs::path backup = scene.addBackup(scene.folder / "copy", small(false, "id of it"));
  wizard.setBackup(backup);
  EXPECT_TRUE(state.isInspecting());
  EXPECT_EQ(state.backupURL, backup);
  EXPECT_FALSE(state.canContinueFromBackup());
  ASSERT_TRUE(scene.until([&] { return !state.isInspecting(); }));
  ASSERT_TRUE(state.backupInfo.has_value());
  EXPECT_EQ(state.backupInfo->url, backup);
  EXPECT_EQ(state.backupInfo->uniqueIdentifier, "id of it");
  EXPECT_FALSE(state.backupInfo->isEncrypted);
  EXPECT_EQ(state.selectedBackupID, backup.native());
  EXPECT_TRUE(state.canContinueFromBackup());
  EXPECT_EQ(state.errorMessage, std::nullopt);
  EXPECT_EQ(state.step, WizardStep::backup);
  EXPECT_THAT(scene.passwords.calls(), IsEmpty()) << "no password is looked up for a plain backup";
}

TEST_F(ChoosingTest, SelectsAListedBackup) {
  scene.addBackup("a");
  scene.addBackup("b");
  wizard.refreshLibrary();
  ASSERT_TRUE(scene.untilIdle());
  for (const std::size_t i : {0U, 1U}) {
    wizard.selectDiscovered(state.library.backups[i]);
    EXPECT_EQ(state.selectedBackupID, state.library.backups[i].id()) << "at once";
    ASSERT_TRUE(scene.untilIdle());
    EXPECT_EQ(state.backupInfo, state.library.backups[i].info);
  }
  wizard.selectBackup(QString::fromStdString(scene.root / "a"));
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_EQ(state.backupURL, scene.root / "a");
  wizard.selectBackup("/no/such/backup");
  EXPECT_EQ(state.backupURL, scene.root / "a");
  EXPECT_FALSE(state.isInspecting());
}

TEST_F(ChoosingTest, SelectsABackupWhoseNameIsNoText) {
  const fs::path backup = scene.addBackup("device \xff");
  wizard.refreshLibrary();
  ASSERT_TRUE(scene.untilIdle());
  ASSERT_EQ(state.library.backups.size(), 1U);
  wizard.selectBackup(QString::fromStdString(state.library.backups[0].id()));
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_EQ(state.backupURL, backup);
  EXPECT_EQ(state.errorMessage, std::nullopt);
  EXPECT_TRUE(state.canContinueFromBackup());
}

TEST_F(ChoosingTest, TellsWhyAFolderIsNoBackup) {
  const fs::path empty = scene.folder / "empty";
  fs::create_directories(empty);
  ASSERT_TRUE(scene.choose(empty));
  expectFailure(TidewellError::notABackup(empty));
  EXPECT_EQ(state.backupInfo, std::nullopt);
  EXPECT_EQ(state.backupURL, empty);
  EXPECT_FALSE(state.canContinueFromBackup());

  scene.addBackup("a");
  scene.addBackup("b");
  ASSERT_TRUE(scene.choose(scene.root));
  expectFailure(TidewellError::multipleDeviceBackups({"a", "b"}));

  ASSERT_TRUE(scene.choose(scene.folder / "gone"));
  expectFailure(TidewellError::backupNotFound(scene.folder / "gone"));
  EXPECT_EQ(state.recoverySuggestion, std::nullopt) << "the advice of the error before does not stay";
}

TEST_F(ChoosingTest, PassesOnWhatAPropertyListReports) {
  const fs::path backup = scene.addBackup("device");
  std::ofstream(backup / "Manifest.plist") << "no property list";
  ASSERT_TRUE(scene.choose(backup));
  ASSERT_TRUE(state.errorMessage.has_value());
  EXPECT_FALSE(state.errorMessage->empty());
  EXPECT_EQ(state.recoverySuggestion, std::nullopt);
  EXPECT_EQ(state.backupInfo, std::nullopt);
}

TEST_F(ChoosingTest, KeepsWhatTheLibraryKnewOfADamagedBackup) {
  const fs::path backup = scene.addBackup("device");
  wizard.refreshLibrary();
  ASSERT_TRUE(scene.untilIdle());
  fs::remove(backup / "Manifest.plist");
  const DiscoveredBackup listed = state.library.backups.at(0);
  wizard.selectDiscovered(listed);
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_EQ(state.backupInfo, listed.info);
  EXPECT_EQ(state.selectedBackupID, backup.native());
  expectFailure(TidewellError::notABackup(backup));
}

TEST_F(ChoosingTest, ForgetsWhatBelongedToTheBackupBefore) {
  const fs::path other = scene.addBackup("other");
  ASSERT_TRUE(scene.reachDone(scene.addBackup("device", small(true))));
  ASSERT_TRUE(state.scanResult && state.summary && state.progress && !state.backupPassword.empty());
  wizard.exportAnother();
  wizard.setRememberBackupPassword(true);
  wizard.setBackup(other);
  EXPECT_FALSE(state.scanResult || state.summary || state.progress || state.errorMessage || state.recoverySuggestion ||
               state.storedPassword || state.hasStoredPassword || state.rememberBackupPassword);
  EXPECT_TRUE(state.backupPassword.empty());
  EXPECT_TRUE(state.destinationURL.has_value()) << "the destination is not the backup's";
}

TEST_F(ChoosingTest, TellsOfAllThatChangesAtOnce) {
  ASSERT_TRUE(scene.choose(scene.folder / "gone"));
  const int before = scene.changeCount();
  wizard.setBackup(scene.addBackup("device"));
  EXPECT_EQ(scene.changeCount(), before + 1) << "error, folder and work are one change";
  ASSERT_TRUE(scene.until([&] { return !state.isInspecting(); }));
  EXPECT_EQ(scene.changeCount(), before + 2) << "and so is what was found";
}

TEST_F(ChoosingTest, ClearsAnErrorAtOnce) {
  ASSERT_TRUE(scene.choose(scene.folder / "gone"));
  ASSERT_TRUE(state.errorMessage.has_value());
  wizard.setBackup(scene.addBackup("device"));
  EXPECT_EQ(state.errorMessage, std::nullopt);
}

TEST_F(ChoosingTest, AsksForAFolder) {
  const fs::path backup = scene.addBackup("device");
  wizard.chooseBackup();
  ASSERT_THAT(
      scene.chooser.requests,
      ElementsAre(FolderRequest{.title = "Choose a backup folder",
                                .message = "Choose the device folder from a Finder backup, or a copy of that folder.",
                                .confirmButton = "Choose",
                                .initialFolder = scene.root,
                                .canCreateFolders = false}));
  scene.chooser.answer(std::nullopt);
  EXPECT_EQ(state.backupURL, std::nullopt);
  EXPECT_EQ(scene.changeCount(), 0);
  wizard.chooseBackup();
  scene.chooser.answer(backup);
  EXPECT_EQ(state.backupURL, backup);
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_TRUE(state.backupInfo.has_value());
}

TEST_F(ChoosingTest, TakesTheBackupChosenLastWhenTheFirstAnswerIsLate) {
  const fs::path first = scene.addBackup("first", small(true, "first"));
  const fs::path second = scene.addBackup("second", small(false, "second"));
  scene.passwords.put("first", "kept");
  scene.passwords.hold();
  wizard.setBackup(first);
  ASSERT_TRUE(scene.until([&] { return !scene.passwords.calls().empty(); }));
  wizard.setBackup(second);
  ASSERT_TRUE(scene.until([&] { return !state.isInspecting(); })) << "does not wait for the first one's password";
  ASSERT_TRUE(state.backupInfo.has_value());
  EXPECT_EQ(state.backupInfo->uniqueIdentifier, "second");
  scene.passwords.release();
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_FALSE(state.hasStoredPassword || state.storedPassword || state.rememberBackupPassword);
  EXPECT_EQ(state.selectedBackupID, second.native());
  EXPECT_TRUE(state.canContinueFromBackup());
}

TEST_F(ChoosingTest, ALateAnswerEndsNoLaterInspection) {
  const fs::path first = scene.addBackup("first");
  const fs::path second = scene.addBackup("second");
  const HeldLane held(scene.work, Lane::userInitiated, BackgroundWork::userInitiatedThreads);
  wizard.setBackup(first);
  wizard.setBackup(second);
  scene.takeUpEvents();
  EXPECT_TRUE(state.isInspecting());
  EXPECT_EQ(state.backupInfo, std::nullopt);
}

TEST_F(ChoosingTest, ALateErrorIsNotShown) {
  const fs::path second = scene.addBackup("second");
  HeldLane held(scene.work, Lane::userInitiated, BackgroundWork::userInitiatedThreads - 1);
  wizard.setBackup(scene.folder / "gone");
  held.finishWhatWasAsked();
  wizard.setBackup(second);
  ASSERT_TRUE(scene.until([&] { return !state.isInspecting(); }));
  EXPECT_EQ(state.errorMessage, std::nullopt);
  ASSERT_TRUE(state.backupInfo.has_value());
  EXPECT_EQ(state.backupInfo->url, second);
}

TEST_F(ChoosingTest, IsRefusedWhileUnlocking) {
  const fs::path locked = scene.addBackup("locked", small(true));
  const fs::path other = scene.addBackup("other");
  wizard.refreshLibrary();
  ASSERT_TRUE(scene.untilIdle());
  ASSERT_TRUE(scene.choose(locked));
  wizard.setBackupPassword("correct horse");
  wizard.continueToOptions();
  ASSERT_TRUE(state.isUnlocking());
  wizard.setBackup(other);
  wizard.selectBackup(QString::fromStdString(other));
  wizard.chooseBackup();
  EXPECT_THAT(scene.chooser.requests, IsEmpty());
  EXPECT_EQ(state.backupURL, locked);
  EXPECT_EQ(state.selectedBackupID, locked.native());
  ASSERT_TRUE(scene.until([&] { return state.step == WizardStep::options; }));
}

TEST_F(ChoosingTest, ALateAnswerOfTheChooserIsRefusedWhileUnlocking) {
  const fs::path locked = scene.addBackup("locked", small(true));
  ASSERT_TRUE(scene.choose(locked));
  wizard.chooseBackup();
  wizard.setBackupPassword("correct horse");
  wizard.continueToOptions();
  scene.chooser.answer(scene.root / "other");
  EXPECT_EQ(state.backupURL, locked);
  ASSERT_TRUE(scene.untilIdle());
}

TEST_F(ChoosingTest, ALateAnswerOfTheChooserGoesBackToTheFirstStep) {
  const fs::path other = scene.addBackup("other");
  wizard.chooseBackup();
  ASSERT_TRUE(scene.reachOptions(scene.addBackup("device")));
  scene.chooser.answer(other);
  EXPECT_EQ(state.step, WizardStep::backup);
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_EQ(state.backupURL, other);
  EXPECT_TRUE(state.canContinueFromBackup());
}

TEST_F(ChoosingTest, ALateAnswerOfTheChooserIsRefusedWhileExporting) {
  wizard.chooseBackup();
  const fs::path backup = scene.addBackup("device");
  ASSERT_TRUE(scene.reachOptions(backup));
  wizard.startExport();
  scene.chooser.answer(scene.addBackup("other"));
  EXPECT_EQ(state.backupURL, backup);
  EXPECT_TRUE(state.scanResult && state.progress);
  ASSERT_TRUE(scene.until([&] { return state.step == WizardStep::done; }));
}

TEST_F(ChoosingTest, TheChooserMayAnswerWhenTheWizardIsGone) {
  wizard.chooseBackup();
  wizard.chooseDestination();
  scene.quit();
  scene.chooser.answer(scene.root);
  scene.chooser.answer(scene.root);
}

TEST_F(ChoosingTest, SpeaksTheUsersLanguage) {
  scene.table =
      StringTable({{"Choose a backup folder", "Escolha"}, {"This folder isn't an iPhone backup.", "Não é um backup."}});
  scene.launch();
  scene.wizard().chooseBackup();
  EXPECT_EQ(scene.chooser.requests.at(0).title, "Escolha");
  ASSERT_TRUE(scene.choose(scene.home));
  EXPECT_EQ(scene.state().errorMessage, "Não é um backup.");
}

TEST_F(ChoosingTest, DismissingClosesTheAlert) {
  ASSERT_TRUE(scene.choose(scene.home));
  wizard.dismissError();
  EXPECT_EQ(state.errorMessage, std::nullopt);
  EXPECT_EQ(state.step, WizardStep::backup);
}

}  // namespace
}  // namespace WizardTest
