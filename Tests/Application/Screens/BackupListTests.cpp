#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QStyleHints>
#include <QTest>
#include <filesystem>

#include "Tests/Application/Screens/WindowScene.h"
#include "Tests/Support/BackupBuilder.h"

namespace {

using WindowTest::Scene;
namespace fs = std::filesystem;

// Several backups, of which the second is encrypted.
class BackupList : public Scene {
 protected:
  // In this order, under these names.
  void openWith(const std::vector<std::string>& names) {
    for (std::size_t i = 0; i < names.size(); ++i) {
      Fixture::BackupContents contents = i == 1 ? ExportTest::smallBackup(true) : ExportTest::smallBackup();
      contents.deviceName = names[i];
      write(contents, i);
    }
    open({.contents = std::nullopt});
  }
  // Newest first, as the library has them.
  void write(Fixture::BackupContents contents, std::size_t i) {
    contents.backupTime = 1'700'000'000 - static_cast<std::int64_t>(i) * 60;
    Fixture::writeBackup(contents, at(i));
  }
  fs::path at(std::size_t i) const { return root / ("device-" + std::to_string(1000 + i)); }

  std::string chosen() const { return state().selectedBackupID ? fs::path(*state().selectedBackupID).filename() : ""; }
  static std::string id(std::size_t i) { return "device-" + std::to_string(1000 + i); }
  bool isRead() {
    return until([&] { return state().backupInfo && !state().isInspecting(); }, "the backup is read");
  }

  void expectInView(const std::string& name) {
    const QQuickItem& control = item(name);
    const QQuickItem& list = item("backupList");
    const QRectF place = control.mapRectToScene(QRectF(0, 0, control.width(), control.height()));
    const QRectF seen = list.mapRectToScene(QRectF(0, 0, list.width(), list.height()));
    EXPECT_TRUE(seen.contains(place)) << name << " is not in view: " << place.top() << " to " << place.bottom();
  }
};

TEST_F(BackupList, AsksForThePasswordUnderTheChosenRowAndNamesTheBackup) {
  openWith({"Ana's iPhone", "Bea's iPhone", "Cem's iPhone"});
  click("backupRow1");
  ASSERT_TRUE(until([&] { return focused() == "passwordField"; }, "the field has the focus"));
  const double row = item("backupRow1").mapToScene({0, 0}).y();
  const double field = item("passwordField").mapToScene({0, 0}).y();
  const double next = item("backupRow2").mapToScene({0, 0}).y();
  EXPECT_LT(row, field);
  EXPECT_LT(field, next);
  EXPECT_EQ(item("cardSubject").property("text").toString(), "Bea's iPhone");
  click("backupRow0");
  EXPECT_TRUE(until([&] { return !isShown("passwordField"); }, "another backup needs no password"));
}

TEST_F(BackupList, GivesTheFieldTheFocusAfterReturnAndSpace) {
  openWith({"Ana's iPhone", "Bea's iPhone"});
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Space}) {
    click("backupRow0");
    ASSERT_TRUE(isRead());
    press(Qt::Key_Down);
    ASSERT_TRUE(until([&] { return isShown("passwordField"); }, "the password is asked for"));
    EXPECT_EQ(focused(), "backupRow1") << "who walks through the list stays in it";
    press(key);
    EXPECT_TRUE(until([&] { return focused() == "passwordField"; }, "the field has the focus"));
  }
}

TEST_F(BackupList, GivesTheFieldTheFocusAfterEachDrop) {
  openWith({"Ana's iPhone", "Bea's iPhone"});
  const QList<QUrl> second{QUrl::fromLocalFile(QString::fromStdString(at(1).string()))};
  drop(second);
  ASSERT_TRUE(until([&] { return focused() == "passwordField"; }, "the field has the focus"));
  tabTo("backupRow1");
  drop(second);
  EXPECT_TRUE(until([&] { return focused() == "passwordField"; }, "the field has the focus again"));
}

