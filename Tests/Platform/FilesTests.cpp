#include "TidewellCore/Platform/Files.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

#include "Tests/Platform/FilesScene.h"
#include "Tests/Support/Failures.h"
#include "Tests/Support/RefusedCall.h"
#include "Tests/Support/SeededRandom.h"
#include "Tests/Support/TemporaryDirectory.h"

namespace {

namespace fs = std::filesystem;
using PlatformTest::content;
using PlatformTest::FilesTest;
using PlatformTest::namesIn;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::size_t slice = 64 << 20;    // of a copy in the kernel
constexpr std::size_t buffer = 256 << 10;  // of a copy through memory

timespec modifiedTime(const fs::path& file) {
  struct stat status {};
  EXPECT_EQ(lstat(file.c_str(), &status), 0);
  return status.st_mtim;
}

TEST_F(FilesTest, ReadsAFileOfUpToTheLimit) {
  make("file", "hello");
  EXPECT_EQ(textOf(Files::read(at("file"), 5)), "hello");
  EXPECT_THROW(Files::read(at("file"), 4), fs::filesystem_error);
  EXPECT_THAT(Files::read(make("empty", ""), 0), IsEmpty());
}

TEST_F(FilesTest, RefusesToReadLinksAndFIFOsWithoutBlocking) {
  make("file");
  EXPECT_THROW(Files::read(link("link", "file"), 100), fs::filesystem_error);
  EXPECT_THROW(Files::read(fifo("fifo"), 100), fs::filesystem_error);
}

TEST_F(FilesTest, WritesAtomically) {
  Files::writeAtomically(at("file"), "new");
  EXPECT_EQ(content(at("file")), "new");
  Files::writeAtomically(at("file"), "");
  EXPECT_EQ(content(at("file")), "");
  EXPECT_THAT(namesIn(folder_.path()), ElementsAre("file"));
}

TEST_F(FilesTest, AnAtomicWriteReplacesALinkAndLeavesItsTargetAlone) {
  make("target", "mine");
  Files::writeAtomically(link("link", "target"), "new");
  EXPECT_EQ(content(at("target")), "mine");
  EXPECT_TRUE(Files::isRegularFile(at("link")));
}

TEST_F(FilesTest, AFailedAtomicWriteLeavesNoPartialFile) {
  fs::create_directories(at("taken") / "inside");
  EXPECT_THROW(Files::writeAtomically(at("taken"), "new"), fs::filesystem_error);
  EXPECT_THAT(namesIn(folder_.path()), ElementsAre("taken"));
}

TEST_F(FilesTest, AnAtomicWriteIntoAMissingFolderFails) {
  EXPECT_THROW(Files::writeAtomically(at("missing") / "file", "new"), fs::filesystem_error);
  EXPECT_THAT(namesIn(folder_.path()), IsEmpty());
}

TEST_F(FilesTest, WritesAFileWhoseContentDiffers) {
  EXPECT_TRUE(Files::writeWhenDifferent(at("file"), "one"));
  for (const char* text : {"two", "longer than that", "", "\n"}) {
    EXPECT_TRUE(Files::writeWhenDifferent(at("file"), text));
    EXPECT_EQ(content(at("file")), text);
  }
  EXPECT_THAT(namesIn(folder_.path()), ElementsAre("file"));
}

TEST_F(FilesTest, LeavesAFileThatHoldsTheSameAlone) {
  make("file", "the same");
  Files::setModificationDate(at("file"), dateFromUnixTime(1000));
  EXPECT_FALSE(Files::writeWhenDifferent(at("file"), "the same"));
  EXPECT_EQ(modifiedTime(at("file")).tv_sec, 1000);
  EXPECT_TRUE(Files::writeWhenDifferent(at("file"), "the some"));
  EXPECT_NE(modifiedTime(at("file")).tv_sec, 1000);
}

TEST_F(FilesTest, ALinkToTheSameContentIsReplaced) {
  make("target", "the same");
  EXPECT_TRUE(Files::writeWhenDifferent(link("link", "target"), "the same"));
  EXPECT_TRUE(Files::isRegularFile(at("link")));
  EXPECT_TRUE(Files::writeWhenDifferent(fifo("fifo"), "the same"));
  EXPECT_THROW(Files::writeWhenDifferent(folder_.path() / "missing/file", "x"), fs::filesystem_error);
}

TEST_F(FilesTest, CopiesEveryByteAroundTheBordersOfASlice) {
  Fixture::SeededRandom random(7);
  for (const std::size_t size :
       {std::size_t{0}, std::size_t{1}, buffer - 1, buffer, buffer + 1, slice - 1, slice, slice + 1}) {
    // Random at both ends and at the border; zeros would hide a shift.
    Bytes bytes(size, 0x5A);
    const Bytes noise = random.bytes(std::min<std::size_t>(size, 4096));
    std::ranges::copy(noise, bytes.begin());
    std::ranges::copy(noise, bytes.end() - static_cast<std::ptrdiff_t>(noise.size()));
    Fixture::writeFile(at("from"), ByteView(bytes));
    EXPECT_EQ(Files::copy(at("from"), at("to")), static_cast<std::int64_t>(size));
    EXPECT_TRUE(Fixture::readFile(at("to")) == bytes) << size;
  }
}

TEST_F(FilesTest, ACopyReplacesAnEarlierFileWhole) {
  make("to", "something longer");
  EXPECT_EQ(Files::copy(make("from", "new"), at("to")), 3);
  EXPECT_EQ(content(at("to")), "new");
}

TEST_F(FilesTest, ACopyTooLargeForTheDriveFailsBeforeItIsWritten) {
  make("from", std::string(2 << 20, 'x'));
  const auto copy = [&] {
    Fixture::refuseCall(SYS_fallocate, EFBIG);  // as the kernel does where the file system has a limit
    try {
      Files::copy(at("from"), at("to"));
      ::_exit(0);
    } catch (const fs::filesystem_error& error) {
      ::_exit(error.code().value());
    }
  };
  EXPECT_EXIT(copy(), testing::ExitedWithCode(EFBIG), "");
  EXPECT_EQ(content(at("to")), "");
}

TEST_F(FilesTest, ACopyRefusesLinksAndFIFOsWithoutBlocking) {
  make("file");
  EXPECT_THROW(Files::copy(link("link", "file"), at("to")), fs::filesystem_error);
  EXPECT_THROW(Files::copy(fifo("fifo"), at("to")), fs::filesystem_error);
  EXPECT_FALSE(fs::exists(at("to"))) << "nothing was begun";
}

TEST_F(FilesTest, CopiesFilesWhoseLengthTheSystemDoesNotTell) {
  // Files of /proc say that they are empty; the kernel refuses to copy some of them by itself.
  const std::int64_t copied = Files::copy("/proc/self/maps", at("to"));
  EXPECT_EQ(copied, Files::regularFileSize(at("to")));
}

TEST_F(FilesTest, ACancelledCopyStops) {
  // Across file systems, where blocks cannot be shared and every slice asks.
  make("from", std::string(3 * buffer, 'x'));
  int asked = 0;
  const auto copy = [&] { Files::copy(at("from"), at("to"), [&] { return ++asked == 1; }); };
  try {
    copy();
    EXPECT_EQ(asked, 0) << "only a copy that shares its blocks is done without asking";
  } catch (const TidewellError& error) {
    EXPECT_EQ(error, TidewellError::cancelled());
    EXPECT_LT(Files::regularFileSize(at("to")), Files::regularFileSize(at("from")));
  }
}

TEST_F(FilesTest, MovesOnTheSameVolume) {
  EXPECT_TRUE(Files::moveToFree(make("from", "a"), at("to")));
  EXPECT_EQ(content(at("to")), "a");
  EXPECT_FALSE(fs::exists(at("from")));
  make("from", "b");
  EXPECT_FALSE(Files::moveToFree(at("from"), at("to")));
  EXPECT_EQ(content(at("to")), "a");
  EXPECT_EQ(content(at("from")), "b");
}

TEST_F(FilesTest, ComparesBytes) {
  const std::string longText(buffer + 5, 'x');
  EXPECT_TRUE(Files::haveSameBytes(make("a", longText), make("b", longText)));
  EXPECT_TRUE(Files::haveSameBytes(make("c", ""), make("d", "")));
  EXPECT_FALSE(Files::haveSameBytes(at("a"), at("c")));
  EXPECT_FALSE(Files::haveSameBytes(at("a"), make("e", std::string(buffer + 4, 'x') + "y"))) << "the last byte";
  EXPECT_FALSE(Files::haveSameBytes(make("f", "ab"), make("g", "ba")));
  EXPECT_THROW(Files::haveSameBytes(at("a"), at("missing")), fs::filesystem_error);
}

TEST_F(FilesTest, SetsTheModificationDate) {
  Files::setModificationDate(make("file"), dateFromUnixTime(1714564800.25));
  EXPECT_EQ(modifiedTime(at("file")).tv_sec, 1714564800);
  EXPECT_EQ(modifiedTime(at("file")).tv_nsec, 250'000'000);
  Files::setModificationDate(at("file"), dateFromUnixTime(-0.5));
  EXPECT_EQ(modifiedTime(at("file")).tv_sec, -1);
  EXPECT_EQ(modifiedTime(at("file")).tv_nsec, 500'000'000);
}

TEST_F(FilesTest, SetsTheDateOfALinkAndNotOfItsTarget) {
  const timespec before = modifiedTime(make("target"));
  Files::setModificationDate(link("link", "target"), dateFromUnixTime(1000));
  EXPECT_EQ(modifiedTime(at("link")).tv_sec, 1000);
  EXPECT_EQ(modifiedTime(at("target")).tv_sec, before.tv_sec);
}

TEST_F(FilesTest, DatesThatNoClockOfNanosecondsHoldsGoToTheirOwnSide) {
  const timespec now = modifiedTime(make("file"));
  Files::setModificationDate(at("file"), dateFromAppleTime(-63114076800));  // year 1
  EXPECT_LT(modifiedTime(at("file")).tv_sec, 0);
  Files::setModificationDate(at("file"), dateFromAppleTime(63113904000));  // year 4001
  EXPECT_GT(modifiedTime(at("file")).tv_sec, now.tv_sec);
  Files::setModificationDate(at("file"), dateFromUnixTime(-1e300));
  EXPECT_LT(modifiedTime(at("file")).tv_sec, 0);
  Files::setModificationDate(at("file"), dateFromUnixTime(1e300));
  EXPECT_GT(modifiedTime(at("file")).tv_sec, now.tv_sec);
}

TEST_F(FilesTest, SettingTheDateOfAMissingFileIsAFailure) {
  EXPECT_THROW(Files::setModificationDate(at("missing"), dateFromUnixTime(0)), fs::filesystem_error);
}

TEST(Files, PartialNamesAreHiddenAndUnique) {
  const std::string first = Files::partialName();
  EXPECT_TRUE(first.starts_with(Files::partialPrefix));
  EXPECT_TRUE(first.starts_with('.'));
  EXPECT_NE(first, Files::partialName());
}

// A move between two volumes; skipped where the machine has only one.
class FilesAcrossVolumesTest : public FilesTest {
 protected:
  void SetUp() override {
    for (const std::string place : {"/dev/shm", "/var/tmp"}) {
      if (!isOnAnotherVolume(place)) continue;
      std::string pattern = place + "/tidewell-test-XXXXXX";
      ASSERT_NE(mkdtemp(pattern.data()), nullptr);
      other_ = pattern;
      return;
    }
    GTEST_SKIP() << "this machine has no second volume";
  }
  bool isOnAnotherVolume(const std::string& place) const {
    struct stat here {
    }, there{};
    return stat(folder_.path().c_str(), &here) == 0 && stat(place.c_str(), &there) == 0 &&
           here.st_dev != there.st_dev && access(place.c_str(), W_OK) == 0;
  }
  void TearDown() override {
    if (!other_.empty()) fs::remove_all(other_);
  }

