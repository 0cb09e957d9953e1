#include "TidewellCore/Platform/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "Tests/Support/TemporaryDirectory.h"

namespace {

namespace fs = std::filesystem;

TEST(TemporaryFolder, IsNamedByItsPrefixAndAnUpperCaseUUID) {
  const TemporaryFolder folder("Tidewell-manifest-");
  EXPECT_EQ(folder.path().parent_path(), fs::temp_directory_path());
  // Version 4 and variant 1 of RFC 4122.
  EXPECT_THAT(
      folder.path().filename().string(),
      testing::MatchesRegex("Tidewell-manifest-[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}"));
}

TEST(TemporaryFolder, IsOpenToItsUserAlone) {
  const TemporaryFolder folder("Tidewell-test-");
  struct stat status {};
  ASSERT_EQ(stat(folder.path().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0700u);
}

TEST(TemporaryFolder, IsRemovedWithAllItHolds) {
  fs::path path;
  {
    const TemporaryFolder folder("Tidewell-test-");
    path = folder.path();
    Fixture::writeFile(path / "a" / "b", "x");
  }
  EXPECT_FALSE(fs::exists(path));
}

TEST(TemporaryFolder, IsAnotherEachTime) {
  EXPECT_NE(TemporaryFolder("Tidewell-test-").path(), TemporaryFolder("Tidewell-test-").path());
}

TEST(TemporaryFolder, RemovesNothingBehindALink) {
  const Fixture::TemporaryDirectory mine;
  Fixture::writeFile(mine / "kept", "x");
  {
    const TemporaryFolder folder("Tidewell-test-");
    fs::create_directory_symlink(mine.path(), folder.path() / "link");
  }
  EXPECT_TRUE(fs::exists(mine / "kept"));
}

TEST(TemporaryFolder, MovesToAnotherOwner) {
  TemporaryFolder first("Tidewell-test-");
  const fs::path path = first.path();
  {
    const TemporaryFolder second = std::move(first);
    EXPECT_EQ(second.path(), path);
    EXPECT_TRUE(fs::exists(path));
  }
  EXPECT_FALSE(fs::exists(path));
}

}  // namespace
