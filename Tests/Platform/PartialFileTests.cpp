#include "TidewellCore/Platform/PartialFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <utility>

#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/Platform/Files.h"

namespace {

namespace fs = std::filesystem;
using Fixture::TemporaryDirectory;
using Fixture::writeFile;

TEST(PartialFile, HasAHiddenNameBesideTheFile) {
  const TemporaryDirectory folder;
  const PartialFile partial(folder / "a.jpg");
  EXPECT_EQ(partial.path().parent_path(), folder.path());
  EXPECT_TRUE(partial.path().filename().string().starts_with(Files::partialPrefix));
  EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST(PartialFile, IsRemovedUnlessItBecameTheFile) {
  const TemporaryDirectory folder;
  {
    const PartialFile failed(folder / "a.jpg");
    writeFile(failed.path(), "half");
    PartialFile whole(folder / "b.jpg");
    writeFile(whole.path(), "whole");
    fs::rename(whole.path(), folder / "b.jpg");
    whole.release();
    EXPECT_TRUE(whole.path().empty());
  }
  EXPECT_TRUE(fs::remove(folder / "b.jpg"));
  EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST(PartialFile, GoesWithItsLastOwner) {
  const TemporaryDirectory folder;
  std::optional<PartialFile> first(folder / "a.jpg");
  writeFile(first->path(), "half");
  std::optional<PartialFile> second(std::move(*first));
  first.reset();
  EXPECT_TRUE(fs::exists(second->path()));
  second.reset();
  EXPECT_TRUE(fs::is_empty(folder.path()));
}

}  // namespace
