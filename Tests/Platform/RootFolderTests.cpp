#include "TidewellCore/Platform/RootFolder.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <optional>

#include "Tests/Support/Failures.h"
#include "Tests/Support/RefusedCall.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/Platform/FileDescriptor.h"
#include "TidewellCore/Platform/Files.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

// A folder "root", and beside it a folder "secret" that nothing below the root may reach.
struct RootFolderTest : testing::Test {
  RootFolderTest() {
    Fixture::writeFile(secret / "key", "secret");
    fs::create_directories(root / "sub");
    fs::create_directory_symlink(secret, root / "link");
    fs::create_symlink(secret / "key", root / "sub" / "key");
  }

  Fixture::TemporaryDirectory folder;
  fs::path root = folder / "root";
  fs::path secret = folder / "secret";
};

TEST_F(RootFolderTest, WithoutARootFolderLinksAreFollowed) {
  EXPECT_EQ(textOf(Files::read(root / "link" / "key", 100)), "secret");
  EXPECT_TRUE(Files::isFolder(root / "link"));
}

// Asked one after another, so that each finds what the one before it left open.
TEST_F(RootFolderTest, LengthsOfManyFilesAreThoseOfEach) {
  Fixture::writeFile(root / "sub" / "a", "12");
  Fixture::writeFile(root / "sub" / "b", "123");
  Fixture::writeFile(root / "sub" / "inner" / "a", "1234");
  Fixture::writeFile(root / "a", "1");
  for (const bool isHeld : {false, true}) {
    std::optional<RootFolder> held;
    if (isHeld) held.emplace(root);
    Files::Lengths lengths;
    for (const char* path : {"sub/a", "sub/b", "sub/gone", "sub/key", "sub/inner", "sub/inner/a", "sub/inner/..", "a",
                             "gone/a", "gone/b", "link/key", "link/gone", "sub/../a", "sub/.", "sub/", "sub/a"}) {
      EXPECT_EQ(lengths.of(root / path), Files::regularFileSize(root / path)) << path;
    }
  }
}

TEST_F(RootFolderTest, NothingIsReadThroughALinkBelowIt) {
  const RootFolder held(root);
  EXPECT_THROW(Files::read(root / "link" / "key", 100), fs::filesystem_error);
  EXPECT_THROW(Files::read(root / "sub" / "key", 100), fs::filesystem_error);
  EXPECT_THROW(Files::list(root / "link"), fs::filesystem_error);
  EXPECT_EQ(Files::regularFileSize(root / "link" / "key"), std::nullopt);
  EXPECT_FALSE(Files::isFolder(root / "link"));
  EXPECT_EQ(Files::kindOf(root / "link"), Files::Kind::link);
  EXPECT_THROW(Files::kindOf(root / "link" / "key"), fs::filesystem_error);
}

TEST_F(RootFolderTest, NothingIsWrittenOrRemovedThroughALinkBelowIt) {
  const RootFolder held(root);
  const auto before = Fixture::treeSnapshot(secret);
  EXPECT_THROW(Files::writeAtomically(root / "link" / "new", "x"), fs::filesystem_error);
  EXPECT_THROW(FileDescriptor::create(root / "link" / "key"), fs::filesystem_error);
  EXPECT_THROW(Files::makeFolder(root / "link" / "new"), fs::filesystem_error);
  EXPECT_THROW(Files::remove(root / "link" / "key"), fs::filesystem_error);
  EXPECT_THROW(Files::rename(root / "link" / "key", root / "key"), fs::filesystem_error);
  EXPECT_THROW(Files::setModificationDate(root / "link" / "key", dateFromUnixTime(0)), fs::filesystem_error);
  Files::removeTree(root / "link");
  EXPECT_EQ(Fixture::treeSnapshot(secret), before);
  EXPECT_FALSE(fs::is_symlink(root / "link"));
}

TEST_F(RootFolderTest, WhatIsNoLinkIsUsedAsEver) {
  const RootFolder held(root);
  Files::makeFolder(root / "a" / "b");
  Files::writeAtomically(root / "a" / "b" / "file", "text");
  EXPECT_EQ(textOf(Files::read(root / "a" / "b" / "file", 100)), "text");
  Files::rename(root / "a" / "b" / "file", root / "a" / "file");
  EXPECT_THAT(Files::listFiles(root / "a"), ElementsAre(Files::SizedFile{.name = "file", .size = 4}));
  EXPECT_TRUE(Files::remove(root / "a" / "file"));
  EXPECT_FALSE(Files::remove(root / "a" / "file"));
  EXPECT_TRUE(Files::remove(root / "a" / "b"));
  EXPECT_TRUE(Files::isFolder(root));
}

