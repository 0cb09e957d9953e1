#include <gtest/gtest.h>

#include <fstream>

#include "Tests/Application/Screens/WindowScene.h"

namespace {

using WindowTest::Scene;
namespace fs = std::filesystem;

// What is dragged onto the window.
class Drops : public Scene {
 protected:
  QList<QUrl> backupURLs() const { return {QUrl::fromLocalFile(QString::fromStdString(backup.string()))}; }
};

TEST_F(Drops, TakesAFolderThatIsDroppedOnIt) {
  open({.listed = false});
  EXPECT_TRUE(dragOver(backupURLs()));
  EXPECT_TRUE(state().dropTargeted);
  dragAway();
  EXPECT_FALSE(state().dropTargeted);
  EXPECT_TRUE(drop(backupURLs()));
  EXPECT_FALSE(state().dropTargeted);
  EXPECT_TRUE(until([&] { return shows("Ana's iPhone"); }, "the dropped backup"));
}

TEST_F(Drops, RefusesWhatIsNoFile) {
  open();
  EXPECT_FALSE(drop({QUrl("https://example.org/")}));
  EXPECT_FALSE(drop({}, "some text"));
  EXPECT_FALSE(state().dropTargeted);
  EXPECT_EQ(state().backupURL, std::nullopt);
}

TEST_F(Drops, TellsThatADroppedFileIsNoBackup) {
  open();
  std::ofstream(folder / "holiday.jpg") << "a photo";
  drop({QUrl::fromLocalFile(QString::fromStdString((folder / "holiday.jpg").string()))});
  ASSERT_TRUE(until([&] { return isShown("alertOKButton"); }, "the alert"));
  expectShown("This folder isn't an iPhone backup.");
}

TEST_F(Drops, GoesBackToTheFirstStepForAFolderThatIsDroppedLater) {
  open();
  exportAll();
  drop(backupURLs());
  EXPECT_TRUE(until([&] { return state().step == WizardStep::backup && state().backupInfo; }, "the first step"));
}

// A source that is told "moved" removes the backup.
TEST_F(Drops, AreTakenAsCopiesWhateverTheSourceProposes) {
  open({.listed = false});
  const Qt::DropActions both = Qt::CopyAction | Qt::MoveAction;
  EXPECT_EQ(dropOffering(both, Qt::ShiftModifier, backupURLs()), Qt::CopyAction) << "the source proposes to move";
  EXPECT_TRUE(until([&] { return shows("Ana's iPhone"); }, "the dropped backup"));
  EXPECT_EQ(dropOffering(both | Qt::LinkAction, Qt::NoModifier, backupURLs()), Qt::CopyAction);
}

TEST_F(Drops, AreRefusedWhereTheyCanOnlyBeMoved) {
  open({.listed = false});
  EXPECT_EQ(dropOffering(Qt::MoveAction, Qt::NoModifier, backupURLs()), std::nullopt);
  EXPECT_FALSE(state().dropTargeted);
  EXPECT_EQ(state().backupURL, std::nullopt);
}

}  // namespace
