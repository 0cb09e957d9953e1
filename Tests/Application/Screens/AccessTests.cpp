#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAccessible>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QTest>
#include <algorithm>
#include <set>

#include "Tests/Application/Screens/WindowScene.h"

namespace {

using WindowTest::Scene;
using WindowTest::Wishes;

// Whoever cannot see the window, or use a mouse, or has a small screen.
class Access : public Scene {
 protected:
  // Every control that the keyboard stops at, in order, once around.
  std::vector<std::string> tabStops() {
    std::vector<std::string> stops;
    for (int i = 0; i < 60; ++i) {
      press(Qt::Key_Tab);
      if (std::ranges::find(stops, focused()) != stops.end()) break;
      stops.push_back(focused());
      describe(*window().activeFocusItem());
    }
    return stops;
  }

  // A screen reader must be able to say what it is.
  void describe(QQuickItem& control) {
    QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(&control);
    ASSERT_NE(interface, nullptr) << focused() << " does not exist for a screen reader";
    EXPECT_FALSE(interface->text(QAccessible::Name).isEmpty()) << focused() << " has no name";
    static const std::set<QAccessible::Role> roles{QAccessible::Button,      QAccessible::CheckBox,
                                                   QAccessible::RadioButton, QAccessible::EditableText,
                                                   QAccessible::ListItem,    QAccessible::Link};
    EXPECT_TRUE(roles.contains(interface->role())) << focused() << " has role " << interface->role();
  }

  // Nothing that can be clicked may lie outside the window and everything that scrolls.
  void expectWithinWindow(const std::string& name) {
    const QQuickItem& control = item(name);
    const QRectF place = control.mapRectToScene(QRectF(0, 0, control.width(), control.height()));
    EXPECT_TRUE(QRectF(0, 0, window().width(), window().height()).contains(place)) << name << " is cut off";
  }

  // Everything that a screen reader could say of this part of the window.
  static std::string told(QAccessibleInterface* part) {
    if (part == nullptr) return {};
    std::string all;
    for (const QAccessible::Text text : {QAccessible::Name, QAccessible::Description, QAccessible::Value}) {
      all += part->text(text).toStdString() + "\n";
    }
    QAccessibleTextInterface* letters = part->textInterface();
    if (letters != nullptr) all += letters->text(0, letters->characterCount()).toStdString() + "\n";
    for (int i = 0; i < part->childCount(); ++i) all += told(part->child(i));
    return all;
  }

  // As a key does that is not let go.
  void repeat(Qt::Key key) {
    QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, {}, true);
    QCoreApplication::sendEvent(&window(), &event);
  }

  // Nothing is drawn any more.
  bool comesToRest() {
    QElapsedTimer sinceDrawing;
    sinceDrawing.start();
    const auto drawn = QObject::connect(
        &window(), &QQuickWindow::frameSwapped, &window(), [&] { sinceDrawing.restart(); }, Qt::DirectConnection);
    const bool rests = until([&] { return sinceDrawing.elapsed() > 300; }, "the window rests");
    QObject::disconnect(drawn);
    return rests;
  }

  static Wishes encrypted() { return {.contents = ExportTest::smallBackup(true)}; }
};

TEST_F(Access, KeysReachEveryControlOfTheFirstStep) {
  open(encrypted());
  click("backupRow0");
  ASSERT_TRUE(until([&] { return isShown("passwordField"); }, "the password is asked for"));
  click("passwordField");
  type("x");
  ASSERT_TRUE(until([&] { return item("continueButton").isEnabled(); }, "the step can be left"));
  EXPECT_THAT(tabStops(),
              testing::UnorderedElementsAre("refreshListButton", "backupRow0", "passwordField", "passwordField.eye",
                                            "rememberBox", "chooseOtherButton", "continueButton"));
}

TEST_F(Access, KeysReachEveryControlOfTheSecondStep) {
  open();
  click("backupRow0");
  continueWithBackup();
  chooseDestination();
  EXPECT_THAT(tabStops(),
              testing::UnorderedElementsAre("kindBox.photos", "kindBox.videos", "kindBox.voiceNotes",
                                            "kindBox.stickers", "kindBox.documents", "transcriptsBox",
                                            "messageFilesBox", "chooseChatsButton", "firstDayField", "lastDayField",
                                            "chooseDestinationButton", "backButton", "startExportButton"));
}

