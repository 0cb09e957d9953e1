#include "TidewellCore/Platform/FlushPoint.h"

#include <gtest/gtest.h>
#include <sys/personality.h>
#include <unistd.h>

#include "Tests/Support/TemporaryDirectory.h"

namespace {

TEST(FlushPoint, FlushesAVolume) {
  const Fixture::TemporaryDirectory folder;
  EXPECT_TRUE(FlushPoint(folder.path()).flush());
}

TEST(FlushPoint, DoesNotBelieveASystemThatTellsOfNoFailure) {
  const Fixture::TemporaryDirectory folder;
  const auto flushOnAnOldSystem = [&] {
    ::personality(UNAME26);  // it calls itself 2.6 from now on
    ::_exit(FlushPoint(folder.path()).flush() ? 1 : 0);
  };
  EXPECT_EXIT(flushOnAnOldSystem(), testing::ExitedWithCode(0), "");
}

TEST(FlushPoint, AMissingFolderIsAFailure) {
  const Fixture::TemporaryDirectory folder;
  EXPECT_THROW(FlushPoint(folder / "missing"), std::filesystem::filesystem_error);
}

}  // namespace
