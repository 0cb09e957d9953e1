#include "Tidewell/Screens/WindowPlace.h"

#include <gtest/gtest.h>

#include <fstream>
#include <vector>

#include "Tests/Application/Screens/WindowScene.h"
#include "Tests/Support/TemporaryDirectory.h"

namespace {

using WindowTest::Scene;
namespace fs = std::filesystem;

const QSize least(560, 400);
const QRect laptop(0, 0, 1366, 768);
const QRect second(1366, 0, 1920, 1080);

TEST(WindowPlace, FitsTheScreens) {
  struct Case {
    const char* what;
    QList<QRect> screens;
    WindowPlace wish;
    QRect expected;
  };
  const std::vector<Case> cases{
      {"no screen", {}, {{900, 800}, {}}, {0, 0, 900, 800}},
      {"in the middle, below the title bar", {{0, 0, 1920, 1080}}, {{900, 800}, {}}, {510, 158, 900, 800}},
      {"no higher than the screen", {laptop}, {{900, 800}, {}}, {233, 40, 900, 724}},
      {"nor wider", {{0, 0, 640, 480}}, {{900, 800}, {}}, {4, 40, 632, 436}},
      {"even below the least size", {{0, 0, 320, 240}}, {{900, 800}, {}}, {4, 40, 312, 196}},
      {"at double scale", {{0, 0, 960, 540}}, {{900, 812}, {}}, {30, 40, 900, 496}},
      {"beside the panels", {{70, 30, 1296, 738}}, {{900, 600}, {}}, {268, 117, 900, 600}},
      {"the least size", {laptop}, {{10, 10}, QPoint(100, 100)}, {100, 100, 560, 400}},
      {"where it was", {laptop, second}, {{800, 600}, QPoint(1500, 200)}, {1500, 200, 800, 600}},
      {"on the screen that it lies on most", {laptop, second}, {{800, 600}, QPoint(1300, 200)}, {1370, 200, 800, 600}},
      {"pulled in from the right", {laptop}, {{800, 600}, QPoint(1000, 100)}, {562, 100, 800, 600}},
      {"pulled in from the left and the bottom", {laptop}, {{800, 600}, QPoint(-300, 400)}, {4, 164, 800, 600}},
      {"title bar within reach", {laptop}, {{800, 600}, QPoint(10, -20)}, {10, 40, 800, 600}},
      {"its screen is gone", {laptop}, {{800, 600}, QPoint(3000, 200)}, {283, 102, 800, 600}},
      {"its screen is gone, and was larger", {laptop}, {{1800, 1000}, QPoint(1400, 60)}, {4, 40, 1358, 724}},
      {"a screen left of the primary one",
       {laptop, {-1920, 0, 1920, 1080}},
       {{800, 600}, QPoint(-1000, 300)},
       {-1000, 300, 800, 600}},
  };
  for (const Case& c : cases) {
    const QRect place = c.wish.on(c.screens, least);
    EXPECT_EQ(place, c.expected) << c.what << ": " << place.x() << ", " << place.y() << ", " << place.width() << ", "
                                 << place.height();
  }
}

TEST(WindowPlace, IsKeptInAFile) {
  const Fixture::TemporaryDirectory folder;
  const fs::path file = folder / "new" / "window.json";
  EXPECT_EQ(WindowPlace::load(file), std::nullopt);
  for (const WindowPlace& place : {WindowPlace{{800, 600}, QPoint(-5, 40)}, WindowPlace{{640, 480}, {}}}) {
    place.save(file);
    EXPECT_EQ(WindowPlace::load(file), place);
  }
}

TEST(WindowPlace, TakesADamagedFileForNone) {
  const Fixture::TemporaryDirectory folder;
  const fs::path file = folder / "window.json";
  for (const char* text : {"", "{", "[]", "null", R"({"width": 800})", R"({"width": "800", "height": 600})",
                           R"({"width": -800, "height": 600})", R"({"width": 0, "height": 0})",
                           R"({"width": 1e300, "height": 600})", R"({"width": 999999999, "height": 600})"}) {
    std::ofstream(file) << text;
    EXPECT_EQ(WindowPlace::load(file), std::nullopt) << text;
  }
  std::ofstream(file) << R"({"width": 800, "height": 600, "x": 1e99, "y": 0})";
  EXPECT_EQ(WindowPlace::load(file), (WindowPlace{{800, 600}, {}}));
  fs::remove(file);
  fs::create_directory(file);
  EXPECT_EQ(WindowPlace::load(file), std::nullopt);
}

class Window : public Scene {
 protected:
  void reopen() {
    app.reset();
    open({.contents = std::nullopt});
  }
};

TEST_F(Window, OpensAsLargeAndWhereItWasClosed) {
  open();
  const QRect before = window().geometry();
  reopen();
  EXPECT_EQ(window().geometry(), before);
  EXPECT_FALSE(fs::exists(folder / "window.json")) << "nobody has chosen anything";
  window().setGeometry(120, 90, 700, 500);
  ASSERT_TRUE(until([&] { return window().size() == QSize(700, 500); }, "the size"));
  reopen();
  EXPECT_EQ(window().geometry(), QRect(120, 90, 700, 500));
}

TEST_F(Window, ForgetsASizeThatItHasWhileMaximized) {
  open();
  window().setGeometry(120, 90, 700, 500);
  ASSERT_TRUE(until([&] { return window().size() == QSize(700, 500); }, "the size"));
  reopen();
  window().showMaximized();
  ASSERT_TRUE(until([&] { return window().width() > 1000; }, "it is maximized"));
  reopen();
  EXPECT_EQ(window().geometry(), QRect(120, 90, 700, 500));
}

TEST_F(Window, ShowsTheWholeSecondStepByDefault) {
  open();
  continueWithBackup();
  chooseDestination();
  const QQuickItem& scroller = item("pageScroller");
  EXPECT_LE(scroller.property("contentHeight").toDouble(), scroller.height());
}

// Run with several screens; see CMakeLists.txt.
TEST_F(Window, FitsTheScreenWithEveryButton) {
  open();
  const QRect space = window().screen()->availableGeometry();
  const auto expectButtons = [&](std::initializer_list<const char*> names) {
    EXPECT_TRUE(space.contains(window().geometry())) << window().width() << " x " << window().height();
    for (const char* name : names) {
      const QQuickItem& button = item(name);
      const QRectF place = button.mapRectToScene(QRectF(0, 0, button.width(), button.height()));
      EXPECT_TRUE(QRectF(QPointF(), QSizeF(window().size())).contains(place)) << name;
    }
  };
  std::printf("screen %d x %d, window %d x %d\n", space.width(), space.height(), window().width(), window().height());
  expectButtons({"chooseOtherButton", "continueButton"});
  continueWithBackup();
  expectButtons({"backButton", "startExportButton"});
  chooseDestination();
  click("startExportButton");
  ASSERT_TRUE(until([&] { return state().step == WizardStep::done; }, "the export is done"));
  expectButtons({"exportAnotherButton", "showInFinderButton", "openArchiveButton"});
}

}  // namespace
