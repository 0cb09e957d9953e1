#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QClipboard>
#include <QGuiApplication>

#include "Tests/Application/Screens/WindowScene.h"
#include "Tests/Application/Session/ManyMessages.h"

namespace {

using WindowTest::Scene;
namespace fs = std::filesystem;

// How an export ends: by itself, by its user, or with something missing.
class Ending : public Scene {
 protected:
  // Starts an export that takes a while.
  void startLongExport() {
    open({.contents = WizardTest::manyMessages(100, 4'000)});
    click("backupRow0");
    continueWithBackup();
    chooseDestination();
    click("startExportButton");
    ASSERT_TRUE(until([&] { return isShown("cancelExportButton"); }, "it is exporting"));
  }

  // Exports a backup that lacks two files.
  void exportWithFailures() {
    Fixture::BackupContents contents = ExportTest::smallBackup();
    contents.whatsApp.mediaFiles.at(0).storage.missing = true;
    contents.whatsApp.mediaFiles.at(1).storage.missing = true;
    open({.contents = contents});
    click("backupRow0");
    exportAll();
  }
};

TEST_F(Ending, ClosingTheWindowAsksFirst) {
  startLongExport();
  EXPECT_FALSE(window().close());
  ASSERT_TRUE(until([&] { return isShown("keepExportingButton"); }, "the question"));
  EXPECT_TRUE(window().isVisible());
  EXPECT_EQ(focused(), "keepExportingButton") << "Return goes on";
  const auto before = state().progress->completed;
  ASSERT_TRUE(until([&] { return !state().isExporting() || state().progress->completed > before; }, "it goes on"));
  click("keepExportingButton");
  ASSERT_TRUE(eventually([&] { return state().step == WizardStep::done; }, "the export is done"));
  EXPECT_EQ(state().summary->copiedCount, 4'000);
  EXPECT_TRUE(window().isVisible());
}

TEST_F(Ending, ClosingTheWindowEndsTheExportWhenThatIsMeant) {
  startLongExport();
  EXPECT_FALSE(window().close());
  click("stopExportButton");
  EXPECT_TRUE(until([&] { return !window().isVisible(); }, "the window is closed"));
  ASSERT_TRUE(until([&] { return !state().isExporting(); }, "the export has ended"));
  EXPECT_FALSE(fs::exists(destination / "index.html"));
}

TEST_F(Ending, EscapeAsksFirst) {
  startLongExport();
  press(Qt::Key_Escape);
  ASSERT_TRUE(until([&] { return isShown("stopExportButton"); }, "the question"));
  press(Qt::Key_Escape);
  ASSERT_TRUE(until([&] { return !isShown("stopExportButton"); }, "Escape goes on"));
  EXPECT_TRUE(state().isExporting());
  press(Qt::Key_Escape);
  click("stopExportButton");
  ASSERT_TRUE(until([&] { return isShown("alertOKButton"); }, "it says so"));
  expectShown("The export was cancelled.");
  EXPECT_TRUE(window().isVisible());
}

TEST_F(Ending, ClosingTheWindowDuringAnUnlockDoesNotAsk) {
  Fixture::BackupContents contents = ExportTest::smallBackup(true);
  contents.encryption->keyBag.doubleIterations = 200'000;
  open({.contents = contents});
  click("backupRow0");
  click("passwordField");
  type("correct horse");
  click("continueButton");
  ASSERT_TRUE(until([&] { return isShown("cancelUnlockButton"); }, "it unlocks"));
  EXPECT_TRUE(window().close());
}

TEST_F(Ending, WithFailuresIsNoPlainSuccess) {
  exportWithFailures();
  expectShown("Export finished");
  expectShown("3 copied · 0 already present · 6 transcripts · 2 failed");
  expectShown("2 files are missing from the backup");
  expectShown("What could not be copied");
  expectShown("It is missing from the backup.");
  click("copyFailuresButton");
  EXPECT_EQ(QGuiApplication::clipboard()->text().count('\n'), 1);
  EXPECT_TRUE(QGuiApplication::clipboard()->text().contains("It is missing from the backup."));
  Fixture::writeBackup(ExportTest::smallBackup(), backup);
  click("tryAgainButton");
  ASSERT_TRUE(until([&] { return state().summary && state().summary->failedCount == 0; }, "all is copied"));
  expectShown("2 copied · 3 already present · 6 transcripts · 0 failed");
  EXPECT_FALSE(isShown("tryAgainButton"));
  expectGone("What could not be copied");
}

TEST_F(Ending, CanBeVerified) {
  open();
  exportAll();
  EXPECT_FALSE(isShown("verdict"));
  click("verifyButton");
  ASSERT_TRUE(until([&] { return isShown("verdict"); }, "the verification is done"));
  expectShown("Nothing is wrong: 5 media files · 3 chats · 4 messages");
  EXPECT_FALSE(isShown("cancelVerificationButton"));
  EXPECT_TRUE(item("verifyButton").isEnabled());
}

TEST_F(Ending, LeadsToAnotherExportWhereSomethingIsWrong) {
  open();
  exportAll();
  for (const auto& entry : fs::recursive_directory_iterator(destination)) {
    if (entry.path().extension() == ".opus") fs::remove(entry.path());
  }
  tabTo("verifyButton");
  press(Qt::Key_Space);
  ASSERT_TRUE(until([&] { return isShown("findingList"); }, "the verification is done"));
  expectShown("1 problem was found");
  click("copyFindingsButton");
  EXPECT_TRUE(QGuiApplication::clipboard()->text().contains(".opus” is missing. Export again"));
  click("exportAgainButton");
  ASSERT_TRUE(until([&] { return state().summary && state().summary->copiedCount == 1; }, "it is copied again"));
  EXPECT_FALSE(isShown("findingList"));
}

TEST_F(Ending, WithoutAnArchiveProposesNone) {
  open();
  click("backupRow0");
  continueWithBackup();
  chooseDestination();
  EXPECT_TRUE(item("messageFilesBox").isEnabled());
  click("transcriptsBox");
  EXPECT_FALSE(item("messageFilesBox").isEnabled()) << "there are no messages to save then";
  click("startExportButton");
  ASSERT_TRUE(until([&] { return state().step == WizardStep::done && isShown("showInFinderButton"); }, "it is done"));
  EXPECT_FALSE(isShown("openArchiveButton"));
  expectGone("Open the Chat Archive to read conversations in a browser");
  press(Qt::Key_Return);
  EXPECT_THAT(revealedFolders, testing::ElementsAre(destination)) << "Return shows the folder instead";
}

TEST_F(Ending, ShowsThePathOfWhatCannotBeOpened) {
  open();
  click("backupRow0");
  exportAll();
  opensFiles = false;
  click("openArchiveButton");
  ASSERT_TRUE(until([&] { return isShown("closeUnopenedButton"); }, "it is told"));
  const QString page = QString::fromStdString((destination / "index.html").string());
  expectShown(page);
  click("copyPathButton");
  EXPECT_EQ(QGuiApplication::clipboard()->text(), page);
  click("closeUnopenedButton");
  EXPECT_TRUE(until([&] { return !isShown("closeUnopenedButton"); }, "it is gone"));
}

}  // namespace