  fs::path other_;
};

TEST_F(FilesAcrossVolumesTest, RenamingIsAFailure) {
  make("from");
  EXPECT_THROW(Files::renameToFree(at("from"), other_ / "to"), fs::filesystem_error);
}

TEST_F(FilesAcrossVolumesTest, MovesContentAndDate) {
  Files::setModificationDate(make("from", "hello"), dateFromUnixTime(1714564800.25));
  EXPECT_TRUE(Files::moveToFree(at("from"), other_ / "to"));
  EXPECT_EQ(content(other_ / "to"), "hello");
  EXPECT_EQ(modifiedTime(other_ / "to").tv_sec, 1714564800);
  EXPECT_EQ(modifiedTime(other_ / "to").tv_nsec, 250'000'000);
  EXPECT_FALSE(fs::exists(at("from")));
  EXPECT_THAT(namesIn(other_), ElementsAre("to"));
}

TEST_F(FilesAcrossVolumesTest, MovesAFileFromTheYear4001) {
  Fixture::writeFile(other_ / "from", "hello");
  Files::setModificationDate(other_ / "from", dateFromAppleTime(63113904000));
  EXPECT_TRUE(Files::moveToFree(other_ / "from", at("to")));
  EXPECT_EQ(content(at("to")), "hello");
  EXPECT_GT(modifiedTime(at("to")).tv_sec, 1'800'000'000) << "a date of the future, as far as the volume can say it";
}

TEST_F(FilesAcrossVolumesTest, MovesAFileFromTheYear1) {
  Fixture::writeFile(other_ / "from", "hello");
  Files::setModificationDate(other_ / "from", dateFromAppleTime(-63114076800));
  EXPECT_TRUE(Files::moveToFree(other_ / "from", at("to")));
  EXPECT_LT(modifiedTime(at("to")).tv_sec, 0);
}

TEST_F(FilesAcrossVolumesTest, MovesNothingOntoWhatStandsThere) {
  make("from", "a");
  Fixture::writeFile(other_ / "to", "b");
  EXPECT_FALSE(Files::moveToFree(at("from"), other_ / "to"));
  EXPECT_EQ(content(at("from")), "a");
  EXPECT_EQ(content(other_ / "to"), "b");
  EXPECT_THAT(namesIn(other_), ElementsAre("to"));
}

TEST_F(FilesAcrossVolumesTest, MovesRegularFilesOnly) {
  make("target");
  EXPECT_THROW(Files::moveToFree(link("link", "target"), other_ / "to"), fs::filesystem_error);
  EXPECT_THAT(namesIn(other_), IsEmpty());
}

TEST_F(FilesAcrossVolumesTest, CopiesBetweenVolumes) {
  const std::string text(slice / 8 + 3, 'x');
  EXPECT_EQ(Files::copy(make("from", text), other_ / "to"), static_cast<std::int64_t>(text.size()));
  EXPECT_EQ(content(other_ / "to"), text);
}

TEST_F(FilesAcrossVolumesTest, ACancelledCopyLeavesAPart) {
  make("from", std::string(3 * buffer, 'x'));
  EXPECT_THAT([&] { Files::copy(at("from"), other_ / "to", [] { return true; }); },
              Fixture::failsWith(TidewellError::cancelled()));
  EXPECT_LT(Files::regularFileSize(other_ / "to"), Files::regularFileSize(at("from")));
}

}  // namespace
