#include "TidewellCore/Export/MediaCopier.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <map>
#include <new>
#include <string>

#include "Tests/Export/ExportScene.h"
#include "Tests/Support/RefusedCall.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/Export/MediaResult.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;
using ExportPlanner::PlannedCopy;
using ExportTest::filesBelow;
using Fixture::writeFile;
using Files = std::map<std::string, std::string>;
using Outcome = MediaResult::Outcome;

// A copy of `bytes` bytes that stands in Ana's folder.
MediaResult copied(const std::string& name, std::int64_t bytes = 6) {
  return {.place = {.folder = "Ana", .name = name}, .outcome = Outcome::copied, .copiedBytes = bytes};
}

MediaResult there(const std::string& name) {
  return {.place = {.folder = "Ana", .name = name}, .outcome = Outcome::wasThere};
}

// A stored file "source" of 6 bytes, and a content root.
struct MediaCopierTest : testing::Test {
  MediaCopierTest() {
    Fixture::writeBackup({}, folder / "device");
    writeFile(source, "stored");
    fs::create_directories(root);
  }

  PlannedCopy copyTo(const std::string& name) const {
    return {.source = source,
            .dest = {.folder = "Ana", .name = name},
            .date = dateFromUnixTime(1'600'000'000),
            .desiredName = name,
            .sourceSize = 6};
  }

  // The copy of seven bytes that an earlier export left in a former folder.
  PlannedCopy moveTo(const std::string& name) const {
    PlannedCopy copy = copyTo(name);
    copy.fate = ExportPlanner::Moved{.from = {.folder = "Old", .name = "a.jpg"}};
    copy.sourceSize = 7;
    return copy;
  }

  static SettledCopy settled(MediaCopier& copier, const PlannedCopy& copy) {
    const std::optional<SettledCopy> atOnce = copier.carryOut(copy);
    const SettledCopy settled = atOnce ? *atOnce : copier.settle().at(0);
    EXPECT_EQ(settled.copy, &copy);
    return settled;
  }

  // Throws what the copy failed with.
  MediaResult carryOut(const PlannedCopy& copy, const CancellationCheck& isCancelled = {}) const {
    const OpenedBackup opened = OpenedBackup::open(folder / "device", std::nullopt);
    const FlushPoint disk(root);
    MediaCopier copier({&copy, 1}, opened, index, disk, isCancelled);
    const SettledCopy one = settled(copier, copy);
    if (one.failure) std::rethrow_exception(one.failure);
    return MediaResult::of(one);
  }

  // What came of a copy that fails.
  MediaResult failed(const PlannedCopy& copy) const {
    const OpenedBackup opened = OpenedBackup::open(folder / "device", std::nullopt);
    const FlushPoint disk(root);
    MediaCopier copier({&copy, 1}, opened, index, disk, {});
    const SettledCopy one = settled(copier, copy);
    EXPECT_TRUE(one.failure);
    return MediaResult::of(one);
  }

  // Why a copy fails that is carried out.
  std::optional<FailureReason> reasonOf(const PlannedCopy& copy) const {
    const OpenedBackup opened = OpenedBackup::open(folder / "device", std::nullopt);
    const FlushPoint disk(root);
    MediaCopier copier({&copy, 1}, opened, index, disk, {});
    try {
      const SettledCopy one = settled(copier, copy);
      if (one.failure) std::rethrow_exception(one.failure);
    } catch (const std::exception& error) {
      return copier.reasonOf(error, copy);
    }
    return std::nullopt;
  }

  // The same where no file may become larger, as on the file systems of old memory cards.
  std::optional<FailureReason> reasonWithLargestFile(rlim_t byteCount, const PlannedCopy& copy) const {
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit narrow{.rlim_cur = byteCount, .rlim_max = before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &narrow);
    const auto reason = reasonOf(copy);
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    return reason;
  }

  Fixture::TemporaryDirectory folder;
  fs::path source = folder / "source";
  fs::path root = folder / "messages";
  DestinationIndex index{.destination = root};
};

TEST_F(MediaCopierTest, MakesTheFolderAndTheFileWithTheMessagesDate) {
  EXPECT_EQ(carryOut(copyTo("a.jpg")), copied("a.jpg"));
  EXPECT_EQ(filesBelow(root), (Files{{"Ana/a.jpg", "stored"}}));
  EXPECT_EQ(ExportTest::modified(root / "Ana/a.jpg"), 1'600'000'000);
}

TEST_F(MediaCopierTest, DoesNotTouchAFileThatIsThereAlready) {
  PlannedCopy copy = copyTo("a.jpg");
  copy.fate = ExportPlanner::Present();
  EXPECT_EQ(carryOut(copy), there("a.jpg"));
  EXPECT_EQ(filesBelow(root), Files{});
}

TEST_F(MediaCopierTest, TakesAFileOfTheSameContentThatCameSinceThePlanForTheCopy) {
  writeFile(root / "Ana/a.jpg", "stored");
  EXPECT_EQ(carryOut(copyTo("a.jpg")), there("a.jpg"));
  EXPECT_EQ(filesBelow(root), (Files{{"Ana/a.jpg", "stored"}}));
}

TEST_F(MediaCopierTest, KeepsWhateverElseCameSinceThePlanAndTakesTheNextName) {
  for (const std::string content : {"sextet", "half"}) {
    writeFile(root / "Ana/a.jpg", content);
    EXPECT_EQ(carryOut(copyTo("a.jpg")), copied("a-2.jpg"));
    EXPECT_EQ(filesBelow(root), (Files{{"Ana/a.jpg", content}, {"Ana/a-2.jpg", "stored"}}));
    fs::remove_all(root / "Ana");
  }
}

TEST_F(MediaCopierTest, TheNextNameIsOneThatALaterExportKnowsAgain) {
  writeFile(root / "Ana/a-2.jpg", "half");
  writeFile(root / "Ana/a-3.jpg", "half a loaf");
  PlannedCopy copy = copyTo("a-2.jpg");
  copy.desiredName = "a.jpg";
  EXPECT_EQ(carryOut(copy), copied("a-4.jpg"));
  EXPECT_EQ(ExportTest::textOf(root / "Ana/a-4.jpg"), "stored");
}

TEST_F(MediaCopierTest, ReplacesAnEmptyFile) {
  writeFile(root / "Ana/a.jpg", "");
  EXPECT_EQ(carryOut(copyTo("a.jpg")), copied("a.jpg"));
  EXPECT_EQ(filesBelow(root), (Files{{"Ana/a.jpg", "stored"}}));
}

TEST_F(MediaCopierTest, KeepsAFileOfAnotherSizeWhenItsCopyFails) {
  writeFile(root / "Ana/a.jpg", "half");
  fs::remove(source);
  EXPECT_ANY_THROW(carryOut(copyTo("a.jpg")));
  EXPECT_EQ(filesBelow(root), (Files{{"Ana/a.jpg", "half"}}));
}

TEST_F(MediaCopierTest, ALinkMakesRoomAndAFolderDoesNot) {
  writeFile(folder / "own", "half");
  fs::create_directories(root / "Ana/b.jpg");
  fs::create_symlink(folder / "own", root / "Ana/a.jpg");
  EXPECT_EQ(carryOut(copyTo("a.jpg")), copied("a.jpg"));
  EXPECT_THROW(carryOut(copyTo("b.jpg")), CopyError);
  EXPECT_EQ(ExportTest::textOf(root / "Ana/a.jpg"), "stored");
  EXPECT_TRUE(fs::is_symlink(root / "Ana/a-2.jpg"));
  EXPECT_TRUE(fs::is_directory(root / "Ana/b.jpg"));
  EXPECT_EQ(ExportTest::textOf(folder / "own"), "half");
  EXPECT_FALSE(ExportTest::holdsPartials(root));
}

TEST_F(MediaCopierTest, AFileOfAnotherSizeThanPlannedIsAFailureThatLeavesNothing) {
  PlannedCopy copy = copyTo("a.jpg");
  copy.sourceSize = 7;
  EXPECT_EQ(reasonOf(copy), FailureReason::cutShort);
  EXPECT_EQ(failed(copy), (MediaResult{.place = copy.dest}));
  EXPECT_EQ(filesBelow(root), Files{});
}

TEST_F(MediaCopierTest, AFileThatCannotBeReadMakesNoFolder) {
  PlannedCopy copy = copyTo("a.jpg");
  copy.fate = ExportPlanner::Lost();
  EXPECT_EQ(reasonOf(copy), FailureReason::cutShort);
  EXPECT_TRUE(fs::is_empty(root));
}

TEST_F(MediaCopierTest, TellsWhyAFileCannotBeRead) {
  EXPECT_EQ(reasonOf(copyTo("a.jpg")), std::nullopt);
  PlannedCopy copy = copyTo("b.jpg");
  copy.source = folder / "nowhere";
  EXPECT_EQ(reasonOf(copy), FailureReason::missing);
  copy.fate = ExportPlanner::Lost();
  EXPECT_EQ(reasonOf(copy), FailureReason::missing);
  copy.source.clear();
  EXPECT_EQ(reasonOf(copy), FailureReason::missing);
  copy.source = folder / "device";
  EXPECT_EQ(reasonOf(copy), FailureReason::unreadable);
  fs::create_symlink(source, folder / "link");
  copy.source = folder / "link";
  EXPECT_EQ(reasonOf(copy), FailureReason::unreadable);
}

TEST_F(MediaCopierTest, TellsWhyAFileCannotBeWritten) {
  index.unreadableFolders.insert("Bea");
  PlannedCopy copy = copyTo("a.jpg");
  copy.dest.folder = "Bea";
  EXPECT_EQ(reasonOf(copy), FailureReason::unwritable) << "nobody knows what stands there";
  fs::create_directories(root / "Ana/b.jpg");
  EXPECT_EQ(reasonOf(copyTo("b.jpg")), FailureReason::placeTaken);
}

TEST_F(MediaCopierTest, AFileInAChatsPlaceMakesRoom) {
  writeFile(root / "Ana", "a file in a folder's place");
  EXPECT_EQ(carryOut(copyTo("a.jpg")), copied("a.jpg"));
  EXPECT_EQ(filesBelow(root), (Files{{"Ana/a.jpg", "stored"}, {"Ana-2", "a file in a folder's place"}}));
}

TEST_F(MediaCopierTest, TellsThatAFormerCopyIsGone) { EXPECT_EQ(reasonOf(moveTo("a.jpg")), FailureReason::unwritable); }

TEST_F(MediaCopierTest, TellsThatAFileIsTooLargeForTheDrive) {
  constexpr rlim_t limit = 1 << 20;
  writeFile(source, std::string(limit + 1, 'x'));
  PlannedCopy copy = copyTo("a.mp4");
  copy.sourceSize = limit + 1;
  EXPECT_EQ(reasonWithLargestFile(limit, copy), FailureReason::tooLarge);
  EXPECT_FALSE(ExportTest::holdsPartials(root));
}

TEST_F(MediaCopierTest, DoesNotClassifyEverything) {
  const OpenedBackup opened = OpenedBackup::open(folder / "device", std::nullopt);
  const FlushPoint disk(root);
  const MediaCopier copier({}, opened, index, disk, {});
  EXPECT_EQ(copier.reasonOf(std::bad_alloc(), copyTo("a.jpg")), FailureReason::other);
  EXPECT_EQ(copier.reasonOf(TidewellError::ioFailure("Could not decrypt a backup file."), copyTo("a.jpg")),
            FailureReason::undecryptable);
}

TEST_F(MediaCopierTest, ACancelledCopyLeavesNothing) {
  try {
    carryOut(copyTo("a.jpg"), [] { return true; });
    // A file system that shares blocks copies in one step, too quick to be cancelled.
    EXPECT_EQ(filesBelow(root), (Files{{"Ana/a.jpg", "stored"}}));
  } catch (const TidewellError& error) {
    EXPECT_EQ(error, TidewellError::cancelled());
    EXPECT_EQ(filesBelow(root), Files{});
  }
}

TEST_F(MediaCopierTest, MovesAFileOutOfAFormerFolder) {
  writeFile(root / "Old/a.jpg", "earlier");
  PlannedCopy copy = moveTo("b.jpg");
  copy.encryptionKey = Bytes(44, 7);
  EXPECT_EQ(carryOut(copy), copied("b.jpg", 7));
  EXPECT_EQ(filesBelow(root), (Files{{"Ana/b.jpg", "earlier"}}));
  EXPECT_EQ(ExportTest::modified(root / "Ana/b.jpg"), 1'600'000'000);
}

// On a system that gives no more threads the flush waits its turn.
TEST_F(MediaCopierTest, CopiesWithoutAThreadForTheFlush) {
  const auto copyAlone = [&] {
    Fixture::refuseCall(SYS_clone3, EAGAIN);
    try {
      carryOut(copyTo("b.jpg"));
      ::_exit(0);
    } catch (const std::exception&) {
      ::_exit(1);
    }
  };
  EXPECT_EXIT(copyAlone(), testing::ExitedWithCode(0), "");
  EXPECT_EQ(filesBelow(root), (Files{{"Ana/b.jpg", "stored"}}));
}

TEST_F(MediaCopierTest, AMovedFileNeverReplacesAnother) {
  writeFile(root / "Old/a.jpg", "earlier");
  writeFile(root / "Ana/b.jpg", "other");
  EXPECT_EQ(carryOut(moveTo("b.jpg")), copied("b-2.jpg", 7));
  EXPECT_EQ(filesBelow(root), (Files{{"Ana/b.jpg", "other"}, {"Ana/b-2.jpg", "earlier"}}));
}

TEST_F(MediaCopierTest, TellsWhichNameWasTakenLastWhenACopyFails) {
  for (const PlannedCopy& copy : {copyTo("b.jpg"), moveTo("b.jpg")}) {
    writeFile(root / "Old/a.jpg", "earlier");
    writeFile(root / "Ana/b.jpg", "other");
    fs::create_directories(root / "Ana/b-2.jpg");
    EXPECT_EQ(failed(copy), (MediaResult{.place = {.folder = "Ana", .name = "b-2.jpg"}}));
    EXPECT_EQ(ExportTest::textOf(root / "Old/a.jpg"), "earlier");
  }
}

}  // namespace
