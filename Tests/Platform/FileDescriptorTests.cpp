#include "TidewellCore/Platform/FileDescriptor.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "Tests/Support/TemporaryDirectory.h"

namespace {

namespace fs = std::filesystem;

// The error that an action fails with; none when it does not.
template <typename Action>
std::error_code errorOf(Action action) {
  try {
    action();
  } catch (const fs::filesystem_error& error) {
    EXPECT_FALSE(error.path1().empty()) << "the failure names its file";
    return error.code();
  }
  return {};
}

class FileDescriptorTest : public testing::Test {
 protected:
  const Fixture::TemporaryDirectory folder_;
  const fs::path file_ = folder_ / "file";
};

TEST_F(FileDescriptorTest, ReadsAFileToItsEnd) {
  Fixture::writeFile(file_, "hello");
  FileDescriptor file = FileDescriptor::openForReading(file_);
  Bytes buffer(3);
  EXPECT_EQ(file.size(), 5);
  EXPECT_EQ(file.read(buffer), 3u);
  EXPECT_EQ(textOf(buffer), "hel");
  EXPECT_EQ(file.read(buffer), 2u);
  EXPECT_EQ(file.read(buffer), 0u);
}

TEST_F(FileDescriptorTest, SeeksToAnOffset) {
  Fixture::writeFile(file_, "hello");
  FileDescriptor file = FileDescriptor::openForReading(file_);
  file.seek(3);
  Bytes buffer(9);
  EXPECT_EQ(file.read(buffer), 2u);
  EXPECT_EQ(errorOf([&] { file.seek(-1); }), std::errc::invalid_argument);
}

TEST_F(FileDescriptorTest, RefusesAMissingFile) {
  EXPECT_EQ(errorOf([&] { FileDescriptor::openForReading(file_); }), std::errc::no_such_file_or_directory);
}

TEST_F(FileDescriptorTest, RefusesALink) {
  Fixture::writeFile(folder_ / "target", "x");
  fs::create_symlink("target", file_);
  EXPECT_EQ(errorOf([&] { FileDescriptor::openForReading(file_); }), std::errc::too_many_symbolic_link_levels);
}

TEST_F(FileDescriptorTest, RefusesAFIFOWithoutWaitingForItsWriter) {
  ASSERT_EQ(mkfifo(file_.c_str(), 0600), 0);
  EXPECT_TRUE(errorOf([&] { FileDescriptor::openForReading(file_); }));
}

TEST_F(FileDescriptorTest, RefusesAFolderAndADevice) {
  EXPECT_TRUE(errorOf([&] { FileDescriptor::openForReading(folder_.path()); }));
  EXPECT_TRUE(errorOf([&] { FileDescriptor::openForReading("/dev/zero"); }));
}

TEST_F(FileDescriptorTest, WritesANewFile) {
  FileDescriptor file = FileDescriptor::create(file_);
  file.write(bytesOf("hello"));
  EXPECT_EQ(file.size(), 5);
  EXPECT_EQ(file.path(), file_);
  file.close();
  EXPECT_EQ(textOf(Fixture::readFile(file_)), "hello");
}

TEST_F(FileDescriptorTest, ReplacesALinkAndLeavesItsTargetAlone) {
  Fixture::writeFile(folder_ / "target", "mine");
  fs::create_symlink("target", file_);
  FileDescriptor::create(file_).write(bytesOf("new"));
  EXPECT_EQ(textOf(Fixture::readFile(folder_ / "target")), "mine");
  EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(file_)));
}

TEST_F(FileDescriptorTest, ReplacesALongerFileWhole) {
  Fixture::writeFile(file_, "a longer content");
  FileDescriptor::create(file_).write(bytesOf("new"));
  EXPECT_EQ(textOf(Fixture::readFile(file_)), "new");
}

TEST_F(FileDescriptorTest, DoesNotReplaceAFolder) {
  fs::create_directory(file_);
  EXPECT_TRUE(errorOf([&] { FileDescriptor::create(file_); }));
  EXPECT_TRUE(fs::is_directory(file_));
}

TEST_F(FileDescriptorTest, MakesNoFolders) {
  EXPECT_TRUE(errorOf([&] { FileDescriptor::create(folder_ / "missing" / "file"); }));
}

TEST_F(FileDescriptorTest, MovesItsFileAlong) {
  FileDescriptor first = FileDescriptor::create(file_);
  FileDescriptor second = std::move(first);
  second.write(bytesOf("x"));
  FileDescriptor third = FileDescriptor::create(folder_ / "other");
  third = std::move(second);
  third.write(bytesOf("y"));
  EXPECT_EQ(third.path(), file_);
  EXPECT_EQ(textOf(Fixture::readFile(file_)), "xy");
}

}  // namespace
