#include "TidewellCore/Destination/DestinationLock.h"

#include <gtest/gtest.h>

#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/TidewellError.h"

namespace {

TEST(DestinationLock, LetsOneExportAtATimeIntoADestination) {
  const Fixture::TemporaryDirectory folder;
  {
    const DestinationLock first(folder.path());
    try {
      const DestinationLock second(folder.path());
      FAIL() << "both hold it";
    } catch (const TidewellError& error) {
      EXPECT_TRUE(error.is<TidewellError::IOFailure>());
    }
  }
  EXPECT_NO_THROW(DestinationLock(folder.path()));
}

TEST(DestinationLock, ADestinationAndItsContentAreOnePlace) {
  const Fixture::TemporaryDirectory folder;
  std::filesystem::create_directory(folder / "messages");
  {
    const DestinationLock whole(folder.path());
    EXPECT_THROW(DestinationLock(folder / "messages"), TidewellError);
    EXPECT_THROW(DestinationLock(folder / "messages/."), TidewellError);
  }
  {
    const DestinationLock content(folder / "messages");
    EXPECT_THROW(DestinationLock(folder.path()), TidewellError);
  }
  EXPECT_NO_THROW(DestinationLock(folder.path()));
}

TEST(DestinationLock, LeavesNothingInTheDestination) {
  const Fixture::TemporaryDirectory folder;
  const DestinationLock lock(folder.path());
  EXPECT_TRUE(Fixture::treeSnapshot(folder.path()).empty());
}

TEST(DestinationLock, NoticesThatItsFolderIsAnotherOne) {
  const Fixture::TemporaryDirectory folder;
  std::filesystem::create_directory(folder / "kept");
  const DestinationLock lock(folder / "kept");
  EXPECT_NO_THROW(lock.requireInPlace());
  std::filesystem::rename(folder / "kept", folder / "elsewhere");
  EXPECT_THROW(lock.requireInPlace(), TidewellError);
  std::filesystem::create_directory(folder / "kept");
  EXPECT_THROW(lock.requireInPlace(), TidewellError);
}

TEST(DestinationLock, NeedsAFolder) {
  const Fixture::TemporaryDirectory folder;
  EXPECT_THROW(DestinationLock(folder / "nowhere"), std::filesystem::filesystem_error);
}

}  // namespace
