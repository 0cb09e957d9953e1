#include "TidewellCore/Platform/FileStamp.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/Platform/Files.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

class FileStampTest : public testing::Test {
 protected:
  fs::path at(const char* name) const { return folder_.path() / name; }
  void make(const char* name, const char* content = "x") const {
    fs::create_directories(at(name).parent_path());
    Fixture::writeFile(at(name), content);
  }

  const Fixture::TemporaryDirectory folder_;
};

TEST_F(FileStampTest, IsAnotherForWhateverChanges) {
  make("file", "one");
  const FileStamp before = FileStamp::of(at("file")).value();
  EXPECT_EQ(FileStamp::of(at("file"))->ofEverything(), before.ofEverything());
  make("file", "four");
  EXPECT_NE(FileStamp::of(at("file"))->ofContent(), before.ofContent());
  make("other", "one");
  Files::setModificationDate(at("file"), dateFromUnixTime(1000));
  Files::setModificationDate(at("other"), dateFromUnixTime(1000));
  fs::resize_file(at("file"), 3);
  Files::setModificationDate(at("file"), dateFromUnixTime(1000));
  EXPECT_EQ(FileStamp::of(at("file"))->ofContent(), FileStamp::of(at("other"))->ofContent());
  EXPECT_NE(FileStamp::of(at("file"))->ofEverything(), FileStamp::of(at("other"))->ofEverything());
}

TEST_F(FileStampTest, IsOfRegularFilesAlone) {
  make("file");
  fs::create_symlink(at("file"), at("link"));
  EXPECT_FALSE(FileStamp::of(at("link")));
  EXPECT_FALSE(FileStamp::of(folder_.path()));
  EXPECT_FALSE(FileStamp::of(at("missing")));
  EXPECT_FALSE(FileStamp::of(at("file") / "below"));
}

TEST_F(FileStampTest, SettlesWhenTheClockHasGoneOn) {
  make("file");
  EXPECT_FALSE(FileStamp::of(at("file"))->isSettled());
  std::this_thread::sleep_for(std::chrono::milliseconds(60));
  EXPECT_TRUE(FileStamp::of(at("file"))->isSettled());
  Files::setModificationDate(at("file"), dateFromUnixTime(4e9));
  EXPECT_FALSE(FileStamp::of(at("file"))->isSettled()) << "a date to come";
}

TEST_F(FileStampTest, AllFilesBelowAFolderAreVisited) {
  for (const char* name : {"b/2", "b/1", "a", ".hidden", "b/c/3"}) make(name);
  std::vector<std::string> paths;
  const auto note = [&](const std::string& path, const FileStamp& stamp) {
    EXPECT_EQ(stamp.ofEverything(), FileStamp::of(folder_.path() / path)->ofEverything());
    paths.push_back(path);
  };
  EXPECT_TRUE(forEachStampBelow(folder_.path(), note));
  EXPECT_THAT(paths, ElementsAre(".hidden", "a", "b/1", "b/2", "b/c/3"));
}

TEST_F(FileStampTest, AFolderWithALinkCannotBeVouchedFor) {
  make("a");
  fs::create_directories(at("z"));
  fs::create_symlink(folder_.path(), at("z/link"));
  EXPECT_FALSE(forEachStampBelow(folder_.path(), [](const auto&, const auto&) {}));
  EXPECT_FALSE(forEachStampBelow(at("missing"), [](const auto&, const auto&) {}));
  EXPECT_FALSE(forEachStampBelow(at("a"), [](const auto&, const auto&) {}));
}

}  // namespace
