#include <gmock/gmock.h>

#include "Tests/Application/Session/WizardScene.h"
#include "TidewellCore/Library/ArchiveOwner.h"
#include "TidewellCore/Library/LibraryFile.h"
#include "TidewellCore/TidewellError.h"

namespace WizardTest {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

const std::string ana = "5511900001111@s.whatsapp.net";
const std::string bea = "5511900002222@s.whatsapp.net";

// The small backup with a notice that names its owner.
Fixture::BackupContents phoneOf(const std::string& owner) {
  Fixture::BackupContents contents = small(false, owner);
  contents.whatsApp.messages.push_back({.chat = 1, .date = 700000060, .toJID = owner, .type = 10});
  return contents;
}

// The archive on the desktop is Ana's; the phone is Bea's.
class ForeignArchiveTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(scene.reachDone(scene.addBackup("anas", phoneOf(ana))));
    wizard.exportAnother();
    ASSERT_TRUE(scene.reachOptions(beas));
    wizard.startExport();
    ASSERT_TRUE(scene.until([&] { return !state.isExporting(); }));
  }
  ArchiveOwner::JIDs owner() const { return ArchiveOwner::known(LibraryFile::look(scene.desktop / "messages")); }

  WizardScene scene;
  ExportViewModel& wizard = scene.wizard();
  const ExportState& state = scene.state();
  const fs::path beas = scene.addBackup("beas", phoneOf(bea));
};

TEST_F(ForeignArchiveTest, IsRefusedAndOffersTheSamePerson) {
  EXPECT_EQ(state.errorMessage, TidewellError::foreignArchive("+55 11 90000-1111").errorDescription());
  EXPECT_TRUE(state.offersSamePerson());
  EXPECT_EQ(state.step, WizardStep::options);
  EXPECT_THAT(owner(), ElementsAre(ana));
}

TEST_F(ForeignArchiveTest, TakesTheSamePersonIn) {
  wizard.exportAsSamePerson();
  EXPECT_EQ(state.errorMessage, std::nullopt);
  EXPECT_FALSE(state.offersSamePerson());
  EXPECT_EQ(state.step, WizardStep::exporting);
  ASSERT_TRUE(scene.until([&] { return !state.isExporting(); }));
  EXPECT_EQ(state.step, WizardStep::done);
  EXPECT_THAT(owner(), ElementsAre(ana, bea));
}

TEST_F(ForeignArchiveTest, IsOfferedNoLongerThanTheAlertShows) {
  wizard.dismissError();
  EXPECT_FALSE(state.offersSamePerson());
  wizard.exportAsSamePerson();
  EXPECT_FALSE(state.isExporting());
  wizard.startExport();
  ASSERT_TRUE(scene.until([&] { return !state.isExporting(); }));
  EXPECT_TRUE(state.offersSamePerson()) << "nobody said that it is the same person";
}

TEST_F(ForeignArchiveTest, IsNotOfferedForAnotherError) {
  wizard.dismissError();
  wizard.setDestination(beas / "inside");
  ASSERT_TRUE(scene.untilIdle());
  wizard.startExport();
  ASSERT_TRUE(scene.until([&] { return !state.isExporting(); }));
  EXPECT_TRUE(state.errorMessage.has_value());
  EXPECT_FALSE(state.offersSamePerson());
}

}  // namespace
}  // namespace WizardTest
