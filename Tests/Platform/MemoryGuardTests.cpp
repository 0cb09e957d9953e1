#include "TidewellCore/Platform/MemoryGuard.h"

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/resource.h>

#include <optional>

namespace {

bool isDumpable() { return ::prctl(PR_GET_DUMPABLE) == 1; }

rlim_t longestCore() {
  rlimit limit{};
  ::getrlimit(RLIMIT_CORE, &limit);
  return limit.rlim_cur;
}

// Core dumps are allowed while a test runs, as far as the machine lets them be.
class MemoryGuardTest : public testing::Test {
 protected:
  MemoryGuardTest() {
    ::getrlimit(RLIMIT_CORE, &former_);
    const rlimit allowed{.rlim_cur = former_.rlim_max, .rlim_max = former_.rlim_max};
    ::setrlimit(RLIMIT_CORE, &allowed);
  }
  ~MemoryGuardTest() override { ::setrlimit(RLIMIT_CORE, &former_); }

  rlimit former_{};
};

TEST_F(MemoryGuardTest, ShutsTheMemoryWhileItLives) {
  ASSERT_TRUE(isDumpable());
  {
    const MemoryGuard guard;
    EXPECT_FALSE(isDumpable());
    EXPECT_EQ(longestCore(), 0u);
  }
  EXPECT_TRUE(isDumpable());
  EXPECT_EQ(longestCore(), former_.rlim_max);
}

TEST_F(MemoryGuardTest, HoldsUntilTheLastOfSeveralGoes) {
  std::optional<MemoryGuard> first(std::in_place);
  std::optional<MemoryGuard> second = first;
  std::optional<MemoryGuard> third = std::move(second);
  first.reset();
  second.reset();
  EXPECT_FALSE(isDumpable());
  third.reset();
  EXPECT_TRUE(isDumpable());
}

TEST_F(MemoryGuardTest, KeepsCoreDumpsRefusedThatWereBefore) {
  MemoryGuard::refuseCoreDumps();
  EXPECT_TRUE(isDumpable());
  EXPECT_EQ(longestCore(), 0u);
  const MemoryGuard guard;
  EXPECT_EQ(longestCore(), 0u);
}

}  // namespace
