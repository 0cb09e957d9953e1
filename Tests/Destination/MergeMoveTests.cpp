#include "TidewellCore/Destination/MergeMove.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <map>
#include <string>

#include "Tests/Export/ExportScene.h"
#include "Tests/Support/SmallVolume.h"
#include "Tests/Support/TemporaryDirectory.h"

namespace {

namespace fs = std::filesystem;
using ExportTest::filesBelow;
using Fixture::writeFile;
using Files = std::map<std::string, std::string>;

struct MergeMoveTest : testing::Test {
  void merge() const { MergeMove::move(root / "from", root / "to"); }

  Fixture::TemporaryDirectory folder;
  fs::path root = folder / "Desktop";
};

TEST_F(MergeMoveTest, IsAPlainMoveWhenTheTargetIsFree) {
  writeFile(root / "from/deep/a", "a");
  merge();
  EXPECT_EQ(filesBelow(root), (Files{{"to/deep/a", "a"}}));
}

TEST_F(MergeMoveTest, DoesNothingOntoItself) {
  writeFile(root / "from/a", "a");
  MergeMove::move(root / "from", root / "from");
  fs::create_directory_symlink("from", root / "to");
  merge();
  EXPECT_EQ(filesBelow(root), (Files{{"from/a", "a"}}));
}

TEST_F(MergeMoveTest, KeepsOneOfTwoEqualFiles) {
  writeFile(root / "from/deep/a", "same");
  writeFile(root / "to/deep/a", "same");
  merge();
  EXPECT_EQ(filesBelow(root), (Files{{"to/deep/a", "same"}}));
  EXPECT_FALSE(fs::exists(root / "from"));
}

TEST_F(MergeMoveTest, KeepsBothOfTwoDifferentFiles) {
  writeFile(root / "from/a.jpg", "1111");
  writeFile(root / "to/a.jpg", "2222");
  writeFile(root / "to/A-2.jpg", "3333");
  merge();
  EXPECT_EQ(filesBelow(root), (Files{{"to/a.jpg", "2222"}, {"to/A-2.jpg", "3333"}, {"to/a-3.jpg", "1111"}}));
  EXPECT_FALSE(fs::exists(root / "from"));
}

TEST_F(MergeMoveTest, KeepsAFileAndAFolderOfOneName) {
  writeFile(root / "from/a", "file");
  writeFile(root / "to/a/b", "in folder");
  writeFile(root / "from/c/d", "in folder too");
  writeFile(root / "to/c", "file too");
  merge();
  EXPECT_EQ(filesBelow(root),
            (Files{{"to/a-2", "file"}, {"to/a/b", "in folder"}, {"to/c", "file too"}, {"to/c-2/d", "in folder too"}}));
}

TEST_F(MergeMoveTest, KeepsOneOfTwoHardLinksToAFile) {
  writeFile(root / "to/a", "a");
  fs::create_directories(root / "from");
  fs::create_hard_link(root / "to/a", root / "from/a");
  merge();
  EXPECT_EQ(filesBelow(root), (Files{{"to/a", "a"}}));
  EXPECT_FALSE(fs::exists(root / "from"));
}

TEST_F(MergeMoveTest, MovesALinkAsALink) {
  writeFile(root / "from/a", "1");
  writeFile(root / "to/a", "2");
  fs::create_symlink("a", root / "from/link");
  fs::create_symlink("nowhere", root / "to/link");
  merge();
  EXPECT_EQ(fs::read_symlink(root / "to/link"), "nowhere");
  EXPECT_EQ(fs::read_symlink(root / "to/link-2"), "a");
}

TEST_F(MergeMoveTest, MovesToAnotherVolume) {
  const Fixture::SmallVolume volume(root / "volume", 1 << 20);
  if (!volume.isMounted()) GTEST_SKIP() << "This user cannot mount a volume.";
  writeFile(root / "from/deep/a", "a");
  writeFile(root / "from/b", "b");
  fs::last_write_time(root / "from/b", fs::file_time_type(std::chrono::seconds(-200'000'000)));
  const auto date = ExportTest::modified(root / "from/b");
  MergeMove::move(root / "from", root / "volume/to");
  EXPECT_EQ(filesBelow(root), (Files{{"volume/to/b", "b"}, {"volume/to/deep/a", "a"}}));
  EXPECT_EQ(ExportTest::modified(root / "volume/to/b"), date);
  EXPECT_FALSE(fs::exists(root / "from"));
}

}  // namespace
