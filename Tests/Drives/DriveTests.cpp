#include "Tests/Drives/Drive.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>

#include "Tests/Support/TemporaryDirectory.h"

namespace {

namespace fs = std::filesystem;
using Fixture::Drive;
using Fixture::DriveOptions;

// What opening a new file of that name comes to: 0 or an error's number.
int making(const fs::path& file) {
  const int number = ::open(file.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600);
  if (number < 0) return errno;
  ::close(number);
  return 0;
}

// An open file for writing.
class File {
 public:
  explicit File(const fs::path& file) : number_(::open(file.c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600)) {}
  ~File() { close(); }
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  // Each of them: 0 or an error's number.
  int write(std::size_t count) {
    const std::string bytes(count, 'x');
    const ssize_t written = ::write(number_, bytes.data(), bytes.size());
    if (written < 0) return errno;
    return static_cast<std::size_t>(written) == count ? 0 : -1;
  }
  int flush() { return ::fsync(number_) == 0 ? 0 : errno; }
  int flushDrive() { return ::syncfs(number_) == 0 ? 0 : errno; }
  int close() {
    if (number_ < 0) return 0;
    const int result = ::close(number_);
    number_ = -1;
    return result == 0 ? 0 : errno;
  }

 private:
  int number_ = -1;
};

class Drives : public testing::Test {
 protected:
  fs::path at(const std::string& name) const { return place / name; }

