#include "TidewellCore/Export/MediaLinks.h"

#include <gtest/gtest.h>

namespace {

using Path = std::optional<std::string>;
using Outcome = MediaResult::Outcome;

ExportPlanner::PlannedCopy copyOf(const std::string& relativePath, const std::string& folder, const std::string& name) {
  return {.dest = {.folder = folder, .name = name}, .relativePath = relativePath};
}

MediaResult result(Outcome outcome, const std::string& folder, const std::string& name) {
  return {.place = {.folder = folder, .name = name}, .outcome = outcome};
}

struct MediaLinksTest : testing::Test {
  Path link(const std::string& mediaPath) const { return MediaLinks(plan, results).relativePath(mediaPath); }

  ExportPlan plan;
  std::vector<MediaResult> results;
};

TEST_F(MediaLinksTest, LeadToTheCopyThatStandsInTheExport) {
  plan.copies = {copyOf("Message/Media/a/1.jpg", "Ana", "x.jpg"), copyOf("Message/Media/a/2.jpg", "Ana", "x-2.jpg")};
  results = {result(Outcome::copied, "Ana", "x.jpg"), result(Outcome::wasThere, "Ana", "x-2.jpg")};
  EXPECT_EQ(link("Message/Media/a/1.jpg"), "Ana/x.jpg");
  EXPECT_EQ(link("Message/Media/a/2.jpg"), "Ana/x-2.jpg");
}

// What was planned may have been taken meanwhile.
TEST_F(MediaLinksTest, LeadToThePlaceThatACopyWasReallyGiven) {
  plan.copies = {copyOf("Message/Media/a/1.jpg", "Ana", "x.jpg")};
  results = {result(Outcome::copied, "Ana", "x-2.jpg")};
  EXPECT_EQ(link("Message/Media/a/1.jpg"), "Ana/x-2.jpg");
}

TEST_F(MediaLinksTest, ACopyThatFailedHasNone) {
  plan.copies = {copyOf("Message/Media/a/1.jpg", "Ana", "x.jpg")};
  results = {result(Outcome::failed, "Ana", "x.jpg")};
  EXPECT_EQ(link("Message/Media/a/1.jpg"), Path());
}

// Another copy may have got the name that was planned for it.
TEST_F(MediaLinksTest, ACopyThatFailedHasNoneWhateverStandsInItsPlace) {
  plan.copies = {copyOf("Message/Media/a/1.jpg", "Ana", "x.jpg"), copyOf("Message/Media/a/2.jpg", "Ana", "x.jpg")};
  results = {result(Outcome::failed, "Ana", "x.jpg"), result(Outcome::copied, "Ana", "x.jpg")};
  EXPECT_EQ(link("Message/Media/a/1.jpg"), Path());
  EXPECT_EQ(link("Message/Media/a/2.jpg"), "Ana/x.jpg");
}

TEST_F(MediaLinksTest, ACopyThatFailedHasThatOfAnEarlierExport) {
  plan.copies = {copyOf("Message/Media/a/1.jpg", "Ana", "x-2.jpg")};
  plan.earlier = {copyOf("Message/Media/a/1.jpg", "Ana", "x.jpg")};
  results = {result(Outcome::failed, "Ana", "x-2.jpg")};
  EXPECT_EQ(link("Message/Media/a/1.jpg"), "Ana/x.jpg");
}

TEST_F(MediaLinksTest, WhatTheBackupLacksHasNone) {
  plan.copies = {copyOf("Message/Media/a/2.jpg", "Ana", "x.jpg")};
  results = {result(Outcome::copied, "Ana", "x.jpg")};
  EXPECT_EQ(link("Message/Media/a/1.jpg"), Path());
  EXPECT_EQ(link(""), Path());
}

TEST_F(MediaLinksTest, WhatAnEarlierExportCopiedHasOneToo) {
  plan.earlier = {copyOf("Message/Media/a/1.mp4", "Ana", "x.mp4")};
  EXPECT_EQ(link("Message/Media/a/1.mp4"), "Ana/x.mp4");
}

}  // namespace
