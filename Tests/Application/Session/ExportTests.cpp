#include <gmock/gmock.h>
#include <unistd.h>

#include <algorithm>

#include "Tests/Application/Session/WizardScene.h"
#include "Tests/Export/ExportScene.h"
#include "TidewellCore/TidewellError.h"

namespace WizardTest {
namespace {

namespace fs = std::filesystem;
using Lane = BackgroundWork::Lane;
using Phase = ExportProgress::Phase;
using testing::ElementsAre;

class ExportingTest : public testing::Test {
 protected:
  // Every progress that was shown, the same ones once.
  void watchProgress() {
    QObject::connect(&wizard, &ExportViewModel::changed, &wizard, [this] {
      if (state.progress && (shown.empty() || shown.back() != *state.progress)) shown.push_back(*state.progress);
    });
  }

  std::vector<Phase> phases() const {
    std::vector<Phase> seen;
    for (const ExportProgress& progress : shown) {
      if (seen.empty() || seen.back() != progress.phase) seen.push_back(progress.phase);
    }
    return seen;
  }

  WizardScene scene;
  ExportViewModel& wizard = scene.wizard();
  const ExportState& state = scene.state();
  const fs::path backup = scene.addBackup("device");
  std::vector<ExportProgress> shown;
};

TEST_F(ExportingTest, GoesThroughAllSteps) {
  watchProgress();
  ASSERT_TRUE(scene.reachDone(backup));
  ASSERT_TRUE(state.summary.has_value());
  EXPECT_EQ(state.summary->copiedCount, 5);
  EXPECT_EQ(state.summary->failedCount, 0);
  EXPECT_EQ(state.summary->destination, scene.desktop);
  EXPECT_EQ(state.summary->archiveIndexURL, scene.desktop / "index.html");
  EXPECT_FALSE(state.isExporting());
  EXPECT_THAT(scene.steps(),
              ElementsAre(WizardStep::backup, WizardStep::options, WizardStep::exporting, WizardStep::done));
  EXPECT_THAT(phases(), ElementsAre(Phase::preparing, Phase::readingChats, Phase::copyingMedia,
                                    Phase::writingTranscripts, Phase::finished));
}

TEST_F(ExportingTest, BeginsWithAnEmptyBar) {
  ASSERT_TRUE(scene.reachOptions(backup));
  wizard.startExport();
  EXPECT_TRUE(state.isExporting());
  EXPECT_EQ(state.step, WizardStep::exporting);
  EXPECT_EQ(state.progress, (ExportProgress{.phase = Phase::preparing, .completed = 0, .total = 1}));
  EXPECT_EQ(state.exportStartedAt, scene.now);
  EXPECT_EQ(state.summary, std::nullopt);
  EXPECT_FALSE(state.canExport());
  ASSERT_TRUE(scene.until([&] { return !state.isExporting(); }));
}

TEST_F(ExportingTest, ExportsAnEncryptedBackupWithItsPassword) {
  watchProgress();
  ASSERT_TRUE(scene.reachDone(scene.addBackup("locked", small(true))));
  EXPECT_EQ(state.summary->copiedCount, 5);
  EXPECT_EQ(state.summary->failedCount, 0);
  EXPECT_THAT(phases(), ElementsAre(Phase::preparing, Phase::readingChats, Phase::copyingMedia,
                                    Phase::writingTranscripts, Phase::finished))
      << "the long wait came with the scan";
  EXPECT_TRUE(state.passwordKey.has_value());
  wizard.exportAnother();
  wizard.setBackup(backup);
  EXPECT_FALSE(state.passwordKey || state.unlockedPassword) << "they go with the backup";
  ASSERT_TRUE(scene.untilIdle());
}

TEST_F(ExportingTest, UnlocksAnewWhatWasBackedUpMeanwhile) {
  const fs::path locked = scene.addBackup("locked", small(true));
  ASSERT_TRUE(scene.reachOptions(locked));
  Fixture::BackupContents contents = small(true);
  contents.encryption->keyBag.iterations += 1;
  scene.addBackup("locked", contents);
  watchProgress();
  wizard.startExport();
  ASSERT_TRUE(scene.until([&] { return !state.isExporting(); }));
  EXPECT_EQ(state.step, WizardStep::done);
  EXPECT_EQ(state.summary->failedCount, 0);
}

TEST_F(ExportingTest, ExportsWhatWasChosen) {
  ASSERT_TRUE(scene.reachOptions(backup));
  for (const char* kind : {"photos", "voiceNotes", "stickers", "documents"}) wizard.setKindIncluded(kind, false);
  wizard.setExportTranscripts(false);
  wizard.startExport();
  ASSERT_TRUE(scene.until([&] { return !state.isExporting(); }));
  EXPECT_EQ(state.summary->copiedCount, 1);
  EXPECT_EQ(state.summary->transcriptCount, 0);
  EXPECT_EQ(state.summary->archiveIndexURL, std::nullopt);
  wizard.openArchive();
  EXPECT_TRUE(scene.workspace.files.empty()) << "there is none";
}

TEST_F(ExportingTest, SavesMessagesForProgramsWhereThatIsWanted) {
  const auto endings = [&] {
    std::set<std::string> found;
    for (const auto& [name, text] : ::ExportTest::filesBelow(scene.desktop)) {
      if (name.find("/_messages.") != std::string::npos) found.insert(fs::path(name).extension());
    }
    return found;
  };
  ASSERT_TRUE(scene.reachOptions(backup));
  wizard.startExport();
  ASSERT_TRUE(scene.until([&] { return state.step == WizardStep::done; }));
  EXPECT_EQ(endings(), std::set<std::string>());
  wizard.exportAnother();
  ASSERT_TRUE(scene.reachOptions(backup));
  wizard.setExportMessageFiles(true);
  wizard.startExport();
  ASSERT_TRUE(scene.until([&] { return state.step == WizardStep::done; }));
  EXPECT_EQ(endings(), (std::set<std::string>{".csv", ".jsonl"}));
}

TEST_F(ExportingTest, WritesTheUsersWordsIntoTranscripts) {
  Fixture::BackupContents contents = small();
  contents.whatsApp.messages.at(1).text = "Olá";
  const fs::path spoken = scene.addBackup("spoken", contents);
  scene.table = StringTable({{"You", "Moi"}});
  scene.launch();
  ASSERT_TRUE(scene.reachDone(spoken));
  bool isFound = false;
  for (const auto& [name, text] : ::ExportTest::filesBelow(scene.desktop)) {
    if (name.ends_with(".txt") && text.find("Moi: Olá") != std::string::npos) isFound = true;
  }
  EXPECT_TRUE(isFound);
}

TEST_F(ExportingTest, OpensTheArchive) {
  wizard.openArchive();
  EXPECT_TRUE(scene.workspace.files.empty());
  ASSERT_TRUE(scene.reachDone(backup));
  wizard.openArchive();
  EXPECT_THAT(scene.workspace.files, ElementsAre(scene.desktop / "index.html"));
  EXPECT_TRUE(fs::exists(scene.workspace.files.at(0)));
}

TEST_F(ExportingTest, FindsEverythingPresentTheSecondTime) {
  ASSERT_TRUE(scene.reachDone(backup));
  wizard.exportAnother();
  EXPECT_EQ(state.step, WizardStep::backup);
  EXPECT_FALSE(state.progress || state.summary || state.errorMessage || state.recoverySuggestion);
  EXPECT_TRUE(state.backupInfo && state.scanResult && state.destinationURL) << "what was chosen stays";
  wizard.continueToOptions();
  ASSERT_TRUE(scene.untilIdle());
  wizard.startExport();
  ASSERT_TRUE(scene.until([&] { return !state.isExporting(); }));
  EXPECT_EQ(state.summary->copiedCount, 0);
  EXPECT_EQ(state.summary->skippedExistingCount, 5);
}

TEST_F(ExportingTest, BeginsOnTheOptionsStepAlone) {
  wizard.startExport();
  EXPECT_EQ(scene.changeCount(), 0);
  ASSERT_TRUE(scene.reachOptions(backup));
  wizard.goBackToBackup();
  EXPECT_EQ(state.step, WizardStep::backup);
  wizard.startExport();
  EXPECT_FALSE(state.isExporting());
  ASSERT_TRUE(scene.reachDone(backup));
  wizard.startExport();
  EXPECT_FALSE(state.isExporting());
  EXPECT_EQ(state.step, WizardStep::done);
}

TEST_F(ExportingTest, DoesNotLetTheStepGoMeanwhile) {
  ASSERT_TRUE(scene.reachOptions(backup));
  wizard.startExport();
  wizard.goBackToBackup();
  wizard.exportAnother();
  wizard.startExport();
  EXPECT_EQ(state.step, WizardStep::exporting);
  ASSERT_TRUE(scene.until([&] { return !state.isExporting(); }));
  EXPECT_EQ(state.step, WizardStep::done);
  wizard.goBackToBackup();
  EXPECT_EQ(state.step, WizardStep::done);
}

TEST_F(ExportingTest, TellsWhyItFailed) {
  ASSERT_TRUE(scene.reachOptions(backup));
  wizard.setDestination(backup / "inside");
  ASSERT_TRUE(scene.untilIdle());
  wizard.startExport();
  ASSERT_TRUE(scene.until([&] { return !state.isExporting(); }));
  const auto expected = TidewellError::destinationNotWritable(backup / "inside");
  EXPECT_EQ(state.errorMessage, expected.errorDescription());
  EXPECT_EQ(state.recoverySuggestion, expected.recoverySuggestion());
  EXPECT_EQ(state.step, WizardStep::options);
  EXPECT_EQ(state.summary, std::nullopt);
  EXPECT_TRUE(state.canExport()) << "the scan stays";
}

TEST_F(ExportingTest, TellsThatTheBackupWentAway) {
  ASSERT_TRUE(scene.reachOptions(backup));
  fs::remove_all(backup);
  wizard.startExport();
  ASSERT_TRUE(scene.until([&] { return !state.isExporting(); }));
  EXPECT_EQ(state.step, WizardStep::options);
  EXPECT_TRUE(state.errorMessage.has_value());
}

TEST_F(ExportingTest, CountsWhatCouldNotBeCopied) {
  Fixture::BackupContents contents = small();
  contents.whatsApp.mediaFiles.at(0).storage.missing = true;
  ASSERT_TRUE(scene.reachDone(scene.addBackup("damaged", contents)));
  EXPECT_EQ(state.summary->failedCount, 1);
  EXPECT_EQ(state.summary->copiedCount, 4);
  EXPECT_EQ(state.errorMessage, std::nullopt) << "the run went on";
}

TEST_F(ExportingTest, CopiesTheSecondTimeWhatFailedTheFirst) {
  Fixture::BackupContents contents = small();
  contents.whatsApp.mediaFiles.at(0).storage.missing = true;
  const fs::path damaged = scene.addBackup("damaged", contents);
  ASSERT_TRUE(scene.reachDone(damaged));
  ASSERT_EQ(state.summary->failedCount, 1);
  contents.whatsApp.mediaFiles.at(0).storage.missing = false;
  scene.addBackup("damaged", contents);
  wizard.tryAgain();
  EXPECT_EQ(state.step, WizardStep::exporting);
  ASSERT_TRUE(scene.until([&] { return !state.isExporting(); }));
  EXPECT_EQ(state.step, WizardStep::done);
  EXPECT_EQ(state.summary->copiedCount, 1);
  EXPECT_EQ(state.summary->skippedExistingCount, 4);
  EXPECT_EQ(state.summary->failedCount, 0);
}

TEST_F(ExportingTest, IsTriedAgainFromTheSummaryAlone) {
  ASSERT_TRUE(scene.reachOptions(backup));
  wizard.tryAgain();
  EXPECT_EQ(state.step, WizardStep::options);
}

TEST_F(ExportingTest, LooksAtTheFreeSpaceAfreshWhenItFailed) {
  const fs::path disk = scene.folder / "disk";
  fs::create_directory_symlink(scene.desktop, disk);
  ASSERT_TRUE(scene.reachOptions(backup));
  wizard.setDestination(disk);
  ASSERT_TRUE(scene.until([&] { return state.hasEnoughSpace() == true; }));
  {
    const HeldLane held(scene.work, Lane::userInitiated, BackgroundWork::userInitiatedThreads);
    wizard.startExport();
    fs::remove(disk);
    fs::create_directory_symlink("/proc", disk);  // which has no room for anything
  }
  ASSERT_TRUE(scene.until([&] { return !state.isExporting(); }));
  EXPECT_EQ(state.step, WizardStep::options);
  ASSERT_TRUE(scene.until([&] { return state.hasEnoughSpace() == false; })) << "it is said that there is not enough";
  EXPECT_EQ(state.startExportHint(), "Not enough free space — choose another folder");
}

TEST_F(ExportingTest, MeasuresEachPhaseFromItsOwnStart) {
  ASSERT_TRUE(scene.reachOptions(backup));
  double longest = 0;
  QObject::connect(&wizard, &ExportViewModel::changed, &wizard, [&] {
    if (state.isExporting()) {
      longest = std::max(longest, state.phaseClock.elapsed(scene.now.time_since_epoch()).count());
    }
    scene.now += std::chrono::seconds(10);
  });
  wizard.startExport();
  ASSERT_TRUE(scene.until([&] { return !state.isExporting(); }));
  EXPECT_GE(longest, 10) << "within a phase";
  EXPECT_LT(longest, (scene.now - *state.exportStartedAt).count() / 2) << "not since the export's start";
}

TEST_F(ExportingTest, LeavesTheBackupUnchanged) {
  for (const bool isEncrypted : {false, true}) {
    const fs::path source = scene.addBackup(isEncrypted ? "locked" : "plain", small(isEncrypted));
    const auto before = Fixture::treeSnapshot(source);
    ASSERT_TRUE(scene.reachDone(source));
    EXPECT_EQ(Fixture::treeSnapshot(source), before);
    wizard.exportAnother();
  }
}

}  // namespace
}  // namespace WizardTest
