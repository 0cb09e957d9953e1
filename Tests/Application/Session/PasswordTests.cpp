#include <gmock/gmock.h>

#include "Tests/Application/Session/WizardScene.h"
#include "TidewellCore/TidewellError.h"

namespace WizardTest {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class PasswordTest : public testing::Test {
 protected:
  testing::AssertionResult unlock() {
    wizard.continueToOptions();
    if (!state.isUnlocking()) return testing::AssertionFailure() << "the unlock did not begin";
    return scene.untilIdle();
  }

  WizardScene scene;
  ExportViewModel& wizard = scene.wizard();
  const ExportState& state = scene.state();
  const fs::path backup = scene.addBackup("device", small(true, "serial"));
};

TEST_F(PasswordTest, IsNeededForAnEncryptedBackup) {
  ASSERT_TRUE(scene.choose(backup));
  EXPECT_TRUE(state.backupInfo->isEncrypted);
  EXPECT_FALSE(state.canContinueFromBackup());
  wizard.continueToOptions();
  EXPECT_FALSE(state.isScanning() || state.isUnlocking());
  wizard.setBackupPassword("   ");
  EXPECT_FALSE(state.canContinueFromBackup());
  wizard.setBackupPassword("x");
  EXPECT_TRUE(state.canContinueFromBackup());
}

TEST_F(PasswordTest, UnlocksWithoutTheSpacesAroundIt) {
  ASSERT_TRUE(scene.choose(backup));
  wizard.setBackupPassword(" correct horse\n");
  ASSERT_TRUE(unlock());
  EXPECT_EQ(state.step, WizardStep::options);
  EXPECT_FALSE(state.isScanning() || state.isUnlocking() || state.isCancellingUnlock());
  EXPECT_TRUE(state.canExport());
}

TEST_F(PasswordTest, LooksTheStoredOneUpByTheBackupsIdentifier) {
  scene.passwords.put("serial", password);
  ASSERT_TRUE(scene.choose(backup));
  EXPECT_THAT(scene.passwords.calls(), ElementsAre("load serial"));
  EXPECT_TRUE(state.hasStoredPassword);
  EXPECT_TRUE(state.rememberBackupPassword);
  EXPECT_TRUE(state.backupPassword.empty()) << "the field stays empty";
  EXPECT_TRUE(state.canContinueFromBackup());
  ASSERT_TRUE(unlock());
  EXPECT_EQ(state.step, WizardStep::options);
}

TEST_F(PasswordTest, LooksTheStoredOneUpByThePathWithoutAnIdentifier) {
  for (const std::string identifier : {"", "-"}) {
    const fs::path nameless = scene.folder / ("nameless" + identifier);
    Fixture::WrittenBackup written = Fixture::writeBackup(small(true, ""), nameless);
    if (identifier == "-") fs::remove(nameless / "Info.plist");
    scene.passwords.put(nameless, password);
    ASSERT_TRUE(scene.choose(nameless));
    EXPECT_TRUE(state.hasStoredPassword) << identifier;
  }
}

TEST_F(PasswordTest, InspectsUntilTheStoreHasAnswered) {
  scene.passwords.hold();
  wizard.setBackup(backup);
  ASSERT_TRUE(scene.until([&] { return !scene.passwords.calls().empty(); }));
  scene.takeUpEvents();
  EXPECT_TRUE(state.isInspecting());
  scene.passwords.release();
  ASSERT_TRUE(scene.until([&] { return !state.isInspecting(); }));
}

TEST_F(PasswordTest, AStoreThatDoesNotAnswerIsNotAskedForBackupsThatAreNoLongerChosen) {
  scene.passwords.hold();
  wizard.setBackup(backup);
  ASSERT_TRUE(scene.until([&] { return !scene.passwords.calls().empty(); }));
  const fs::path passedBy = scene.addBackup("passed by", small(true, "passed by"));
  wizard.setBackup(passedBy);
  ASSERT_TRUE(scene.until([&] { return state.backupInfo && state.backupInfo->url == passedBy; }));
  wizard.setBackup(scene.addBackup("last", small(true, "last")));
  ASSERT_TRUE(scene.until([&] { return state.backupInfo->uniqueIdentifier == "last"; }));
  scene.passwords.release();
  ASSERT_TRUE(scene.until([&] { return !state.isInspecting(); }));
  EXPECT_THAT(scene.passwords.calls(), ElementsAre("load serial", "load last"));
}

TEST_F(PasswordTest, AnEmptyStoredOneCountsAsNone) {
  scene.passwords.put("serial", "");
  ASSERT_TRUE(scene.choose(backup));
  EXPECT_FALSE(state.hasStoredPassword || state.storedPassword || state.rememberBackupPassword);
}

TEST_F(PasswordTest, IsStoredWhenAskedTo) {
  ASSERT_TRUE(scene.choose(backup));
  wizard.setBackupPassword(" correct horse ");
  wizard.setRememberBackupPassword(true);
  ASSERT_TRUE(unlock());
  EXPECT_THAT(scene.passwords.content(), ElementsAre(Pair("serial", "correct horse")));
  EXPECT_THAT(scene.passwords.calls(), ElementsAre("load serial", "save serial"));
  EXPECT_TRUE(state.hasStoredPassword);
  EXPECT_EQ(state.storedPassword, SecretBytes(password.begin(), password.end()));
}

TEST_F(PasswordTest, TheTypedOneReplacesTheStoredOne) {
  scene.passwords.put("serial", "an old one");
  ASSERT_TRUE(scene.choose(backup));
  wizard.setBackupPassword("correct horse");
  ASSERT_TRUE(unlock());
  EXPECT_THAT(scene.passwords.content(), ElementsAre(Pair("serial", password)));
}

TEST_F(PasswordTest, IsRemovedFromTheStoreWhenNotWanted) {
  scene.passwords.put("serial", password);
  scene.passwords.put("another", "stays");
  ASSERT_TRUE(scene.choose(backup));
  wizard.setRememberBackupPassword(false);
  ASSERT_TRUE(unlock());
  EXPECT_THAT(scene.passwords.content(), ElementsAre(Pair("another", "stays")));
  EXPECT_FALSE(state.hasStoredPassword || state.storedPassword);
  EXPECT_TRUE(state.canExport()) << "the export needs it once more";
  wizard.startExport();
  ASSERT_TRUE(scene.until([&] { return !state.isExporting(); }));
  EXPECT_EQ(state.step, WizardStep::done);
}

TEST_F(PasswordTest, AWrongOneIsToldAndAskedForAgain) {
  ASSERT_TRUE(scene.choose(backup));
  wizard.setBackupPassword("wrong");
  wizard.setRememberBackupPassword(true);
  ASSERT_TRUE(unlock());
  EXPECT_EQ(state.step, WizardStep::backup);
  EXPECT_EQ(state.errorMessage, TidewellError::wrongBackupPassword().errorDescription());
  EXPECT_EQ(state.recoverySuggestion, TidewellError::wrongBackupPassword().recoverySuggestion());
  EXPECT_EQ(state.scanResult, std::nullopt);
  EXPECT_TRUE(state.focusBackupPassword);
  EXPECT_FALSE(state.isScanning() || state.isUnlocking() || state.isCancellingUnlock());
  EXPECT_THAT(scene.passwords.content(), IsEmpty()) << "a wrong password is not kept";

  wizard.setBackupPassword("correct horse");
  wizard.continueToOptions();
  EXPECT_EQ(state.errorMessage, std::nullopt);
  EXPECT_EQ(state.recoverySuggestion, std::nullopt);
  EXPECT_FALSE(state.focusBackupPassword);
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_EQ(state.step, WizardStep::options);
}

TEST_F(PasswordTest, AWrongStoredOneStaysUntilAnotherUnlocks) {
  scene.passwords.put("serial", "out of date");
  ASSERT_TRUE(scene.choose(backup));
  ASSERT_TRUE(unlock());
  EXPECT_EQ(state.errorMessage, TidewellError::wrongBackupPassword().errorDescription());
  EXPECT_THAT(scene.passwords.content(), ElementsAre(Pair("serial", "out of date")));
}

TEST_F(PasswordTest, ChangedWhileUnlockingIsNotTheOneThatIsUsed) {
  ASSERT_TRUE(scene.choose(backup));
  for (const bool remember : {true, false}) {
    wizard.setBackupPassword("correct horse");
    wizard.setRememberBackupPassword(remember);
    wizard.continueToOptions();
    wizard.setBackupPassword("something else");
    ASSERT_TRUE(scene.untilIdle());
    ASSERT_EQ(state.step, WizardStep::options);
    using Content = std::map<std::string, std::string>;
    EXPECT_EQ(scene.passwords.content(), (remember ? Content{{"serial", password}} : Content{}));
    EXPECT_EQ(state.currentPassword(), password);
    wizard.goBackToBackup();
  }
}

TEST_F(PasswordTest, IsTriedToTheLetterBeforeTheSpacesAroundItGo) {
  Fixture::BackupContents contents = small(true, "spacious");
  contents.encryption->keyBag.password = " correct horse ";
  ASSERT_TRUE(scene.choose(scene.addBackup("spacious", contents)));
  wizard.setBackupPassword(" correct horse ");
  wizard.setRememberBackupPassword(true);
  ASSERT_TRUE(unlock());
  EXPECT_EQ(state.step, WizardStep::options);
  EXPECT_THAT(scene.passwords.content(), ElementsAre(Pair("spacious", " correct horse ")));
  wizard.startExport();
  ASSERT_TRUE(scene.until([&] { return !state.isExporting(); }));
  EXPECT_EQ(state.step, WizardStep::done) << "the export takes the one that unlocked";
}

TEST_F(PasswordTest, ThatNobodyFoundIsNotRemoved) {
  scene.passwords.put("serial", password);
  scene.passwords.lock();
  ASSERT_TRUE(scene.choose(backup));
  EXPECT_FALSE(state.hasStoredPassword);
  wizard.setBackupPassword("correct horse");
  ASSERT_TRUE(unlock());
  ASSERT_EQ(state.step, WizardStep::options);
  EXPECT_THAT(scene.passwords.calls(), ElementsAre("load serial"));
  EXPECT_THAT(scene.passwords.content(), ElementsAre(Pair("serial", password)));
}

TEST_F(PasswordTest, ThatIsFoundLateIsTakenUp) {
  scene.passwords.put("serial", password);
  scene.passwords.lock();
  ASSERT_TRUE(scene.choose(backup));
  EXPECT_FALSE(state.canContinueFromBackup());
  scene.passwords.unlock();
  scene.takeUpEvents();
  EXPECT_TRUE(state.hasStoredPassword && state.rememberBackupPassword);
  EXPECT_TRUE(state.canContinueFromBackup());
  ASSERT_TRUE(unlock());
  EXPECT_EQ(state.step, WizardStep::options);
}

TEST_F(PasswordTest, ThatIsFoundLateComesTooLateForWhoTypes) {
  scene.passwords.put("serial", "an old one");
  scene.passwords.lock();
  ASSERT_TRUE(scene.choose(backup));
  wizard.setBackupPassword("c");
  wizard.setBackupPassword("");
  scene.passwords.unlock();
  scene.takeUpEvents();
  EXPECT_FALSE(state.hasStoredPassword || state.storedPassword || state.rememberBackupPassword);
}

TEST_F(PasswordTest, ThatIsFoundInTimeTicksNoBoxUnderWhoTypes) {
  scene.passwords.put("serial", "an old one");
  scene.passwords.hold();
  wizard.setBackup(backup);
  ASSERT_TRUE(scene.until([&] { return !scene.passwords.calls().empty(); }));
  wizard.setBackupPassword("c");
  scene.passwords.release();
  ASSERT_TRUE(scene.until([&] { return !state.isInspecting(); }));
  EXPECT_TRUE(state.hasStoredPassword);
  EXPECT_FALSE(state.rememberBackupPassword);
}

TEST_F(PasswordTest, ThatIsFoundLateIsNoOtherBackups) {
  scene.passwords.put("serial", password);
  scene.passwords.lock();
  ASSERT_TRUE(scene.choose(backup));
  ASSERT_TRUE(scene.choose(scene.addBackup("other", small(true, "other"))));
  scene.passwords.unlock();
  scene.takeUpEvents();
  EXPECT_FALSE(state.hasStoredPassword || state.storedPassword || state.rememberBackupPassword);
}

TEST_F(PasswordTest, ThatIsFoundWhenTheWizardIsGoneHarmsNobody) {
  scene.passwords.put("serial", password);
  scene.passwords.lock();
  ASSERT_TRUE(scene.choose(backup));
  scene.quit();
  scene.passwords.unlock();
  scene.takeUpEvents();
}

TEST_F(PasswordTest, TellsWhetherThereIsAStoreAtAll) {
  EXPECT_TRUE(state.hasPasswordStore);
  scene.passwords.isThere = false;
  ASSERT_TRUE(scene.choose(backup));
  ASSERT_TRUE(scene.until([&] { return !state.hasPasswordStore; }));
  scene.passwords.isThere = true;
  ASSERT_TRUE(scene.choose(backup));
  ASSERT_TRUE(scene.until([&] { return state.hasPasswordStore; })) << "somebody started it meanwhile";
}

TEST_F(PasswordTest, NoneIsStoredForAPlainBackup) {
  wizard.setRememberBackupPassword(true);
  ASSERT_TRUE(scene.reachOptions(scene.addBackup("plain")));
  EXPECT_THAT(scene.passwords.calls(), IsEmpty());
}

TEST_F(PasswordTest, IsInNoFileOfPreferences) {
  ASSERT_TRUE(scene.choose(backup));
  wizard.setBackupPassword("correct horse");
  wizard.setRememberBackupPassword(true);
  ASSERT_TRUE(unlock());
  const Fixture::Bytes bytes = Fixture::readFile(scene.preferencesURL);
  EXPECT_EQ(std::string(bytes.begin(), bytes.end()).find("horse"), std::string::npos);
}

}  // namespace
}  // namespace WizardTest
