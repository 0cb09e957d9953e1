#include "TidewellCore/Export/MediaLinks.h"

#include <gtest/gtest.h>

namespace {

using Path = std::optional<std::string>;

ExportPlanner::PlannedCopy copyOf(const std::string& relativePath, const std::string& folder, const std::string& name) {
  return {.dest = "/somewhere/messages/" + folder + "/" + name, .relativePath = relativePath, .exportedName = name};
}

struct MediaLinksTest : testing::Test {
  Path link(const std::string& mediaPath) const { return MediaLinks(plan).relativePath(mediaPath); }

  ExportPlan plan;
};

TEST_F(MediaLinksTest, LeadToTheCopyThatStandsInTheExport) {
  plan.copies = {copyOf("Message/Media/a/1.jpg", "Ana", "x.jpg"), copyOf("Message/Media/a/2.jpg", "Ana", "x-2.jpg")};
  plan.index.addFile("Ana", "x.jpg", 1);
  plan.index.addFile("Ana", "x-2.jpg", 1);
  EXPECT_EQ(link("Message/Media/a/1.jpg"), "Ana/x.jpg");
  EXPECT_EQ(link("Message/Media/a/2.jpg"), "Ana/x-2.jpg");
}

TEST_F(MediaLinksTest, ACopyThatFailedHasNone) {
  plan.copies = {copyOf("Message/Media/a/1.jpg", "Ana", "x.jpg")};
  plan.index.addFile("Ana", "other.jpg", 1);
  plan.index.addFile("Bea", "x.jpg", 1);
  EXPECT_EQ(link("Message/Media/a/1.jpg"), Path());
}

// Another copy may have got the name that was planned for it.
TEST_F(MediaLinksTest, ACopyThatFailedHasNoneWhateverStandsInItsPlace) {
  plan.copies = {copyOf("Message/Media/a/1.jpg", "Ana", "x.jpg"), copyOf("Message/Media/a/2.jpg", "Ana", "x.jpg")};
  plan.copies[0].hasFailed = true;
  plan.index.addFile("Ana", "x.jpg", 1);
  EXPECT_EQ(link("Message/Media/a/1.jpg"), Path());
  EXPECT_EQ(link("Message/Media/a/2.jpg"), "Ana/x.jpg");
}

TEST_F(MediaLinksTest, ACopyThatFailedHasThatOfAnEarlierExport) {
  plan.copies = {copyOf("Message/Media/a/1.jpg", "Ana", "x-2.jpg")};
  plan.earlier = {copyOf("Message/Media/a/1.jpg", "Ana", "x.jpg")};
  plan.index.addFile("Ana", "x.jpg", 1);
  EXPECT_EQ(link("Message/Media/a/1.jpg"), "Ana/x.jpg");
}

TEST_F(MediaLinksTest, WhatTheBackupLacksHasNone) {
  plan.index.addFile("Ana", "x.jpg", 1);
  EXPECT_EQ(link("Message/Media/a/1.jpg"), Path());
  EXPECT_EQ(link(""), Path());
}

TEST_F(MediaLinksTest, WhatAnEarlierExportCopiedHasOneToo) {
  plan.earlier = {copyOf("Message/Media/a/1.mp4", "Ana", "x.mp4")};
  plan.index.addFile("Ana", "x.mp4", 1);
  EXPECT_EQ(link("Message/Media/a/1.mp4"), "Ana/x.mp4");
}

}  // namespace