TEST_F(Access, KeysReachEveryControlOfTheLastStep) {
  open();
  exportAll();
  EXPECT_THAT(tabStops(), testing::UnorderedElementsAre("verifyButton", "exportAnotherButton", "showInFinderButton",
                                                        "openArchiveButton"));
}

TEST_F(Access, AnAlertKeepsTheKeysUntilItIsAnswered) {
  open(encrypted());
  click("backupRow0");
  click("passwordField");
  type("wrong");
  ASSERT_TRUE(until([&] { return item("continueButton").isEnabled(); }, "the step can be left"));
  press(Qt::Key_Return);
  ASSERT_TRUE(until([&] { return isShown("alertOKButton"); }, "the alert"));
  EXPECT_EQ(tabStops(), std::vector<std::string>{"alertOKButton"});
}

TEST_F(Access, APasswordIsNotReadOut) {
  open(encrypted());
  click("backupRow0");
  click("passwordField");
  type("zebra");
  const std::string all = told(QAccessible::queryAccessibleInterface(&window()));
  EXPECT_THAT(all, testing::HasSubstr("Backup password"));
  EXPECT_THAT(all, testing::Not(testing::HasSubstr("zebra")));
  EXPECT_EQ(state().currentPassword(), "zebra");
}

TEST_F(Access, AKeyThatIsHeldPressesNoFurtherButton) {
  open();
  click("backupRow0");
  ASSERT_TRUE(until([&] { return item("continueButton").isEnabled(); }, "the backup is read"));
  repeat(Qt::Key_Return);
  EXPECT_FALSE(state().isScanning());
  continueWithBackup();
  repeat(Qt::Key_Return);
  EXPECT_EQ(state().step, WizardStep::options);
  repeat(Qt::Key_Escape);
  EXPECT_EQ(state().step, WizardStep::options);
  press(Qt::Key_Escape);
  EXPECT_EQ(state().step, WizardStep::backup);
}

TEST_F(Access, AKeyThatIsHeldAnswersNoAlert) {
  open();
  drop({QUrl::fromLocalFile(QStringLiteral("/nowhere"))});
  ASSERT_TRUE(until([&] { return isShown("alertOKButton"); }, "the alert"));
  repeat(Qt::Key_Escape);
  repeat(Qt::Key_Return);
  EXPECT_TRUE(state().errorMessage);
  press(Qt::Key_Escape);
  EXPECT_FALSE(state().errorMessage);
}

TEST_F(Access, AWindowInWhichNothingHappensDrawsNothing) {
  open();
  EXPECT_TRUE(comesToRest());
  click("backupRow0");
  continueWithBackup();
  EXPECT_TRUE(comesToRest());
}

TEST_F(Access, ASmallWindowHidesNoButton) {
  open(encrypted());
  window().resize(640, 480);
  click("backupRow0");
  ASSERT_TRUE(until([&] { return isShown("passwordField") && window().width() == 640; }, "the small window"));
  for (const char* name : {"chooseOtherButton", "continueButton"}) expectWithinWindow(name);
  click("passwordField");
  expectWithinWindow("passwordField");
  type("correct horse");
  continueWithBackup();
  for (const char* name : {"backButton", "startExportButton"}) expectWithinWindow(name);
  chooseDestination();
  expectWithinWindow("chooseDestinationButton");
  click("kindBox.photos");
  EXPECT_FALSE(state().includedKinds.contains(MediaKind::photos)) << "the list scrolls back to its first box";
  click("startExportButton");
  ASSERT_TRUE(until([&] { return state().step == WizardStep::done; }, "the export is done"));
  for (const char* name : {"exportAnotherButton", "showInFinderButton", "openArchiveButton"}) expectWithinWindow(name);
}

TEST_F(Access, LongNamesStayWithinTheWindow) {
  Wishes wishes;
  wishes.contents->deviceName = std::string(300, 'W') + " של אנה 📱";
  open(wishes);
  window().resize(640, 480);
  click("backupRow0");
  expectWithinWindow("backupRow0");
  continueWithBackup();
  destination = folder / std::string(200, 'd') / std::string(200, 'e');
  std::filesystem::create_directories(destination);
  chooseDestination();
  expectWithinWindow("chooseDestinationButton");
  expectWithinWindow("startExportButton");
}

}  // namespace
