#include <gtest/gtest.h>

#include <QProcess>

#include "Tests/Application/Screens/WindowScene.h"

namespace {

using WindowTest::Scene;
namespace fs = std::filesystem;

// The demo backup, as its own program makes it.
class Demo : public Scene {
 protected:
  static constexpr int patience = 200'000;  // milliseconds; it encodes videos and sounds

  void make() {
    QProcess maker;
    maker.start(TIDEWELL_DEMO_BACKUP, {QString::fromStdString(folder.path().string())});
    ASSERT_TRUE(maker.waitForFinished(patience));
    ASSERT_EQ(maker.exitCode(), 0) << maker.readAllStandardError().toStdString();
    backup = maker.readAllStandardOutput().trimmed().toStdString();
    password = ExportTest::textOf(folder / "password.txt");
    password.pop_back();  // the line's end
  }

  std::string password;
};

TEST_F(Demo, GoesFromTheWindowToAReadableArchive) {
  make();
  const auto before = Fixture::treeSnapshot(backup);
  open({.contents = std::nullopt, .listed = true, .opensBackup = true});
  expectShown("This backup is encrypted");
  click("passwordField");
  type(QString::fromStdString(password));
  click("continueButton");
  ASSERT_TRUE(until([&] { return isShown("cancelUnlockButton"); }, "it is being unlocked"));
  expectShown("This can take up to a minute. The password stays on this Mac.");
  ASSERT_TRUE(eventually([&] { return state().step == WizardStep::options; }, "it is unlocked"));

  chooseDestination();
  click("startExportButton");
  expectShown("You can leave this window open. Nothing in the iPhone backup is changed.");
  ASSERT_TRUE(eventually([&] { return state().step == WizardStep::done; }, "the export is done"));
  expectShown("0 failed");
  click("openArchiveButton");
  ASSERT_EQ(openedFiles, std::vector{destination / "index.html"});
  EXPECT_NE(ExportTest::textOf(openedFiles[0]).find("messages/_viewer/"), std::string::npos);
  EXPECT_GT(state().summary->transcriptCount, 10);
  EXPECT_EQ(Fixture::treeSnapshot(backup), before) << "the backup was changed";
}

}  // namespace
