#include "TidewellCore/Destination/DestinationIndex.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>

#include "Tests/Support/Failures.h"
#include "Tests/Support/TemporaryDirectory.h"

namespace {

namespace fs = std::filesystem;
using Fixture::TemporaryDirectory;
using Fixture::writeFile;
using Keys = std::set<std::string>;

TEST(DestinationIndex, HoldsTheFilesDirectlyInTheChatFolders) {
  const TemporaryDirectory root;
  writeFile(root / "Ana/Photo.JPG", "1234");
  writeFile(root / "Ana/deeper/hidden.jpg", "1");
  writeFile(root / "_viewer/page.js", "1");
  writeFile(root / "loose.jpg", "1");
  fs::create_symlink(root / "loose.jpg", root / "Ana/link.jpg");
  const auto index = DestinationIndex::load(root.path());
  EXPECT_EQ(index.destination, root.path());
  EXPECT_EQ(index.folderByKey, (std::map<std::string, std::string>{{"ana", "Ana"}}));
  EXPECT_EQ(
      index.filesByFolder,
      (std::map<std::string, DestinationIndex::Files>{{"Ana", {{"photo.jpg", {.name = "Photo.JPG", .size = 4}}}}}));
}

TEST(DestinationIndex, OfNothingIsEmpty) {
  const TemporaryDirectory root;
  EXPECT_EQ(DestinationIndex::load(root / "missing").filesByFolder.size(), 0U);
}

TEST(DestinationIndex, FindsFoldersAndFilesHoweverTheyAreSpelt) {
  const TemporaryDirectory root;
  writeFile(root / "Jose\u0301/Cafe\u0301.jpg", "123");
  const auto index = DestinationIndex::load(root.path());
  EXPECT_EQ(index.diskFolder("JOS\u00C9"), "Jose\u0301");
  EXPECT_EQ(index.resolvedFolder("jos\u00E9"), "Jose\u0301");
  EXPECT_FALSE(index.diskFolder("Jose"));
  EXPECT_EQ(index.existingNameKeys("jos\u00E9"), (Keys{"caf\u00E9.jpg"}));
  EXPECT_EQ(index.existingNameKeys("Bea"), Keys{});
  ASSERT_NE(index.file("jos\u00E9", "CAF\u00C9.JPG"), nullptr);
  EXPECT_EQ(index.file("jos\u00E9", "CAF\u00C9.JPG")->size, 3);
  EXPECT_TRUE(index.contains("jos\u00E9/caf\u00E9.jpg"));
  EXPECT_FALSE(index.contains("jos\u00E9"));
  EXPECT_FALSE(index.contains("jos\u00E9/other.jpg"));
  EXPECT_EQ(index.url("jos\u00E9", "caf\u00E9.jpg"), root / "Jose\u0301/Cafe\u0301.jpg");
  EXPECT_FALSE(index.url("jos\u00E9", "other.jpg"));
  EXPECT_EQ(index.place("jos\u00E9", "caf\u00E9.jpg"), (ExportPlace{.folder = "Jose\u0301", .name = "Cafe\u0301.jpg"}));
  EXPECT_EQ(index.mediaNameSets(), (FolderAllocator::FolderContents{{"Jose\u0301", {"caf\u00E9.jpg"}}}));
}

TEST(DestinationIndex, KeepsTwoFoldersThatDifferInLetterCaseApart) {
  const TemporaryDirectory root;
  writeFile(root / "Ana/a.jpg", "1");
  writeFile(root / "ana/b.jpg", "1");
  const auto index = DestinationIndex::load(root.path());
  EXPECT_EQ(index.existingNameKeys("Ana"), (Keys{"a.jpg"}));
  EXPECT_EQ(index.existingNameKeys("ana"), (Keys{"b.jpg"}));
  EXPECT_EQ(index.url("ana", "B.JPG"), root / "ana/b.jpg");
}

TEST(DestinationIndex, LoadingCanBeCancelled) {
  const TemporaryDirectory root;
  for (int count = 0; count < 300; ++count) writeFile(root / ("Ana/" + std::to_string(count)), "1");
  EXPECT_THAT([&] { DestinationIndex::load(root.path(), [] { return true; }); },
              Fixture::failsWith(TidewellError::cancelled()));
}

TEST(DestinationIndex, FollowsWhatTheExportDoes) {
  DestinationIndex index;
  index.addFile("Ana", "a.jpg", 10);
  index.addFile("ANA", "b.jpg", 11);
  EXPECT_EQ(index.existingNameKeys("Ana"), (Keys{"a.jpg", "b.jpg"}));
  index.addFile("Ana", "A.jpg", 12);
  EXPECT_EQ(index.file("Ana", "a.jpg")->size, 12);
  index.removeFile("ana", "A.JPG");
  index.removeFile("Bea", "a.jpg");
  EXPECT_EQ(index.existingNameKeys("Ana"), (Keys{"b.jpg"}));
}

}  // namespace
