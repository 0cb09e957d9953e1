#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

#include "Tests/Platform/FilesScene.h"
#include "Tests/Support/Failures.h"
#include "Tests/Support/RefusedCall.h"

// What Files does with names and folders.
namespace {

namespace fs = std::filesystem;
using PlatformTest::content;
using PlatformTest::FilesTest;
using PlatformTest::namesIn;
using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(FilesTest, OnlyARegularFileIsOne) {
  EXPECT_TRUE(Files::isRegularFile(make("file")));
  EXPECT_FALSE(Files::isRegularFile(link("link", "file")));
  EXPECT_FALSE(Files::isRegularFile(fifo("fifo")));
  EXPECT_FALSE(Files::isRegularFile(folder_.path()));
  EXPECT_FALSE(Files::isRegularFile(at("missing")));
  EXPECT_FALSE(Files::isRegularFile(at("file") / "below"));
  EXPECT_FALSE(Files::isRegularFile("/dev/null"));
}

TEST_F(FilesTest, KnowsWhetherAnythingStandsThere) {
  EXPECT_TRUE(Files::exists(make("file")));
  EXPECT_TRUE(Files::exists(folder_.path()));
  EXPECT_TRUE(Files::exists(link("link", "file")));
  EXPECT_FALSE(Files::exists(link("dangling", "nowhere")));
  EXPECT_FALSE(Files::exists(at("missing")));
  EXPECT_FALSE(Files::exists(at("file") / "below"));
}

TEST_F(FilesTest, MeasuresRegularFilesOnly) {
  EXPECT_EQ(Files::regularFileSize(make("file", "hello")), 5);
  EXPECT_EQ(Files::regularFileSize(make("empty", "")), 0);
  EXPECT_EQ(Files::regularFileSize(link("link", "file")), std::nullopt);
  EXPECT_EQ(Files::regularFileSize(folder_.path()), std::nullopt);
  EXPECT_EQ(Files::regularFileSize(at("missing")), std::nullopt);
}

TEST_F(FilesTest, MeasuresFilesBeyondFourGigabytes) {
  fs::resize_file(make("sparse"), 5'000'000'000);
  EXPECT_EQ(Files::regularFileSize(at("sparse")), 5'000'000'000);
}

TEST_F(FilesTest, KnowsAFolder) {
  EXPECT_TRUE(Files::isFolder(folder_.path()));
  EXPECT_FALSE(Files::isFolder(make("file")));
  EXPECT_FALSE(Files::isFolder(at("missing")));
}

TEST_F(FilesTest, ListsInByteOrderOfNames) {
  for (const char* name : {"b", "a", "B", ".hidden", "é"}) make(name);
  fs::create_directory(at("c"));
  link("d", "c");
  EXPECT_THAT(Files::list(folder_.path()),
              ElementsAre(Files::Entry{".hidden", false}, Files::Entry{"B", false}, Files::Entry{"a", false},
                          Files::Entry{"b", false}, Files::Entry{"c", true}, Files::Entry{"d", true},
                          Files::Entry{"é", false}));
}

TEST_F(FilesTest, ListsVisibleEntriesAlone) {
  make(".hidden");
  make("seen");
  EXPECT_THAT(Files::listVisible(folder_.path()), ElementsAre(Files::Entry{"seen", false}));
}

TEST_F(FilesTest, AFolderThatCannotBeListedIsAFailureOrEmpty) {
  EXPECT_THROW(Files::list(at("missing")), fs::filesystem_error);
  EXPECT_THAT(Files::listVisible(at("missing")), IsEmpty());
  EXPECT_THAT(Files::listVisible(make("file")), IsEmpty());
}

TEST_F(FilesTest, RemovesFilesLinksAndEmptyFolders) {
  make("file");
  EXPECT_TRUE(Files::remove(link("link", "file")));
  EXPECT_TRUE(Files::remove(at("file")));
  EXPECT_FALSE(Files::remove(at("file")));
  fs::create_directories(at("folder") / "empty");
  EXPECT_THROW(Files::remove(at("folder")), fs::filesystem_error);
  EXPECT_TRUE(Files::remove(at("folder") / "empty"));
  EXPECT_TRUE(Files::remove(at("folder")));
}

// As a drive answers whose makers mean it literally, or a server.
TEST_F(FilesTest, AFileThatMayNotBeRemovedIsAFailureAndNotAbsent) {
  make("file");
  const auto remove = [&] {
    Fixture::refuseCall(SYS_unlinkat, EPERM, true);
    try {
      Files::remove(at("file"));
      ::_exit(0);
    } catch (const fs::filesystem_error& error) {
      ::_exit(error.code().value());
    }
  };
  EXPECT_EXIT(remove(), testing::ExitedWithCode(EPERM), "");
}

TEST_F(FilesTest, RenamesToAFreePlace) {
  EXPECT_TRUE(Files::renameToFree(make("from", "a"), at("to")));
  EXPECT_EQ(content(at("to")), "a");
  EXPECT_THAT(namesIn(folder_.path()), ElementsAre("to"));
}

TEST_F(FilesTest, RenamesNothingOntoWhatStandsThere) {
  make("from", "a");
  make("to", "b");
  EXPECT_FALSE(Files::renameToFree(at("from"), at("to")));
  EXPECT_EQ(content(at("from")), "a");
  EXPECT_EQ(content(at("to")), "b");
  link("dangling", "nowhere");
  EXPECT_FALSE(Files::renameToFree(at("from"), at("dangling"))) << "a link counts, wherever it leads";
  fs::create_directory(at("folder"));
  EXPECT_FALSE(Files::renameToFree(at("from"), at("folder")));
}

TEST_F(FilesTest, RenamesFoldersToo) {
  fs::create_directory(at("from"));
  Fixture::writeFile(at("from") / "a", "a");
  EXPECT_TRUE(Files::renameToFree(at("from"), at("to")));
  EXPECT_EQ(content(at("to") / "a"), "a");
}

TEST_F(FilesTest, RenamingWhatIsMissingIsAFailure) {
  EXPECT_THROW(Files::renameToFree(at("missing"), at("to")), fs::filesystem_error);
  EXPECT_THROW(Files::renameToFree(make("from"), at("missing") / "to"), fs::filesystem_error);
}

}  // namespace
