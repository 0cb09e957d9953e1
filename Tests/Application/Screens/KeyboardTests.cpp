#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QTest>

#include "Tests/Application/Screens/WindowScene.h"

namespace {

using WindowTest::Scene;
namespace fs = std::filesystem;

// What the keyboard does besides walking and typing.
class Keyboard : public Scene {
 protected:
  void openLocked() {
    open({.contents = ExportTest::smallBackup(true)});
    click("backupRow0");
    ASSERT_TRUE(until([&] { return isShown("passwordField"); }, "the field"));
    click("passwordField");
  }
};

TEST_F(Keyboard, F5RefreshesTheList) {
  open({.listed = false});
  expectShown("No backup yet?");
  fs::create_directories(root);
  fs::rename(backup, root / "device");
  press(Qt::Key_F5);
  expectShown("Ana's iPhone");
}

TEST_F(Keyboard, ABackupThatWasMadeMeanwhileIsThereWhenOneComesBack) {
  open({.listed = false});
  fs::create_directories(root);
  fs::rename(backup, root / "device");
  controller().comeBack();
  expectShown("Ana's iPhone");
}

TEST_F(Keyboard, ControlQAndWClose) {
  for (const Qt::Key key : {Qt::Key_Q, Qt::Key_W}) {
    if (!app) open();
    window().show();
    press(key, Qt::ControlModifier);
    EXPECT_TRUE(until([&] { return !window().isVisible(); }, "the window is closed"));
  }
}

TEST_F(Keyboard, AltAndALetterPressAButton) {
  open();
  click("backupRow0");
  ASSERT_TRUE(until([&] { return item("continueButton").isEnabled(); }, "the backup is read"));
  EXPECT_EQ(item("chooseOtherButton").property("mnemonic"), "c");
  EXPECT_EQ(item("continueButton").property("mnemonic"), "o") << "every button has a letter of its own";
  press(Qt::Key_O, Qt::AltModifier);
  ASSERT_TRUE(until([&] { return isShown("backButton"); }, "step 2"));
  press(Qt::Key_B, Qt::AltModifier);
  EXPECT_TRUE(until([&] { return isShown("continueButton"); }, "step 1"));
}

TEST_F(Keyboard, NoLetterPressesWhatLiesBehindAnAlert) {
  open();
  click("backupRow0");
  ASSERT_TRUE(until([&] { return item("continueButton").isEnabled(); }, "the backup is read"));
  controller().setBackup(folder / "gone", state().backupInfo);
  ASSERT_TRUE(until([&] { return isShown("alertOKButton") && item("continueButton").isEnabled(); }, "the alert"));
  press(Qt::Key_O, Qt::AltModifier);
  EXPECT_FALSE(state().isScanning());
}

TEST_F(Keyboard, CapsLockIsTold) {
  openLocked();
  type("A");
  expectShown("Caps Lock is on.");
  type("a");
  expectGone("Caps Lock is on.");
  QTest::sendKeyEvent(QTest::Click, &window(), Qt::Key_A, QString("A"), Qt::ShiftModifier);
  expectGone("Caps Lock is on.");
  QTest::sendKeyEvent(QTest::Click, &window(), Qt::Key_A, QString("a"), Qt::ShiftModifier);
  expectShown("Caps Lock is on.");
}

TEST_F(Keyboard, TheEyeShowsThePasswordWhileItIsPressed) {
  openLocked();
  type("correct horse");
  QQuickItem& field = item("passwordField");
  QQuickItem& eye = item("passwordField.eye");
  const QPoint place = eye.mapToScene(QPointF(eye.width() / 2, eye.height() / 2)).toPoint();
  EXPECT_NE(field.property("displayText"), "correct horse");
  QTest::mousePress(&window(), Qt::LeftButton, Qt::NoModifier, place);
  EXPECT_EQ(field.property("displayText"), "correct horse");
  EXPECT_EQ(field.property("text"), "") << "nobody else reads it";
  QTest::mouseRelease(&window(), Qt::LeftButton, Qt::NoModifier, place);
  EXPECT_NE(field.property("displayText"), "correct horse");
  EXPECT_EQ(focused(), "passwordField") << "typing goes on";
}

TEST_F(Keyboard, FoldersThatAreNoBackupAreCountedUnderTheList) {
  fs::create_directories(root / "no backup");
  open();
  expectShown("1 folder here is no readable backup");
  expectGone("no backup: This folder isn't an iPhone backup.");
  click("unreadableLink");
  expectShown("no backup: This folder isn't an iPhone backup.");
}

TEST_F(Keyboard, WhereThereIsNoStoreNothingIsRemembered) {
  passwords.isThere = false;
  openLocked();
  expectShown("This computer has no store for passwords, so it will be asked for again.");
  EXPECT_FALSE(item("rememberBox").isEnabled());
}

}  // namespace
