#include "TidewellCore/Export/FormerFolders.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>

#include "Tests/Export/ExportScene.h"
#include "Tests/Support/TemporaryDirectory.h"

namespace {

namespace fs = std::filesystem;
using ExportTest::filesBelow;
using Fixture::TemporaryDirectory;
using Fixture::writeFile;
using Files = std::map<std::string, std::string>;

// A chat that had these folders, which may be removed.
PlannedChat formerly(const std::vector<std::string>& folders) {
  PlannedChat chat;
  for (const std::string& folder : folders) chat.formerFolders.push_back({.name = folder, .isRemovable = true});
  return chat;
}

TEST(FormerFolders, RemovesOneThatHoldsNothingMoreThanTranscripts) {
  const TemporaryDirectory root;
  writeFile(root / "Old/_transcript.txt", "1");
  writeFile(root / "Old/_transcript.html", "2");
  writeFile(root / "Old/.DS_Store", "3");
  fs::create_directory(root / "Empty");
  FormerFolders::removeEmptied({formerly({"Old", "Gone"}), formerly({"Empty"})}, root.path());
  EXPECT_TRUE(fs::is_empty(root.path()));
}

TEST(FormerFolders, KeepsOneThatHoldsAnythingElse) {
  const TemporaryDirectory root;
  writeFile(root / "Old/_transcript.txt", "1");
  writeFile(root / "Old/my notes.txt", "2");
  fs::create_directories(root / "Older/_transcript.txt");
  FormerFolders::removeEmptied({formerly({"Old", "Older"})}, root.path());
  EXPECT_EQ(filesBelow(root.path()), (Files{{"Old/_transcript.txt", "1"}, {"Old/my notes.txt", "2"}}));
  EXPECT_TRUE(fs::exists(root / "Older/_transcript.txt"));
}

TEST(FormerFolders, KeepsOneThatMayBeAnotherChats) {
  const TemporaryDirectory root;
  writeFile(root / "Old/_transcript.txt", "1");
  FormerFolders::removeEmptied({{.formerFolders = {{.name = "Old"}}}}, root.path());
  EXPECT_EQ(filesBelow(root.path()), (Files{{"Old/_transcript.txt", "1"}}));
}

}  // namespace
