#include "TidewellCore/ReadableSize.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

TEST(ReadableSize, CountsSmallSizesInBytes) {
  EXPECT_EQ(ReadableSize::of(0), (ReadableSize{.amount = 0, .unit = "bytes"}));
  EXPECT_EQ(ReadableSize::of(1), (ReadableSize{.amount = 1, .unit = "byte"}));
  EXPECT_EQ(ReadableSize::of(999), (ReadableSize{.amount = 999, .unit = "bytes"}));
  EXPECT_EQ(ReadableSize::of(-5), (ReadableSize{.amount = -5, .unit = "bytes"}));
}

TEST(ReadableSize, HasOneDecimalInGreaterUnits) {
  EXPECT_EQ(ReadableSize::of(1000), (ReadableSize{.amount = 1, .decimals = 1, .unit = "kB"}));
  EXPECT_EQ(ReadableSize::of(1'250'000'000), (ReadableSize{.amount = 1.25, .decimals = 1, .unit = "GB"}));
}

TEST(ReadableSize, NeverShowsAThousandOfAUnit) {
  EXPECT_EQ(ReadableSize::of(999'949).unit, "kB");
  EXPECT_EQ(ReadableSize::of(999'950).unit, "MB");
}

TEST(ReadableSize, EndsWithExabytes) {
  const ReadableSize largest = ReadableSize::of(std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(largest.unit, "EB");
  EXPECT_NEAR(largest.amount, 9.223, 0.001);
}

}  // namespace
