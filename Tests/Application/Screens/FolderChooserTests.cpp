#include <gmock/gmock.h>

#include <QAccessible>
#include <QTest>
#include <algorithm>

#include "Tests/Application/Screens/WindowScene.h"

namespace {

using WindowTest::Scene;
namespace fs = std::filesystem;

// Our own folder chooser, which a window drawn into memory has instead of a desktop's.
class FolderChooser : public Scene {
 protected:
  // Asks for a destination, with the chooser opened there.
  void ask(const fs::path& at) {
    ASSERT_NO_FATAL_FAILURE(open({.realFolderDialog = true}));
    for (const char* name : {"Alps/2025", "Alps/2026", "Beach", "Empty"}) fs::create_directories(places / name);
    fs::create_directories(at);
    click("backupRow0");
    continueWithBackup();
    controller().setDestination(at);
    click("chooseDestinationButton");
    ASSERT_TRUE(showsFolder(at));
    const std::string row = fs::is_empty(at) ? "folderRow" : "folderRow0";
    ASSERT_TRUE(until([&] { return focused() == row; }, "the list has the focus"));
  }
  bool showsFolder(const fs::path& wanted) {
    return until([&] { return shown() == wanted && !app->folders().content().isReading; }, wanted.string());
  }
  fs::path shown() const { return app->folders().content().path.toStdString(); }
  bool isGone() {
    return until([&] { return !isShown("chooseFolderButton"); }, "the chooser is gone");
  }

  static bool isWithin(const QQuickItem& control, double width, double height) {
    return QRectF(0, 0, width, height)
        .contains(control.mapRectToScene(QRectF(0, 0, control.width(), control.height())));
  }

