#include <gtest/gtest.h>

#include <QTest>

#include "Tests/Application/Screens/WindowScene.h"

namespace {

using WindowTest::Scene;

// Hands that click twice where once is enough.
class DoubleClicks : public Scene {
 protected:
  void openAtOptions() {
    open({.guardsClicks = true});
    click("backupRow0");
    continueWithBackup();
  }

  // Longer than people need, so that a slow machine is still within it.
  void guardFor(int milliseconds) {
    window().findChild<QObject*>("footerGuard")->setProperty("interval", milliseconds);
  }

  QPoint placeOf(const std::string& name) {
    const QQuickItem& button = item(name);
    return button.mapToScene(QPointF(button.width() / 2, button.height() / 2)).toPoint();
  }
  // Whatever lies there by now.
  void clickAt(QPoint place) { QTest::mouseClick(&window(), Qt::LeftButton, Qt::NoModifier, place); }
};

TEST_F(DoubleClicks, AreToldFromOthersByHalfASecond) {
  open({.guardsClicks = true});
  EXPECT_EQ(window().findChild<QObject*>("footerGuard")->property("interval"), 500);
}

TEST_F(DoubleClicks, OnContinueStartNoExport) {
  open({.guardsClicks = true});
  click("backupRow0");
  guardFor(2'000);
  ASSERT_TRUE(until([&] { return item("continueButton").isEnabled(); }, "the backup is read"));
  const QPoint place = placeOf("continueButton");
  clickAt(place);
  ASSERT_TRUE(until([&] { return state().step == WizardStep::options && isShown("startExportButton"); }, "step 2"));
  ASSERT_TRUE(until([&] { return state().canExport(); }, "the export could start"));
  for (const int pause : {0, 50, 400, 900}) {
    QTest::qWait(pause);
    clickAt(place);
    EXPECT_EQ(state().step, WizardStep::options) << "after " << pause << " ms";
  }
  QTest::qWait(2'200);
  clickAt(place);
  EXPECT_NE(state().step, WizardStep::options) << "a click after a rest counts";
}

TEST_F(DoubleClicks, OnStartExportDoNotCancelIt) {
  openAtOptions();
  click("startExportButton");
  clickAt(placeOf("cancelExportButton"));
  ASSERT_TRUE(until([&] { return !state().isExporting(); }, "the export ends"));
  EXPECT_EQ(state().step, WizardStep::done);
}

TEST_F(DoubleClicks, OfAButtonThatIsHeldAcrossTheStepDoNotCount) {
  openAtOptions();
  ASSERT_TRUE(until([&] { return !isShown("footerGuard"); }, "the footer takes clicks"));
  const QPoint place = placeOf("startExportButton");
  QTest::mousePress(&window(), Qt::LeftButton, Qt::NoModifier, placeOf("header"));
  press(Qt::Key_Escape);
  ASSERT_TRUE(until([&] { return isShown("continueButton"); }, "step 1"));
  QTest::qWait(700);
  EXPECT_TRUE(isShown("footerGuard")) << "the button is still down";
  QTest::mouseRelease(&window(), Qt::LeftButton, Qt::NoModifier, place);
  QTest::qWait(100);
  clickAt(place);
  EXPECT_FALSE(state().isScanning()) << "the button was up for 100 ms";
  QTest::qWait(600);
  clickAt(place);
  EXPECT_TRUE(state().isScanning() || state().step == WizardStep::options);
}

TEST_F(DoubleClicks, HoldUpNoKeys) {
  open({.guardsClicks = true});
  click("backupRow0");
  guardFor(10'000);
  continueWithBackup();
  ASSERT_TRUE(until([&] { return state().canExport(); }, "the export can start"));
  EXPECT_TRUE(isShown("footerGuard"));
  press(Qt::Key_Escape);
  EXPECT_EQ(state().step, WizardStep::backup);
}

}  // namespace
