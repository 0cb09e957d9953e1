#include <gtest/gtest.h>

#include <fstream>

#include "Tests/Application/Screens/WindowScene.h"

namespace {

using WindowTest::Scene;
using WindowTest::Wishes;
namespace fs = std::filesystem;

class Wizard : public Scene {
 protected:
  static Wishes encrypted() { return {.contents = ExportTest::smallBackup(true)}; }

  void typePassword(const QString& password) {
    click("passwordField");
    type(password);
  }
};

TEST_F(Wizard, GoesFromTheBackupToTheArchiveByClicks) {
  open();
  expectShown("Step 1 of 3 — Choose a backup");
  expectShown("These Finder backups are on this Mac. Choose one to export.");
  expectShown("Ana's iPhone");
  EXPECT_FALSE(item("continueButton").isEnabled()) << "nothing is chosen yet";

  click("backupRow0");
  continueWithBackup();
  expectShown("Step 2 of 3 — Choose what to export");
  expectShown("Include readable chat transcripts");

  chooseDestination();
  click("startExportButton");
  ASSERT_TRUE(until([&] { return state().step == WizardStep::done; }, "the export is done"));
  expectShown("Export finished");
  expectShown("5 copied · 0 already present · 6 transcripts · 0 failed");
  EXPECT_TRUE(fs::exists(destination / "index.html"));

  click("openArchiveButton");
  EXPECT_EQ(openedFiles, std::vector{destination / "index.html"});
  click("showInFinderButton");
  EXPECT_EQ(revealedFolders, std::vector{destination});
  click("exportAnotherButton");
  EXPECT_TRUE(until([&] { return shows("Step 1 of 3 — Choose a backup"); }, "the first step again"));
}

TEST_F(Wizard, GoesFromTheBackupToTheArchiveByKeysAlone) {
  open(encrypted());
  tabTo("backupRow0");
  press(Qt::Key_Space);
  ASSERT_TRUE(until([&] { return isShown("passwordField"); }, "the password is asked for"));
  tabTo("passwordField");
  type("correct horse");
  ASSERT_TRUE(until([&] { return item("continueButton").isEnabled(); }, "the step can be left"));
  press(Qt::Key_Return);
  ASSERT_TRUE(until([&] { return state().step == WizardStep::options; }, "the backup is unlocked"));

  tabTo("kindBox.videos");
  press(Qt::Key_Space);
  EXPECT_FALSE(state().includedKinds.contains(MediaKind::videos));
  chosenFolders.push_back(destination);
  tabTo("chooseDestinationButton");
  press(Qt::Key_Space);
  ASSERT_TRUE(until([&] { return state().destinationURL == destination; }, "the destination is chosen"));
  tabTo("transcriptsBox");
  press(Qt::Key_Return);
  ASSERT_TRUE(until([&] { return state().step == WizardStep::done; }, "the export is done"));
  expectShown("4 copied");
  press(Qt::Key_Return);
  EXPECT_EQ(openedFiles, std::vector{destination / "index.html"});
}

TEST_F(Wizard, TellsThatAPasswordIsWrongAndTakesTheNextOne) {
  open(encrypted());
  click("backupRow0");
  typePassword("battery staple");
  click("continueButton");
  ASSERT_TRUE(until([&] { return isShown("alertOKButton"); }, "the alert"));
  expectShown("Something went wrong");
  expectShown("That backup password isn’t right.");
  expectShown("not your iPhone passcode.");
  click("alertOKButton");
  ASSERT_TRUE(until([&] { return !isShown("alertOKButton") && focused() == "passwordField"; }, "the field again"));

  press(Qt::Key_A, Qt::ControlModifier);
  type("correct horse");
  press(Qt::Key_Return);
  EXPECT_TRUE(until([&] { return state().step == WizardStep::options; }, "the backup is unlocked"));
}

TEST_F(Wizard, KeepsAPasswordWhenItIsToldTo) {
  open(encrypted());
  click("backupRow0");
  typePassword("correct horse");
  click("rememberBox");
  continueWithBackup();
  EXPECT_TRUE(until([&] { return passwords.all().size() == 1; }, "the password is kept"));
  EXPECT_EQ(passwords.all().begin()->second, "correct horse");
}

TEST_F(Wizard, UnlocksWithThePasswordItKept) {
  passwords.put("00008110-000A1B2C3D4E5F60", "correct horse");
  open(encrypted());
  click("backupRow0");
  ASSERT_TRUE(until([&] { return state().hasStoredPassword; }, "the password is found"));
  expectShown("A saved password is ready. Continue to unlock, or type a different one.");
  EXPECT_TRUE(item("rememberBox").property("checked").toBool());
  continueWithBackup();
}

TEST_F(Wizard, TellsWhatMayBeMissingBeforeTheExportAndAfterIt) {
  Fixture::BackupContents contents = ExportTest::smallBackup();
  contents.whatsApp.databaseStorage["ChatStorage.sqlite-wal"] = {.missing = true};
  open({.contents = contents});
  continueWithBackup();
  const QString warning = QStringLiteral(
      "The newest messages may be missing: the journal of WhatsApp’s chat database is not in this backup. Copy the "
      "backup again from where it came, or make a new one with the iPhone.");
  expectShown(warning);
  chooseDestination();
  click("startExportButton");
  ASSERT_TRUE(until([&] { return state().step == WizardStep::done; }, "the export is done"));
  expectShown(warning);
}

TEST_F(Wizard, StopsAnUnlockThatTakesTooLong) {
  Wishes slow = encrypted();
  slow.contents->encryption->keyBag.iterations = 10'000;
  slow.contents->encryption->keyBag.doubleIterations = 5'000'000;
  open(slow);
  click("backupRow0");
  typePassword("correct horse");
  click("continueButton");
  expectShown("Unlocking backup");
  click("cancelUnlockButton");
  expectShown("Stopping…");
  ASSERT_TRUE(until([&] { return !state().isScanning(); }, "the unlock has stopped"));
  EXPECT_EQ(state().step, WizardStep::backup);
  ASSERT_TRUE(until([&] { return !isShown("cancelUnlockButton"); }, "the sheet is gone"));
  EXPECT_FALSE(isShown("alertOKButton")) << "stopping is no failure";
  continueWithBackup();
}

TEST_F(Wizard, StopsAnExportAndCanStartItAgain) {
  Wishes many;
  for (int i = 0; i < 1500; ++i) {
    const std::string name = "b" + std::to_string(i);
    many.contents->whatsApp.mediaFiles.push_back(ExportTest::media(ExportTest::ana, name, "jpg", "photo " + name));
  }
  open(many);
  click("backupRow0");
  continueWithBackup();
  chooseDestination();
  click("startExportButton");
  click("cancelExportButton");
  ASSERT_TRUE(until([&] { return isShown("alertOKButton"); }, "the export has stopped"));
  expectShown("The export was cancelled.");
  press(Qt::Key_Return);
  ASSERT_TRUE(until([&] { return !isShown("alertOKButton"); }, "the alert is gone"));
  EXPECT_EQ(state().step, WizardStep::options);
  click("startExportButton");
  EXPECT_TRUE(until([&] { return state().step == WizardStep::done; }, "the export is done"));
}

TEST_F(Wizard, TellsThatTheDestinationCannotBeWrittenTo) {
  open();
  click("backupRow0");
  continueWithBackup();
  destination = backup / "inside";
  fs::create_directories(destination);
  chooseDestination();
  click("startExportButton");
  ASSERT_TRUE(until([&] { return isShown("alertOKButton"); }, "the alert"));
  expectShown("Cannot write to the destination folder");
  expectShown("Choose a folder you can write to, such as Documents or Desktop.");
  press(Qt::Key_Escape);
  EXPECT_TRUE(until([&] { return !isShown("alertOKButton"); }, "the alert is gone"));
}

TEST_F(Wizard, AsksForTheDestinationFirst) {
  open({.hasHome = false});
  click("backupRow0");
  continueWithBackup();
  EXPECT_FALSE(item("startExportButton").isEnabled());
  expectShown("Choose where to save first");
  chosenFolders.push_back(destination);
  click("hintLink");
  EXPECT_TRUE(until([&] { return item("startExportButton").isEnabled(); }, "the export can start"));
  ASSERT_EQ(folderRequests.size(), 1U);
  EXPECT_EQ(folderRequests[0].title, "Choose where to save");
}

TEST_F(Wizard, TakesABackupThatIsChosenByHand) {
  open({.listed = false});
  expectShown("No backup yet?");
  chosenFolders.push_back(std::nullopt);
  click("chooseOtherButton");
  expectShown("No backup yet?");
  chosenFolders.push_back(backup);
  click("chooseOtherButton");
  ASSERT_TRUE(until([&] { return shows("Ana's iPhone"); }, "the chosen backup"));
  expectGone("No backup yet?");
  continueWithBackup();
}

TEST_F(Wizard, OpensTheBackupItWasStartedWith) {
  open({.listed = false, .opensBackup = true});
  expectShown("Ana's iPhone");
  continueWithBackup();
}

// ----------------------------------------------------------- the library

TEST_F(Wizard, HelpsWhoeverHasNoBackupYet) {
  open({.listed = false});
  expectShown("No backup yet?");
  expectShown("Make a local backup in Finder, then come back and refresh this list.");
  expectShown("Choose “Back up all of the data on your iPhone to this Mac”.");
  fs::create_directories(root);
  fs::rename(backup, root / "00008110-000A1B2C3D4E5F60");
  click("refreshButton");
  expectShown("Ana's iPhone");
  expectGone("No backup yet?");
}

TEST_F(Wizard, AsksForAccessWhereBackupsAreHidden) {
  open({.accessDenied = true});
  expectShown("macOS is hiding your backups");
  EXPECT_FALSE(isShown("openSettingsButton")) << "it would lead nowhere";
  expectGone("1. Click Open System Settings.");
  becomeOneself();
  click("checkAgainButton");
  expectShown("Ana's iPhone");
  expectGone("macOS is hiding your backups");
}

}  // namespace
