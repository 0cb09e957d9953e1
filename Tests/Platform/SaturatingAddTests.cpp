#include "TidewellCore/Platform/SaturatingAdd.h"

#include <gtest/gtest.h>

namespace {

TEST(SaturatingAdd, AddsSizes) { EXPECT_EQ(saturatingAdd(40, 2), 42); }

TEST(SaturatingAdd, StaysAtTheLargestNumber) {
  EXPECT_EQ(saturatingAdd(INT64_MAX, 1), INT64_MAX);
  EXPECT_EQ(saturatingAdd(1, INT64_MAX), INT64_MAX);
  EXPECT_EQ(saturatingAdd(INT64_MAX - 1, 1), INT64_MAX);
}

TEST(SaturatingAdd, ANegativeSizeAddsNothing) {
  EXPECT_EQ(saturatingAdd(40, -1), 40);
  EXPECT_EQ(saturatingAdd(40, INT64_MIN), 40);
}

}  // namespace
