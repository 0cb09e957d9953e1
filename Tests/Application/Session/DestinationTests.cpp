#include <gmock/gmock.h>

#include <fstream>

#include "Tests/Application/Session/WizardScene.h"
#include "TidewellCore/Destination/DiskSpace.h"

namespace WizardTest {
namespace {

namespace fs = std::filesystem;
using Lane = BackgroundWork::Lane;
using testing::ElementsAre;

class DestinationTest : public testing::Test {
 protected:
  WizardScene scene;
  ExportViewModel& wizard = scene.wizard();
  const ExportState& state = scene.state();
  const fs::path backup = scene.addBackup("device");
};

TEST_F(DestinationTest, IsTheDesktopAtFirst) {
  ASSERT_TRUE(scene.reachOptions(backup));
  EXPECT_EQ(state.destinationURL, scene.desktop);
  EXPECT_TRUE(state.availableBytes.has_value());
}

TEST_F(DestinationTest, IsTheHomeFolderWithoutADesktop) {
  fs::remove_all(scene.desktop);
  ASSERT_TRUE(scene.reachOptions(backup));
  EXPECT_EQ(state.destinationURL, scene.home);
}

TEST_F(DestinationTest, HasToBeChosenWithoutAHomeFolder) {
  fs::remove_all(scene.home);
  ASSERT_TRUE(scene.reachOptions(backup));
  EXPECT_EQ(state.destinationURL, std::nullopt);
  EXPECT_EQ(state.availableBytes, std::nullopt);
  EXPECT_FALSE(state.canExport());
  EXPECT_EQ(state.startExportHint(), "Choose where to save first");
  wizard.startExport();
  EXPECT_EQ(state.step, WizardStep::options);
}

TEST_F(DestinationTest, AChosenOneStays) {
  const fs::path chosen = scene.folder / "chosen";
  fs::create_directories(chosen);
  wizard.setDestination(chosen);
  ASSERT_TRUE(scene.reachOptions(backup));
  EXPECT_EQ(state.destinationURL, chosen);
}

TEST_F(DestinationTest, AnExportsOwnContentGivesWayToTheExport) {
  const fs::path chosen = scene.folder / "chosen";
  fs::create_directories(chosen / "messages/_viewer");
  std::ofstream(chosen / "index.html") << "the page";
  wizard.setDestination(chosen / "messages");
  ASSERT_TRUE(scene.reachOptions(backup));
  EXPECT_EQ(state.destinationURL, chosen);
  ASSERT_TRUE(scene.untilIdle());
  EXPECT_EQ(ExportPreferences::load(scene.preferencesURL).lastDestinationPath, chosen.string());
}

TEST_F(DestinationTest, IsAskedForWithWhatIsThere) {
  const FolderRequest request{
      .title = "Choose where to save",
      .message = "Chats and media will be saved here. Files that are already there with the same size are skipped.",
      .confirmButton = "Choose",
      .initialFolder = scene.desktop,
      .canCreateFolders = true};
  fs::remove_all(scene.desktop);
  wizard.chooseDestination();
  scene.chooser.answer(std::nullopt);
  EXPECT_EQ(scene.changeCount(), 0);
  wizard.chooseDestination();
  scene.chooser.answer(scene.folder / "here");
  EXPECT_EQ(state.destinationURL, scene.folder / "here");
  wizard.chooseDestination();
  FolderRequest again = request;
  again.initialFolder = scene.folder / "here";
  EXPECT_THAT(scene.chooser.requests, ElementsAre(request, request, again));
}

TEST_F(DestinationTest, ALateAnswerLeavesAFinishedExportItsFolder) {
  ASSERT_TRUE(scene.reachOptions(backup));
  wizard.chooseDestination();
  wizard.startExport();
  ASSERT_TRUE(scene.until([&] { return state.step == WizardStep::done; }));
  scene.chooser.answer(scene.home);
  EXPECT_EQ(state.destinationURL, scene.desktop);
  EXPECT_TRUE(state.summary.has_value());
}

TEST_F(DestinationTest, ForgetsTheSummaryBefore) {
  ASSERT_TRUE(scene.reachDone(backup));
  wizard.exportAnother();
  ASSERT_TRUE(scene.reachDone(backup));
  wizard.setDestination(scene.home);
  EXPECT_EQ(state.summary, std::nullopt);
}

TEST_F(DestinationTest, FreeSpaceIsThatOfItsVolume) {
  wizard.setDestination(scene.folder / "not yet" / "there");
  EXPECT_EQ(state.availableBytes, std::nullopt);
  ASSERT_TRUE(scene.until([&] { return state.availableBytes.has_value(); }));
  constexpr double tolerated = 1e9;
  EXPECT_NEAR(static_cast<double>(*state.availableBytes),
              static_cast<double>(DiskSpace::availableBytes(scene.folder.path())), tolerated)
      << "others write to this volume meanwhile";
}

TEST_F(DestinationTest, FreeSpaceOfAnotherFolderIsForgottenAtOnce) {
  wizard.setDestination(scene.desktop);
  ASSERT_TRUE(scene.until([&] { return state.availableBytes.has_value(); }));
  wizard.setDestination(scene.home);
  EXPECT_EQ(state.availableBytes, std::nullopt);
}

TEST_F(DestinationTest, ALateAnswerOfAnotherVolumeIsDropped) {
  {
    HeldLane held(scene.work, Lane::userInitiated, BackgroundWork::userInitiatedThreads - 1);
    wizard.setDestination("/proc");
    held.finishWhatWasAsked();
  }
  const HeldLane held(scene.work, Lane::userInitiated, BackgroundWork::userInitiatedThreads);
  wizard.setDestination(scene.desktop);
  scene.takeUpEvents();
  EXPECT_EQ(state.availableBytes, std::nullopt) << "a folder of the system has no room, the desktop has";
}

TEST_F(DestinationTest, UnknownSpaceDoesNotBlock) {
  ASSERT_TRUE(scene.reachOptions(backup));
  const HeldLane held(scene.work, Lane::userInitiated, BackgroundWork::userInitiatedThreads);
  wizard.setDestination(scene.home);
  EXPECT_EQ(state.hasEnoughSpace(), std::nullopt);
  EXPECT_TRUE(state.canExport());
}

TEST_F(DestinationTest, AFullVolumeBlocks) {
  ASSERT_TRUE(scene.reachOptions(backup));
  wizard.setDestination("/proc");
  ASSERT_TRUE(scene.until([&] { return state.availableBytes.has_value(); }));
  EXPECT_EQ(state.hasEnoughSpace(), false);
  EXPECT_FALSE(state.canExport());
  EXPECT_EQ(state.startExportHint(), "Not enough free space — choose another folder");
  EXPECT_TRUE(state.startExportHintOpensFolderPicker());
  wizard.startExport();
  EXPECT_EQ(state.step, WizardStep::options);
  wizard.setDestination(scene.desktop);
  ASSERT_TRUE(scene.until([&] { return state.availableBytes.has_value(); }));
  EXPECT_TRUE(state.canExport());
}

TEST_F(DestinationTest, IsShownInTheFileManager) {
  wizard.revealDestination();
  EXPECT_TRUE(scene.workspace.revealed.empty());
  wizard.setDestination(scene.desktop);
  wizard.revealDestination();
  EXPECT_THAT(scene.workspace.revealed, ElementsAre(scene.desktop));
}

TEST_F(DestinationTest, KindsAndTranscriptsAreChosen) {
  wizard.setKindIncluded("videos", false);
  wizard.setKindIncluded("photos", false);
  EXPECT_EQ(state.includedKinds, (MediaKinds{MediaKind::voiceNotes, MediaKind::stickers, MediaKind::documents}));
  wizard.setKindIncluded("photos", true);
  EXPECT_TRUE(state.includedKinds.contains(MediaKind::photos));
  const int changes = scene.changeCount();
  wizard.setKindIncluded("photos", true);
  wizard.setKindIncluded("Photos", false);
  wizard.setKindIncluded("", true);
  wizard.setExportTranscripts(true);
  wizard.setExportMessageFiles(false);
  EXPECT_EQ(scene.changeCount(), changes) << "nothing of this changes anything";
  wizard.setExportTranscripts(false);
  EXPECT_FALSE(state.exportTranscripts);
  wizard.setExportMessageFiles(true);
  EXPECT_TRUE(state.exportMessageFiles);
}

}  // namespace
}  // namespace WizardTest