TEST_F(BackupList, IsOneTabStopInWhichKeysChoose) {
  openWith({"Ana's iPhone", "Bea's iPhone", "Cem 15", "Cem 16"});
  tabTo("backupRow0");
  press(Qt::Key_Tab);
  EXPECT_EQ(focused(), "chooseOtherButton");
  tabTo("backupRow0");
  EXPECT_EQ(chosen(), "") << "the Tab key chooses nothing";
  const auto pressed = [&](Qt::Key key) {
    press(key);
    return chosen();
  };
  EXPECT_EQ(pressed(Qt::Key_End), id(3));
  EXPECT_EQ(focused(), "backupRow3");
  EXPECT_EQ(pressed(Qt::Key_Down), id(3));
  EXPECT_EQ(pressed(Qt::Key_Up), id(2));
  EXPECT_EQ(pressed(Qt::Key_Home), id(0));
  EXPECT_EQ(pressed(Qt::Key_Up), id(0));
  EXPECT_EQ(pressed(Qt::Key_Down), id(1));
  type("cem 16");
  EXPECT_EQ(chosen(), id(3));
  EXPECT_EQ(focused(), "backupRow3");
  ASSERT_TRUE(isRead());
  tabTo("chooseOtherButton");
  tabTo("backupRow3");
}

TEST_F(BackupList, KeepsTheSecondClickOfADoubleOneFromAnotherRow) {
  openWith({"Ana", "Bea", "Cem", "Dee", "Eli", "Fay", "Gus", "Hal"});
  // So that a slow machine is still within it.
  QGuiApplication::styleHints()->setMouseDoubleClickInterval(20'000);
  click("backupRow1");
  ASSERT_TRUE(until([&] { return isShown("passwordField"); }, "the password is asked for"));
  const QQuickItem& row = item("backupRow2");
  const QPoint place = row.mapToScene(QPointF(row.width() / 2, row.height() / 2)).toPoint();
  QTest::mouseClick(&window(), Qt::LeftButton, Qt::NoModifier, place);
  ASSERT_TRUE(until([&] { return !isShown("passwordField") && !state().isInspecting(); }, "the rows have moved up"));
  QTest::mouseClick(&window(), Qt::LeftButton, Qt::NoModifier, place);
  EXPECT_EQ(chosen(), id(2));
  QGuiApplication::styleHints()->setMouseDoubleClickInterval(-1);
}

// Two hundred encrypted ones.
class LongBackupList : public BackupList {
 protected:
  static constexpr std::size_t count = 200;

  void SetUp() override {
    for (std::size_t i = 0; i < count; ++i) {
      write({.deviceName = "Phone " + std::to_string(i), .encryption = Fixture::Encryption{}}, i);
    }
    open({.contents = std::nullopt});
  }
  void expectRowAndFieldInView(std::size_t i) {
    SCOPED_TRACE("row " + std::to_string(i) + ", " + std::to_string(window().width()) + " pixels wide");
    ASSERT_TRUE(until([&] { return focused() == "passwordField"; }, "the field has the focus"))
        << "but " << focused() << ", and chosen is " << chosen();
    QTest::qWait(50);
    expectInView("backupRow" + std::to_string(i));
    expectInView("passwordField");
  }
  int rowsMade() const {
    int rows = 0;
    for (std::size_t i = 0; i < count; ++i) rows += isShown("backupRow" + std::to_string(i)) ? 1 : 0;
    return rows;
  }
  std::size_t chosenPlace() const {
    const auto& backups = state().library.backups;
    for (std::size_t i = 0; i < backups.size(); ++i) {
      if (backups[i].id() == state().selectedBackupID) return i;
    }
    return backups.size();
  }
};

TEST_F(LongBackupList, ShowsRowAndFieldAfterAClickAKeyAndADrop) {
  EXPECT_LT(rowsMade(), 30) << "rows that nobody sees";
  for (const QSize size : {QSize(900, 760), QSize(640, 480)}) {
    window().resize(size);
    ASSERT_TRUE(until([&] { return window().size() == size; }, "the size"));
    click("backupRow150");
    expectRowAndFieldInView(150);

    tabTo("backupRow150");
    press(Qt::Key_End);
    ASSERT_TRUE(until([&] { return isShown("passwordField"); }, "the password is asked for"));
    press(Qt::Key_Space);
    expectRowAndFieldInView(199);

    drop({QUrl::fromLocalFile(QString::fromStdString(state().library.backups[77].info.url.string()))});
    ASSERT_TRUE(until([&] { return chosenPlace() == 77; }, "the dropped backup"));
    expectRowAndFieldInView(77);
  }
}

}  // namespace
