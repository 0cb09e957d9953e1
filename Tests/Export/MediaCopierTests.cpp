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
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;
using ExportPlanner::PlannedCopy;
using ExportTest::filesBelow;
using Fixture::writeFile;
using Files = std::map<std::string, std::string>;
using Outcome = MediaCopier::Outcome;

// A stored file "source" of 6 bytes, and a content root.
struct MediaCopierTest : testing::Test {
  MediaCopierTest() {
    Fixture::writeBackup({}, folder / "device");
    writeFile(source, "stored");
    fs::create_directories(root);
  }

  PlannedCopy copyTo(const std::string& name) const {
    return {.source = source,
            .dest = root / "Ana" / name,
            .date = dateFromUnixTime(1'600'000'000),
            .desiredName = name,
            .exportedName = name,
            .sourceSize = 6};
  }

  Outcome carryOut(PlannedCopy& copy, const CancellationCheck& isCancelled = {}) {
    const OpenedBackup opened = OpenedBackup::open(folder / "device", std::nullopt);
    const FlushPoint disk(root);
    MediaCopier copier(opened, index, disk, isCancelled);
    const Outcome outcome = copier.carryOut(copy);
    return settle(copier) ? Outcome::alreadyPresent : outcome;
  }
  Outcome carryOut(PlannedCopy&& copy, const CancellationCheck& isCancelled = {}) {
    return carryOut(copy, isCancelled);
  }

  // Whether anything stood there already.
  static bool settle(MediaCopier& copier) {
    bool wasThere = false;
    for (const auto& settled : copier.settle()) {
      if (settled.failure) std::rethrow_exception(settled.failure);
      wasThere |= settled.wasThere;
    }
    return wasThere;
  }

  // Why a copy fails that is carried out.
  std::optional<FailureReason> reasonOf(PlannedCopy copy) {
    const OpenedBackup opened = OpenedBackup::open(folder / "device", std::nullopt);
    const FlushPoint disk(root);
    MediaCopier copier(opened, index, disk, {});
    try {
      copier.carryOut(copy);
      settle(copier);
    } catch (const std::exception& error) {
      return copier.reasonOf(error, copy);
    }
    return std::nullopt;
  }

  // The same where no file may become larger, as on the file systems of old memory cards.
  std::optional<FailureReason> reasonWithLargestFile(rlim_t byteCount, const PlannedCopy& copy) {
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

  void removeEmptied(const ExportPlanner::LeftoverFolders& leftovers) {
    const OpenedBackup opened = OpenedBackup::open(folder / "device", std::nullopt);
    const FlushPoint disk(root);
    MediaCopier(opened, index, disk, {}).removeEmptied(leftovers);
  }

  Fixture::TemporaryDirectory folder;
  fs::path source = folder / "source";
  fs::path root = folder / "messages";
  DestinationIndex index{.destination = root};
};

TEST_F(MediaCopierTest, MakesTheFolderAndTheFileWithTheMessagesDate) {
  EXPECT_EQ(carryOut(copyTo("a.jpg")), Outcome::written);
  EXPECT_EQ(filesBelow(root), (Files{{"Ana/a.jpg", "stored"}}));
  EXPECT_EQ(ExportTest::modified(root / "Ana/a.jpg"), 1'600'000'000);
  ASSERT_TRUE(index.contains("Ana/a.jpg"));
  EXPECT_EQ(index.file("Ana", "a.jpg")->size, 6);
}

TEST_F(MediaCopierTest, DoesNotTouchAFileThatIsThereAlready) {
  PlannedCopy copy = copyTo("a.jpg");
  copy.alreadyPresent = true;
  EXPECT_EQ(carryOut(copy), Outcome::alreadyPresent);
  EXPECT_EQ(filesBelow(root), Files{});
}

TEST_F(MediaCopierTest, TakesAFileOfTheSameContentThatCameSinceThePlanForTheCopy) {
  writeFile(root / "Ana/a.jpg", "stored");
  EXPECT_EQ(carryOut(copyTo("a.jpg")), Outcome::alreadyPresent);
  EXPECT_EQ(filesBelow(root), (Files{{"Ana/a.jpg", "stored"}}));
  EXPECT_TRUE(index.contains("Ana/a.jpg"));
}

TEST_F(MediaCopierTest, KeepsWhateverElseCameSinceThePlanAndTakesTheNextName) {
  for (const std::string content : {"sextet", "half"}) {
    writeFile(root / "Ana/a.jpg", content);
    PlannedCopy copy = copyTo("a.jpg");
    EXPECT_EQ(carryOut(copy), Outcome::written);
    EXPECT_EQ(filesBelow(root), (Files{{"Ana/a.jpg", content}, {"Ana/a-2.jpg", "stored"}}));
    EXPECT_EQ(copy.exportedName, "a-2.jpg");
    EXPECT_EQ(copy.dest, root / "Ana/a-2.jpg");
    EXPECT_TRUE(index.contains("Ana/a-2.jpg"));
    EXPECT_FALSE(index.contains("Ana/a.jpg"));
    fs::remove_all(root / "Ana");
    index = {.destination = root};
  }
}

TEST_F(MediaCopierTest, TheNextNameIsOneThatALaterExportKnowsAgain) {
  writeFile(root / "Ana/a-2.jpg", "half");
  writeFile(root / "Ana/a-3.jpg", "half a loaf");
  PlannedCopy copy = copyTo("a-2.jpg");
  copy.desiredName = "a.jpg";
  EXPECT_EQ(carryOut(copy), Outcome::written);
  EXPECT_EQ(copy.exportedName, "a-4.jpg");
  EXPECT_EQ(ExportTest::textOf(root / "Ana/a-4.jpg"), "stored");
}

TEST_F(MediaCopierTest, ReplacesAnEmptyFile) {
  writeFile(root / "Ana/a.jpg", "");
  EXPECT_EQ(carryOut(copyTo("a.jpg")), Outcome::written);
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
  EXPECT_EQ(carryOut(copyTo("a.jpg")), Outcome::written);
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
  EXPECT_EQ(filesBelow(root), Files{});
  EXPECT_FALSE(index.contains("Ana/a.jpg"));
}

TEST_F(MediaCopierTest, AFileThatCannotBeReadMakesNoFolder) {
  PlannedCopy copy = copyTo("a.jpg");
  copy.sourceSize = -1;
  EXPECT_EQ(reasonOf(copy), FailureReason::cutShort);
  EXPECT_TRUE(fs::is_empty(root));
}

TEST_F(MediaCopierTest, TellsWhyAFileCannotBeRead) {
  EXPECT_EQ(reasonOf(copyTo("a.jpg")), std::nullopt);
  PlannedCopy copy = copyTo("b.jpg");
  copy.source = folder / "nowhere";
  EXPECT_EQ(reasonOf(copy), FailureReason::missing);
  copy.sourceSize = -1;
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
  copy.dest = root / "Bea/a.jpg";
  EXPECT_EQ(reasonOf(copy), FailureReason::unwritable) << "nobody knows what stands there";
  fs::create_directories(root / "Ana/b.jpg");
  EXPECT_EQ(reasonOf(copyTo("b.jpg")), FailureReason::placeTaken);
}

TEST_F(MediaCopierTest, AFileInAChatsPlaceMakesRoom) {
  writeFile(root / "Ana", "a file in a folder's place");
  EXPECT_EQ(carryOut(copyTo("a.jpg")), Outcome::written);
  EXPECT_EQ(filesBelow(root), (Files{{"Ana/a.jpg", "stored"}, {"Ana-2", "a file in a folder's place"}}));
}

TEST_F(MediaCopierTest, TellsThatAFormerCopyIsGone) {
  PlannedCopy copy = copyTo("a.jpg");
  copy.source = root / "Old/a.jpg";
  copy.leftoverFolder = "Old";
  EXPECT_EQ(reasonOf(copy), FailureReason::unwritable);
}

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
  const MediaCopier copier(opened, index, disk, {});
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
  index.addFile("Old", "a.jpg", 7);
  PlannedCopy copy = copyTo("b.jpg");
  copy.source = root / "Old/a.jpg";
  copy.leftoverFolder = "Old";
  copy.sourceSize = 7;
  copy.encryptionKey = Bytes(44, 7);
  EXPECT_EQ(carryOut(copy), Outcome::moved);
  EXPECT_EQ(filesBelow(root), (Files{{"Ana/b.jpg", "earlier"}}));
  EXPECT_EQ(ExportTest::modified(root / "Ana/b.jpg"), 1'600'000'000);
  EXPECT_TRUE(index.contains("Ana/b.jpg"));
  EXPECT_FALSE(index.contains("Old/a.jpg"));
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
  PlannedCopy copy = copyTo("b.jpg");
  copy.source = root / "Old/a.jpg";
  copy.leftoverFolder = "Old";
  copy.sourceSize = 7;
  EXPECT_EQ(carryOut(copy), Outcome::moved);
  EXPECT_EQ(filesBelow(root), (Files{{"Ana/b.jpg", "other"}, {"Ana/b-2.jpg", "earlier"}}));
  EXPECT_EQ(copy.exportedName, "b-2.jpg");
}

TEST_F(MediaCopierTest, RemovesAFormerFolderThatHoldsNothingMoreThanTranscripts) {
  writeFile(root / "Old/_transcript.txt", "1");
  writeFile(root / "Old/_transcript.html", "2");
  writeFile(root / "Old/.DS_Store", "3");
  fs::create_directory(root / "Empty");
  removeEmptied({{CanonicalJID(), {"Old", "Gone", "Empty"}}});
  EXPECT_TRUE(fs::is_empty(root));
}

TEST_F(MediaCopierTest, KeepsAFormerFolderThatHoldsAnythingElse) {
  writeFile(root / "Old/_transcript.txt", "1");
  writeFile(root / "Old/my notes.txt", "2");
  fs::create_directories(root / "Older/_transcript.txt");
  removeEmptied({{CanonicalJID(), {"Old", "Older"}}});
  EXPECT_EQ(filesBelow(root), (Files{{"Old/_transcript.txt", "1"}, {"Old/my notes.txt", "2"}}));
  EXPECT_TRUE(fs::exists(root / "Older/_transcript.txt"));
}

}  // namespace