TEST_F(RootFolderTest, TheLinksAboveItAreTheUsers) {
  fs::create_directory_symlink(root, folder / "chosen");
  const RootFolder held(folder / "chosen");
  Files::writeAtomically(folder / "chosen" / "file", "text");
  EXPECT_TRUE(fs::exists(root / "file"));
  EXPECT_TRUE(Files::isFolder(folder / "chosen"));
  EXPECT_FALSE(Files::isFolder(folder / "chosen" / "link"));
}

TEST_F(RootFolderTest, CountsForEverySpellingOfItsPath) {
  const RootFolder held(root.native() + "/");
  EXPECT_FALSE(Files::isFolder(root / "link"));
  EXPECT_FALSE(Files::isFolder(root.native() + "//link"));
  EXPECT_FALSE(Files::isFolder(root.native() + "/link/"));
  const fs::path before = fs::current_path();
  fs::current_path(folder.path());
  {
    const RootFolder relative("root");
    EXPECT_FALSE(Files::isFolder("root/link"));
    EXPECT_TRUE(Files::isFolder("root/sub"));
  }
  fs::current_path(before);
}

TEST_F(RootFolderTest, LeadsNowhereUpwards) {
  const RootFolder held(root);
  EXPECT_THROW(Files::read(root / "sub" / ".." / ".." / "secret" / "key", 100), fs::filesystem_error);
}

TEST_F(RootFolderTest, AFolderWhoseNameBeginsAsItsDoesIsAnother) {
  fs::create_directories(folder / "root-2");
  fs::create_directory_symlink(secret, folder / "root-2" / "link");
  const RootFolder held(root);
  EXPECT_TRUE(Files::isFolder(folder / "root-2" / "link"));
}

TEST_F(RootFolderTest, CountsAsLongAsItLives) {
  {
    const RootFolder first(root);
    std::optional<RootFolder> second(std::in_place, root);
    second.reset();
    EXPECT_FALSE(Files::isFolder(root / "link"));
  }
  EXPECT_TRUE(Files::isFolder(root / "link"));
}

TEST_F(RootFolderTest, AFolderThatIsReplacedByALinkMeanwhileLeadsNowhere) {
  const RootFolder held(root);
  fs::rename(root, folder / "moved");
  fs::create_directory_symlink(secret, root);
  EXPECT_FALSE(Files::exists(root / "key"));
  Files::writeAtomically(root / "new", "x");
  EXPECT_TRUE(fs::exists(folder / "moved" / "new"));
  EXPECT_FALSE(fs::exists(secret / "new"));
}

// 0, or why it cannot be looked at.
int failureOfLookingAt(const fs::path& path) {
  try {
    return Files::kindOf(path) == Files::Kind::nothing ? ENOENT : 0;
  } catch (const fs::filesystem_error& error) {
    return error.code().value();
  }
}

TEST_F(RootFolderTest, HoldsWithoutOpenat2) {
  Fixture::writeFile(root / "sub" / "deep" / "file", "x");
  const auto walk = [&] {
    Fixture::refuseCall(SYS_openat2, ENOSYS);  // as an older kernel, or a container
    const RootFolder held(root);
    std::fprintf(stderr, "%d %d %d %d", failureOfLookingAt(root / "sub" / "deep" / "file"),
                 failureOfLookingAt(root / "sub" / "missing" / "file"),
                 failureOfLookingAt(root / "sub" / "deep" / "file" / "x"), failureOfLookingAt(root / "link" / "key"));
    ::_exit(0);
  };
  EXPECT_EXIT(walk(), testing::ExitedWithCode(0), fmt::format("0 {} {} {}$", ENOENT, ENOENT, ELOOP));
}

TEST(RootFolder, AMissingFolderIsAFailure) {
  const Fixture::TemporaryDirectory folder;
  EXPECT_THROW(RootFolder(folder / "missing"), fs::filesystem_error);
}

}  // namespace
