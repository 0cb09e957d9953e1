#include <gmock/gmock.h>

#include <fstream>

#include "Tests/Application/Session/WizardScene.h"
#include "TidewellCore/TidewellError.h"

namespace WizardTest {
namespace {

namespace fs = std::filesystem;

class DroppingTest : public testing::Test {
 protected:
  void drop(const fs::path& folder) { wizard.dropFolder(QUrl::fromLocalFile(QString::fromStdString(folder))); }

  void expectChosen(const fs::path& folder) {
    ASSERT_TRUE(scene.untilIdle());
    EXPECT_EQ(state.step, WizardStep::backup);
    EXPECT_EQ(state.backupURL, folder);
    EXPECT_EQ(state.selectedBackupID, folder.native());
    EXPECT_FALSE(state.scanResult || state.summary || state.progress || state.errorMessage);
    EXPECT_TRUE(state.canContinueFromBackup());
  }

  WizardScene scene;
  ExportViewModel& wizard = scene.wizard();
  const ExportState& state = scene.state();
  const fs::path backup = scene.addBackup("device");
  const fs::path dropped = scene.addBackup(scene.folder / "dropped, ção & %41", small());
};

TEST_F(DroppingTest, ChoosesTheFolder) {
  drop(dropped);
  expectChosen(dropped);
}

TEST_F(DroppingTest, ASlashAtTheEndMakesNoOtherFolder) {
  wizard.refreshLibrary();
  ASSERT_TRUE(scene.untilIdle());
  wizard.dropFolder(QUrl(QString::fromStdString("file://" + backup.native() + "/")));
  expectChosen(backup);
  EXPECT_EQ(state.backupInfo, state.library.backups.at(0).info);
}

TEST_F(DroppingTest, OnTheOptionsStep) {
  ASSERT_TRUE(scene.reachOptions(backup));
  drop(dropped);
  expectChosen(dropped);
}

TEST_F(DroppingTest, OnTheSummary) {
  ASSERT_TRUE(scene.reachDone(backup));
  drop(dropped);
  expectChosen(dropped);
}

TEST_F(DroppingTest, WhileAPlainBackupIsRead) {
  ASSERT_TRUE(scene.choose(backup));
  wizard.continueToOptions();
  ASSERT_TRUE(state.isScanning());
  drop(dropped);
  expectChosen(dropped);
}

TEST_F(DroppingTest, WhileAnotherIsInspected) {
  wizard.setBackup(backup);
  drop(dropped);
  expectChosen(dropped);
}

TEST_F(DroppingTest, IsRefusedWhileUnlocking) {
  const fs::path locked = scene.addBackup("locked", small(true));
  ASSERT_TRUE(scene.choose(locked));
  wizard.setBackupPassword("correct horse");
  wizard.continueToOptions();
  ASSERT_TRUE(state.isUnlocking());
  drop(dropped);
  EXPECT_EQ(state.backupURL, locked);
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_EQ(state.step, WizardStep::options);
}

TEST_F(DroppingTest, IsRefusedWhileExporting) {
  ASSERT_TRUE(scene.reachOptions(backup));
  wizard.startExport();
  drop(dropped);
  EXPECT_EQ(state.backupURL, backup);
  EXPECT_EQ(state.step, WizardStep::exporting);
  ASSERT_TRUE(scene.until([&] { return !state.isExporting(); }));
  EXPECT_EQ(state.step, WizardStep::done);
}

TEST_F(DroppingTest, WhatIsNoFileChangesNothing) {
  ASSERT_TRUE(scene.reachOptions(backup));
  const int changes = scene.changeCount();
  for (const char* url : {"https://example.org/", "text", "", "data:,x", "/a/path"}) wizard.dropFolder(QUrl(url));
  EXPECT_EQ(scene.changeCount(), changes);
  EXPECT_EQ(state.step, WizardStep::options);
}

TEST_F(DroppingTest, AFileIsNoBackup) {
  const fs::path file = scene.folder / "file.txt";
  std::ofstream(file) << "text";
  drop(file);
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_EQ(state.errorMessage, TidewellError::notABackup(file).errorDescription());
  EXPECT_EQ(state.backupInfo, std::nullopt);
  EXPECT_EQ(state.step, WizardStep::backup);
}

TEST_F(DroppingTest, TheWindowTellsThatAFolderIsOverIt) {
  wizard.setDropTargeted(true);
  EXPECT_TRUE(state.dropTargeted);
  const int changes = scene.changeCount();
  wizard.setDropTargeted(true);
  EXPECT_EQ(scene.changeCount(), changes);
  wizard.setDropTargeted(false);
  EXPECT_FALSE(state.dropTargeted);
}

}  // namespace
}  // namespace WizardTest
