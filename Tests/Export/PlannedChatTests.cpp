#include "TidewellCore/Export/PlannedChat.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Tests/Export/ExportScene.h"

namespace {

using ExportTest::ana;
using ExportTest::anaLID;
using ExportTest::bea;
using ExportTest::canonical;
using ExportTest::foldersOf;
using ExportTest::snapshotOf;

TEST(PlannedChats, AreOneRecordForEachChatWhateverItsJIDsWere) {
  const auto snapshot = snapshotOf({{ana, "Ana"}}, {{anaLID, ana}});
  const FolderAssignment remembered{{anaLID, "Old"}, {bea, "Bea"}};
  const auto chats = PlannedChats::of(foldersOf({{ana, "Ana"}}), remembered, snapshot);
  EXPECT_EQ(chats, (std::vector<PlannedChat>{
                       {.jid = canonical(ana), .isInExport = true, .folder = "Ana", .remembered = {{anaLID, "Old"}}},
                       {.jid = canonical(bea), .folder = "Bea", .remembered = {{bea, "Bea"}}}}));
  EXPECT_EQ(PlannedChats::folders(chats), foldersOf({{ana, "Ana"}}));
}

TEST(PlannedChats, AFolderRememberedUnderAnotherJIDAloneIsNoFolderOfTheChat) {
  const auto snapshot = snapshotOf({{bea, "Bea"}}, {{anaLID, ana}});
  const auto chats = PlannedChats::of(foldersOf({{bea, "Bea"}}), {{anaLID, "Old"}}, snapshot);
  ASSERT_EQ(chats.size(), 2U);
  EXPECT_EQ(chats[0], (PlannedChat{.jid = canonical(ana), .remembered = {{anaLID, "Old"}}}));
  EXPECT_EQ(PlannedChats::toRemember(chats), (FolderAssignment{{anaLID, "Old"}, {bea, "Bea"}}));
}

TEST(PlannedChats, ForgetTheOtherFormOfAJIDThatHasAFolder) {
  const auto snapshot = snapshotOf({{ana, "Ana"}}, {{anaLID, ana}});
  const auto chats = PlannedChats::of(foldersOf({{ana, "Ana"}}), {{anaLID, "Old"}}, snapshot);
  EXPECT_EQ(PlannedChats::toRemember(chats), (FolderAssignment{{ana, "Ana"}}));
}

TEST(PlannedChats, RememberTheOtherFormOfAJIDUntilAllHasMoved) {
  const auto snapshot = snapshotOf({{ana, "Ana"}}, {{anaLID, ana}});
  const FolderAssignment remembered{{ana, "Before"}, {anaLID, "Old"}, {bea, "Bea"}};
  const auto chats = PlannedChats::of(foldersOf({{ana, "Ana"}}), remembered, snapshot);
  EXPECT_EQ(PlannedChats::toRememberMeanwhile(chats), (FolderAssignment{{ana, "Ana"}, {anaLID, "Old"}, {bea, "Bea"}}));
}

}  // namespace
