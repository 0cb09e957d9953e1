#include <gmock/gmock.h>

#include <fstream>

#include "Tests/Application/Session/WizardScene.h"

namespace WizardTest {
namespace {

namespace fs = std::filesystem;
using Lane = BackgroundWork::Lane;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

Fixture::BackupContents madeAt(std::int64_t time) {
  Fixture::BackupContents contents = small();
  contents.backupTime = time;
  return contents;
}

std::vector<std::string> names(const ExportState& state) {
  std::vector<std::string> found;
  for (const DiscoveredBackup& backup : state.library.backups) found.push_back(backup.info.url.filename());
  return found;
}

class LibraryTest : public testing::Test {
 protected:
  testing::AssertionResult refresh() {
    wizard.refreshLibrary();
    return scene.until([this] { return !scene.state().isRefreshingLibrary; }, "the end of the refresh");
  }

  WizardScene scene;
  ExportViewModel& wizard = scene.wizard();
  const ExportState& state = scene.state();
};

TEST_F(LibraryTest, ListsBackupsNewestFirstWithTheirSizes) {
  const fs::path older = scene.addBackup("older", madeAt(1'600'000'000));
  const fs::path newer = scene.addBackup("newer", madeAt(1'700'000'000));
  fs::create_directories(scene.root / "no backup");
  wizard.refreshLibrary();
  EXPECT_TRUE(state.isRefreshingLibrary);
  ASSERT_TRUE(scene.until([&] { return !state.isRefreshingLibrary; }));
  EXPECT_EQ(state.library.access, BackupAccess::readable);
  EXPECT_THAT(names(state), ElementsAre("newer", "older"));
  EXPECT_EQ(state.library.backups[0].byteCount, BackupLibrary::folderByteCount(newer));
  EXPECT_EQ(state.library.backups[1].byteCount, BackupLibrary::folderByteCount(older));
  EXPECT_EQ(state.library.backups[0].info.deviceName, "Ana's iPhone");
  EXPECT_EQ(state.backupURL, std::nullopt) << "nothing is remembered, nothing is chosen";
}

TEST_F(LibraryTest, ListsBackupsBeforeTheyAreMeasured) {
  scene.addBackup("device");
  const HeldLane measuring(scene.work, Lane::utility, 1);
  wizard.refreshLibrary();
  ASSERT_TRUE(scene.until([&] { return state.library.backups.size() == 1; }));
  EXPECT_EQ(state.library.backups[0].byteCount, std::nullopt);
  EXPECT_TRUE(state.isRefreshingLibrary) << "not before the sizes are there";
}

TEST_F(LibraryTest, TellsThatThereIsNoFolderOfBackups) {
  fs::remove_all(scene.root);
  ASSERT_TRUE(refresh());
  EXPECT_EQ(state.library.access, BackupAccess::missing);
  EXPECT_THAT(state.library.backups, IsEmpty());
}

TEST_F(LibraryTest, TellsThatTheFolderOfBackupsIsEmpty) {
  ASSERT_TRUE(refresh());
  EXPECT_EQ(state.library.access, BackupAccess::readable);
  EXPECT_THAT(state.library.backups, IsEmpty());
}

TEST_F(LibraryTest, SeesWhatWasAddedAndRemoved) {
  scene.addBackup("one");
  ASSERT_TRUE(refresh());
  EXPECT_THAT(names(state), ElementsAre("one"));
  scene.addBackup("two", madeAt(1'800'000'000));
  fs::remove_all(scene.root / "one");
  ASSERT_TRUE(refresh());
  EXPECT_THAT(names(state), ElementsAre("two"));
}

TEST_F(LibraryTest, TwoQuickRefreshesEndWithTheNewestList) {
  scene.addBackup("one");
  {
    HeldLane reading(scene.work, Lane::userInitiated, BackgroundWork::userInitiatedThreads - 1);
    wizard.refreshLibrary();
    reading.finishWhatWasAsked();
    scene.addBackup("two", madeAt(1'800'000'000));
    wizard.refreshLibrary();
  }
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_FALSE(state.isRefreshingLibrary);
  ASSERT_THAT(names(state), ElementsAre("two", "one"));
  for (const DiscoveredBackup& backup : state.library.backups) EXPECT_TRUE(backup.byteCount.has_value());
}

TEST_F(LibraryTest, IsRefreshedWhenSomebodyComesBack) {
  scene.addBackup("one");
  wizard.comeBack();
  EXPECT_FALSE(state.isRefreshingLibrary) << "the start reads it";
  ASSERT_TRUE(refresh());
  scene.addBackup("two", madeAt(1'800'000'000));
  wizard.comeBack();
  ASSERT_TRUE(scene.until([&] { return !state.isRefreshingLibrary; }));
  EXPECT_THAT(names(state), ElementsAre("two", "one"));
  for (const DiscoveredBackup& backup : state.library.backups) EXPECT_TRUE(backup.byteCount.has_value());
}

TEST_F(LibraryTest, KeepsTheSizesOfBackupsThatAreTheSame) {
  scene.addBackup("same");
  const fs::path grown = scene.addBackup("grown", madeAt(1'600'000'000));
  ASSERT_TRUE(refresh());
  scene.addBackup("grown", madeAt(1'800'000'000));
  std::ofstream(grown / "more") << std::string(5'000, 'x');
  {
    const HeldLane measuring(scene.work, Lane::utility, 1);
    wizard.comeBack();
    ASSERT_TRUE(scene.until([&] { return names(state).front() == "grown"; }));
    EXPECT_EQ(state.library.backups[0].byteCount, std::nullopt) << "it was made anew";
    EXPECT_TRUE(state.library.backups[1].byteCount.has_value());
  }
  ASSERT_TRUE(scene.until([&] { return !state.isRefreshingLibrary; }));
  EXPECT_EQ(state.library.backups[0].byteCount, BackupLibrary::folderByteCount(grown));
}

TEST_F(LibraryTest, IsLeftAloneOnLaterSteps) {
  ASSERT_TRUE(refresh());
  ASSERT_TRUE(scene.reachOptions(scene.addBackup("device")));
  wizard.comeBack();
  EXPECT_FALSE(state.isRefreshingLibrary);
}

TEST_F(LibraryTest, IsNotRefreshedWhileUnlocking) {
  const fs::path backup = scene.addBackup("device", small(true));
  ASSERT_TRUE(scene.choose(backup));
  wizard.setBackupPassword("correct horse");
  wizard.continueToOptions();
  ASSERT_TRUE(state.isUnlocking());
  wizard.refreshLibrary();
  EXPECT_FALSE(state.isRefreshingLibrary);
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_THAT(state.library.backups, IsEmpty());
}

TEST_F(LibraryTest, IsRefreshedWhileAPlainBackupIsRead) {
  ASSERT_TRUE(scene.choose(scene.addBackup("device")));
  wizard.continueToOptions();
  ASSERT_TRUE(state.isScanning());
  ASSERT_TRUE(refresh());
  EXPECT_THAT(state.library.backups, SizeIs(1));
  ASSERT_TRUE(scene.until([&] { return state.step == WizardStep::options; }));
}

TEST_F(LibraryTest, ChoosesTheBackupRememberedWhenItIsListed) {
  const fs::path backup = scene.addBackup("device");
  ExportPreferences{.lastBackupPath = backup.native()}.save(scene.preferencesURL);
  scene.launch();
  scene.wizard().refreshLibrary();
  ASSERT_TRUE(scene.until([this] { return !scene.state().isRefreshingLibrary; }));
  EXPECT_EQ(scene.state().backupURL, backup);
  EXPECT_EQ(scene.state().selectedBackupID, backup.native());
  EXPECT_FALSE(scene.state().isInspecting()) << "the refresh ends after the inspection";
  EXPECT_TRUE(scene.state().backupInfo.has_value());
}

TEST_F(LibraryTest, LeavesAChosenBackupAlone) {
  const fs::path remembered = scene.addBackup("remembered");
  const fs::path chosen = scene.addBackup("chosen");
  ExportPreferences{.lastBackupPath = remembered.native()}.save(scene.preferencesURL);
  scene.launch();
  ASSERT_TRUE(scene.choose(chosen));
  scene.wizard().refreshLibrary();
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_EQ(scene.state().backupURL, chosen);
}

TEST_F(LibraryTest, ChoosesNothingThatIsNotListed) {
  ExportPreferences{.lastBackupPath = scene.root / "gone"}.save(scene.preferencesURL);
  scene.addBackup("device");
  scene.launch();
  scene.wizard().refreshLibrary();
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_EQ(scene.state().backupURL, std::nullopt);
  EXPECT_EQ(scene.state().errorMessage, std::nullopt);
}

}  // namespace
}  // namespace WizardTest
