#include "TidewellCore/Export/ExportPlan.h"
#include "TidewellCore/Platform/PathText.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "Tests/Export/ExportScene.h"

namespace {

using ExportPlanner::Fate;
using ExportPlanner::Request;
using ExportTest::ana;
using ExportTest::bea;
using ExportTest::canonical;

// Of ten bytes; `pathJID` is the chat of its folder on the phone.
Request request(const std::string& name, const std::string& jid, const std::string& pathJID) {
  return {.source = "/backup/" + name,
          .relativePath = "Message/Media/" + pathJID + "/a/b/" + name,
          .chatJID = canonical(jid),
          .sourceSize = 10};
}

std::string originalName(const Request& request) { return std::string(PathText::lastComponent(request.relativePath)); }

Fate movedFrom(const std::string& folder, const std::string& name) {
  return ExportPlanner::Moved{.from = {.folder = folder, .name = name}};
}

TEST(ExportPlan, CountsOnlyTheBytesThatAreToBeWritten) {
  const ExportPlan plan{.copies = {{.sourceSize = 100},
                                   {.sourceSize = 20, .fate = ExportPlanner::Present()},
                                   {.sourceSize = 3, .fate = movedFrom("Old", "a.jpg")},
                                   {.sourceSize = -1, .fate = ExportPlanner::Lost()}}};
  EXPECT_EQ(plan.bytesToCopy(), 100);
}

TEST(ExportPlan, HugeSizesDoNotOverflowTheirSum) {
  constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
  const ExportPlan plan{.copies = {{.sourceSize = largest}, {.sourceSize = largest}}};
  EXPECT_EQ(plan.bytesToCopy(), largest);
}

// A file of Ana's may stand in a folder that Bea had, under the name and with the size of one of Bea's.
TEST(ExportPlan, WhatItMovesAwayIsNoEarlierCopyAnyMore) {
  const auto snapshot = ExportTest::snapshotOf({{ana, "Ana"}, {bea, "Bea"}});
  DestinationIndex index;
  index.addFile("Old", "a.jpg", 10);
  const FolderAssignment remembered{{bea, "Old"}};
  ExportPlan::Wish wish{.leftOut = {request("a.jpg", bea, bea)}, .naming = originalName};
  const ExportPlan before = ExportPlan::make(wish, {.index = index, .remembered = remembered, .known = {}}, snapshot);
  ASSERT_EQ(before.earlier.size(), 1U);
  EXPECT_EQ(before.earlier[0].dest, (ExportPlace{.folder = "Old", .name = "a.jpg"}));

  wish.requests = {request("a.jpg", ana, bea)};
  const ExportPlan plan = ExportPlan::make(wish, {.index = index, .remembered = remembered, .known = {}}, snapshot);
  ASSERT_EQ(plan.copies.size(), 1U);
  EXPECT_EQ(plan.copies[0].fate, movedFrom("Old", "a.jpg"));
  EXPECT_TRUE(plan.earlier.empty());
  ASSERT_EQ(plan.chats.size(), 2U);
  EXPECT_EQ(plan.chats[0].formerFolders, (std::vector<PlannedChat::FormerFolder>{{.name = "Old"}}))
      << "it is Bea's, and stays";
}

TEST(ExportPlan, WarnsOfAChatsFolderThatCannotBeRead) {
  const auto snapshot = ExportTest::snapshotOf({{ana, "Ana"}, {bea, "Bea"}});
  DestinationIndex index;
  for (const char* folder : {"Ana", "Bea"}) index.addFile(folder, "a.jpg", 10);
  index.unreadableFolders = {"Ana", "Somebody's own"};
  const FolderAssignment remembered{{ana, "Ana"}, {bea, "Bea"}};
  const ExportPlan::Wish wish{.lost = {request("a.jpg", ana, ana)},
                              .jidsOfTranscripts = {canonical(ana), canonical(bea)},
                              .naming = originalName};
  const ExportPlan plan = ExportPlan::make(wish, {.index = index, .remembered = remembered, .known = {}}, snapshot);
  ASSERT_EQ(plan.warnings.size(), 1U);
  EXPECT_NE(plan.warnings[0].find("“Ana”"), std::string::npos);
}

}  // namespace
