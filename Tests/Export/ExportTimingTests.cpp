#include "TidewellCore/Export/ExportTiming.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

TEST(ExportTiming, TellsTheRestAtTheSpeedSoFar) {
  ASSERT_TRUE(ExportTiming::remaining(0.8, 10, 20));
  EXPECT_DOUBLE_EQ(*ExportTiming::remaining(0.8, 10, 20), 0.8);
  EXPECT_DOUBLE_EQ(*ExportTiming::remaining(30, 1, 4), 90);
}

TEST(ExportTiming, KeepsTheFirstNoisyEstimatesBack) {
  EXPECT_FALSE(ExportTiming::remaining(0.79, 10, 20));
  EXPECT_FALSE(ExportTiming::remaining(std::nan(""), 10, 20));
  EXPECT_FALSE(ExportTiming::remaining(-5, 10, 20));
}

TEST(ExportTiming, TellsNothingBeforeTheFirstFileAndAfterTheLast) {
  EXPECT_FALSE(ExportTiming::remaining(10, 0, 20));
  EXPECT_FALSE(ExportTiming::remaining(10, -1, 20));
  EXPECT_FALSE(ExportTiming::remaining(10, 20, 20));
  EXPECT_FALSE(ExportTiming::remaining(10, 21, 20));
}

TEST(ExportTiming, TellsNothingWhenTheSpeedIsZero) { EXPECT_FALSE(ExportTiming::remaining(infinity, 1, 2)); }

TEST(ExportTiming, ChoosesTheUnitBeforeItRounds) {
  EXPECT_EQ(ExportTiming::formatRemaining(59.6), "About 60 seconds left");
  EXPECT_EQ(ExportTiming::formatRemaining(60), "About 1 minute left");
  EXPECT_EQ(ExportTiming::formatRemaining(89), "About 1 minute left");
  EXPECT_EQ(ExportTiming::formatRemaining(90), "About 2 minutes left");
  EXPECT_EQ(ExportTiming::formatRemaining(3599), "About 60 minutes left");
  EXPECT_EQ(ExportTiming::formatRemaining(3600), "About 1 hour left");
  EXPECT_EQ(ExportTiming::formatRemaining(5400), "About 2 hours left");
}

TEST(ExportTiming, TellsTheTimeLeftAsAUnitAndANumber) {
  using Unit = TimeLeft::Unit;
  EXPECT_EQ(ExportTiming::timeLeft(59.6), (TimeLeft{.unit = Unit::second, .count = 60}));
  EXPECT_EQ(ExportTiming::timeLeft(60), (TimeLeft{.unit = Unit::minute, .count = 1}));
  EXPECT_EQ(ExportTiming::timeLeft(150), (TimeLeft{.unit = Unit::minute, .count = 3}));
  EXPECT_EQ(ExportTiming::timeLeft(3600), (TimeLeft{.unit = Unit::hour, .count = 1}));
  EXPECT_EQ(ExportTiming::timeLeft(9000), (TimeLeft{.unit = Unit::hour, .count = 3}));
  for (const double little : {0.0, 0.4, -5.0, -infinity, std::nan("")}) {
    EXPECT_EQ(ExportTiming::timeLeft(little), (TimeLeft{.unit = Unit::second, .count = 1})) << little;
  }
}

TEST(ExportTiming, NeverSaysLessThanOneSecond) {
  EXPECT_EQ(ExportTiming::formatRemaining(0), "About 1 second left");
  EXPECT_EQ(ExportTiming::formatRemaining(1.4), "About 1 second left");
  EXPECT_EQ(ExportTiming::formatRemaining(1.5), "About 2 seconds left");
  EXPECT_EQ(ExportTiming::formatRemaining(-5), "About 1 second left");
  EXPECT_EQ(ExportTiming::formatRemaining(-infinity), "About 1 second left");
  EXPECT_EQ(ExportTiming::formatRemaining(std::nan("")), "About 1 second left");
}

TEST(ExportTimingDeathTest, StopsTheProgramForAnInfiniteTime) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(ExportTiming::formatRemaining(infinity), "Programming fault");
}

}  // namespace
