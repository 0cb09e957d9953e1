#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>

#include "Tests/Application/Session/WizardScene.h"

namespace WizardTest {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

class RememberingTest : public testing::Test {
 protected:
  RememberingTest() { fs::create_directories(chosen); }

  const ExportState& state() { return scene.state(); }
  ExportPreferences kept() const { return ExportPreferences::load(scene.preferencesURL); }
  void keep(const ExportPreferences& preferences) {
    preferences.save(scene.preferencesURL);
    scene.launch();
  }
  void startUp() {
    scene.wizard().startUp();
    ASSERT_TRUE(scene.untilIdle());
  }
  // Each folder's access was ended as often as it was begun, but for what is still in use.
  void expectRunning(const std::vector<fs::path>& folders) const {
    std::vector<fs::path> running;
    for (const auto& [folder, count] : scene.permissions.running) {
      EXPECT_TRUE(count == 0 || count == 1) << folder << " " << count;
      if (count > 0) running.push_back(folder);
    }
    EXPECT_EQ(running, folders);
  }

  WizardScene scene;
  const fs::path backup = scene.addBackup("device");
  const fs::path chosen = scene.folder / "chosen";
};

TEST_F(RememberingTest, KeepsBackupAndDestination) {
  ASSERT_TRUE(scene.choose(backup));
  scene.wizard().setDestination(chosen);
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_EQ(kept(), (ExportPreferences{.lastBackupPath = backup.native(),
                                       .lastDestinationPath = chosen.native(),
                                       .lastBackupBookmark = FakePermissions::bookmark(backup),
                                       .lastDestinationBookmark = FakePermissions::bookmark(chosen)}));
}

TEST_F(RememberingTest, KeepsThePathWhenNoBookmarkCanBeMade) {
  keep({.lastBackupBookmark = Bytes{1}, .lastDestinationBookmark = Bytes{2}});
  scene.permissions.makesBookmarks = false;
  ASSERT_TRUE(scene.choose(backup));
  scene.wizard().setDestination(chosen);
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_EQ(kept(), (ExportPreferences{.lastBackupPath = backup.native(), .lastDestinationPath = chosen.native()}));
}

TEST_F(RememberingTest, KeepsNoFolderThatIsNoBackup) {
  ASSERT_TRUE(scene.choose(scene.home));
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_EQ(kept(), ExportPreferences());
}

TEST_F(RememberingTest, KeepsTheLastOfManyQuickChoices) {
  for (int i = 0; i < 20; ++i) scene.wizard().setDestination(scene.folder / std::to_string(i));
  scene.wizard().setDestination(chosen);
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_EQ(kept().lastDestinationPath, chosen.native());
}

TEST_F(RememberingTest, KeepsWhatWasChosenRightBeforeTheEnd) {
  scene.wizard().setDestination(chosen);
  scene.quit();
  scene.launch();
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_EQ(kept().lastDestinationPath, chosen.native());
}

TEST_F(RememberingTest, AFailureToKeepIsSilent) {
  std::ofstream(scene.folder / "support") << "a file where a folder is needed";
  ASSERT_TRUE(scene.choose(backup));
  scene.wizard().setDestination(chosen);
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_EQ(state().errorMessage, std::nullopt);
  EXPECT_TRUE(state().canContinueFromBackup());
}

TEST_F(RememberingTest, DamagedPreferencesCountAsNone) {
  fs::create_directories(scene.preferencesURL.parent_path());
  std::ofstream(scene.preferencesURL) << "{\"lastBackupPath\": 7";
  scene.launch();
  startUp();
  EXPECT_EQ(state().backupURL, std::nullopt);
  EXPECT_EQ(state().destinationURL, scene.desktop);
  EXPECT_EQ(state().errorMessage, std::nullopt);
}

TEST_F(RememberingTest, StartsWithTheListAndTheDefaultDestination) {
  startUp();
  EXPECT_EQ(state().library.backups.size(), 1U);
  EXPECT_EQ(state().backupURL, std::nullopt);
  EXPECT_EQ(state().destinationURL, scene.desktop);
  EXPECT_EQ(state().step, WizardStep::backup);
}

TEST_F(RememberingTest, ReopensWhatWasUsedLast) {
  ASSERT_TRUE(scene.choose(backup));
  scene.wizard().setDestination(chosen);
  ASSERT_TRUE(scene.untilIdle());
  scene.launch();
  startUp();
  EXPECT_EQ(state().backupURL, backup);
  EXPECT_EQ(state().selectedBackupID, backup.native());
  EXPECT_TRUE(state().backupInfo.has_value());
  EXPECT_EQ(state().destinationURL, chosen);
  expectRunning({backup, chosen});
}

TEST_F(RememberingTest, ReopensABackupElsewhereByItsBookmark) {
  const fs::path copy = scene.addBackup(scene.folder / "copy", small());
  keep({.lastBackupPath = copy.native(), .lastBackupBookmark = FakePermissions::bookmark(copy)});
  startUp();
  EXPECT_EQ(state().backupURL, copy);
  expectRunning({copy, scene.desktop});
}

TEST_F(RememberingTest, ReopensABackupElsewhereByItsPath) {
  const fs::path copy = scene.addBackup(scene.folder / "copy", small());
  keep({.lastBackupPath = copy.native()});
  startUp();
  EXPECT_EQ(state().backupURL, copy);
  EXPECT_TRUE(state().backupInfo.has_value());
}

TEST_F(RememberingTest, FollowsABookmarkToWhereTheFolderIsToday) {
  const fs::path before = scene.folder / "before";
  scene.permissions.moved = {{before, backup}, {scene.folder / "old", chosen}};
  keep({.lastBackupPath = before.native(),
        .lastDestinationPath = (scene.folder / "old").native(),
        .lastBackupBookmark = FakePermissions::bookmark(before),
        .lastDestinationBookmark = FakePermissions::bookmark(scene.folder / "old")});
  startUp();
  EXPECT_EQ(state().backupURL, backup);
  EXPECT_EQ(state().destinationURL, chosen);
}

TEST_F(RememberingTest, AMovedBackupThatIsListedIsShownWhenItIsDamaged) {
  const fs::path before = scene.folder / "before";
  scene.permissions.moved = {{before, backup}};
  keep({.lastBackupPath = before.native(), .lastBackupBookmark = FakePermissions::bookmark(before)});
  scene.wizard().refreshLibrary();
  ASSERT_TRUE(scene.untilIdle());
  fs::remove(backup / "Manifest.plist");
  scene.wizard().restoreRememberedLocations();
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_EQ(state().backupInfo, state().library.backups.at(0).info);
  EXPECT_TRUE(state().errorMessage.has_value());
}

TEST_F(RememberingTest, LooksIntoAFolderOnlyOnceAccessHasBegun) {
  const fs::path away = scene.folder / "out of sight";
  const fs::path awayToo = scene.folder / "out of sight, too";
  fs::rename(backup, away);
  fs::rename(chosen, awayToo);
  scene.permissions.hidden = {{backup, away}, {chosen, awayToo}};
  keep({.lastBackupBookmark = FakePermissions::bookmark(backup),
        .lastDestinationBookmark = FakePermissions::bookmark(chosen)});
  startUp();
  EXPECT_EQ(state().backupURL, backup);
  EXPECT_EQ(state().errorMessage, std::nullopt);
  EXPECT_EQ(state().destinationURL, chosen);
  expectRunning({backup, chosen});
}

TEST_F(RememberingTest, WhatIsGoneIsIgnored) {
  const fs::path gone = scene.folder / "gone";
  keep({.lastBackupPath = gone.native(),
        .lastDestinationPath = gone.native(),
        .lastBackupBookmark = FakePermissions::bookmark(gone),
        .lastDestinationBookmark = FakePermissions::bookmark(gone)});
  startUp();
  EXPECT_EQ(state().backupURL, std::nullopt);
  EXPECT_EQ(state().destinationURL, scene.desktop);
  EXPECT_EQ(state().errorMessage, std::nullopt);
}

TEST_F(RememberingTest, ABookmarkThatDoesNotResolveLeavesThePath) {
  keep({.lastBackupPath = backup.native(),
        .lastDestinationPath = chosen.native(),
        .lastBackupBookmark = Bytes{1, 2, 3},
        .lastDestinationBookmark = Bytes{1, 2, 3}});
  startUp();
  EXPECT_EQ(state().backupURL, backup);
  EXPECT_EQ(state().destinationURL, chosen);
}

TEST_F(RememberingTest, WhatTheUserChoseMeanwhileStays) {
  const fs::path other = scene.addBackup("other");
  keep({.lastBackupPath = other.native(), .lastBackupBookmark = FakePermissions::bookmark(other)});
  scene.wizard().startUp();
  scene.wizard().setBackup(backup);
  scene.wizard().setDestination(chosen);
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_EQ(state().backupURL, backup);
  EXPECT_EQ(state().destinationURL, chosen);
  expectRunning({backup, chosen});
}

TEST_F(RememberingTest, AGivenBackupComesBeforeTheRememberedOne) {
  const fs::path other = scene.addBackup("other");
  keep({.lastBackupPath = other.native()});
  scene.wizard().startUp(backup);
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_EQ(state().backupURL, backup);
  EXPECT_EQ(state().destinationURL, scene.desktop);
}

TEST_F(RememberingTest, TheDefaultDestinationIsRememberedToo) {
  ASSERT_TRUE(scene.reachOptions(backup));
  EXPECT_EQ(kept().lastDestinationPath, scene.desktop.native());
}

TEST_F(RememberingTest, AccessRunsForTheChosenFoldersAlone) {
  const fs::path other = scene.addBackup("other");
  ASSERT_TRUE(scene.choose(backup));
  expectRunning({backup});
  ASSERT_TRUE(scene.choose(other));
  expectRunning({other});
  scene.wizard().setDestination(chosen);
  scene.wizard().setDestination(scene.desktop);
  expectRunning({other, scene.desktop});
  scene.wizard().setDestination(scene.desktop);
  expectRunning({other, scene.desktop});
  scene.quit();
  expectRunning({});
}

TEST_F(RememberingTest, AccessThatWasNotGrantedIsNotEnded) {
  scene.permissions.grantsAccess = false;
  ASSERT_TRUE(scene.choose(backup));
  EXPECT_TRUE(state().backupInfo.has_value()) << "reading may be possible all the same";
  scene.wizard().setDestination(chosen);
  scene.quit();
  EXPECT_THAT(scene.permissions.calls, ElementsAre("start " + backup.native(), "start " + chosen.native()));
}

TEST_F(RememberingTest, ABackupWhoseNameIsNoTextIsChosenAllTheSame) {
  const fs::path odd = scene.addBackup("device \xff");
  ASSERT_TRUE(scene.reachOptions(odd));
  EXPECT_EQ(state().backupURL, odd);
  EXPECT_EQ(state().errorMessage, std::nullopt);
}

TEST(Preferences, StandInTheUsersApplicationSupportFolder) {
  const Fixture::TemporaryDirectory folder;
  const QByteArray before = qgetenv("XDG_DATA_HOME");
  qputenv("XDG_DATA_HOME", QByteArray::fromStdString((folder / "data").native()));
  {
    FakePermissions permissions;
    BackgroundWork work;
    ExportViewModel wizard({.services = {.passwords = PasswordStore::none(), .permissions = permissions.service()},
                            .texts = L10n({}, {}, {}),
                            .preferencesURL = {}},
                           work);
    wizard.setDestination(folder.path());
  }
  before.isEmpty() ? qunsetenv("XDG_DATA_HOME") : qputenv("XDG_DATA_HOME", before);
  EXPECT_EQ(ExportPreferences::load(folder / "data" / "Lorewick" / "preferences.json").lastDestinationPath,
            folder.path().native());
}

}  // namespace
}  // namespace WizardTest
