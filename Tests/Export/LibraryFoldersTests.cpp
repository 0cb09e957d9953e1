#include "TidewellCore/Export/LibraryFolders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/Export/ExportScene.h"
#include "Tests/Library/LibraryScene.h"
#include "Tests/Library/SaidMessages.h"

namespace {

using ExportTest::ana;
using ExportTest::anaLID;
using ExportTest::bea;
using ExportTest::canonical;
using LibraryTest::snapshotOf;
using testing::ElementsAre;

// Ana, known by her number and an anonymous identity, and Bea.
struct LibraryFoldersTest : testing::Test {
  LibraryFoldersTest() {
    scene.take(snapshotOf({{ana, "Ana"}, {bea, "Bea"}}, {{1, 10, "one", "A"}}, 1, {{anaLID, ana}}));
  }
  LibraryFolders::Folders remembered(const FolderAssignment& folders, const Renderings& known = {}) const {
    return LibraryFolders::remembered(scene.library, folders, known);
  }

  LibraryScene scene;
};

TEST_F(LibraryFoldersTest, AreThoseOfTheChatsIdentities) {
  EXPECT_THAT(remembered({{ana, "Ana"}, {bea, "B"}}), ElementsAre("Ana", "B"));
  EXPECT_THAT(remembered({{anaLID, "Former"}}), ElementsAre("Former", ""));
  EXPECT_THAT(remembered({{"somebody@s.whatsapp.net", "Else"}}), ElementsAre("", ""));
}

TEST_F(LibraryFoldersTest, OfSeveralThatOfTheChatsOwnJIDCounts) {
  EXPECT_THAT(remembered({{anaLID, "Former"}, {ana, "Ana"}}), ElementsAre("Ana", ""));
}

TEST_F(LibraryFoldersTest, BeforeItThatOfItsPages) {
  Renderings known;
  known.chats[scene.chat(ana)->id].folder = "Former";
  EXPECT_THAT(remembered({{anaLID, "Former"}, {ana, "Ana"}}, known), ElementsAre("Former", ""));
  EXPECT_THAT(remembered({{ana, "Ana"}}, known), ElementsAre("Ana", "")) << "one that is not remembered is none";
}

TEST_F(LibraryFoldersTest, ABackupThatKnowsAChatUnderAnotherIdentityAloneFindsItsFolder) {
  const ChatStorageSnapshot snapshot = snapshotOf({{anaLID, "Ana"}, {"new@s.whatsapp.net", "New"}}, {});
  EXPECT_EQ(LibraryFolders::withKnownChats(scene.library, snapshot, {{ana, "Ana"}, {bea, "B"}}),
            (FolderAssignment{{ana, "Ana"}, {anaLID, "Ana"}, {bea, "B"}}));
  EXPECT_EQ(LibraryFolders::withKnownChats(scene.library, snapshot, {{ana, "Ana"}, {anaLID, "Other"}}),
            (FolderAssignment{{ana, "Ana"}, {anaLID, "Other"}}));
}

TEST_F(LibraryFoldersTest, OfThoseThatAreRememberedTheExportsCount) {
  const std::vector<PlannedChat> chats{{.jid = canonical(anaLID), .isInExport = true, .folder = "Now"},
                                       {.jid = canonical(ana), .folder = "Before"},
                                       {.jid = canonical(bea), .folder = "Bea"}};
  EXPECT_THAT(LibraryFolders::planned(scene.library, chats), ElementsAre("Now", "Bea"));
}

}  // namespace