  Fixture::TemporaryDirectory folder;
  fs::path place = folder / "drive";
  fs::path files = folder / "files";
};

#define SKIP_UNLESS_MOUNTED(drive) \
  if (!(drive).isMounted()) GTEST_SKIP() << (drive).whyNot()

TEST_F(Drives, AStickRefusesWhatFATRefuses) {
  const Drive drive(files, place);
  SKIP_UNLESS_MOUNTED(drive);
  for (const char* name : {"Pizza?", "a*b", "a\"b", "a<b", "a>b", "a|b", "a:b", "a\\b", "a\x01", "dot.", "blank "}) {
    EXPECT_EQ(making(at(name)), EINVAL) << name;
  }
  EXPECT_EQ(making(at("ordinary é 😀.jpg")), 0);
  EXPECT_EQ(making(at("ORDINARY É 😀.JPG")), EEXIST);
  EXPECT_TRUE(fs::exists(at("Ordinary É 😀.jpg")));
  fs::create_directory(at("Folder"));
  EXPECT_EQ(making(at("FOLDER/a")), 0);
  EXPECT_EQ(making(at("folder/A")), EEXIST);
}

TEST_F(Drives, AStickKnowsNoLinksAndNoRights) {
  const Drive drive(files, place);
  SKIP_UNLESS_MOUNTED(drive);
  ASSERT_EQ(making(at("a")), 0);
  EXPECT_NE(::link(at("a").c_str(), at("b").c_str()), 0);
  EXPECT_NE(::symlink("a", at("b").c_str()), 0);
  EXPECT_NE(::chmod(at("a").c_str(), 0600), 0);
  struct stat status {};
  ASSERT_EQ(::stat(at("a").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0777U);
}

TEST_F(Drives, AStickCutsDatesToItsOwn) {
  const Drive drive(files, place);
  SKIP_UNLESS_MOUNTED(drive);
  ASSERT_EQ(making(at("a")), 0);
  const auto dated = [&](time_t second) {
    const std::array<timespec, 2> times{timespec{second, 0}, timespec{second, 999}};
    struct stat status {};
    EXPECT_EQ(::utimensat(AT_FDCWD, at("a").c_str(), times.data(), 0), 0);
    EXPECT_EQ(::stat(at("a").c_str(), &status), 0);
    return status.st_mtim.tv_sec;
  };
  EXPECT_EQ(dated(1'678'307'201), 1'678'307'200);
  EXPECT_EQ(dated(0), 315'532'800);
  EXPECT_EQ(dated(9'000'000'000), 4'354'819'198);
}

TEST_F(Drives, RefusesDatesWhenItIsToldTo) {
  const Drive drive(files, place, {.refusesDates = true});
  SKIP_UNLESS_MOUNTED(drive);
  ASSERT_EQ(making(at("a")), 0);
  const std::array<timespec, 2> times{};
  EXPECT_NE(::utimensat(AT_FDCWD, at("a").c_str(), times.data(), 0), 0);
  EXPECT_EQ(errno, EINVAL);
}

TEST_F(Drives, LeavesDotsOutWhenItIsToldTo) {
  const Drive drive(files, place, {.stripsDots = true});
  SKIP_UNLESS_MOUNTED(drive);
  EXPECT_EQ(making(at("a..")), 0);
  EXPECT_TRUE(fs::exists(files / "a"));
  EXPECT_TRUE(fs::exists(at("a..")));
}

TEST_F(Drives, TakesBothFormsOfAnAccentForOneWhenItIsToldTo) {
  const Drive drive(files, place, {.composesNames = true});
  SKIP_UNLESS_MOUNTED(drive);
  EXPECT_EQ(making(at("é")), 0);
  EXPECT_EQ(making(at("e\u0301")), EEXIST);
}

TEST_F(Drives, RenamesWithoutReplacing) {
  const Drive drive(files, place);
  SKIP_UNLESS_MOUNTED(drive);
  ASSERT_EQ(making(at("a")), 0);
  ASSERT_EQ(making(at("b")), 0);
  const auto renamed = [&](const char* to) {
    return ::renameat2(AT_FDCWD, at("a").c_str(), AT_FDCWD, at(to).c_str(), RENAME_NOREPLACE) == 0 ? 0 : errno;
  };
  EXPECT_EQ(renamed("B"), EEXIST);
  EXPECT_EQ(renamed("c?"), EINVAL);
  EXPECT_EQ(renamed("c"), 0);
}

TEST_F(Drives, AFileBeyondTheLargestIsRefused) {
  const Drive drive(files, place, {.largestFile = 10'000});
  SKIP_UNLESS_MOUNTED(drive);
  File file(at("a"));
  EXPECT_EQ(file.write(10'000), 0);
  EXPECT_EQ(file.write(1), EFBIG);
}

TEST_F(Drives, AFullDriveIsFullUntilSomethingGoes) {
  const Drive drive(files, place, {.capacity = 1 << 20});
  SKIP_UNLESS_MOUNTED(drive);
  File file(at("a"));
  EXPECT_EQ(file.write(1 << 20), 0);
  EXPECT_EQ(file.write(1), ENOSPC);
  EXPECT_EQ(file.close(), 0);
  struct statvfs volume {};
  ASSERT_EQ(::statvfs(place.c_str(), &volume), 0);
  EXPECT_EQ(volume.f_bavail, 0U);
  fs::remove(at("a"));
  File other(at("b"));
  EXPECT_EQ(other.write(1000), 0);
}

TEST_F(Drives, OneThatLiesTellsSoWhenAFileIsFlushed) {
  const Drive drive(files, place,
                    {.losesWhatIsTooMuch = true, .capacity = 1 << 20, .claimedCapacity = std::int64_t{1} << 40});
  SKIP_UNLESS_MOUNTED(drive);
  File whole(at("a"));
  EXPECT_EQ(whole.write(1 << 20), 0);
  File lost(at("b"));
  EXPECT_EQ(lost.write(1 << 20), 0);
  EXPECT_EQ(fs::file_size(at("b")), 1U << 20);
  EXPECT_EQ(whole.flush(), 0);
  EXPECT_EQ(lost.flush(), EIO);
  EXPECT_EQ(lost.close(), 0);
}

TEST_F(Drives, FailsEveryFlushWhenItIsToldTo) {
  const Drive drive(files, place, {.failsFlushes = true});
  SKIP_UNLESS_MOUNTED(drive);
  File file(at("a"));
  EXPECT_EQ(file.write(10), 0);
  EXPECT_EQ(file.flush(), EIO);
}

TEST_F(Drives, OneThatIsPulledOutFailsAndOneThatIsUnmountedIsEmpty) {
  {
    Drive drive(files, place);
    SKIP_UNLESS_MOUNTED(drive);
    ASSERT_EQ(making(at("a")), 0);
    drive.pullOut();
    EXPECT_NE(making(at("b")), 0);
  }
  Drive drive(files, place);
  EXPECT_EQ(making(at("a")), EEXIST);
  drive.unmount();
  EXPECT_TRUE(fs::is_empty(place));
}

TEST_F(Drives, NTFSRefusesWhatWindowsRefuses) {
  const Drive drive = Drive::ntfs(folder / "image", place);
  SKIP_UNLESS_MOUNTED(drive);
  for (const char* name : {"Pizza?", "a|b", "a:b", "dot.", "blank ", "CON", "nul.txt", "COM1.jpg"}) {
    EXPECT_EQ(making(at(name)), EINVAL) << name;
  }
  EXPECT_EQ(making(at("Console")), 0);
}

TEST_F(Drives, ExFATRefusesWhatItRefuses) {
  const Drive drive = Drive::exfat(folder / "image", place);
  SKIP_UNLESS_MOUNTED(drive);
  EXPECT_NE(making(at("Pizza?")), 0);
  EXPECT_EQ(making(at("Pizza")), 0);
  EXPECT_EQ(making(at("PIZZA")), EEXIST);
}

TEST_F(Drives, FATRefusesWhatItRefuses) {
  const Drive drive = Drive::vfat(folder / "image", place);
  SKIP_UNLESS_MOUNTED(drive);
  EXPECT_EQ(making(at("Pizza?")), EINVAL);
  EXPECT_EQ(making(at("Pizza")), 0);
}

}  // namespace