  fs::path places = folder / "Places";
};

TEST_F(FolderChooser, OpensWhereBackupsAreAndChoosesTheFolderShown) {
  open({.realFolderDialog = true});
  click("chooseOtherButton");
  expectShown("Choose a backup folder");
  expectShown("Choose the device folder from a Finder backup, or a copy of that folder.");
  ASSERT_TRUE(showsFolder(root));
  EXPECT_FALSE(isShown("newFolderButton"));
  click("folderRow0");
  ASSERT_TRUE(showsFolder(backup));
  click("chooseFolderButton");
  ASSERT_TRUE(until([&] { return state().backupInfo.has_value(); }, "the chosen backup"));
  EXPECT_TRUE(isGone());
}

TEST_F(FolderChooser, ChoosesTheFolderThatItOpenedAt) {
  ask(places);
  expectShown("Choose where to save");
  click("chooseFolderButton");
  EXPECT_TRUE(isGone());
  EXPECT_EQ(state().destinationURL, places);
}

TEST_F(FolderChooser, ChoosesAnEmptyFolder) {
  ask(places);
  click("folderRow2");
  ASSERT_TRUE(showsFolder(places / "Empty"));
  expectShown("There are no folders in here.");
  click("chooseFolderButton");
  EXPECT_TRUE(isGone());
  EXPECT_EQ(state().destinationURL, places / "Empty");
}

TEST_F(FolderChooser, IsCancelledByEscapeAndByItsButton) {
  ask(places / "Beach");
  press(Qt::Key_Escape);
  EXPECT_TRUE(isGone());
  click("chooseDestinationButton");
  ASSERT_TRUE(showsFolder(places / "Beach"));
  click("folderUpButton");
  ASSERT_TRUE(showsFolder(places));
  click("cancelFolderButton");
  EXPECT_TRUE(isGone());
  EXPECT_EQ(state().destinationURL, places / "Beach");
  EXPECT_EQ(state().step, WizardStep::options);
}

TEST_F(FolderChooser, IsWalkedThroughByKeys) {
  ask(places);
  EXPECT_EQ(focused(), "folderRow0");
  press(Qt::Key_Down);
  EXPECT_EQ(focused(), "folderRow1");
  press(Qt::Key_End);
  EXPECT_EQ(focused(), "folderRow2");
  type("al");
  EXPECT_EQ(focused(), "folderRow0");
  press(Qt::Key_Return);
  ASSERT_TRUE(showsFolder(places / "Alps"));
  ASSERT_TRUE(until([&] { return focused() == "folderRow0"; }, "the focus goes along"));
  press(Qt::Key_Down);
  press(Qt::Key_Space);
  ASSERT_TRUE(showsFolder(places / "Alps" / "2026"));
  ASSERT_TRUE(until([&] { return focused() == "folderRow"; }, "an empty list keeps the focus"));
  press(Qt::Key_Backspace);
  ASSERT_TRUE(showsFolder(places / "Alps"));
  EXPECT_TRUE(until([&] { return focused() == "folderRow1"; }, "where one came from"));
  press(Qt::Key_Up, Qt::AltModifier);
  ASSERT_TRUE(showsFolder(places));
  tabTo("chooseFolderButton");
  press(Qt::Key_Return);
  EXPECT_TRUE(isGone());
  EXPECT_EQ(state().destinationURL, places);
}

TEST_F(FolderChooser, HasOneTabStopForEachListAndANameForEachControl) {
  ask(places);
  std::vector<std::string> stops;
  for (int i = 0; i < 30; ++i) {
    press(Qt::Key_Tab);
    if (std::ranges::find(stops, focused()) != stops.end()) break;
    stops.push_back(focused());
    QAccessibleInterface* control = QAccessible::queryAccessibleInterface(window().activeFocusItem());
    ASSERT_NE(control, nullptr) << focused();
    EXPECT_FALSE(control->text(QAccessible::Name).isEmpty()) << focused() << " has no name";
  }
  EXPECT_THAT(stops, testing::UnorderedElementsAre("folderPlace0", "folderUpButton", "folderPathField", "folderRow0",
                                                   "newFolderButton", "cancelFolderButton", "chooseFolderButton"));
}

TEST_F(FolderChooser, GoesToPlaces) {
  ask(places);
  click("folderPlace0");
  EXPECT_TRUE(showsFolder(folder / "home"));
}

TEST_F(FolderChooser, GoesWhereSomebodyTypes) {
  ask(places);
  click("folderPathField");
  press(Qt::Key_A, Qt::ControlModifier);
  type("/nowhere");
  press(Qt::Key_Return);
  expectShown("There is no such folder.");
  EXPECT_EQ(shown(), places);
  press(Qt::Key_A, Qt::ControlModifier);
  type(QString::fromStdString((places / "Beach").string()));
  press(Qt::Key_Return);
  EXPECT_TRUE(showsFolder(places / "Beach"));
  expectGone("There is no such folder.");
}

TEST_F(FolderChooser, ChoosesWhatWasTypedWithoutReturn) {
  ask(places);
  click("folderPathField");
  press(Qt::Key_A, Qt::ControlModifier);
  type(QString::fromStdString((places / "Beach").string()));
  click("chooseFolderButton");
  EXPECT_TRUE(isGone());
  EXPECT_EQ(state().destinationURL, places / "Beach");
}

TEST_F(FolderChooser, MakesAFolderAndShowsIt) {
  ask(places);
  click("newFolderButton");
  type("Beach");
  press(Qt::Key_Return);
  expectShown("There is something with this name already.");
  EXPECT_EQ(focused(), "newFolderField");
  press(Qt::Key_A, Qt::ControlModifier);
  type("Cliffs");
  click("createFolderButton");
  ASSERT_TRUE(showsFolder(places / "Cliffs"));
  EXPECT_TRUE(fs::is_directory(places / "Cliffs"));
  ASSERT_TRUE(until([&] { return focused() == "folderRow"; }, "the focus is back in the list"));
  click("chooseFolderButton");
  EXPECT_TRUE(isGone());
  EXPECT_EQ(state().destinationURL, places / "Cliffs");
}

TEST_F(FolderChooser, EscapeLeavesTheNewFolderFirst) {
  ask(places);
  click("newFolderButton");
  press(Qt::Key_Escape);
  EXPECT_EQ(focused(), "newFolderButton");
  press(Qt::Key_Escape);
  EXPECT_TRUE(isGone());
}

TEST_F(FolderChooser, KeepsTheSecondClickOfADoubleOneFromTheFolderBelow) {
  ask(places);
  const QQuickItem& row = item("folderRow0");
  const QPoint place = row.mapToScene(QPointF(row.width() / 2, row.height() / 2)).toPoint();
  QTest::mouseClick(&window(), Qt::LeftButton, Qt::NoModifier, place);
  ASSERT_TRUE(showsFolder(places / "Alps"));
  QTest::mouseClick(&window(), Qt::LeftButton, Qt::NoModifier, place);
  EXPECT_TRUE(showsFolder(places / "Alps"));
}

TEST_F(FolderChooser, FitsTheSmallestWindow) {
  ask(places);
  window().resize(600, 430);
  ASSERT_TRUE(until([&] { return window().width() == 600; }, "the small window"));
  for (const char* name : {"newFolderButton", "cancelFolderButton", "chooseFolderButton", "folderPathField"}) {
    EXPECT_TRUE(until([&] { return isWithin(item(name), 600, 430); }, std::string(name) + " is not cut off"));
  }
}

}  // namespace
