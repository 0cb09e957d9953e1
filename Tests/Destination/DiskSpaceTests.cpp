#include "TidewellCore/Destination/DiskSpace.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <limits>

#include "Tests/Export/ExportScene.h"
#include "Tests/Support/SmallVolume.h"
#include "Tests/Support/TemporaryDirectory.h"

namespace {

TEST(DiskSpace, NothingNeededAlwaysFits) {
  EXPECT_TRUE(DiskSpace::hasEnoughSpace(0, 0, 1.03));
  EXPECT_TRUE(DiskSpace::hasEnoughSpace(-1, 0, 1.03));
  EXPECT_FALSE(DiskSpace::hasEnoughSpace(1, 0, 1.03));
}

TEST(DiskSpace, KeepsTheMarginFree) {
  EXPECT_TRUE(DiskSpace::hasEnoughSpace(100, 125, 1.25));
  EXPECT_FALSE(DiskSpace::hasEnoughSpace(100, 124, 1.25));
}

TEST(DiskSpace, RoundsTheProductOfDoublesUpToWholeBytes) {
  // 1.1 × 100 is 110.00000000000001 in double precision.
  EXPECT_FALSE(DiskSpace::hasEnoughSpace(100, 110, 1.1));
  EXPECT_TRUE(DiskSpace::hasEnoughSpace(100, 111, 1.1));
}

TEST(DiskSpace, AnExportNeedsThreePercentMoreThanItsBytes) {
  EXPECT_TRUE(DiskSpace::fitsExport(100, 103));
  EXPECT_FALSE(DiskSpace::fitsExport(100, 102));
  EXPECT_TRUE(DiskSpace::fitsExport(0, 0));
  EXPECT_TRUE(DiskSpace::fitsExport(-1, -1));
}

TEST(DiskSpace, AnExportBeyondEveryVolumeDoesNotFit) {
  constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
  EXPECT_FALSE(DiskSpace::fitsExport(largest, 1'000'000'000'000));
  EXPECT_FALSE(DiskSpace::fitsExport(largest, largest));
}

TEST(DiskSpaceDeathTest, StopsTheProgramWhenTheProductIsBeyond64Bits) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
  EXPECT_DEATH(DiskSpace::hasEnoughSpace(largest, largest, 1.03), "Programming fault");
}

TEST(DiskSpace, AsksTheNearestFolderThatExists) {
  const Fixture::TemporaryDirectory folder;
  const Fixture::SmallVolume volume(folder / "volume", 1 << 20);
  if (!volume.isMounted()) GTEST_SKIP() << "This user cannot mount a volume.";
  EXPECT_EQ(DiskSpace::availableBytes(folder / "volume"), 1 << 20);
  EXPECT_EQ(DiskSpace::availableBytes(folder / "volume/not/yet/made"), 1 << 20);
  EXPECT_GT(DiskSpace::availableBytes(folder / "not/yet/made"), 1 << 20);
}

}  // namespace
