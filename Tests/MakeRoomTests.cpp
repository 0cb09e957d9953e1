#include "TidewellCore/MakeRoom.h"

#include <gtest/gtest.h>

#include <sys/syscall.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>

#include "Tests/Support/RefusedCall.h"
#include "Tests/Support/TemporaryDirectory.h"

namespace {

namespace fs = std::filesystem;
using Fixture::TemporaryDirectory;

TEST(MakeRoom, WhatIsNoFolderGetsAnotherName) {
  const TemporaryDirectory folder;
  Fixture::writeFile(folder / "Ana", "somebody's");
  MakeRoom::forFolder(folder / "Ana");
  EXPECT_TRUE(fs::is_directory(folder / "Ana"));
  EXPECT_TRUE(fs::is_regular_file(folder / "Ana-2"));
}

// As on a share that says "not there" for a moment.
TEST(MakeRoom, AFolderThatIsNotThereForAMomentKeepsItsName) {
  const TemporaryDirectory folder;
  fs::create_directory(folder / "Ana");
  const auto run = [&] {
    Fixture::refuseCallOnce(SYS_newfstatat, ENOENT);
    MakeRoom::forFolder(folder / "Ana");
    std::_Exit(0);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
  EXPECT_TRUE(fs::is_directory(folder / "Ana"));
  EXPECT_FALSE(fs::exists(folder / "Ana-2"));
}

TEST(MakeRoom, AFolderInAFilesPlaceGetsAnotherName) {
  const TemporaryDirectory folder;
  fs::create_directories(folder / "app.js" / "inside");
  EXPECT_TRUE(MakeRoom::write(folder / "app.js", "content"));
  EXPECT_TRUE(fs::is_regular_file(folder / "app.js"));
  EXPECT_TRUE(fs::is_directory(folder / "app-2.js" / "inside"));
}

}  // namespace
