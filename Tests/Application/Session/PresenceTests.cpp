#include <gmock/gmock.h>

#include "Tests/Application/Session/WizardScene.h"

namespace WizardTest {
namespace {

namespace fs = std::filesystem;
using Lane = BackgroundWork::Lane;
using testing::ElementsAre;
using testing::IsEmpty;

// What the desktop does for an export that goes on while nobody looks.
class PresenceTest : public testing::Test {
 protected:
  // An export that takes so long by the wizard's clock.
  testing::AssertionResult exportTaking(std::chrono::seconds time) {
    if (const auto result = scene.reachOptions(backup); !result) return result;
    {
      const HeldLane held(scene.work, Lane::userInitiated, BackgroundWork::userInitiatedThreads);
      wizard.startExport();
      EXPECT_EQ(scene.presence.awakeCount, 1) << "the machine must not fall asleep";
      scene.now += time;
    }
    return scene.until([&] { return !state.isExporting(); }, "the end of the export");
  }

  WizardScene scene;
  ExportViewModel& wizard = scene.wizard();
  const ExportState& state = scene.state();
  const fs::path backup = scene.addBackup("device");
};

TEST_F(PresenceTest, KeepsTheMachineAwakeAsLongAsItExports) {
  EXPECT_THAT(scene.presence.reasons, IsEmpty());
  ASSERT_TRUE(exportTaking(std::chrono::seconds(1)));
  EXPECT_THAT(scene.presence.reasons, ElementsAre("Exporting chats and media"));
  EXPECT_EQ(scene.presence.awakeCount, 0);
}

TEST_F(PresenceTest, TellsOfTheEndOfALongExport) {
  ASSERT_TRUE(exportTaking(std::chrono::seconds(61)));
  EXPECT_THAT(scene.presence.notices, ElementsAre("Export finished: " + scene.desktop.native()));
}

TEST_F(PresenceTest, TellsOfItsFailureToo) {
  ASSERT_TRUE(scene.reachOptions(backup));
  {
    const HeldLane held(scene.work, Lane::userInitiated, BackgroundWork::userInitiatedThreads);
    wizard.startExport();
    scene.now += std::chrono::seconds(61);
    fs::remove_all(backup);
  }
  ASSERT_TRUE(scene.until([&] { return !state.isExporting(); }));
  EXPECT_THAT(scene.presence.notices, ElementsAre("Something went wrong: " + *state.errorMessage));
  EXPECT_EQ(scene.presence.awakeCount, 0);
}

TEST_F(PresenceTest, TellsNobodyWhoLooksOrHasJustStartedIt) {
  scene.presence.isInFront = true;
  ASSERT_TRUE(exportTaking(std::chrono::seconds(3600)));
  wizard.exportAnother();
  scene.presence.isInFront = false;
  ASSERT_TRUE(exportTaking(std::chrono::seconds(59)));
  EXPECT_THAT(scene.presence.notices, IsEmpty());
}

TEST_F(PresenceTest, TellsNobodyWhoEndedIt) {
  ASSERT_TRUE(scene.reachOptions(backup));
  {
    const HeldLane held(scene.work, Lane::userInitiated, BackgroundWork::userInitiatedThreads);
    wizard.startExport();
    scene.now += std::chrono::seconds(61);
    wizard.cancelExport();
  }
  ASSERT_TRUE(scene.until([&] { return !state.isExporting(); }));
  EXPECT_THAT(scene.presence.notices, IsEmpty());
}

TEST_F(PresenceTest, ShowsThePathOfWhatTheDesktopCannotOpen) {
  ASSERT_TRUE(scene.reachDone(backup));
  wizard.openArchive();
  scene.takeUpEvents();
  EXPECT_EQ(state.unopenedPath, std::nullopt);
  scene.workspace.opensFiles = false;
  wizard.openArchive();
  scene.takeUpEvents();
  EXPECT_EQ(state.unopenedPath, scene.desktop / "index.html");
  wizard.dismissUnopenedPath();
  EXPECT_EQ(state.unopenedPath, std::nullopt);
  wizard.revealDestination();
  scene.takeUpEvents();
  EXPECT_EQ(state.unopenedPath, scene.desktop);
}

}  // namespace
}  // namespace WizardTest
