#include "TidewellCore/Platform/FileBatch.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/Platform/Files.h"

namespace {

namespace fs = std::filesystem;

class FileBatchTest : public testing::Test {
 protected:
  std::string textOf(const char* name) const {
    const Fixture::Bytes bytes = Fixture::readFile(at(name));
    return {bytes.begin(), bytes.end()};
  }
  fs::path at(const std::string& name) const { return folder_.path() / name; }
  bool holdsPartials() const {
    return std::ranges::any_of(Files::list(folder_.path()),
                               [](const auto& entry) { return entry.name.starts_with(Files::partialPrefix); });
  }

  const Fixture::TemporaryDirectory folder_;
  const FlushPoint disk_{folder_.path()};
};

TEST_F(FileBatchTest, FilesHaveTheirOldContentUntilTheyAreSettled) {
  Fixture::writeFile(at("old"), std::string("before"));
  FileBatch batch(disk_);
  batch.write(at("old"), "after");
  batch.write(at("new"), "there");
  EXPECT_EQ(textOf("old"), "before");
  EXPECT_FALSE(fs::exists(at("new")));
  EXPECT_TRUE(batch.settle().empty());
  EXPECT_EQ(textOf("old"), "after");
  EXPECT_EQ(textOf("new"), "there");
  EXPECT_FALSE(holdsPartials());
}

TEST_F(FileBatchTest, WhatHasTheContentAlreadyIsLeftAlone) {
  Fixture::writeFile(at("file"), std::string("same"));
  Files::setModificationDate(at("file"), dateFromUnixTime(1000));
  const auto date = fs::last_write_time(at("file"));
  FileBatch batch(disk_);
  batch.write(at("file"), "same");
  EXPECT_FALSE(holdsPartials());
  EXPECT_TRUE(batch.settle().empty());
  EXPECT_EQ(fs::last_write_time(at("file")), date);
}

TEST_F(FileBatchTest, WhatFailsIsToldAndKeepsNothingElseBack) {
  FileBatch batch(disk_);
  batch.write(at("a"), "a");
  batch.write(at("b"), "b");
  fs::create_directories(at("a") / "in the way");
  const auto failures = batch.settle();
  ASSERT_EQ(failures.size(), 1U);
  EXPECT_EQ(failures[0].path, at("a"));
  EXPECT_THROW(std::rethrow_exception(failures[0].reason), fs::filesystem_error);
  EXPECT_EQ(textOf("b"), "b");
  EXPECT_FALSE(holdsPartials());
  EXPECT_THROW(batch.write(at("a"), "a"), fs::filesystem_error) << "seen at once";
}

TEST_F(FileBatchTest, WhatIsNotSettledIsDropped) {
  {
    FileBatch batch(disk_);
    batch.write(at("file"), "x");
  }
  EXPECT_TRUE(fs::is_empty(folder_.path()));
}

TEST_F(FileBatchTest, IsFullBeforeTooMuchWaits) {
  FileBatch many(disk_);
  int count = 0;
  for (; !many.isFull(); ++count) many.write(at(std::to_string(count)), "x");
  EXPECT_EQ(count, 256);
  EXPECT_TRUE(many.settle().empty());
  EXPECT_FALSE(many.isFull());
  FileBatch large(disk_);
  large.write(at("large"), std::string(64 << 20, 'x'));
  EXPECT_TRUE(large.isFull());
}

}  // namespace
